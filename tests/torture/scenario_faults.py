"""One call of the system fails, at one place after the other, on a full journey through the program."""

import contextlib
import os
import signal
import time

from framework import judges
from framework.complaints import complaints
from framework.journey import Journey
from framework.life import Ended, Life
from framework.places import errors_of, fault_of, name_of, places_of
from framework.remains import end_remains
from framework.scenario import Outcome, Scenario

from harness.program import port_is_open

_RECORDINGS = 3

# A program that is asked to end has so long, the speech server's three signals and a busy machine
# included.
_QUIT_SECONDS = 90.0

# Until connections that are kept for a while, or are just being closed, have gone.
_SETTLING_SECONDS = 45.0

# How often the same counts of descriptors are read, one after the other, until they are believed.
_EQUAL_READINGS = 5


# What a library makes in the place of something that it was refused, or never closes after it, by the
# beginning of the fault: GLib is woken through a pipe where it gets no event descriptor; PulseAudio's
# library keeps the shared memory of a connection that breaks while it is made (a program of a few lines,
# which connects and frees, does the same).
_KEPT_BY_LIBRARIES = {
    "eventfd||libglib-2.0.so.0": {"pipe": 2},
    "send|socket unix stream nonblocking|libpulsecommon": {"memory": 1},
    "recvmsg|socket unix stream nonblocking|libpulsecommon": {"memory": 1},
}


class Faults(Scenario):
    name = "faults"
    checks = "no crash, no hang, settings, transcripts, what is told, processes, files, descriptors"
    bounded_seconds = 45.0

    # The command line's side.

    def prepare(self, ask_all, chance):
        outcomes = ask_all([{} for _ in range(_RECORDINGS)])
        facts = [outcome["facts"] for outcome in outcomes if "places" in outcome["facts"]]
        if len(facts) < _RECORDINGS:
            raise SystemExit("error: the journey does not succeed without any fault")
        self._places = _merged(places_of(one["places"]) for one in facts)
        self._usual = {
            "descriptors": {kind: max(one["descriptors"].get(kind, 0) for one in facts)
                            for one in facts for kind in one["descriptors"]},
            "complaints": sorted(set().union(*(one["complaints"] for one in facts)))}
        ours = sum(place.is_ours for place in self._places)
        print(f"    {len(self._places)} places that can fail, {ours} of them calls of the program itself")

    def jobs(self, chance, is_long):
        if is_long:
            for place in chance.sample(self._places, len(self._places)):
                yield {**self._job(place, errors_of(place)[0], 1), "due": True}
        while True:
            for place in chance.sample(self._places, len(self._places)):
                occurrence = chance.choice((1, chance.randint(1, place.count)))
                yield self._job(place, chance.choice(errors_of(place)), occurrence)

    def _job(self, place, error, occurrence):
        return {"place": place.number, "error": error, "occurrence": occurrence,
                "what": f"{place}: {name_of(error)} at occurrence {occurrence} of about {place.count}",
                "usual": self._usual}

    # A worker's side.

    def perform(self, stage, job):
        stage.new_home()
        stage.install_scripted_server()
        return _Run(stage, job).go()


def _merged(recordings):
    """Of several recordings, all places that can fail."""
    merged = {}
    for places in recordings:
        for place in places:
            if errors_of(place) and (place.number not in merged
                                     or place.count < merged[place.number].count):
                merged[place.number] = place
    return [merged[number] for number in sorted(merged)]


class _Run:
    """A journey with a fault, or one that is recorded."""

    def __init__(self, stage, job):
        self._stage = stage
        self._job = job
        self._outcome = Outcome()
        self._report = stage.folder / "faults"
        self._usual = job.get("usual", {"descriptors": {}, "complaints": []})
        self._was_early = False  # Whether the fault came in the first half.
        self._usual_complaints = set(self._usual["complaints"])

    @property
    def _records(self):
        return "place" not in self._job

    def go(self):
        plan = "record" if self._records else (
            f"fail {self._job['place']} {self._job['occurrence']} {self._job['error']}")
        self._program = self._stage.start_program(
            LD_PRELOAD=os.environ["ORVANE_TORTURE_FAULTS"], ORVANE_FAULTS=plan,
            ORVANE_FAULTS_REPORT=str(self._report))
        life = Life(self._stage, self._program, lambda: bool(self._new_complaints()))
        self._journey = Journey(life)
        status = None
        try:
            with contextlib.suppress(Ended):
                self._journey.travel(self._settle)
            status = self._journey.quit(_QUIT_SECONDS)
        finally:
            life.close()
            self._judge_end(status)
            self._end_all()
        self._judge(life, status)
        return self._outcome

    def _new_complaints(self):
        return complaints(self._program.lines()) - self._usual_complaints

    def _fault(self):
        return fault_of(self._report.read_text()) if self._report.exists() else None

    def _allowed_descriptors(self):
        allowed = dict(self._usual["descriptors"])
        for start, further in _KEPT_BY_LIBRARIES.items():
            if (self._fault() or "").startswith(start):
                for kind, count in further.items():
                    allowed[kind] = allowed.get(kind, 0) + count
        return allowed

    def _settle(self):
        """The descriptors once they are what they should be; when they never are, as they are then. A
        recording takes them once they do not change any more."""
        if not self._journey.is_late:
            self._was_early = self._fault() is not None
        deadline, equal, last = time.monotonic() + _SETTLING_SECONDS, 0, None
        while time.monotonic() < deadline and self._program.process.poll() is None:
            now = self._journey.kinds()
            if self._records:
                equal = equal + 1 if now == last else 0
                if equal == _EQUAL_READINGS:
                    break
                last = now
            elif not judges.excess(now, self._allowed_descriptors()):
                break
            time.sleep(0.1)
        return dict(now)

    # What must hold.

    def _judge_end(self, status):
        if status is None:
            self._outcome.fail("it did not end on Quit" if self._journey.is_at_home
                               else "it neither came up nor ended")
        elif status < 0:
            self._outcome.fail(f"it crashed: {signal.Signals(-status).name}")
        elif self._journey.descriptors is None:
            if status == 0 or self._journey.is_at_home:
                self._outcome.fail(f"it ended by itself with status {status}")
            elif not self._new_complaints():
                self._outcome.fail(f"its start failed with status {status}, and it did not say why")
            else:
                self._outcome.count("refused starts")
        elif status != 0:
            self._outcome.fail(f"it ended with status {status}")

    def _end_all(self):
        """Nothing that the program has started may outlive it; what does is ended here."""
        if self._program.process.poll() is None:
            self._program.process.kill()
            self._program.process.wait()
        if left := end_remains(self._program, _QUIT_SECONDS):
            self._outcome.orphans += len(left)
            self._outcome.fail(f"it left processes: {left}")

    def _judge(self, life, status):
        fault = self._fault()
        if self._records:
            self._take_recording()
        elif fault is None:
            self._outcome.count("places not met")
        else:
            self._outcome.count("faults")
        self._judge_steps(fault)
        self._judge_settings()
        self._judge_transcripts(life)
        if status is not None and status >= 0:  # Else it had no chance to clear up.
            self._judge_files()
        self._judge_descriptors()
        if self._outcome.failures:
            self._outcome.failures.insert(0, self._job.get("what", "without a fault")
                                          + (f"\nhit: {fault}" if fault else ""))
            self._outcome.fail("its last lines:\n" + self._program.tail(15))

    def _take_recording(self):
        self._outcome.count("recordings")
        if self._journey.descriptors:
            first, second = self._journey.descriptors
            self._outcome.facts = {
                "places": self._report.read_text(), "complaints": sorted(complaints(self._program.lines())),
                "descriptors": {kind: max(first.get(kind, 0), second.get(kind, 0))
                                for kind in {*first, *second}}}

    def _judge_steps(self, fault):
        self._outcome.count("steps", self._journey.steps)
        if self._journey.endless:
            self._outcome.fail(f"it waits for the end of: {', '.join(self._journey.endless)}")
        late = self._journey.missed_late
        missed, told = "; ".join([*self._journey.missed, *late]), self._new_complaints()
        if not missed:
            return
        if fault is None or not told:
            self._outcome.fail(f"without a word: {missed}")
            return
        self._outcome.count("faults told")
        if self._was_early and late and not self._knows_no_settings():
            self._outcome.fail(f"it did not recover: {'; '.join(late)}")
        self._outcome.notes.append(f"{self._job['what']}\n      missed: {missed}\n"
                                   f"      told: {'; '.join(sorted(told))}")

    def _knows_no_settings(self):
        """Settings that cannot be read at the start are left alone, and the defaults hold for that life,
        which the program says. With them the journey is another."""
        return any("zur Zeit nicht lesbar" in line for line in self._new_complaints())

    def _judge_settings(self):
        """Each change that the file has shown is still in it; the others are, too, or a line says why
        not."""
        file = self._stage.desktop.home / ".config" / "orvane" / "defaults.json"
        if problem := judges.settings_problem(file):
            self._outcome.fail(problem)
            return
        stored = Life.stored_in(self._stage)
        lost = {key: value for key, value in self._journey.acknowledged.items()
                if stored.get(key) != value}
        self._outcome.count("acknowledged changes", len(self._journey.acknowledged))
        if lost:
            self._outcome.lost += len(lost)
            self._outcome.fail(f"acknowledged changes are lost: {lost}")
        elif any(stored.get(key) != value for key, value in self._journey.made.items()):
            if not any("Einstellung" in line for line in self._new_complaints()):
                self._outcome.fail("a change was never stored, and nothing said so")

    def _judge_transcripts(self, life):
        try:
            texts, subtitles = judges.transcripts(self._stage.output)
        except judges.Torn as torn:
            self._outcome.fail(f"a transcript is torn: {torn}")
            return
        shown = [pair for pair in life.shown() if pair in self._stage.service.results]
        self._outcome.count("shown results", len(shown))
        for kind, pairs in (("transcripts", judges.together(texts)), ("subtitles", judges.together(subtitles))):
            lost = [pair for pair in shown if pair not in pairs]
            if lost and not any("TranscriptWriter" in line for line in self._new_complaints()):
                self._outcome.lost += len(lost)
                self._outcome.fail(f"shown, but not in the {kind}: {lost}")

    def _judge_files(self):
        left = [name for name in judges.left_behind(self._stage) if name != self._report.name]
        if left:
            self._outcome.fail(f"it left files: {left}")
        if port_is_open(self._stage.overlay_port):
            self._outcome.fail("the overlay's port is still open")

    def _judge_descriptors(self):
        if self._records or not self._journey.descriptors:
            return
        more = judges.excess(self._journey.descriptors[1], self._allowed_descriptors())
        if more:
            self._outcome.descriptors += sum(more.values())
            self._outcome.fail(f"it has more descriptors than it should: {more}")
