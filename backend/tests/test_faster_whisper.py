"""Whisper through faster-whisper, in front of a stand-in of the package."""

import unittest
from pathlib import Path
from unittest import mock

import numpy as np

from orvane_backend.recognisers import Utterance, faster_whisper
from orvane_backend.recognisers.faster_whisper import FasterWhisperRecogniser
from tests.whisper_case import SPEECH, WhisperCase, WhisperTests

import standin_notes
import standin_voice as voice


class FasterWhisperTest(WhisperTests, WhisperCase):
    folder = "faster_whisper"
    engine = FasterWhisperRecogniser
    event = "faster_whisper.transcribe"

    def install(self, model: str) -> Path:
        import faster_whisper

        try:
            folder: Path = faster_whisper.standin_install(model)
        except FileExistsError:
            return self.cache
        # The newest models have it; the others' do no harm.
        (folder / "preprocessor_config.json").write_text("{}")
        return folder

    def threads(self) -> int:
        return int(standin_notes.noted("faster_whisper.load")[-1]["threads"])

    def test_words_have_places_unless_they_are_not_wanted(self) -> None:
        self.install("base")
        recogniser = FasterWhisperRecogniser("base")
        recogniser.load()
        self.assertEqual(len(recogniser.recognise(Utterance(SPEECH, "de")).words), 2)

    def test_a_processor_calculates_with_eight_bits_and_without_traffic(self) -> None:
        self.loaded()
        load = standin_notes.noted("faster_whisper.load")[-1]
        self.assertEqual((load["device"], load["compute_type"]), ("cpu", "int8"))
        self.assertEqual((load["workers"], load["local_files_only"]), (1, True))
        self.no_traffic()

    def test_a_graphics_processor_that_fails_is_not_used(self) -> None:
        with mock.patch.object(faster_whisper, "_has_graphics", lambda: True):
            self.assertEqual(self.hear(SPEECH).text, "Guten tag.")
        self.assertEqual(standin_notes.noted("faster_whisper.load")[-1]["device"], "cpu")

    def test_a_graphics_processor_calculates_with_sixteen_bits(self) -> None:
        self.install("base")
        import faster_whisper as package

        made = mock.Mock()
        with mock.patch.object(faster_whisper, "_has_graphics", lambda: True):
            with mock.patch.object(package, "WhisperModel", made):
                self.load("base")
        options = made.call_args.kwargs
        self.assertEqual((options["device"], options["compute_type"]), ("cuda", "float16"))

    def test_a_graphics_processor_without_its_libraries_is_left_alone(self) -> None:
        import ctranslate2

        with mock.patch.object(ctranslate2, "get_cuda_device_count", lambda: 1):
            with mock.patch.object(faster_whisper, "CDLL", side_effect=OSError):
                self.assertFalse(faster_whisper._has_graphics())
            with mock.patch.object(faster_whisper, "CDLL"):
                self.assertTrue(faster_whisper._has_graphics())
        with mock.patch.object(faster_whisper, "CDLL"):
            self.assertFalse(faster_whisper._has_graphics())

    def test_the_silence_test_stands_alone(self) -> None:
        self.hear(SPEECH)
        used = self.used()
        self.assertEqual((used["no_speech_threshold"], used["log_prob_threshold"]), (0.6, None))

    def test_sound_without_a_voice_is_not_worked_on(self) -> None:
        recogniser = self.loaded()
        for sound in (voice.silence(2.0), voice.noise(2.0), voice.tone(2.0)):
            for language in ("de", "auto"):
                heard = recogniser.recognise(Utterance(sound, language))
                self.assertEqual((heard.text, heard.language), ("", language))
        self.assertEqual(standin_notes.noted(self.event), [])

    def test_long_pauses_are_cut_out_and_short_ones_kept(self) -> None:
        self.hear(np.concatenate([SPEECH, voice.silence(2.0), SPEECH]))
        self.assertTrue(self.used()["vad_filter"])
        self.assertEqual(self.used()["beam_size"], 1)
        for run in standin_notes.noted("vad"):
            self.assertEqual(run["options"]["min_silence_duration_ms"], 500)

    def test_a_snapshot_that_is_not_whole_is_neither_used_nor_completed(self) -> None:
        for missing in ("model.bin", "tokenizer.json", "vocabulary.txt", "config.json"):
            folder = self.install("base")
            (folder / missing).unlink()
            self.refused(lambda: self.load("base"), "recognition.model_missing")
            for path in sorted(self.cache.glob("huggingface/**/*"), reverse=True):
                path.rmdir() if path.is_dir() else path.unlink()
        self.no_traffic()

    def test_a_model_that_cannot_be_loaded_is_told(self) -> None:
        (self.install("base") / "model.bin").write_bytes(b"nonsense")
        error = self.told(lambda: self.load("base"))
        self.assertEqual(error.notice.code, "recognition.not_loaded")
        self.assertIn("incomplete", error.notice.german)


if __name__ == "__main__":
    unittest.main()
