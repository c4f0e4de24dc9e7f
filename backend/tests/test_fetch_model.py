"""`fetch_model.py` as the program runs it: a process, with a stand-in for the package `whisper`."""

import hashlib
import os
import resource
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any, Callable, Optional

from tests.model_server import CONTENT, Answer, ModelServer

_SCRIPT = Path(__file__).resolve().parent.parent / "fetch_model.py"
# The first length that is half of it.
HALF = (len(CONTENT) + 1) // 2


class FetchModelTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="home with blanks ")
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name)
        self.packages = self.home / "packages"
        self.packages.mkdir()
        self.cache = self.home / ".cache" / "whisper"
        self.server = ModelServer()
        self.enterContext(self.server)
        large = self.server.address("large-v3.pt")
        self.offer({"tiny": self.server.address(), "large-v3": large, "large": large})

    def offer(self, models: object) -> None:
        (self.packages / "whisper.py").write_text(f"_MODELS = {models!r}\n")

    def start(
        self, model: str = "tiny", before: Optional[Callable[[], Any]] = None, **environment: str
    ) -> "subprocess.Popen[str]":
        variables = {name: value for name, value in os.environ.items() if name != "XDG_CACHE_HOME"}
        process = subprocess.Popen(
            [sys.executable, "-B", str(_SCRIPT), model], cwd="/", preexec_fn=before,
            env={**variables, "HOME": str(self.home), "PYTHONPATH": str(self.packages),
                 "LC_ALL": "C", **environment},
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            encoding="utf-8",
        )  # fmt: skip
        self.addCleanup(self.end, process)
        return process

    def end(self, process: "subprocess.Popen[str]") -> None:
        if process.poll() is None:
            process.kill()
        process.wait()
        assert process.stdout is not None
        process.stdout.close()

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

    def names(self) -> list[str]:
        return sorted(path.name for path in self.cache.iterdir())

    def test_a_model_comes_from_where_the_package_says(self) -> None:
        self.assertEqual(self.run_to_end(), (0, []))
        self.assertEqual((self.cache / "tiny.pt").read_bytes(), CONTENT)
        self.assertEqual(self.names(), ["tiny.pt"])

    def test_an_alias_comes_under_the_name_of_its_file(self) -> None:
        self.assertEqual(self.run_to_end("large"), (0, []))
        self.assertEqual(self.names(), ["large-v3.pt"])

    def test_the_cache_may_be_elsewhere(self) -> None:
        self.cache = self.home / "other" / "whisper"
        self.assertEqual(self.run_to_end(XDG_CACHE_HOME=str(self.home / "other"))[0], 0)
        self.assertEqual(self.names(), ["tiny.pt"])

    def test_an_empty_choice_of_the_cache_is_none(self) -> None:
        self.assertEqual(self.run_to_end(XDG_CACHE_HOME="")[0], 0)
        self.assertEqual(self.names(), ["tiny.pt"])

    def test_without_the_package_one_line_says_so(self) -> None:
        (self.packages / "whisper.py").write_text("import torch_that_nobody_has\n")
        status, lines = self.run_to_end()
        self.assertEqual(status, 1)
        self.assertEqual(
            lines, ["Whisper ist nicht installiert (No module named 'torch_that_nobody_has')"]
        )

    def test_a_package_that_fails_is_told_in_one_line(self) -> None:
        (self.packages / "whisper.py").write_text("raise RuntimeError('no such instruction')\n")
        self.assertEqual(
            self.run_to_end(), (1, ["Whisper lässt sich nicht laden: no such instruction"])
        )

    def test_a_package_that_names_no_usable_address_is_left_to_itself(self) -> None:
        digest = hashlib.sha256(CONTENT).hexdigest()
        for models in (
            {}, None, {"tiny": 1}, {"tiny": "http://127.0.0.1/tiny.pt"},
            {"tiny": f"file:///{digest}/tiny.pt"}, {"tiny": f"http://h/{digest}/..%2Ftiny.pt"},
            {"tiny": f"http://h/{digest}/.pt"}, {"tiny": f"http://h/{digest[1:]}/tiny.pt"},
        ):  # fmt: skip
            with self.subTest(models):
                self.offer(models)
                status, lines = self.run_to_end()
                self.assertEqual((status, len(lines)), (0, 1))
                self.assertTrue(lines[0].startswith("note tiny: "), lines)
                self.assertFalse(self.cache.exists())

    def test_without_a_model_nothing_is_done(self) -> None:
        ended = subprocess.run([sys.executable, "-B", str(_SCRIPT)], stdout=subprocess.DEVNULL)
        self.assertEqual(ended.returncode, 2)

    def test_a_disk_that_takes_no_more_is_told_in_one_line(self) -> None:
        limit = HALF

        def restrict() -> None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

        status, lines = self.run_to_end(before=restrict)
        self.assertEqual((status, len(lines)), (1, 1), lines)
        self.assertIn(str(self.cache / "tiny.pt.part"), lines[0])
        self.assertEqual((self.cache / "tiny.pt.part").stat().st_size, limit)
        self.assertEqual(self.run_to_end(), (0, []))
        self.assertEqual(self.server.ranges(), [None, f"bytes={limit}-"])

    def test_one_that_is_killed_or_ended_leaves_its_part_to_the_next(self) -> None:
        for number, model in ((signal.SIGKILL, "tiny"), (signal.SIGTERM, "large")):
            self.server.requests.clear()
            self.server.release.clear()
            self.server.answers.append(Answer(sends=HALF, holds=True))
            process = self.start(model)
            self.read_until(process, "progress 50")
            process.send_signal(number)
            self.assertEqual(process.wait(), -number)
            self.server.release.set()
            self.assertEqual(self.run_to_end(model), (0, []))
            self.assertEqual(self.server.ranges(), [None, f"bytes={HALF}-"])
        self.assertEqual(self.names(), ["large-v3.pt", "tiny.pt"])

    def test_the_second_of_two_at_once_waits_and_finds_the_model(self) -> None:
        self.server.answers.append(Answer(sends=HALF, holds=True))
        first = self.start()
        self.read_until(first, "progress 50")
        second = self.start()
        self.read_until(second, "note tiny.pt wird schon geladen")
        # The first one loses its connection now, and goes on by itself.
        self.server.release.set()
        # Its pause is a second; nothing here depends on how long it takes.
        status, lines = self.rest_of(first)
        self.assertEqual((status, len(lines)), (0, 1), lines)
        self.assertEqual(self.rest_of(second), (0, []))
        self.assertEqual(self.names(), ["tiny.pt"])
        self.assertEqual((self.cache / "tiny.pt").read_bytes(), CONTENT)
        self.assertEqual(self.server.ranges(), [None, f"bytes={HALF}-"])

    def test_the_second_of_two_at_once_begins_anew_when_the_first_has_removed_its_part(self) -> None:
        damaged = Answer(content=CONTENT[:-1] + b"x")
        self.server.answers += [Answer(sends=HALF, holds=True), damaged]
        first = self.start()
        self.read_until(first, "progress 50")
        second = self.start()
        self.read_until(second, "note tiny.pt wird schon geladen")
        self.server.release.set()
        self.assertEqual(self.rest_of(first)[0], 1)
        self.assertEqual(self.rest_of(second), (0, []))
        self.assertEqual((self.cache / "tiny.pt").read_bytes(), CONTENT)
        self.assertEqual(self.server.ranges(), [None, f"bytes={HALF}-", None])

    def test_the_second_of_two_at_once_goes_on_when_the_first_is_killed(self) -> None:
        self.server.answers.append(Answer(sends=HALF, holds=True))
        first = self.start()
        self.read_until(first, "progress 50")
        second = self.start()
        self.read_until(second, "note tiny.pt wird schon geladen")
        first.kill()
        first.wait()
        self.assertEqual(self.rest_of(second), (0, []))
        self.assertEqual((self.cache / "tiny.pt").read_bytes(), CONTENT)
        self.assertEqual(self.server.ranges(), [None, f"bytes={HALF}-"])


if __name__ == "__main__":
    unittest.main()
