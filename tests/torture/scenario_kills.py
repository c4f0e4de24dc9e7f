"""The program is killed at random moments, in the midst of changes and results, and started again."""

import contextlib
import itertools
import json
import random
import threading
import time

from framework import judges
from framework.life import Ended, Life, Missed
from framework.remains import end_remains
from framework.scenario import Outcome, Scenario

_KILLS = 3  # Of one home, before a life that ends in order.

# From a program's start to its kill. The speech server is ready some six seconds after the start, and a
# run comes after that.
_LONGEST_LIFE = 14.0

# Of the lives that come so far, those whose user has just pressed Quit.
_SHARE_OF_QUITS = 0.2
_LONGEST_QUIT = 2.0

# A killed program's speech server is sent three signals, a second apart.
_REMAINS_SECONDS = 90.0

_LOOK_SECONDS = 0.002     # Between two looks at the settings' file.
_RESULT_SECONDS = 0.03    # Between two results.

# Results whose translations are asked for at the same time, on a machine that is busy: so many places
# one of them may be away from where it would stand had all answers come in order.
_UNDER_WAY = 40

# What the sliders are called, the key of each, its places and what is stored for a place.
_SLIDERS = (("Pause Length", "vadSilenceDuration", range(4, 41), lambda place: 50 * place),
            ("Threshold", "vadThreshold", range(-60, -9), lambda place: place))


class Kills(Scenario):
    name = "kills"
    checks = "acknowledged settings, whole transcripts, the next start, processes, files"
    bounded_seconds = 40.0

    def jobs(self, chance, is_long):
        while True:
            yield {"chance": chance.getrandbits(32)}

    def perform(self, stage, job):
        stage.new_home(autoStartBackend=True)
        stage.install_server()
        chance, outcome = random.Random(job["chance"]), Outcome()
        changes = Changes()
        for _ in range(_KILLS):
            _Killed(stage, chance, outcome, changes).live()
            if outcome.failures:
                return outcome
        _Ended(stage, outcome, changes).live()
        return outcome


class Changes:
    """What a home has been told to keep. Every value that each setting was given, in their order, and
    how far the file has come. A change counts as acknowledged from the moment when the file was seen
    with it, or with a later one: that it is in the file is all that the program ever tells of it."""

    def __init__(self):
        self._made = {key: [None] for _, key, _, _ in _SLIDERS}  # None: not in the file.
        self._seen = dict.fromkeys(self._made, 0)
        self.entries = {}  # Of the transcripts, as they were found last.
        self._lock = threading.Lock()

    def make(self, key, value):
        """Before the change is made."""
        with self._lock:
            self._made[key].append(value)

    def see(self, stored):
        """Returns how many changes are acknowledged by these values that were not before, and the keys
        of those that are gone again: {key: (value, what had been acknowledged)}."""
        with self._lock:
            news, gone = 0, {}
            for key, made in self._made.items():
                value, before = stored.get(key), self._seen[key]
                try:
                    self._seen[key] = made.index(value, before)
                    news += self._seen[key] - before
                except ValueError:
                    gone[key] = (value, made[before])
            return news, gone

    def count(self):
        return sum(len(made) - 1 for made in self._made.values())


class FileWatch:
    """Looks at the settings' file again and again, on a thread of its own."""

    def __init__(self, stage, changes, outcome):
        self._file = stage.desktop.home / ".config" / "orvane" / "defaults.json"
        self._changes = changes
        self._outcome = outcome
        self._finished = threading.Event()
        self._thread = threading.Thread(target=self._watch, daemon=True)
        self._thread.start()

    def look(self):
        try:
            content = self._file.read_text(encoding="utf-8")
            news, gone = self._changes.see(json.loads(content))
        except (OSError, ValueError) as error:
            self._outcome.fail(f"the settings' file at some moment: {error}")
            return False
        self._outcome.count("acknowledged changes", news)
        if gone:
            self._outcome.lost += len(gone)
            self._outcome.fail(f"acknowledged changes are lost, {{key: (now, acknowledged)}}: {gone}")
        return not gone

    def close(self):
        """Ends the looking, with a last look."""
        self._finished.set()
        self._thread.join()
        self.look()

    def _watch(self):
        while not self._finished.wait(_LOOK_SECONDS) and self.look():
            pass


class _Life:
    """What a killed life and one that ends in order have in common."""

    def __init__(self, stage, outcome, changes):
        self._stage = stage
        self._outcome = outcome
        self._changes = changes

    def start(self):
        """The program; its start counts as done once its panel is there."""
        self._began = time.monotonic()
        self._program = self._stage.start_program()
        self._life = Life(self._stage, self._program)

    def see_panel(self):
        self._life.wait_for("Quit", "push button")
        self._outcome.measure("start", time.monotonic() - self._began)

    def fail(self, what):
        self._outcome.fail(f"{what}; its last lines:\n{self._program.tail(15)}")

    def judge_remains(self):
        if left := end_remains(self._program, _REMAINS_SECONDS):
            self._outcome.orphans += len(left)
            self.fail(f"processes outlive it: {left}")

    def judge_transcripts(self):
        """Whole entries, in both files of each run, none left out in between, and all that were there
        after an earlier life. What was killed may have written its last one into the first file alone.
        A translation may overtake an earlier one, as long as both are under way: no more than
        `_UNDER_WAY` of them are."""
        try:
            texts, subtitles = judges.transcripts(self._stage.output)
        except judges.Torn as torn:
            self.fail(f"a transcript is torn: {torn}")
            return
        for name, pairs in texts.items():
            cues = subtitles.get(name.replace("transcript", "subtitles").replace(".txt", ".srt"), [])
            if strays := _strays(pairs, self._stage.service.results):
                self.fail(f"{name} holds {len(pairs)} pairs, of which these have a wrong place: {strays}")
            if pairs[:len(cues)] != cues or len(pairs) - len(cues) > 1:
                self.fail(f"{name} holds {len(pairs)} pairs, but the subtitles {len(cues)} others")
            before = self._changes.entries.get(name, [])
            if pairs[:len(before)] != before:
                self._outcome.lost += 1
                self.fail(f"{name} has lost some of the {len(before)} pairs that it held")
        self._changes.entries = texts
        self._outcome.counts["transcript entries"] = len(judges.together(texts))


def _strays(pairs, given):
    """Those of `pairs` that nobody has sent, that stand twice or far from their place in `given`."""
    places = {pair: place for place, pair in enumerate(given)}
    first = min((places[pair] for pair in pairs if pair in places), default=0)
    return [pair for index, pair in enumerate(pairs)
            if pair not in places or abs(places[pair] - first - index) > _UNDER_WAY
            or pair in pairs[:index]]


class _Killed(_Life):
    def __init__(self, stage, chance, outcome, changes):
        super().__init__(stage, outcome, changes)
        self._chance = chance
        self._quits = chance.random() < _SHARE_OF_QUITS
        self._length = chance.uniform(0.0, _LONGEST_LIFE - (_LONGEST_QUIT if self._quits else 0.0))
        self._values = [itertools.cycle(chance.sample(places, len(places))) for _, _, places, _ in _SLIDERS]

    def live(self):
        self.start()
        watch = FileWatch(self._stage, self._changes, self._outcome)
        killer = None
        if not self._quits:
            killer = threading.Timer(self._length, self._program.process.kill)
            killer.start()
        try:
            self._be_busy()
            if self._quits:
                self._quit()
        except Ended:
            pass
        except Missed as missed:
            self.fail(f"it does not go on: {missed}")
        finally:
            if killer:
                killer.join()
            self._program.process.kill()
            self._program.process.wait()
            self._life.close()
            watch.close()
        self._outcome.count("kills")
        self.judge_remains()
        self.judge_transcripts()

    def _is_over(self):
        return self._program.process.poll() is not None or (
            self._quits and time.monotonic() > self._began + self._length)

    def _be_busy(self):
        """Until it is killed, or about to quit: settings are changed as fast as the sliders take it,
        and as soon as the speech server is there, results come."""
        self.see_panel()
        sliders = [self._life.wait_for(name, "slider") for name, _, _, _ in _SLIDERS]
        openings = self._stage.service.openings
        looks = itertools.count()
        translates = False
        next_result = 0.0
        while not self._is_over():
            self._move(sliders)
            if not translates and next(looks) % 10 == 0 and self._life.find("Stop Backend", "push button"):
                self._life.press("Start Translation")
                translates = True
            if self._stage.service.openings > openings and time.monotonic() > next_result:
                self._stage.service.publish()
                self._outcome.count("results")
                next_result = time.monotonic() + _RESULT_SECONDS

    def _move(self, sliders):
        for slider, values, (_, key, _, stored) in zip(sliders, self._values, _SLIDERS):
            place = next(values)
            self._changes.make(key, stored(place))
            self._stage.accessibility.set_value(slider, place)

    def _quit(self):
        self._life.press("Quit")
        with contextlib.suppress(Missed):
            self._life.wait_for_end(self._chance.uniform(0.0, _LONGEST_QUIT))


class _Ended(_Life):
    """Finds everything in order, and ends so."""

    def live(self):
        self.start()
        try:
            self.see_panel()
            self._life.press("Quit")
            status = self._life.wait_for_end(_REMAINS_SECONDS)
            if status != 0:
                self.fail(f"after the kills a life ends with {status}")
        except (Ended, Missed) as problem:
            self.fail(f"after the kills it does not start: {problem!r}")
        finally:
            self._program.process.kill()
            self._program.process.wait()
            self._life.close()
        FileWatch(self._stage, self._changes, self._outcome).close()
        self.judge_remains()
        self.judge_transcripts()
        self._outcome.count("starts after kills", _KILLS)
        if left := judges.left_behind(self._stage):
            self.fail(f"files are left: {left}")
