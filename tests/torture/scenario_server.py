"""The speech server is killed, stopped, crashes at its start, and obeys nothing."""

import os
import signal
import time

from framework.panel import seen, text
from framework.scenario import Outcome, Scenario
from framework.spoken_run import SpokenRun
from framework.stand_in import LAST_WORD

_EVENTS = ("kill", "stop", "crash", "deaf", "stop and end")
_EVENTS_OF_LONG = 20  # Of one run.
_LONG_RUNS = 10       # At least.


class Server(Scenario):
    name = "server"
    checks = "what the panel says, one press of Continue, results, processes, the port"
    bounded_seconds = 5.0

    def jobs(self, chance, is_long):
        if not is_long:
            for events in (("kill", "kill"), ("stop",), ("crash",), ("deaf",)):
                yield {"events": events, "due": True}
            return
        for _ in range(_LONG_RUNS):
            yield {**self._job(chance), "due": True}
        while True:
            yield self._job(chance)

    @staticmethod
    def _job(chance):
        return {"events": chance.choices(_EVENTS, k=_EVENTS_OF_LONG)}

    def perform(self, stage, job):
        outcome = Outcome()
        with SpokenRun(stage, outcome) as run:
            run.start()
            events = _Events(run)
            for event in job["events"]:
                getattr(events, event.replace(" ", "_"))()
                outcome.count(event)
        return outcome


class _Events:
    """What happens to the server of a run that goes well; afterwards it goes well again."""

    def __init__(self, run):
        self._run = run

    @property
    def _pid(self):
        return self._run.life.until(lambda: self._run.server.pid(self._run.program), "the speech server")

    def kill(self):
        self._end(lambda: os.kill(self._pid, signal.SIGKILL))
        self._continue()

    def stop(self):
        """It is there, and nothing comes from it. That the panel says so takes as long as an answer may."""
        begun = time.monotonic()
        os.kill(self._pid, signal.SIGSTOP)
        try:
            seen(self._run.life, lambda panel: panel.tells("run.trouble.lag") and not panel.listens,
                 "that no answer comes")
            self._run.outcome.measure("until a silent server is told", time.monotonic() - begun)
        finally:
            os.kill(self._pid, signal.SIGCONT)
        self._run.wait_for_results_again()
        self._run.wait_until_well()

    def stop_and_end(self):
        """A process that stands still takes no signal but the last one."""
        os.kill(self._pid, signal.SIGSTOP)
        self._end(lambda: self._run.life.press(text("main.backend.stop")))
        self._continue()

    def crash(self):
        self._run.server.behave("crash")
        self._end(lambda: os.kill(self._pid, signal.SIGKILL))
        self._run.life.press(text("run.continue"))
        seen(self._run.life, lambda panel: _is_gone(panel) and panel.says("run.continue")
             and panel.begins(text("engine.lastwords").replace("%1", LAST_WORD)),
             "that the server did not start, and its last word")
        self._run.server.behave("well")
        self._continue()

    def deaf(self):
        self._run.server.behave("deaf")
        self._end(lambda: os.kill(self._pid, signal.SIGKILL))
        self._continue()
        self._end(lambda: self._run.life.press(text("main.backend.stop")))
        self._continue()  # Again a deaf one, which is there when the program ends, or is killed next.
        self._run.server.behave("well")

    def _end(self, act):
        """Ends the server by `act`. The panel says that it is gone, and that the run is interrupted."""
        before, begun = self._pid, time.monotonic()
        act()
        seen(self._run.life, _is_gone, "that the server is gone")
        self._run.outcome.measure("until a lost server is told", time.monotonic() - begun)
        self._run.life.until(lambda: self._run.server.pid(self._run.program) != before, "the server's end")

    def _continue(self):
        """One press is all that is needed."""
        begun = time.monotonic()
        self._run.life.press(text("run.continue"))
        server = self._pid
        self._run.life.until(lambda: any(pid == server for pid, _ in self._run.results()),
                             "a result of the new server")
        self._run.wait_until_well()
        self._run.outcome.measure("from Continue to a result", time.monotonic() - begun)
        self._run.outcome.count("continued")


def _is_gone(panel):
    return (panel.is_interrupted and panel.says("run.trouble.link") and panel.offers_server
            and not panel.listens and not panel.says("engine.running"))
