"""`fetch_model.py` with a stand-in for the package `whisper`."""

import hashlib
import resource
import signal
import subprocess
import sys
import unittest

from tests.fetch_case import HALF, SCRIPT, FetchCase
from tests.model_server import CONTENT, Answer


class FetchModelTest(FetchCase):
    def setUp(self) -> None:
        super().setUp()
        large = self.server.address("large-v3.pt")
        self.offer({"tiny": self.server.address(), "large-v3": large, "large": large})

    def offer(self, models: object) -> None:
        (self.packages / "whisper.py").write_text(f"_MODELS = {models!r}\n")

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
        (self.packages / "whisper.py").unlink()
        self.assertEqual(
            self.run_to_end(),
            (1, ["Whisper ist noch nicht installiert; installieren lässt es sich in den "
                 "Einstellungen unter Whisper"]),
        )  # fmt: skip

    def test_a_package_that_lacks_another_is_told_in_one_line(self) -> None:
        (self.packages / "whisper.py").write_text("import torch_that_nobody_has\n")
        self.assertEqual(
            self.run_to_end(),
            (1, ["Whisper lässt sich nicht laden: torch_that_nobody_has fehlt"]),
        )

    def test_a_model_that_the_package_does_not_have_is_told(self) -> None:
        self.assertEqual(
            self.run_to_end("distil-large-v3"),
            (1, ["Das Modell „distil-large-v3“ gibt es nur für faster-whisper"]),
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
        ended = subprocess.run([sys.executable, "-B", str(SCRIPT)], stdout=subprocess.DEVNULL)
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

    def test_the_second_of_two_at_once_begins_anew_when_the_first_has_removed_its_part(
        self,
    ) -> None:
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
