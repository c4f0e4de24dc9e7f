"""Programs that a test starts and reads: what their tests share."""

import subprocess
import unittest
from typing import Any, Callable, Mapping, Optional, Sequence


class ChildCase(unittest.TestCase):
    def spawn(
        self,
        command: Sequence[str],
        environment: Mapping[str, str],
        before: Optional[Callable[[], Any]] = None,
    ) -> "subprocess.Popen[str]":
        """Runs a program from "/", both its outputs in one pipe; it is ended with the test. `before`
        is called in the child."""
        process = subprocess.Popen(
            command, cwd="/", preexec_fn=before, env=environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            encoding="utf-8",
        )  # fmt: skip
        self.addCleanup(self.end, process)
        return process

    def end(self, process: "subprocess.Popen[str]") -> None:
        """Ends a program that still runs, and forgets it."""
        if process.poll() is None:
            process.kill()
        process.wait()
        assert process.stdout is not None
        process.stdout.close()
