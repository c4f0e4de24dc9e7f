"""Disks that are full or read-only for a while, one for each folder that the program writes to."""

import contextlib

from framework import judges
from framework.disks import Disk
from framework.life import Life
from framework.panel import text
from framework.scenario import Outcome, Scenario
from framework.spoken_run import SpokenRun

_FOLDERS = ("settings", "output", "support", "runtime")
_WAYS = ("full", "read_only")
_ROUNDS_OF_LONG = 5  # Of one life: so often the trouble comes and goes.

_RESULTS_UNTIL_FULL = 200  # More than there is room for in a block.

_SETTING = "Show Original Text"
_KEY = "showOriginal"
_WRITER = "❌ DirectEngineTranscriptWriter: "
_SETTINGS_REFUSED = "❌ Einstellungen nicht gespeichert"
_SETTINGS_TAKEN = "✅ Einstellungen wieder gespeichert"
_LOG_REFUSED = "❌ Backend-Protokoll nicht geschrieben"


class DiskTrouble(Scenario):
    name = "disk"
    checks = "one line each, nothing lost, all written once there is room, the end"
    bounded_seconds = 10.0

    def jobs(self, chance, is_long):
        for folder in _FOLDERS:
            for way in _WAYS:
                yield {**self._job(folder, way, is_long), "due": True}
        while is_long:
            yield self._job(chance.choice(_FOLDERS), chance.choice(_WAYS), is_long)

    @staticmethod
    def _job(folder, way, is_long):
        return {"folder": folder, "way": way, "rounds": _ROUNDS_OF_LONG if is_long else 1, "patient": is_long}

    def perform(self, stage, job):
        outcome = Outcome()
        with contextlib.ExitStack() as context:
            _Trouble(stage, job, outcome, context).go()
        return outcome


class _Trouble:
    def __init__(self, stage, job, outcome, context):
        self._stage = stage
        self._job = job
        self._outcome = outcome
        self._context = context
        self._shown = []  # Results that the page has shown while their transcript could take them ...
        self._told = []   # ... and those of which a line had said that it could not.
        self._stored = True

    @property
    def _folder(self):
        return {"settings": self._stage.desktop.home / ".config" / "orvane", "output": self._stage.output,
                "support": self._stage.support, "runtime": self._stage.runtime}[self._job["folder"]]

    def _make_disk(self):
        """The settings that the home came with go onto it."""
        kept = {file.name: file.read_bytes() for file in self._folder.glob("*")}
        self._disk = self._context.enter_context(Disk(self._folder))
        for name, content in kept.items():
            (self._folder / name).write_bytes(content)

    def _trouble(self):
        self._outcome.count(f"{self._job['folder']} {self._job['way'].replace('_', '-')}")
        return getattr(self._disk, self._job["way"])()

    def go(self):
        # A disk that refuses from the start is all that a folder for the session can have: nothing is
        # written there later.
        at_start = contextlib.ExitStack()
        with at_start, SpokenRun(self._stage, self._outcome, behaviour="talks", prepare=lambda: (
                self._make_disk(),
                self._job["folder"] == "runtime" and at_start.enter_context(self._trouble())),
                **self._stage.service.settings) as self._run:
            self._life = self._run.life
            self._life.press(text("main.backend.start"))
            self._life.wait_for(text("main.backend.stop"), "push button")
            if self._job["way"] == "full":
                self._start_run()
            for _ in range(self._job["rounds"]):
                self._have_trouble()
            self._run.quit()
            self._judge()

    def _have_trouble(self):
        with self._trouble() if self._job["folder"] != "runtime" else contextlib.nullcontext():
            self._marks = len(self._run.program.lines())
            self._live_in_trouble()
        self._live_on()

    def _live_in_trouble(self):
        """Settings change, results come, the server talks; whatever is refused is told, in one line."""
        if self._job["way"] == "read_only":
            self._start_run()
        takes_transcripts = self._job["folder"] not in ("output", "support")
        for _ in range(2):
            self._change()
            self._say(takes_transcripts)
        lines = {"settings": [_SETTINGS_REFUSED], "support": [_LOG_REFUSED, _WRITER], "output": [_WRITER],
                 "runtime": []}[self._job["folder"]]
        for line in lines:
            self._life.until(lambda: self._news(line), f"the line {line!r}")
        for line in (_SETTINGS_REFUSED, _LOG_REFUSED):
            self._expect_lines(line, 1 if line in lines else 0)
        # Each file of a transcript has its own line; of one that cannot even be made there is one. A file
        # may have room in its last block for a while.
        files = 0 if takes_transcripts else 2 if self._job["way"] == "full" else 1
        while len(self._news(_WRITER)) < files and len(self._told) < _RESULTS_UNTIL_FULL:
            self._say(takes_transcripts)
        self._life.until(lambda: len(self._news(_WRITER)) >= files, "the lines")
        self._expect_lines(_WRITER, files)
        if self._job["folder"] != "settings":
            self._life.wait_until_stored(_KEY, self._stored)
        if self._job["way"] == "read_only":
            self._stop_run()

    def _live_on(self):
        """There is room again."""
        if self._job["way"] == "read_only":
            self._start_run()
        self._say(takes_transcripts=True)
        if not self._job["patient"]:
            self._change()  # Brings what has waited, too, and need not wait until the disk is tried again.
        self._life.wait_until_stored(_KEY, self._stored)
        if self._job["folder"] == "settings":
            self._life.until(lambda: self._news(_SETTINGS_TAKEN), "the line that the settings are stored again")
        self._expect_lines(_SETTINGS_TAKEN, 1 if self._job["folder"] == "settings" else 0)
        said = self._run.server.spoken()
        self._life.until(lambda: self._lines_in_log()[-1:] >= [said], "what the server said")
        if self._job["way"] == "read_only":
            self._stop_run()

    # What is done.

    def _start_run(self):
        openings = self._stage.service.openings
        self._life.press(text("main.start"))
        self._life.until(lambda: self._stage.service.openings > openings, "the service's stream")

    def _stop_run(self):
        self._life.press(text("main.stop"))
        self._life.wait_for(text("main.start"), "push button")
        self._life.until(lambda: not self._life.find(text("main.stopping")), "the end of the last words")

    def _change(self):
        self._life.press(_SETTING)
        self._stored = not self._stored
        self._outcome.count("changes")

    def _say(self, takes_transcripts):
        pair = self._stage.service.publish()
        self._life.until(lambda: pair in self._life.shown(), "the result on the page")
        (self._shown if takes_transcripts else self._told).append(pair)
        self._outcome.count("results")

    # What must hold.

    def _news(self, begin):
        return [line for line in self._run.program.lines()[self._marks:] if line.startswith(begin)]

    def _expect_lines(self, begin, count):
        if len(found := self._news(begin)) != count:
            self._outcome.fail(f"{len(found)} lines instead of {count}: {begin!r}: {found}")

    def _lines_in_log(self):
        """The numbers of the server's lines, in their order."""
        log = self._stage.support / "backend.log"
        return self._run.server.lines_in(log.read_text()) if log.exists() else []

    def _judge(self):
        if Life.stored_in(self._stage).get(_KEY) != self._stored:
            self._outcome.lost += 1
            self._outcome.fail("the last change is lost")
        lines = self._lines_in_log()
        if lines != list(range(1, len(lines) + 1)):
            gaps = [number for number in range(1, max(lines, default=0) + 1) if number not in set(lines)]
            self._outcome.lost += len(gaps)
            self._outcome.fail(f"the server's log lacks lines or has them twice: {gaps or lines}")
        self._outcome.count("lines of the log", len(lines))
        try:
            texts, subtitles = judges.transcripts(self._stage.output)
        except judges.Torn as torn:
            self._outcome.fail(f"a transcript is torn: {torn}")
            return
        for kind, runs in (("transcripts", texts), ("subtitles", subtitles)):
            # What a line has said to be left out may be there: of two files one may have had room.
            pairs = judges.together(runs)
            if left_out := [pair for pair in self._shown if pair not in pairs]:
                self._outcome.lost += len(left_out)
                self._outcome.fail(f"shown, but not in the {kind}: {left_out}")
        self._outcome.count("results left out as told", len(self._told))
