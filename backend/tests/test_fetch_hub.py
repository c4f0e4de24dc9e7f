"""`fetch_model.py` where `faster-whisper` is the package that would serve."""

import hashlib
import json
import shutil
import signal
import unittest
from pathlib import Path
from typing import Any
from unittest import mock

from orvane_backend.recognisers import whisper_models as models
from orvane_backend.recognisers.whisper_models import FASTER
from tests.fetch_case import HALF, FetchCase
from tests.model_server import CONTENT, Answer

_PACKAGE = Path(__file__).with_name("hub_package.py")
_DIGEST = hashlib.sha256(CONTENT).hexdigest()


class FetchHubTest(FetchCase):
    def setUp(self) -> None:
        super().setUp()
        shutil.copy(_PACKAGE, self.packages / "faster_whisper.py")
        self.calls = self.home / "calls"
        self.hub = self.home / ".cache" / "huggingface" / "hub"
        self.project = self.hub / "models--Systran--faster-whisper-tiny"
        self.blob = self.project / "blobs" / _DIGEST
        self.told: dict[str, Any] = {
            "address": self.server.address(), "digest": _DIGEST, "size": len(CONTENT),
            "leave_out": [], "calls": str(self.calls),
        }  # fmt: skip

    def start(self, *arguments: Any, **wishes: Any) -> Any:
        return super().start(*arguments, TEST_HUB=json.dumps(self.told), **wishes)

    def called(self) -> list[str]:
        return self.calls.read_text().split() if self.calls.exists() else []

    def installed(self) -> list[str]:
        """What the server would find."""
        cache = {"XDG_CACHE_HOME": str(self.home / ".cache")}
        with mock.patch.dict("os.environ", cache):
            return [one.model for one in models.installed_models(FASTER)]

    def test_a_model_comes_through_the_package_and_is_told_in_percentages(self) -> None:
        process = self.start()
        assert process.stdout is not None
        lines = process.stdout.read().splitlines()
        self.assertEqual(process.wait(), 0, lines)
        told = [int(line.split()[1]) for line in lines if line.startswith("progress ")]
        self.assertEqual(told, sorted(told))
        self.assertEqual(told[-1], 100)
        self.assertEqual([one for one in lines if one[:9] != "progress "], ["note all is well"])
        self.assertEqual(self.blob.read_bytes(), CONTENT)
        self.assertEqual((self.installed(), self.called()), (["tiny"], ["tiny"]))

    def test_one_that_is_there_is_checked_and_nothing_asked_for(self) -> None:
        self.run_to_end()
        self.assertEqual(self.run_to_end(), (0, []))
        self.assertEqual(self.called(), ["tiny"])
        self.assertEqual(len(self.server.requests), 1)

    def test_an_alias_reaches_the_package_by_its_full_name(self) -> None:
        self.told["raises"] = "enough"
        for alias, name in (("large", "large-v3"), ("turbo", "large-v3-turbo")):
            self.run_to_end(alias)
            self.assertEqual(self.called()[-1], name)

    def test_one_that_is_broken_off_counts_as_missing_and_is_gone_on_with(self) -> None:
        begins: list[Any] = [None]
        for number in (signal.SIGTERM, signal.SIGKILL):
            self.server.answers.append(Answer(sends=HALF if begins == [None] else 1000, holds=True))
            process = self.start()
            self.read_until(process, "progress 50")
            process.send_signal(number)
            self.assertEqual(process.wait(), -number)
            self.assertEqual(self.installed(), [])
            there = self.blob.with_name(self.blob.name + ".incomplete").stat().st_size
            begins.append(f"bytes={there}-")
        self.assertEqual(self.run_to_end()[0], 0)
        self.assertEqual(self.installed(), ["tiny"])
        self.assertEqual(self.blob.read_bytes(), CONTENT)
        self.assertEqual(self.server.ranges(), begins)

    def test_a_lost_connection_is_the_reason_and_the_rest_comes_next_time(self) -> None:
        self.server.answers.append(Answer(sends=HALF))
        status, lines = self.run_to_end()
        self.assertEqual(status, 1)
        self.assertEqual(lines[-1], "Das Modell „tiny“ kommt nicht: connection broken")
        self.assertEqual(self.installed(), [])
        self.assertEqual(self.run_to_end()[0], 0)
        self.assertEqual(self.server.ranges(), [None, f"bytes={HALF}-"])

    def test_a_model_without_one_of_its_files_is_not_whole(self) -> None:
        for name in ("config.json", "tokenizer.json", "vocabulary.txt"):
            shutil.rmtree(self.project, ignore_errors=True)
            self.told["leave_out"] = [name]
            status, lines = self.run_to_end()
            self.assertEqual(
                (status, lines[-1][:40]), (1, "Das Modell „tiny“ ist noch nicht vollstä")
            )
            self.assertEqual(self.installed(), [])

    def test_damaged_weights_are_removed_and_fetched_anew(self) -> None:
        self.run_to_end()
        self.blob.write_bytes(CONTENT[:-1] + b"x")
        status, lines = self.run_to_end()
        self.assertEqual((status, lines[0]), (0, "note tiny ist beschädigt und wird gelöscht"))
        self.assertEqual(self.blob.read_bytes(), CONTENT)
        self.assertEqual(self.called(), ["tiny", "tiny"])

    def test_weights_that_come_damaged_do_not_stay(self) -> None:
        self.server.answers.append(Answer(content=CONTENT[:-1] + b"x"))
        self.assertEqual(self.run_to_end()[0], 1)
        self.assertEqual(self.installed(), [])
        self.assertEqual(self.run_to_end()[0], 0)

    def test_others_at_once_wait_and_find_the_model(self) -> None:
        # Whoever asks meanwhile is refused.
        self.server.answers += [Answer(sends=HALF, holds=True), Answer(refusal=500)]
        first = self.start()
        self.read_until(first, "progress 50")
        others = [self.start(), self.start()]
        for other in others:
            self.read_until(other, "note tiny wird schon geladen")
        del self.server.answers[:]
        first.kill()
        first.wait()
        for other in others:
            self.assertEqual(self.rest_of(other)[0], 0)
        self.assertEqual(self.installed(), ["tiny"])
        self.assertEqual(self.called(), ["tiny", "tiny"])
        self.assertEqual(self.server.ranges(), [None, f"bytes={HALF}-"])

    def test_a_disk_without_room_is_told_before_anything_comes(self) -> None:
        # As Python sets itself up: with a disk that is full.
        full = "import shutil\nfrom types import SimpleNamespace\n"
        full += "shutil.disk_usage = lambda _: SimpleNamespace(free=1_000_000)\n"
        (self.packages / "sitecustomize.py").write_text(full)
        status, lines = self.run_to_end()
        self.assertEqual((status, len(lines)), (1, 1))
        self.assertTrue(lines[0].startswith("Kein Platz auf dem Datenträger: Es kommen etwa 1"))
        self.assertEqual(self.called(), [])

    def test_the_cache_may_be_elsewhere(self) -> None:
        for number, variable in enumerate(("HF_HUB_CACHE", "HF_HOME", "XDG_CACHE_HOME")):
            place = self.home / f"place {number}"
            self.assertEqual(self.run_to_end(**{variable: str(place)})[0], 0)
            self.assertEqual(len(list(place.rglob("model.bin"))), 1)

    def test_a_package_that_cannot_be_loaded_leaves_it_to_the_other_one(self) -> None:
        (self.packages / "faster_whisper.py").write_text("import nothing_of_this_name\n")
        status, lines = self.run_to_end()
        self.assertEqual(
            (status, lines), (1, ["Whisper lässt sich nicht laden: nothing_of_this_name fehlt"])
        )
        tiny = {"tiny": self.server.address()}
        (self.packages / "whisper.py").write_text(f"_MODELS = {tiny!r}\n")
        status, lines = self.run_to_end()
        self.assertEqual((status, len(lines)), (0, 1))
        self.assertEqual((self.cache / "tiny.pt").read_bytes(), CONTENT)

    def test_the_other_package_serves_where_it_has_the_model(self) -> None:
        tiny = {"tiny": self.server.address()}
        (self.packages / "whisper.py").write_text(f"_MODELS = {tiny!r}\n")
        self.cache.mkdir(parents=True)
        (self.cache / "tiny.pt").write_bytes(CONTENT)
        self.assertEqual(self.run_to_end(), (0, []))
        self.assertEqual((self.called(), self.server.requests), ([], []))


if __name__ == "__main__":
    unittest.main()
