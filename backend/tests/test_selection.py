"""Which recogniser serves a configuration."""

import unittest
from typing import Any
from unittest import mock

from orvane_backend.protocol import Config
from orvane_backend.recognisers import selection, whisper_models
from orvane_backend.recognisers.faster_whisper import FasterWhisperRecogniser
from orvane_backend.recognisers.whisper import WhisperRecogniser
from orvane_backend.recognisers.whisper_models import FASTER, OPENAI, Installed


class SelectionTest(unittest.TestCase):
    def setUp(self) -> None:
        self.packages: list[str] = []
        self.models: dict[str, list[str]] = {}
        for name, stand_in in (
            ("is_installed", lambda package: package in self.packages),
            ("installed_models", self.installed),
        ):
            patch = mock.patch.object(whisper_models, name, stand_in)
            patch.start()
            self.addCleanup(patch.stop)

    def installed(self, package: str) -> list[Installed]:
        return [Installed(package, name, mock.Mock()) for name in self.models.get(package, [])]

    def keys(self, **wishes: Any) -> list[object]:
        return [candidate.key[0] for candidate in selection.candidates(Config(**wishes))]

    def test_the_engine_asked_for_comes_first_and_the_builtin_one_last(self) -> None:
        self.assertEqual(self.keys(), ["whisper", "pocketsphinx"])
        self.assertEqual(self.keys(sttEngine="vosk"), ["vosk", "whisper", "pocketsphinx"])
        self.assertEqual(
            self.keys(sttEngine="google_grpc"), ["google_grpc", "whisper", "pocketsphinx"]
        )
        self.assertEqual(self.keys(sttEngine="pocketsphinx"), ["pocketsphinx"])

    def test_engines_of_the_client_and_unknown_ones_fall_back(self) -> None:
        for engine in (*selection.DIRECT_ENGINES, "nonsense"):
            self.assertEqual(self.keys(sttEngine=engine), ["whisper", "pocketsphinx"])
            self.assertIn(engine, str(selection.foreign_engine(Config(sttEngine=engine))))
        for engine in ("whisper", "vosk", "google_grpc", "pocketsphinx"):
            self.assertFalse(selection.foreign_engine(Config(sttEngine=engine)))
        self.assertTrue(selection.is_served_elsewhere(Config(sttEngine="azure")))
        self.assertFalse(selection.is_served_elsewhere(Config(sttEngine="whisper")))

    def test_models_and_servers_are_told_apart(self) -> None:
        def key(**wishes: Any) -> object:
            return selection.candidates(Config(**wishes))[0].key

        self.assertNotEqual(key(whisperModel="tiny"), key(whisperModel="base"))
        self.assertNotEqual(
            key(sttEngine="vosk", enginePort=1), key(sttEngine="vosk", enginePort=2)
        )
        self.assertNotEqual(
            key(sttEngine="google_grpc", engineLocation="eu"),
            key(sttEngine="google_grpc", engineLocation="us"),
        )

    def test_only_packages_that_are_there_are_asked(self) -> None:
        self.packages = [FASTER]
        self.assertEqual(self.keys(), ["faster_whisper", "pocketsphinx"])
        self.packages = [OPENAI]
        self.assertEqual(self.keys(), ["whisper", "pocketsphinx"])

    def test_the_faster_package_is_preferred_with_the_same_model(self) -> None:
        self.packages = [OPENAI, FASTER]
        for models in ({}, {FASTER: ["base"], OPENAI: ["base"]}, {FASTER: ["base"]}):
            self.models = models
            self.assertEqual(self.keys(), ["faster_whisper", "whisper", "pocketsphinx"])

    def test_a_nearer_model_counts_more_than_the_package(self) -> None:
        self.packages = [FASTER, OPENAI]
        self.models = {FASTER: ["tiny"], OPENAI: ["base"]}
        self.assertEqual(self.keys(), ["whisper", "faster_whisper", "pocketsphinx"])
        self.assertEqual(self.keys(whisperModel="nonsense")[0], "faster_whisper")

    def test_candidates_make_what_their_keys_say(self) -> None:
        self.packages = [FASTER, OPENAI]
        faster, whisper, _ = (one.create() for one in selection.candidates(Config()))
        self.assertIsInstance(faster, FasterWhisperRecogniser)
        self.assertIsInstance(whisper, WhisperRecogniser)


if __name__ == "__main__":
    unittest.main()
