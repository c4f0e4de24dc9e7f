"""The network goes and comes back while page, vMix, chatbox and speech server are in use; names are asked
for and nobody answers."""

import contextlib
import functools
import time

from framework.network import no_network
from framework.panel import Panel, seen
from framework.scenario import Outcome, Scenario
from framework.spoken_run import SpokenRun

from harness.name_server import SilentNameServer

_CYCLES = 2           # Of a bounded run ...
_CYCLES_OF_LONG = 15  # ... and of a long one.
_LONG_RUNS = 8        # At least.

_ENDS = ("here", "gone", "back")  # How the network is when the program is asked to quit.
_LONGEST_WAIT = 3.0               # From that to the question.

_SILENT_HOST = "studio.example"


class Network(Scenario):
    name = "network"
    checks = "results in page, vMix and chatbox after each return, what is said, Quit at any moment"
    bounded_seconds = 5.0

    def jobs(self, chance, is_long):
        if not is_long:
            yield {"what": "goes", "cycles": _CYCLES, "end": "gone", "wait": 0.0, "due": True}
            yield {"what": "goes", "cycles": 1, "end": "back", "wait": 0.0, "due": True}
            yield {"what": "names", "wait": 0.5, "due": True}
            return
        for _ in range(_LONG_RUNS):
            yield {**self._job(chance), "due": True}
        while True:
            yield self._job(chance)

    @staticmethod
    def _job(chance):
        return {"what": chance.choice(("goes", "goes", "goes", "names")), "cycles": _CYCLES_OF_LONG,
                "end": chance.choice(_ENDS), "wait": chance.uniform(0.0, _LONGEST_WAIT)}

    def perform(self, stage, job):
        outcome = Outcome()
        if job["what"] == "goes":
            self._let_it_go(stage, job, outcome)
        else:
            self._ask_for_names(stage, job, outcome)
        return outcome

    @staticmethod
    def _let_it_go(stage, job, outcome):
        # A connection that the program has given up, it may open again by itself.
        with SpokenRun(stage, outcome, continueAfterInterruption=True) as run:
            run.start()
            for number in range(job["cycles"]):
                with no_network():
                    _wait_while_gone(run, is_long=number % 2 == 0)
                begun = time.monotonic()
                _arrives_everywhere(run, outcome)
                run.wait_until_well()
                outcome.measure("from the return to results everywhere", time.monotonic() - begun)
                outcome.count("returns")
            with no_network() if job["end"] == "gone" else contextlib.nullcontext():
                if job["end"] == "back":
                    with no_network():
                        _wait_while_gone(run, is_long=False)
                _wait(job["wait"])
                run.quit()
            outcome.count(f"quits while {job['end']}")

    @staticmethod
    def _ask_for_names(stage, job, outcome):
        names = _name_server(stage)
        with SpokenRun(stage, outcome, vmixHost=_SILENT_HOST) as run:
            run.start()
            run.life.until(lambda: _SILENT_HOST in names.asked(), "a question for a name")
            run.wait_for_results_again()
            run.wait_until_well()
            _wait(job["wait"])
            run.quit()
        outcome.count("quits while nobody knows names")


@functools.cache
def _name_server(stage):
    """It stays: nothing else in the torture goes by a name that it would be asked for."""
    return SilentNameServer(stage.desktop.folder)


def _wait_while_gone(run, is_long):
    """As long as it takes to be noticed, or only until somebody has missed the network."""
    if is_long:
        seen(run.life, _says_that_nothing_comes, "that nothing comes")
    else:
        run.life.until(lambda: run.life.overlay.text() is None, "the page to be out of reach")
        if not Panel(run.life).says("main.stop"):
            run.outcome.fail("the run has ended with the network")


def _says_that_nothing_comes(panel):
    return not panel.listens and (panel.is_interrupted or panel.tells("run.trouble.lag"))


def _arrives_everywhere(run, outcome):
    """The second result that the page shows from now on was said after now; it is elsewhere, too."""
    vmix, chatbox = run.stage.vmix, run.stage.chatbox
    run.wait_for_results_again()
    pid, number = run.results()[-1]
    newer = [f"Chunk {later} of server {pid}" for later in range(number, number + 100)]
    run.life.until(lambda: any(what.get("Value") in newer for _, what in list(vmix.seen)), "a result in vMix")
    run.life.until(lambda: any(one.encode() in what for _, what in list(chatbox.seen) for one in newer),
                   "a result in the chatbox")
    outcome.count("results everywhere")


def _wait(seconds):
    """A moment that is left to chance; nothing is expected of it."""
    time.sleep(seconds)
