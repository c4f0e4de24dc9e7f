"""The wall clock is set back and forth while a run lasts."""

import datetime
import re
import time

from framework import judges
from framework.health import Work
from framework.panel import Panel, text
from framework.scenario import Outcome, Scenario
from framework.spoken_run import SpokenRun
from framework.wall_clock import WallClock

_MINUTE, _HOUR, _DAY = 60, 3600, 86400
_MOVES = (_HOUR, -_HOUR, _DAY, -2 * _DAY, 400 * _DAY, -_MINUTE, -30 * _DAY, 10)
_MOVES_OF_BOUNDED = ((_HOUR, -2 * _HOUR), (-_DAY, 2 * _DAY))
_MOVES_OF_LONG = 20  # Of one run.
_LONG_RUNS = 4       # At least.

# How far a time in the files may be from the one at which the page showed the result: a busy machine
# takes a while, but no minute.
_NEARLY_SECONDS = 50.0

# Of a processor: a loop that does not wait takes a whole one, or its part of a busy machine.
_SPIN = 0.25

_STAMP = re.compile(r"^\[(\S+)Z\]$", re.MULTILINE)
_CUE = re.compile(r"^(\d\d+):(\d\d):(\d\d),(\d{3}) --> ", re.MULTILINE)


class Clock(Scenario):
    name = "clock"
    checks = "times in transcripts and subtitles, results, timers, processor"
    bounded_seconds = 5.0

    def jobs(self, chance, is_long):
        if not is_long:
            for moves in _MOVES_OF_BOUNDED:
                yield {"moves": moves, "due": True}
            return
        for _ in range(_LONG_RUNS):
            yield {"moves": chance.choices(_MOVES, k=_MOVES_OF_LONG), "due": True}
        while True:
            yield {"moves": chance.choices(_MOVES, k=_MOVES_OF_LONG)}

    def perform(self, stage, job):
        outcome = Outcome()
        clock = WallClock(stage.desktop.folder)
        with SpokenRun(stage, outcome, environment=clock.environment, **stage.service.settings) as run:
            _Run(run, clock).go(job["moves"])
        return outcome


class _Run:
    def __init__(self, run, clock):
        self._run = run
        self._life = run.life
        self._clock = clock
        self._results = []  # (source text, time.monotonic(), what the clock showed) of each.

    def go(self, moves):
        openings = self._run.stage.service.openings
        self._life.press(text("main.backend.start"))
        self._life.wait_for(text("main.backend.stop"), "push button")
        self._life.press(text("main.start"))
        self._life.until(lambda: self._run.stage.service.openings > openings, "the service's stream")
        self._say()
        usual = self._watch_timers()
        most = usual
        for seconds in moves:
            self._clock.move(seconds)
            self._say()
            most = max(most, self._watch_timers())
            self._run.outcome.count("moves")
        self._run.outcome.notes.append(f"of a processor {usual:.3f} before, {most:.3f} at most afterwards")
        if most > 2 * usual + _SPIN:
            self._run.outcome.fail(f"something spins: {most:.2f} of a processor instead of {usual:.2f}")
        self._run.quit()
        self._judge_files()

    def _say(self):
        pair, vmix = self._run.stage.service.publish(), self._run.stage.vmix
        self._life.until(lambda: pair in self._life.shown(), "the result on the page")
        self._life.until(lambda: any(what.get("Value") == pair[0] for _, what in list(vmix.seen)),
                         "the result in vMix")
        self._results.append((pair[0], time.monotonic(), self._clock.now()))
        self._run.outcome.count("results")

    def _watch_timers(self):
        """The panel counts the seconds since the answer, and sound arrives all the time. Returns what
        was used of a processor meanwhile."""
        begun = Work.of(self._life.program.pid)
        for counted in (2, 4):
            self._life.until(lambda: self._seconds_since_answer() >= counted, "the panel to count seconds")
        now = f"{text('run.stage.sound')}: {text('run.stage.now')}"
        self._life.until(lambda: Panel(self._life).begins(now), "sound to arrive")
        return Work.of(self._life.program.pid).cpu_since(begun)

    def _seconds_since_answer(self):
        begin, _, end = text("run.stage.ago").partition("%1")
        name = Panel(self._life).begins(f"{text('run.stage.answered')}: {begin}") or ""
        seconds = name.removeprefix(f"{text('run.stage.answered')}: {begin}").removesuffix(end)
        return int(seconds) if re.fullmatch(r"-?\d+", seconds) else 0

    def _judge_files(self):
        output, fail = self._run.stage.output, self._run.outcome.fail
        texts, subtitles = judges.transcripts(output)
        wanted = [original for original, _, _ in self._results]
        for name, pairs in (*texts.items(), *subtitles.items()):
            if [original for original, _ in pairs] != wanted:
                fail(f"{name} holds {pairs}")
                return
        (text_file,), (subtitle_file,) = output.glob("*.txt"), output.glob("*.srt")
        stamps = [datetime.datetime.fromisoformat(stamp).replace(tzinfo=datetime.timezone.utc).timestamp()
                  for stamp in _STAMP.findall(text_file.read_text())]
        cues = [int(hours) * _HOUR + int(minutes) * _MINUTE + int(seconds) + int(parts) / 1000
                for hours, minutes, seconds, parts in _CUE.findall(subtitle_file.read_text())]
        for (original, _, wall), stamp in zip(self._results, stamps, strict=True):
            if abs(stamp - wall) > _NEARLY_SECONDS:
                fail(f"{original!r} is stamped {stamp - wall:.1f} s off the clock")
        begun = self._results[0][1] - cues[0]
        for (original, moment, _), cue in zip(self._results, cues, strict=True):
            if abs(cue - (moment - begun)) > _NEARLY_SECONDS:
                fail(f"the cue of {original!r} begins at {cue:.1f} s, not at {moment - begun:.1f} s")
        if any(later <= earlier for earlier, later in zip(cues, cues[1:])):
            fail(f"the times of the cues do not grow: {cues}")
