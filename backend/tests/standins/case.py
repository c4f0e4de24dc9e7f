"""What tests with a stand-in package begin with."""

import os
import tempfile
import unittest
from pathlib import Path
from typing import Any, Callable
from unittest.mock import patch

from . import added

import standin_notes


class StandInCase(unittest.TestCase):
    """With the packages of one folder, a cache of its own, and nothing noted yet."""

    folder = ""

    def setUp(self) -> None:
        cache = tempfile.TemporaryDirectory()
        self.addCleanup(cache.cleanup)
        self.cache = Path(cache.name)
        context = patch.dict(os.environ, XDG_CACHE_HOME=cache.name)
        context.start()
        self.addCleanup(context.stop)
        # Both are of this machine's user, and not of the test.
        for name in ("HF_HOME", "HF_HUB_CACHE", "HF_HUB_OFFLINE"):
            os.environ.pop(name, None)
        packages = added(self.folder)
        packages.__enter__()
        self.addCleanup(packages.__exit__, None, None, None)
        standin_notes.forget()

    def refuses(self, kind: type[BaseException], text: str, act: Callable[[], Any]) -> None:
        with self.assertRaises(kind) as raised:
            act()
        self.assertIn(text, str(raised.exception))
