"""`fetch_model.py` as the program runs it: a process, in a home of its own, with the packages that a test
puts there."""

import os
import subprocess
import sys
import tempfile
from pathlib import Path
from typing import Any, Callable, Optional

from tests.child_case import ChildCase
from tests.model_server import CONTENT, ModelServer

SCRIPT = Path(__file__).resolve().parent.parent / "fetch_model.py"
# The first length that is half of it.
HALF = (len(CONTENT) + 1) // 2

# Of this machine's user, and not of the test.
_CACHES = ("XDG_CACHE_HOME", "HF_HOME", "HF_HUB_CACHE", "HUGGINGFACE_HUB_CACHE", "HF_HUB_OFFLINE")


class FetchCase(ChildCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="home with blanks ")
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name)
        self.packages = self.home / "packages"
        self.packages.mkdir()
        self.cache = self.home / ".cache" / "whisper"
        self.server = ModelServer()
        self.enterContext(self.server)

    def start(
        self, model: str = "tiny", before: Optional[Callable[[], Any]] = None, **environment: str
    ) -> "subprocess.Popen[str]":
        variables = {name: value for name, value in os.environ.items() if name not in _CACHES}
        return self.spawn(
            [sys.executable, "-B", str(SCRIPT), model],
            {**variables, "HOME": str(self.home), "PYTHONPATH": str(self.packages),
             "LC_ALL": "C", **environment},
            before,
        )  # fmt: skip

    def run_to_end(self, *arguments: Any, **wishes: Any) -> tuple[int, list[str]]:
        """The exit status, and what was printed besides percentages."""
        process = self.start(*arguments, **wishes)
        return self.rest_of(process)

    def rest_of(self, process: "subprocess.Popen[str]") -> tuple[int, list[str]]:
        assert process.stdout is not None
        lines = process.stdout.read().splitlines()
        return process.wait(), [line for line in lines if not line.startswith("progress ")]

    def read_until(self, process: "subprocess.Popen[str]", start: str) -> None:
        assert process.stdout is not None
        for line in process.stdout:
            if line.startswith(start):
                return
        self.fail(f"no line {start!r}")
