"""`manage_whisper.py` as the program runs it: a process, with the packages that a test puts there."""

import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any

from tests import standins

_SCRIPT = Path(__file__).resolve().parent.parent / "manage_whisper.py"
_HUB = ("HF_HOME", "HF_HUB_CACHE", "HUGGINGFACE_HUB_CACHE")


class CommandCase(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="häuslich und leer ")
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name)
        self.cache = self.home / ".cache"
        self.hub = self.cache / "huggingface" / "hub"

    def start(
        self, *arguments: str, packages: tuple[str, ...] = (), path: str = "", **more: str
    ) -> "subprocess.Popen[str]":
        usual = {name: value for name, value in os.environ.items() if name not in _HUB}
        return subprocess.Popen(
            [sys.executable, "-B", str(_SCRIPT), *arguments], cwd="/",
            env={**usual, "HOME": str(self.home), "XDG_CACHE_HOME": str(self.cache),
                 "PYTHONPATH": path or standins.python_path(*packages), "LC_ALL": "C", **more},
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            encoding="utf-8",
        )  # fmt: skip

    def lines(self, *arguments: str, **wishes: Any) -> tuple[int, list[str]]:
        with self.start(*arguments, **wishes) as process:
            assert process.stdout is not None
            told = process.stdout.read().splitlines()
        return process.returncode, told


class StatusTest(CommandCase):
    def status(self, *arguments: str, **wishes: Any) -> dict[str, Any]:
        status, lines = self.lines("status", *arguments, **wishes)
        self.assertEqual((status, len(lines)), (0, 1), lines)
        told: dict[str, Any] = json.loads(lines[0])
        return told

    def model(self, told: dict[str, Any], name: str) -> dict[str, Any]:
        return next(one for one in told["models"] if one["model"] == name)

    def put_faster(self, model: str, leave_out: str = "") -> Path:
        base = self.hub / f"models--Systran--faster-whisper-{model}"
        snapshot, blobs = base / "snapshots" / "1", base / "blobs"
        snapshot.mkdir(parents=True)
        blobs.mkdir()
        for name in ("config.json", "model.bin", "tokenizer.json", "vocabulary.txt"):
            part = ".incomplete" if name == leave_out else ""
            (blobs / f"{name}{part}").write_bytes(b"x" * 5000)
            if name != leave_out:
                (snapshot / name).symlink_to(f"../../blobs/{name}")
        return base

    def put_openai(self, model: str, content: bytes = b"") -> Path:
        path = self.cache / "whisper" / f"{model}.pt"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content or b"stand-in model " + model.encode())
        return path

    def test_a_model_is_deleted_with_what_was_begun(self) -> None:
        kept = [self.put_faster("tiny"), self.put_openai("tiny"), self.put_openai("base.en")]
        gone = [
            self.put_faster("base", leave_out="vocabulary.txt"), self.put_openai("base"),
            self.put_openai("base").with_name("base.pt.part"),
        ]  # fmt: skip
        gone[2].write_bytes(b"begun")
        self.assertEqual(self.lines("delete", "base"), (0, []))
        self.assertEqual([path.exists() for path in gone], [False] * 3)
        self.assertEqual([path.exists() for path in kept], [True] * 3)
        self.assertEqual(self.lines("delete", "base"), (0, []), "nothing is left to delete")

    def test_large_is_deleted_in_each_of_its_versions(self) -> None:
        turbo = self.put_faster("large-v3-turbo")
        gone = [
            self.put_faster("large-v2"),
            self.put_faster("large-v3"),
            self.put_openai("large-v1"),
        ]
        self.assertEqual(self.lines("delete", "large"), (0, []))
        self.assertEqual([path.exists() for path in gone], [False] * 3)
        self.assertTrue(turbo.exists())

    def test_nothing_but_models_is_deleted(self) -> None:
        other = self.put_openai("../other")
        status, told = self.lines("delete", "../other")
        self.assertEqual((status, len(told)), (2, 1))
        self.assertTrue(other.exists())

    def test_what_cannot_be_deleted_is_told(self) -> None:
        folder = self.cache / "whisper" / "base.pt"
        folder.mkdir(parents=True)
        status, told = self.lines("delete", "base")
        self.assertEqual(status, 1)
        self.assertIn("base.pt", told[-1])

    def test_without_a_package_nothing_is_offered_but_the_packages(self) -> None:
        told = self.status("--model", "base")
        self.assertEqual(set(told), {"packages", "serves", "models", "used"})
        self.assertEqual(
            [
                (one["package"], one["state"], one["version"], one["why"])
                for one in told["packages"]
            ],
            [("faster-whisper", "missing", None, None), ("openai-whisper", "missing", None, None)],
        )
        self.assertTrue(all(one["download_bytes"] > 1e8 for one in told["packages"]))
        self.assertIsNone(told["serves"])
        self.assertEqual({one["can_fetch"] for one in told["models"]}, {False})
        self.assertEqual({one["state"] for one in told["models"]}, {"missing"})
        self.assertIsNone(told["used"]["model"])
        self.assertEqual(told["used"]["why"]["code"], "recognition.not_installed")
        self.assertEqual(told["used"]["why"]["message"], "Whisper ist nicht installiert")

    def test_models_without_a_package_are_of_no_use(self) -> None:
        self.put_faster("tiny")
        self.put_openai("base", b"anything")
        told = self.status()
        for name, package in (("tiny", "faster-whisper"), ("base", "openai-whisper")):
            one = self.model(told, name)
            self.assertEqual((one["state"], one["can_fetch"]), ("unusable", False))
            self.assertEqual(one["why"]["parameters"], {"engine": package})
        self.assertIsNone(told["used"])

    def test_every_model_that_both_packages_know_is_told_with_its_size(self) -> None:
        told = self.status(packages=("faster_whisper",))
        names = [one["model"] for one in told["models"]]
        sizes = ("tiny", "base", "small", "medium")
        self.assertEqual(
            sorted(names),
            sorted([*sizes, *(f"{size}.en" for size in sizes), "large-v1", "large-v2",
                    "large-v3", "large-v3-turbo"]),
        )  # fmt: skip
        for one in told["models"]:
            self.assertEqual(one["english_only"], one["model"].endswith(".en"))
            self.assertGreater(one["size"], 70_000_000)
            self.assertEqual((one["state"], one["can_fetch"]), ("missing", True))
        self.assertEqual(self.model(told, "small")["size"], 484_000_000)

    def test_what_there_is_for_faster_whisper(self) -> None:
        self.put_faster("tiny")
        self.put_faster("base", leave_out="model.bin")
        told = self.status("--model", "base", packages=("faster_whisper",))
        self.assertEqual(told["serves"], "faster-whisper")
        tiny, base = self.model(told, "tiny"), self.model(told, "base")
        self.assertEqual(
            (tiny["state"], tiny["bytes"], tiny["package"]), ("there", 20_000, "faster-whisper")
        )
        self.assertEqual((base["state"], base["bytes"]), ("partial", 20_000))
        used = told["used"]
        self.assertEqual((used["wanted"], used["model"]), ("base", "tiny"))
        self.assertEqual(used["why"]["code"], "recognition.model_replaced")

    def test_what_there_is_for_openai_whisper(self) -> None:
        self.put_openai("tiny")
        self.put_openai("small", b"damaged")
        self.put_openai("medium").rename(self.cache / "whisper" / "medium.pt.part")
        told = self.status("--model", "tiny", packages=("openai_whisper",))
        self.assertEqual(told["serves"], "openai-whisper")
        found = [
            (one["model"], one["state"], one["bytes"])
            for one in told["models"]
            if one["state"] != "missing"
        ]
        self.assertEqual(
            found, [("tiny", "there", 19), ("small", "unusable", 7), ("medium", "partial", 21)]
        )
        self.assertEqual(self.model(told, "small")["why"]["code"], "recognition.model_damaged")
        self.assertEqual(
            told["used"],
            {"wanted": "tiny", "model": "tiny", "package": "openai-whisper", "why": None},
        )

    def test_of_two_packages_the_better_one_serves_and_the_nearest_model(self) -> None:
        both = ("faster_whisper", "openai_whisper")
        self.put_faster("tiny")
        self.put_openai("tiny")
        self.put_openai("base")
        told = self.status("--model", "base", packages=both)
        self.assertEqual(told["serves"], "faster-whisper")
        self.assertEqual(self.model(told, "tiny")["package"], "faster-whisper")
        self.assertEqual(
            (told["used"]["model"], told["used"]["package"]), ("base", "openai-whisper")
        )

    def test_a_wish_that_is_no_model_or_has_none_is_told(self) -> None:
        for wanted, code in (("giant", "model_unknown"), ("base", "model_missing")):
            told = self.status("--model", wanted, packages=("faster_whisper",))
            self.assertIsNone(told["used"]["model"])
            self.assertEqual(told["used"]["why"]["code"], f"recognition.{code}")

    def test_a_package_that_does_not_work_is_told_and_serves_nothing(self) -> None:
        (self.home / "faster_whisper").mkdir()
        init = self.home / "faster_whisper" / "__init__.py"
        for source, reason in (
            ("raise OSError('no such library')", "No module named 'ctranslate2'"),
            ("import os\nos.abort()", "Signal 6"),
        ):
            init.write_text(source + "\n")
            if "abort" in source:
                (self.home / "ctranslate2.py").write_text("")
            told = self.status(path=str(self.home))
            package = told["packages"][0]
            self.assertEqual((package["state"], told["serves"]), ("unusable", None))
            self.assertIn(reason, package["why"]["parameters"]["reason"])

    def test_the_version_is_the_one_that_is_installed(self) -> None:
        info = self.home / "faster_whisper-9.8.dist-info"
        info.mkdir()
        (info / "METADATA").write_text(
            "Metadata-Version: 2.1\nName: faster-whisper\nVersion: 9.8\n"
        )
        told = self.status(path=f"{standins.python_path('faster_whisper')}:{self.home}")
        self.assertEqual(
            (told["packages"][0]["state"], told["packages"][0]["version"]), ("there", "9.8")
        )

    def test_wrong_wishes_are_told(self) -> None:
        for arguments in ((), ("delete",), ("status", "base"), ("colour",)):
            status, lines = self.lines(*arguments)
            self.assertEqual((status, lines[0][:7]), (2, "Usage: "))


if __name__ == "__main__":
    unittest.main()
