#!/usr/bin/python3
"""Runs desktop tests, each CTest test in a process and a network of its own.

run.py MODULE.CLASS.METHOD   runs one test
run.py --list                says what there is, a line each, fields parted by "|":
                             name, what to run, whether sanitizers run it too, whether it uses
                             the speech server's port, whether it is in real time, whether it
                             needs a weak network
run.py --can-isolate         succeeds where a process may have a network of its own
run.py --can-weaken          succeeds where it may make a weak one, too
"""

import os
import pathlib
import sys
import unittest

FOLDER = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(FOLDER))

from harness import weak_network  # noqa: E402
from harness.isolation import isolate  # noqa: E402


def tests_of(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from tests_of(test)
        else:
            yield test


def list_tests():
    # CTest names the programs under test; a list needs none.
    for name in ("PROGRAM", "ON_LOOPBACK", "SUBTITLE_STAGE", "INSTALL_BACKEND"):
        os.environ.setdefault(f"ORVANE_{name}", "")
    loader = unittest.TestLoader()
    for file in sorted(FOLDER.glob("test_*.py")):
        for test in tests_of(loader.loadTestsFromName(file.stem)):
            # A module that cannot be imported becomes a test that only raises.
            if type(test).__module__ == "unittest.loader":
                raise RuntimeError(f"{file.name} cannot be loaded: {test}")
            print(line_of(file.stem, type(test), test._testMethodName))


def line_of(module, case, method):
    name = method.removeprefix("test_")
    journeys = getattr(case, "JOURNEYS", ())
    if unknown := [one for one in journeys if not hasattr(case, f"test_{one}")]:
        raise RuntimeError(f"{case.__name__} has no tests {unknown}")
    return "|".join((f"{case.__name__}.{name}", f"{module}.{case.__name__}.{method}",
                     "journey" if name in journeys else "",
                     "port" if getattr(case, "USES_PORT", False) else "",
                     "real-time" if getattr(case, "REAL_TIME", False) else "",
                     "weak network" if getattr(case, "NEEDS_WEAK_NETWORK", False) else ""))


def main():
    if sys.argv[1:] == ["--list"]:
        list_tests()
        return
    reason = isolate()
    if sys.argv[1:] == ["--can-isolate"]:
        sys.exit(1 if reason else 0)
    if sys.argv[1:] == ["--can-weaken"]:
        sys.exit(1 if reason or not weak_network.can_be_had() else 0)
    if reason:
        print(f"No network of its own for this test ({reason}): it uses the machine's, and tests "
              "that need the speech server's port take turns.", file=sys.stderr)
    unittest.main(module=None)


if __name__ == "__main__":
    main()
