"""A program's life on a stage, as its user leads it: everything may fail, and nothing waits for ever."""

import time

from harness.processes import Timeout, wait_until
from harness.program import Overlay, read_settings
from harness.road import SubtitleWatch

# How long a step may take. Only a program that has lost something makes anybody wait so long; a machine
# that does much else makes a step take a while.
STEP_SECONDS = 90.0

# How long a step is waited for that is not to be expected any more, because the program has said that
# something failed; and one that is to succeed all the same, unless it cannot.
DOUBTFUL_SECONDS = 8.0
RECOVERY_SECONDS = 45.0


class Ended(Exception):
    """The program has ended, which nobody asked it to."""


class Missed(Exception):
    """A step did not succeed."""


class Life:
    """From the start of a program to its end. `is_doubtful` says whether the program has complained."""

    def __init__(self, stage, program, is_doubtful=lambda: False):
        self.stage = stage
        self.program = program
        self._is_doubtful = is_doubtful
        self.doubtful_seconds = DOUBTFUL_SECONDS
        self.overlay = Overlay(stage.overlay_port)
        self._watch = SubtitleWatch(self.overlay)

    def close(self):
        self._watch.close()

    def shown(self):
        """The results that the overlay has shown so far, as (source text, translation)."""
        return [(one.original, one.translation) for one in self._watch.seen()]

    def until(self, condition, what, may_fail=True):
        """The first true value of `condition`, which is not waited for as long when trouble was told and
        it may fail for that."""
        begun = time.monotonic()
        while True:
            if value := condition():
                return value
            if self.program.process.poll() is not None:
                raise Ended(what)
            passed = time.monotonic() - begun
            if passed > STEP_SECONDS or (
                    may_fail and passed > self.doubtful_seconds and self._is_doubtful()):
                raise Missed(f"{what} (waited {passed:.0f} s)")
            time.sleep(0.02)

    def find(self, name, role=None):
        return self.stage.accessibility.find(self.program.pid, name, role)

    def wait_for(self, name, role=None):
        return self.until(lambda: self.find(name, role), f"{name!r} on the screen")

    def press(self, name):
        def pressed():
            try:
                self.stage.accessibility.press(self.program.pid, name, limit=0)
            except Timeout:
                return False
            return True

        self.until(pressed, f"the button {name!r}")

    def wait_until_stored(self, key, value):
        """Waits until a change has been acknowledged by the file."""
        self.until(lambda: self.stored().get(key) == value, f"{key} to be stored as {value!r}")

    def stored(self):
        return self.stored_in(self.stage)

    @staticmethod
    def stored_in(stage):
        """What the settings' file holds; nothing while it holds no settings."""
        try:
            return read_settings(stage.desktop)
        except ValueError:
            return {}

    def wait_for_end(self, limit):
        """The exit status, or None when the program goes on."""
        try:
            wait_until(lambda: self.program.process.poll() is not None, "the program's end", limit)
        except Timeout:
            return None
        return self.program.process.returncode
