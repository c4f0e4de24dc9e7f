"""The sound server is killed and comes back, again and again, while a run listens to the microphone."""

import time

from framework.health import judge_growth, usage
from framework.panel import seen
from framework.scenario import Outcome, Scenario
from framework.spoken_run import SpokenRun

_KILLS = 2            # Of a bounded run ...
_KILLS_OF_LONG = 25   # ... and of a long one.
_LONG_RUNS = 4        # At least.

# How often the sound server has come back before what the program uses counts as usual. Memory is judged
# only over many returns: the first ones fill caches.
_USUAL_AFTER = 1
_USUAL_AFTER_OF_LONG = 5
_GROWTH_KIB = 1024


class Sound(Scenario):
    name = "sound"
    checks = "what is said, sound and results after each return, descriptors, threads, memory"
    bounded_seconds = 5.0

    def jobs(self, chance, is_long):
        runs = _LONG_RUNS if is_long else 2
        for number in range(runs):
            yield {"due": True, **self._job(number, is_long)}
        while is_long:
            runs += 1
            yield self._job(runs, is_long)

    @staticmethod
    def _job(number, is_long):
        return {"continues": number % 2 == 0, "kills": _KILLS_OF_LONG if is_long else _KILLS,
                "usual": _USUAL_AFTER_OF_LONG if is_long else _USUAL_AFTER, "memory": is_long}

    def perform(self, stage, job):
        outcome = Outcome()
        with SpokenRun(stage, outcome, continueAfterInterruption=job["continues"]) as run:
            run.start()
            self._torture(run, job)
        return outcome

    @staticmethod
    def _torture(run, job):
        sound, outcome, usual, now = run.stage.sound, run.outcome, None, None
        for number in range(job["kills"]):
            sound.kill()
            try:
                seen(run.life, _says_why, "what is wrong with the sound")
            finally:
                sound.start()
            begun = time.monotonic()
            run.voice.speak()
            run.wait_for_results_again()
            run.wait_until_well()
            outcome.measure("from the return to the second result", time.monotonic() - begun)
            outcome.count("kills")
            now = usage(run.program.pid)
            if number + 1 == job["usual"]:
                usual = now
        outcome.notes.append(f"after {job['usual']} kills: {usual}; after {job['kills']}: {now}")
        judge_growth(outcome, usual, now, _GROWTH_KIB if job["memory"] else None)


def _says_why(panel):
    return (panel.is_interrupted and panel.says("run.trouble.service") and not panel.listens
            and panel.says("main.stop"))
