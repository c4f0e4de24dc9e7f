"""Which scenarios there are."""

import functools
import importlib
import pathlib

from .scenario import Scenario

_FOLDER = pathlib.Path(__file__).resolve().parents[1]


@functools.cache
def scenarios():
    """{name: scenario} of every file scenario_*.py, in the order of the files."""
    found = {}
    for file in sorted(_FOLDER.glob("scenario_*.py")):
        for one in vars(importlib.import_module(file.stem)).values():
            if isinstance(one, type) and issubclass(one, Scenario) and one.__module__ == file.stem:
                found[one.name] = one()
    return found
