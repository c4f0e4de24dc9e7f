"""A run lasts and lasts, and a result comes now and then."""

import statistics
import time

from framework.health import Work, judge_growth, usage
from framework.life import Ended, Life, Missed
from framework.panel import text
from framework.scenario import Outcome, Scenario

from harness.processes import Timeout, wait_until
from harness.scripted_backend import ScriptedBackend, result

# Between two results, and from the first one to the figures that all later ones are compared with. A
# bounded run is too short to judge memory.
_EACH_SECONDS = 10.0
_FIRST_SECONDS = 60.0
_EACH_SECONDS_OF_BOUNDED = 2.0
_FIRST_SECONDS_OF_BOUNDED = 6.0
_GROWTH_KIB = 1024

_TOLD_EACH_SECONDS = 600.0  # In the worker's log.
_POLL_SECONDS = 0.005
_QUIT_SECONDS = 90.0


class Soak(Scenario):
    name = "soak"
    checks = "memory, descriptors, threads, context switches, the delay of results"
    bounded_seconds = 20.0

    def jobs(self, chance, is_long):
        yield {"seconds": self.seconds, "is_long": is_long, "due": True}

    def perform(self, stage, job):
        outcome = Outcome()
        stage.new_home(sttEngine="whisper")
        stage.vmix.seen.clear()
        stage.chatbox.seen.clear()
        server = ScriptedBackend(stage.desktop)
        program = stage.start_program()
        life = Life(stage, program)
        life.close()  # Nobody else is to ask for the page.
        try:
            _Soak(life, server, outcome, job).go()
            life.press(text("main.quit"))
            if (status := life.wait_for_end(_QUIT_SECONDS)) != 0:
                outcome.fail(f"its end: {status}")
        except (Missed, Ended) as problem:
            outcome.fail(f"{type(problem).__name__}: {problem}\n{program.tail(25)}")
        finally:
            if program.process.poll() is None:
                program.process.kill()
            program.process.wait()
            server.stop()
        return outcome


class _Soak:
    def __init__(self, life, server, outcome, job):
        self._life = life
        self._server = server
        self._outcome = outcome
        self._seconds = job["seconds"]
        self._is_long = job["is_long"]
        self._each = _EACH_SECONDS if self._is_long else _EACH_SECONDS_OF_BOUNDED
        self._first = _FIRST_SECONDS if self._is_long else _FIRST_SECONDS_OF_BOUNDED
        self._delays = []
        self._number = 0

    def go(self):
        self._life.press(text("main.backend.start"))
        self._life.wait_for(text("main.backend.stop"), "push button")
        self._life.press(text("main.start"))
        self._life.until(self._server.has_client, "the run")
        begun = time.monotonic()
        self._last(begun + self._first)
        first, work, first_delays = self._usage(), self._work(), len(self._delays)
        self._tell("after the first minute" if self._is_long else "at first", first, self._delays)
        told, now = time.monotonic(), first
        while time.monotonic() < begun + self._seconds:
            self._last(min(begun + self._seconds, told + _TOLD_EACH_SECONDS))
            told, now = time.monotonic(), self._usage()
            print(f"soak, after {told - begun:.0f} s: {now}", flush=True)
        done = self._work()
        self._tell("at the end", now, self._delays[first_delays:],
                   f"; in between {done.switches_since(work):.1f} context switches a second, "
                   f"{100 * done.cpu_since(work):.2f} % of a processor")
        judge_growth(self._outcome, first, now, _GROWTH_KIB if self._is_long else None)

    def _last(self, until):
        """A result now and then until that moment, and at least one."""
        while True:
            self._say()
            if time.monotonic() + self._each > until:
                return
            time.sleep(self._each)

    def _usage(self):
        return usage(self._life.program.pid)

    def _work(self):
        return Work.of(self._life.program.pid)

    def _say(self):
        self._number += 1
        original = f"Result {self._number}"
        begun = self._server.publish(result(original, f"Resultado {self._number}"))

        def shown():
            return (self._life.overlay.text() or {}).get("original") == original

        try:
            wait_until(shown, f"{original!r} on the page", interval=_POLL_SECONDS)
        except Timeout as timeout:
            raise Missed(str(timeout)) from None
        self._delays.append(time.monotonic() - begun)
        self._outcome.count("results")

    def _tell(self, when, figures, delays, more=""):
        line = (f"{when}: {figures}; delay to the page {1000 * statistics.median(delays):.0f} ms (median of "
                f"{len(delays)}), {1000 * max(delays):.0f} ms at most{more}")
        print("soak, " + line, flush=True)
        self._outcome.notes.append(line)
