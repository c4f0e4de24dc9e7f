"""One full journey through the program, from its start to Quit."""

import contextlib

from .judges import descriptor_kinds
from .life import RECOVERY_SECONDS, Ended, Missed
from .stage import SERVER_RESULT

_RESULTS = 2  # Of each run, beside the speech server's.
_CHATBOX_LIMIT = 144


class Journey:
    """Opens panel and settings, changes settings, starts the speech server, and has two runs that are
    alike. A step that does not succeed is noted in `missed`, and the journey goes on with the next."""

    def __init__(self, life):
        self._life = life
        self._stage = life.stage
        self.missed = []         # "step: what", as far as the first half goes ...
        self.missed_late = []    # ... and in the second.
        self.endless = []        # Runs that did not come to their end.
        self.acknowledged = {}   # Changes of settings that the file has shown.
        self.made = {}           # All that were made.
        self.descriptors = None  # At the end of either half, by their kinds: (first, second).
        self.steps = 0
        self.is_at_home = False  # Whether the panel has come up.
        self.is_late = False     # In the second half.

    def travel(self, settle):
        """Up to the moment before Quit. `settle` is asked for the descriptors at equal points."""
        self._step("panel", self._see_panel)
        self._step("start of the server", lambda: self._life.press("Start Backend"))
        self._step("switch", lambda: self._change("showOriginal", False, self._press("Show Original Text")))
        self._step("slider", self._move_slider)
        self._step("settings", self._use_settings)
        self._step("server", lambda: self._life.wait_for("Stop Backend", "push button"))
        self._run()
        first = settle()
        self.is_late = True
        self._life.doubtful_seconds = RECOVERY_SECONDS
        self._step("server again", self._see_server)
        self._step("page again", self._see_page)
        self._run()
        self.descriptors = (first, settle())

    def quit(self, limit):
        """Presses Quit; returns the exit status, or None when the program goes on."""
        try:
            self._life.press("Quit")
        except Missed:
            return None
        except Ended:
            pass
        return self._life.wait_for_end(limit)

    def _step(self, name, act):
        try:
            act()
            self.steps += 1
            return True
        except Missed as missed:
            (self.missed_late if self.is_late else self.missed).append(f"{name}: {missed}")
            return False

    def _see_panel(self):
        self._life.wait_for("Quit", "push button")
        self.is_at_home = True

    def _press(self, name):
        return lambda: self._life.press(name)

    def _change(self, key, value, act):
        """Changes a setting and waits until the file has it."""
        act()
        self.made[key] = value
        self._life.wait_until_stored(key, value)
        self.acknowledged[key] = value

    def _move_slider(self):
        slider = self._life.wait_for("Pause Length", "slider")
        self._change("vadSilenceDuration", 900,
                     lambda: self._stage.accessibility.set_value(slider, 18))

    def _use_settings(self):
        with self._open_settings():
            self._change("overlayBorderEnabled", False, self._press("Show Border"))
            self._change("vrchatPlaySound", True, self._press("Play notification sound"))

    @contextlib.contextmanager
    def _open_settings(self):
        self._life.press("Settings")
        self._life.wait_for("ORV Settings")
        try:
            yield
        finally:
            self._close_settings()

    def _close_settings(self):
        def closed():
            window = self._life.find("ORV Settings")
            if window is not None and self._stage.accessibility.is_active(window):
                self._stage.desktop.key("Escape")
            return window is None

        self._life.until(closed, "the settings to close")

    def _see_server(self):
        """A user who finds the server gone starts it again."""
        if self._life.find("Start Backend", "push button"):
            self._life.press("Start Backend")
        self._life.wait_for("Stop Backend", "push button")

    def _see_page(self):
        """A user who finds the overlay page gone switches it off and on again."""
        if self._life.overlay.text() is None:
            with self._open_settings():
                for value in (False, True):
                    self._change("obsOverlayEnabled", value, self._press("Enable browser overlay"))
        self._life.until(self._life.overlay.text, "the page")

    def _run(self):
        name = "second run" if self.is_late else "first run"
        openings = self._stage.service.openings
        if self._step(name, lambda: self._start_run(openings)):
            for number in range(_RESULTS):
                self._step(f"result {number + 1} of the {name}", self._say)
        if not self._step(f"end of the {name}", self._stop_run):
            self.endless.append(name)

    def _start_run(self, openings):
        before = self._life.shown().count(SERVER_RESULT)
        self._life.press("Start Translation")
        # Not one of an earlier run: it would come later, in the place of another.
        self._life.until(lambda: self._life.shown().count(SERVER_RESULT) > before,
                         "the speech server's result")
        self._life.until(lambda: self._stage.service.openings > openings, "the service's stream")

    def _say(self):
        original, translation = self._stage.service.publish()
        self._life.until(lambda: (original, translation) in self._life.shown(), "the result on the page")
        # How the title with the original fares is told nowhere, so that its loss cannot be judged.
        self._life.until(lambda: any(what.get("Value") == translation for _, what in self._stage.vmix.seen),
                         "the translation in vMix")
        wanted = f"{original}\n{translation}"[:_CHATBOX_LIMIT].encode()[:_CHATBOX_LIMIT - 20]
        self._life.until(lambda: any(wanted in what for _, what in self._stage.chatbox.seen),
                         "the result in the chatbox")

    def _stop_run(self):
        if self._life.find("Stop Translation", "push button"):
            self._life.press("Stop Translation")
        self._life.wait_for("Start Translation", "push button")
        self._life.until(lambda: not self._life.find("Processing last translation..."),
                         "the end of the last words", may_fail=False)

    def kinds(self):
        return descriptor_kinds(self._life.program.pid)
