"""The side that does it: a process with a network of its own that performs jobs, one after the other.

Jobs come as lines of JSON on standard input; an outcome goes back for each on standard output.
"""

import dataclasses
import json
import os
import sys
import time
import traceback

from harness.isolation import isolate
from harness.processes import end_on_signals

from .find import scenarios
from .scenario import Outcome


def work():
    end_on_signals()
    # The library of assistive programs releases answers that a killed program never gave, for which the
    # library of the message bus would end this process.
    os.environ["DBUS_FATAL_WARNINGS"] = "0"
    answers = os.fdopen(os.dup(sys.stdout.fileno()), "w")
    os.dup2(sys.stderr.fileno(), sys.stdout.fileno())  # Whatever else is printed is no answer.
    if reason := isolate():
        print(f"No network of its own for this worker: {reason}", file=sys.stderr)
        sys.exit(1)
    from .stage import Stage  # After that: it looks at the environment.
    with Stage() as stage:
        print("{}", file=answers, flush=True)
        for line in sys.stdin:
            job = json.loads(line)
            print(json.dumps(_perform(stage, job)), file=answers, flush=True)


def _perform(stage, job):
    begun = time.monotonic()
    try:
        outcome = scenarios()[job["scenario"]].perform(stage, job)
    except Exception:  # A defect of ours must not look like a run that went well.
        outcome = Outcome(failures=["the scenario itself failed:\n" + traceback.format_exc()])
    answer = dataclasses.asdict(outcome)
    answer["seconds_of"]["run"] = [time.monotonic() - begun]
    if outcome.failures:
        stage.keep(job["evidence"])
    return answer
