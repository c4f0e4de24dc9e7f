#!/usr/bin/python3
"""Tortures the program; scripts/torture sets everything up for it.

run.py [NAME...] [--long [DURATION]] [--seed NUMBER] [--again JOB]
"""

import argparse
import json
import pathlib
import random
import re
import shlex
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from framework import ROOT  # noqa: E402
from framework.find import scenarios  # noqa: E402
from framework.pool import Pool  # noqa: E402
from framework.table import Tally, measures, table  # noqa: E402
from harness.processes import end_on_signals  # noqa: E402

LEFT_BEHIND = ROOT / "build" / "torture"
_LONGEST_FAILURE = 3000  # Characters, for whoever reads.
_UNITS = {"s": 1, "m": 60, "h": 3600}


def duration(text):
    match = re.fullmatch(r"(\d+)([smh])", text)
    if not match:
        raise argparse.ArgumentTypeError(f"{text!r} is no duration such as 90m")
    return int(match[1]) * _UNITS[match[2]]


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/torture", description="Tortures the program.")
    parser.add_argument("names", nargs="*", metavar="NAME", help="the scenarios; all of them unless named")
    parser.add_argument("--long", nargs="?", type=duration, const=3600, metavar="DURATION",
                        help="how long at least each scenario takes, such as 90m (one hour)")
    parser.add_argument("--seed", type=int, help="of what is left to chance; printed, so that it can be repeated")
    parser.add_argument("--again", type=json.loads, metavar="JOB", help="repeats one run, as its failure says")
    parser.add_argument("--worker", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()
    for name in options.names:
        if name not in scenarios():
            parser.error(f"there is no scenario {name!r}, but {', '.join(scenarios())}")
    return options


class Course:
    """All that one command does."""

    def __init__(self, options):
        self._options = options
        self._seed = options.seed if options.seed is not None else random.SystemRandom().getrandbits(32)
        self._folder = LEFT_BEHIND / f"seed-{self._seed}"
        self._number = 0

    def run(self):
        tallies = []
        print(f"==> Seed {self._seed}", flush=True)
        with Pool(self._folder) as pool:
            if self._options.again:
                return self._repeat(pool, self._options.again)
            for name, scenario in scenarios().items():
                if not self._options.names or name in self._options.names:
                    tallies.append(self._torture(pool, scenario))
        print("\n" + table(tallies) + "\n")
        for line in (line for tally in tallies for line in measures(tally)):
            print("    " + line)
        is_well = all(tally.is_well for tally in tallies)
        if not is_well:
            print(f"error: see above and in {self._folder}; seed {self._seed}", file=sys.stderr)
        return 0 if is_well else 1

    def _torture(self, pool, scenario):
        print(f"==> {scenario.name}: {scenario.checks}", flush=True)
        chance = random.Random(f"{self._seed} {scenario.name}")
        tally, begun = Tally(scenario.name, scenario.checks), time.monotonic()

        def take(job, outcome):
            tally.take(outcome)
            self._tell(job, outcome)

        def ask_all(jobs):
            jobs = [self._complete(scenario, job) for job in jobs]
            outcomes = pool.ask_all(jobs)
            for job, outcome in zip(jobs, outcomes):
                take(job, outcome)
            return outcomes

        scenario.prepare(ask_all, chance)
        long = self._options.long
        scenario.seconds = long or scenario.bounded_seconds
        jobs = (self._complete(scenario, job) for job in scenario.jobs(chance, long is not None))
        pool.work_off(jobs, take, until=begun + scenario.seconds)
        tally.seconds = time.monotonic() - begun
        return tally

    def _complete(self, scenario, job):
        self._number += 1
        return {"scenario": scenario.name, "evidence": str(self._folder / f"{scenario.name}-{self._number}"),
                **job}

    def _repeat(self, pool, job):
        outcome = pool.ask_all([job])[0]
        self._tell(job, outcome)
        print(json.dumps(outcome, indent=2, ensure_ascii=False))
        return 1 if outcome["failures"] else 0

    def _tell(self, job, outcome):
        for note in outcome["notes"]:
            print(f"    note: {note}", flush=True)
        if outcome["failures"]:
            print(f"FAILED: {job['scenario']}, seed {self._seed}, evidence in {job['evidence']}")
            for failure in outcome["failures"]:
                print("    " + failure[:_LONGEST_FAILURE].replace("\n", "\n    "))
            print(f"    again: scripts/torture --again {shlex.quote(json.dumps(job))}", flush=True)


def main():
    options = arguments()
    if options.worker:
        from framework.worker import work
        work()
        return 0
    end_on_signals()
    return Course(options).run()


if __name__ == "__main__":
    sys.exit(main())
