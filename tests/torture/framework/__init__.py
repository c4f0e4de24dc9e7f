"""Repeated torture of the whole program: what all scenarios share.

A scenario says what is done to the program and what must hold afterwards (`scenario.py`). Workers, each
with a desktop, sound server, network and homes of its own, do it side by side (`pool.py`, `worker.py`,
`stage.py`); the command line draws the sum (`table.py`). Built on the desktop tests' harness.
"""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
DESKTOP_TESTS = ROOT / "tests" / "desktop"
sys.path.insert(0, str(DESKTOP_TESTS))
