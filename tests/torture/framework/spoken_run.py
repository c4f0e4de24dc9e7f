"""A life with a stand-in for the speech server and somebody who speaks: results come all the time."""

import contextlib
import time

from harness.program import BACKEND_PORT, port_is_open

from .life import Ended, Life, Missed
from .panel import seen, text
from .remains import end_remains
from .stand_in import StandIn, result_of
from .voice import Voice

# A program that is asked to end has so long, the speech server's three signals and a busy machine included.
_QUIT_SECONDS = 90.0

# The speech server recognises, and a pause ends a chunk soon.
_SETTINGS = {"sttEngine": "whisper", "vadSilenceDuration": 300}


class SpokenRun:
    """A context: the program runs in it, and afterwards it has been asked to quit and was judged by its
    end. What goes wrong is told to `outcome`. `prepare` is called with the home before there is
    anything in it."""

    def __init__(self, stage, outcome, behaviour="well", environment=None, prepare=lambda: None, **settings):
        self.stage = stage
        self.outcome = outcome
        self._behaviour = behaviour
        self._environment = environment or {}
        self._prepare = prepare
        self._settings = settings

    def __enter__(self):
        self.stage.new_home(**{**_SETTINGS, **self._settings})
        self._prepare()
        self.server = StandIn(self.stage)
        self.server.behave(self._behaviour)
        self.voice = Voice(self.stage)
        self.program = self.stage.start_program(**self._environment)
        self.life = Life(self.stage, self.program)
        return self

    def __exit__(self, kind, problem, _):
        """A step that was missed, and an end that nobody asked for, are failures, no exceptions."""
        if is_known := isinstance(problem, (Missed, Ended)):
            says = ([] if isinstance(problem, Ended) else
                    [name for _, name in self.stage.accessibility.names(self.program.pid) if name])
            self.outcome.fail(f"{type(problem).__name__}: {problem}; on screen: {says}")
        self.voice.stop()
        if kind is None or is_known:
            self.quit()
        self.life.close()
        self.end_all()
        if self.outcome.failures:
            self.outcome.fail("its last lines:\n" + self.program.tail(25))
        return is_known

    def quit(self):
        """Asks it to quit unless it has been asked before, and judges how it ends."""
        if self.program.process.poll() is None:
            begun = time.monotonic()
            with contextlib.suppress(Ended, Missed):
                self.life.press(text("main.quit"))
            status = self.life.wait_for_end(_QUIT_SECONDS)
            self.outcome.count("quits")
            self.outcome.measure("quit", time.monotonic() - begun)
        else:
            status = self.program.process.returncode
        if status != 0:
            self.outcome.fail("it did not end on Quit" if status is None else f"its status is {status}")

    def end_all(self):
        """Nothing may outlive it; what does is ended here."""
        if self.program.process.poll() is None:
            self.program.process.kill()
            self.program.process.wait()
        if left := end_remains(self.program, _QUIT_SECONDS):
            self.outcome.orphans += len(left)
            self.outcome.fail(f"it left processes: {left}")
        if port_is_open(BACKEND_PORT):
            self.outcome.fail("the speech server's port is still in use")

    def start(self):
        """The speech server, the run, and the first result."""
        self.life.press(text("main.backend.start"))
        self.life.wait_for(text("main.backend.stop"), "push button")
        self.life.press(text("main.start"))
        self.voice.speak()
        self.wait_for_result(0)
        self.wait_until_well()

    def results(self):
        """(pid of the server, number) of all that the page has shown so far."""
        return [found for original, _ in self.life.shown() if (found := result_of(original))]

    def wait_for_result(self, before):
        """One more than the first `before`."""
        self.life.until(lambda: len(self.results()) > before, "a result on the page")
        self.outcome.count("results")
        return self.results()[before]

    def wait_for_results_again(self):
        """What was on its way is over with the second one: sound arrives, and its result comes."""
        before = len(self.results())
        self.wait_for_result(before)
        self.wait_for_result(before + 1)

    def wait_until_well(self):
        return seen(self.life, lambda panel: panel.is_well, "that it listens")
