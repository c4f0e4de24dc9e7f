"""Programs that end with the one that runs them, however that ends."""

import os
import select
import signal
import subprocess
import sys
import unittest
from pathlib import Path
from typing import Iterator

from orvane_backend.packages.children import Child, bytes_below

_BACKEND = Path(__file__).resolve().parent.parent
_LIMIT_SECONDS = 60.0
# Says that it runs, with a child of its own, and stays. Without a redirection tail notices that nobody
# reads its output any more.
_STUBBORN = "echo $PPID $$; exec tail -f /dev/null >/dev/null"
_STAYS = ["sh", "-c", f"(trap '' TERM; exec sh -c '{_STUBBORN}') & wait"]
_PARENT = """
import sys
from orvane_backend.packages.children import Child, end_on_signals
end_on_signals()
stays = "import os, signal; print(os.getpid(), flush=True); signal.pause()"
with Child([sys.executable, "-c", stays]) as child:
    for line in child.lines(lambda: None):
        print(line, flush=True)
"""


class ChildTest(unittest.TestCase):
    def nothing(self) -> None:
        pass

    def first_line(self, lines: Iterator[str]) -> list[int]:
        return [os.pidfd_open(int(number)) for number in next(lines).split()]

    def assert_ended(self, descriptors: list[int]) -> None:
        """A process descriptor can be read from when the process has ended."""
        for descriptor in descriptors:
            ended, _, _ = select.select([descriptor], [], [], _LIMIT_SECONDS)
            os.close(descriptor)
            self.assertTrue(ended)

    def test_whoever_goes_leaves_nothing_running(self) -> None:
        with self.assertRaises(KeyboardInterrupt):
            with Child(_STAYS) as child:
                running = self.first_line(child.lines(self.nothing))
                raise KeyboardInterrupt
        self.assert_ended(running)

    def test_one_that_does_not_want_to_end_is_killed(self) -> None:
        stubborn = ["sh", "-c", "trap '' TERM; echo $$; while :; do tail -f /dev/null; done"]
        with Child(stubborn) as child:
            running = self.first_line(child.lines(self.nothing))
        self.assertEqual(child.ended(), -signal.SIGKILL)
        self.assert_ended(running)

    def test_it_ends_with_a_parent_that_is_killed_or_ended(self) -> None:
        for number in (signal.SIGKILL, signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with subprocess.Popen(
                [sys.executable, "-B", "-c", _PARENT], cwd=_BACKEND, stdout=subprocess.PIPE,
                stderr=subprocess.DEVNULL, encoding="utf-8",
            ) as parent:  # fmt: skip
                assert parent.stdout is not None
                running = self.first_line(iter(parent.stdout))
                parent.send_signal(number)
                self.assert_ended(running)

    def test_lines_end_at_returns_too_and_the_last_needs_none(self) -> None:
        looks = []
        with Child(["printf", "one\\rtwo\\n\\nfo\\303\\274r"]) as child:
            lines = list(child.lines(lambda: looks.append(1)))
            self.assertEqual(child.ended(), 0)
        self.assertEqual(lines, ["one", "two", "", "foür"])
        self.assertTrue(looks)

    def test_when_time_is_up_it_is_ended(self) -> None:
        with Child(["tail", "-f", "/dev/null"]) as child:
            self.assertEqual(list(child.lines(self.nothing, 0.0)), [])
            self.assertEqual(child.ended(), -signal.SIGTERM)

    def test_what_is_in_a_folder_is_counted(self) -> None:
        self.assertGreater(bytes_below(_BACKEND / "orvane_backend" / "packages"), 10_000)
        self.assertEqual(bytes_below(_BACKEND / "not there"), 0)


if __name__ == "__main__":
    unittest.main()
