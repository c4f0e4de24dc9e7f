"""What a scenario is, and what one of its runs says."""

import dataclasses
import random


@dataclasses.dataclass
class Outcome:
    """Of one run. Whatever makes the whole thing fail stands in `failures`, in words; the counts of
    what was lost, orphaned and leaked are part of it, for the table."""

    failures: list = dataclasses.field(default_factory=list)
    lost: int = 0         # Acknowledged changes and shown results that are not there any more.
    orphans: int = 0      # Processes that outlived the program.
    descriptors: int = 0  # Descriptors more than there should be.
    counts: dict = dataclasses.field(default_factory=dict)  # What was done and checked: {what: how often}.
    seconds_of: dict = dataclasses.field(default_factory=dict)  # What was measured: {what: [seconds]}.
    notes: list = dataclasses.field(default_factory=list)   # Worth knowing, no failure.
    facts: dict = dataclasses.field(default_factory=dict)   # For the scenario itself.

    def fail(self, what):
        self.failures.append(what)

    def measure(self, what, seconds):
        self.seconds_of.setdefault(what, []).append(seconds)

    def count(self, what, number=1):
        self.counts[what] = self.counts.get(what, 0) + number


class Scenario:
    """One kind of torture. A class of this kind in a file scenario_NAME.py is found by its `name`.

    The side of the command line calls `prepare` once and then takes jobs from `jobs` as long as there
    is time. A job is a dictionary that says everything about one run and goes through JSON, so that it
    can be repeated. The side of a worker performs it."""

    name = ""
    checks = ""        # What is looked at after each run; for the table.
    bounded_seconds = 50.0  # How long a run without --long goes on.
    seconds = 0.0           # How long this one goes on; known when jobs are asked for.

    def prepare(self, ask_all, chance):
        """Whatever has to be known first: `ask_all(jobs)` has them performed side by side and returns
        their outcomes."""

    def jobs(self, chance: random.Random, is_long: bool):
        """Yields jobs. One that has "due" set is done in any case, the others while there is time."""
        raise NotImplementedError

    def perform(self, stage, job) -> Outcome:
        """One run, on a stage that other runs use before and after."""
        raise NotImplementedError
