"""Whisper's models and languages: names, places on the disk, and what replaces what."""

import hashlib
import os
import sys
import tempfile
import unittest
from pathlib import Path
from types import ModuleType
from unittest import mock

from orvane_backend.recognisers import whisper_models as models
from orvane_backend.recognisers.whisper_languages import language_refusal, whisper_code
from orvane_backend.recognisers.whisper_models import FASTER, OPENAI
from tests import standins  # its folder of shared modules is on the path from here on

import standin_languages

_ = standins


class LanguageTest(unittest.TestCase):
    def test_every_language_of_whisper_is_known_to_its_newest_models(self) -> None:
        for code in standin_languages.LANGUAGES:
            self.assertEqual(whisper_code(code, "large-v3"), code)
            self.assertEqual(whisper_code(code, "large-v3-turbo"), code)

    def test_cantonese_is_known_to_no_older_model(self) -> None:
        for model in ("tiny", "base", "small", "medium", "large-v1", "large-v2"):
            known = {code for code in standin_languages.LANGUAGES if whisper_code(code, model)}
            self.assertEqual(set(standin_languages.LANGUAGES) - known, {"yue"})

    def test_models_of_english_alone_know_nothing_else(self) -> None:
        for model in ("base.en", "distil-large-v3", "distil-small.en"):
            self.assertEqual(whisper_code("en-GB", model), "en")
            self.assertIsNone(whisper_code("de", model))

    def test_other_spellings_and_regions_give_whispers_own_code(self) -> None:
        for asked, code in (
            ("jv", "jw"), ("nb-NO", "no"), ("nn", "nn"), ("iw", "he"), ("fil-PH", "tl"),
            ("pt-BR", "pt"), ("EN_us", "en"), ("cmn-Hans-CN", "zh"),
        ):  # fmt: skip
            self.assertEqual(whisper_code(asked, "base"), code)

    def test_what_a_model_lacks_is_refused_with_a_notice(self) -> None:
        for code, model in (
            ("ga", "large-v3"),
            ("yue", "medium"),
            ("de", "small.en"),
            ("xx", "base"),
        ):
            refused = language_refusal(code, model, "Whisper")
            assert refused is not None
            self.assertEqual(refused.code, "recognition.language_unknown")
            self.assertEqual(dict(refused.parameters), {"engine": "Whisper", "language": code})
        for code, model in (("auto", "base"), ("auto", "base.en"), ("yue", "large-v3")):
            self.assertIsNone(language_refusal(code, model, "Whisper"))


class NameTest(unittest.TestCase):
    def test_names_are_made_full(self) -> None:
        for name, full in (("large", "large-v3"), ("turbo", "large-v3-turbo"), ("base", "base")):
            self.assertEqual(models.full_name(name), full)
        self.assertIsNone(models.full_name("giant"))

    def test_only_models_that_are_no_larger_and_know_as_much_replace_one(self) -> None:
        self.assertEqual(models.replacements("tiny"), ["tiny"])
        self.assertEqual(models.replacements("small"), ["small", "base", "tiny"])
        self.assertEqual(
            models.replacements("large-v3"),
            [
                "large-v3",
                "large-v2",
                "large-v1",
                "large-v3-turbo",
                "medium",
                "small",
                "base",
                "tiny",
            ],
        )

    def test_english_alone_is_replaced_by_english_first(self) -> None:
        order = models.replacements("small.en")
        self.assertEqual(order[:3], ["small.en", "small", "distil-small.en"])
        self.assertLess(order.index("base.en"), order.index("base"))


class DiskTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.cache = Path(folder.name)
        patch = mock.patch.dict(os.environ, {"XDG_CACHE_HOME": folder.name})
        patch.start()
        self.addCleanup(patch.stop)
        for name in ("HF_HOME", "HF_HUB_CACHE", "HUGGINGFACE_HUB_CACHE"):
            os.environ.pop(name, None)

    def snapshot(
        self, project: str, *missing: str, name: str = "abc", hub: str = "huggingface/hub"
    ) -> Path:
        folder = self.cache / hub / f"models--{project.replace('/', '--')}/snapshots/{name}"
        folder.mkdir(parents=True)
        for file in (
            "config.json", "model.bin", "tokenizer.json", "vocabulary.txt",
            "preprocessor_config.json",
        ):  # fmt: skip
            if file not in missing:
                (folder / file).write_text("{}")
        return folder

    def found(self, package: str = FASTER) -> dict[str, Path]:
        return {one.model: one.path for one in models.installed_models(package)}

    def file(self, name: str, content: bytes = b"a model") -> Path:
        path = self.cache / "whisper" / name
        path.parent.mkdir(exist_ok=True)
        path.write_bytes(content)
        return path

    def test_nothing_is_there_at_first(self) -> None:
        self.assertEqual((self.found(), self.found(OPENAI)), ({}, {}))

    def test_models_of_the_hub_are_found_by_their_projects(self) -> None:
        expected = {
            "base": self.snapshot("Systran/faster-whisper-base"),
            "small.en": self.snapshot("Systran/faster-whisper-small.en"),
            "large-v3": self.snapshot("Systran/faster-whisper-large-v3"),
            "distil-large-v2": self.snapshot("Systran/faster-distil-whisper-large-v2"),
            "distil-large-v3.5": self.snapshot("distil-whisper/distil-large-v3.5-ct2"),
            "large-v3-turbo": self.snapshot("dropbox-dash/faster-whisper-large-v3-turbo"),
        }
        self.assertEqual(self.found(), expected)

    def test_a_snapshot_that_lacks_a_file_is_no_model(self) -> None:
        for number, file in enumerate(
            ("config.json", "model.bin", "tokenizer.json", "vocabulary.txt")
        ):
            self.snapshot("Systran/faster-whisper-base", file, name=str(number))
        folder = self.snapshot("Systran/faster-whisper-tiny")
        (folder / "model.bin").write_bytes(b"")
        (self.snapshot("Systran/faster-whisper-small") / "model.bin").unlink()
        self.assertEqual(self.found(), {})

    def test_a_link_into_nothing_is_no_file(self) -> None:
        folder = self.snapshot("Systran/faster-whisper-base", "model.bin")
        (folder / "model.bin").symlink_to("../../blobs/123")
        self.assertEqual(self.found(), {})

    def test_models_with_more_bands_need_the_settings_that_say_so(self) -> None:
        self.snapshot("Systran/faster-whisper-large-v3", "preprocessor_config.json")
        base = self.snapshot("Systran/faster-whisper-base", "preprocessor_config.json")
        self.assertEqual(self.found(), {"base": base})

    def test_the_current_snapshot_comes_before_others_that_are_whole(self) -> None:
        self.snapshot("Systran/faster-whisper-base", name="a")
        current = self.snapshot("Systran/faster-whisper-base", name="b")
        reference = current.parent.parent / "refs" / "main"
        reference.parent.mkdir()
        reference.write_text("b")
        self.assertEqual(self.found(), {"base": current})
        (current / "model.bin").unlink()
        self.assertEqual(self.found()["base"].name, "a")

    def test_the_hub_is_where_the_environment_says(self) -> None:
        for number, (name, below) in enumerate(
            (("HF_HOME", "hub"), ("HUGGINGFACE_HUB_CACHE", ""), ("HF_HUB_CACHE", ""))
        ):
            place = self.cache / str(number)
            with mock.patch.dict(os.environ, {name: str(place)}):
                self.assertEqual(self.found(), {})
                folder = self.snapshot("Systran/faster-whisper-base", hub=f"{number}/{below}")
                self.assertEqual(self.found(), {"base": folder})

    def test_files_beside_which_a_part_is_are_no_models(self) -> None:
        whole = self.file("base.pt")
        self.file("tiny.pt")
        self.file("tiny.pt.part")
        self.file("small.pt.part")
        self.file("distil-large-v3.pt")
        turbo = self.file("large-v3-turbo.pt")
        self.assertEqual(self.found(OPENAI), {"base": whole, "large-v3-turbo": turbo})

    def test_the_status_tells_whole_models_from_damaged_ones(self) -> None:
        package = ModuleType("whisper")
        digest = hashlib.sha256(b"a model").hexdigest()
        package._MODELS = {  # type: ignore[attr-defined]
            name: f"https://models.invalid/{digest}/{name}.pt" for name in ("tiny", "small")
        }
        self.file("tiny.pt")
        self.file("small.pt", b"a mod")
        self.snapshot("Systran/faster-whisper-tiny")
        with mock.patch.dict(sys.modules, {"whisper": package}):
            with mock.patch.object(models, "is_installed", lambda name: name == OPENAI):
                told = models.status("small")
                self.assertEqual(models.status("giant").used, None)
        self.assertEqual(told.packages, (OPENAI,))
        self.assertEqual([one.model for one in told.models], ["tiny"])
        self.assertEqual([one.model for one in told.damaged], ["small"])
        assert told.used is not None
        self.assertEqual((told.used.package, told.used.model), (OPENAI, "tiny"))

    def test_the_status_prefers_the_faster_package_for_the_same_model(self) -> None:
        self.snapshot("Systran/faster-whisper-base")
        self.file("base.pt")
        with mock.patch.object(models, "is_installed", lambda name: True):
            with mock.patch.object(models, "model_file", lambda name: None):
                used = models.status("small").used
        assert used is not None
        self.assertEqual((used.package, used.model), (FASTER, "base"))

    def test_packages_are_looked_for_without_being_imported(self) -> None:
        with standins.added("faster_whisper"):
            self.assertEqual(models.installed_packages(), (FASTER,))
            self.assertNotIn("faster_whisper", sys.modules)
        with standins.added("openai_whisper"):
            self.assertEqual(models.installed_packages(), (OPENAI,))
        self.assertEqual(models.installed_packages(), ())


if __name__ == "__main__":
    unittest.main()
