"""Whisper through openai-whisper, in front of a stand-in of the package."""

import unittest
import warnings
from pathlib import Path
from unittest import mock

from orvane_backend.recognisers import Utterance
from orvane_backend.recognisers.whisper import WhisperRecogniser
from tests.whisper_case import SPEECH, WhisperCase, WhisperTests

import standin_notes
import standin_voice as voice


class WhisperTest(WhisperTests, WhisperCase):
    folder = "openai_whisper"
    engine = WhisperRecogniser
    event = "whisper.transcribe"

    def install(self, model: str) -> Path:
        import whisper

        path = self.cache / "whisper" / Path(whisper._MODELS[model]).name
        path.parent.mkdir(exist_ok=True)
        path.write_bytes(whisper.model_file(model))
        return path

    def threads(self) -> int:
        return int(standin_notes.noted("torch.set_num_threads")[-1]["threads"])

    def test_words_have_no_places_unless_they_are_wanted(self) -> None:
        self.install("base")
        recogniser = WhisperRecogniser("base")
        recogniser.load()
        self.assertEqual(recogniser.recognise(Utterance(SPEECH, "de")).words, ())

    def test_nothing_is_calculated_in_half_precision_on_a_processor(self) -> None:
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            self.hear(SPEECH)
        self.assertFalse(self.used()["fp16"])

    def test_a_model_is_loaded_from_its_file(self) -> None:
        path = self.install("base")
        self.load("base")
        self.assertEqual(standin_notes.noted("whisper.load_model")[-1]["name"], str(path))

    def test_the_silence_test_stands_alone(self) -> None:
        self.hear(SPEECH)
        used = self.used()
        self.assertEqual((used["no_speech_threshold"], used["logprob_threshold"]), (0.6, None))

    def test_a_loop_shows_in_the_evidence(self) -> None:
        compression = self.hear(voice.tone(3.0)).evidence.compression
        assert compression is not None
        self.assertGreater(compression, 2.4)

    def test_a_file_that_is_broken_off_is_neither_used_nor_fetched(self) -> None:
        self.install("base").write_bytes(b"stand-in mod")
        self.refused(lambda: self.load("base"), "recognition.model_damaged", model="base")
        self.install("tiny")
        recogniser = self.load("base")
        self.assertEqual(
            [remark.code for remark in recogniser.remarks],
            ["recognition.model_damaged", "recognition.model_replaced"],
        )
        self.no_traffic()

    def test_a_model_that_cannot_be_loaded_is_told(self) -> None:
        import whisper

        self.install("base")
        with mock.patch.object(whisper, "load_model", side_effect=OSError("disk full")):
            error = self.told(lambda: self.load("base"))
        self.assertEqual(error.notice.code, "recognition.not_loaded")
        self.assertIn("disk full", error.notice.german)
        self.assertFalse(error.is_passing)

    def test_places_of_words_are_looked_for_where_the_model_has_them(self) -> None:
        import whisper

        self.install("base")
        with mock.patch.object(whisper, "_ALIGNMENT_HEADS", {"base": b"1"}, create=True):
            set_heads = mock.Mock()
            with mock.patch.object(whisper.Whisper, "set_alignment_heads", set_heads, create=True):
                self.load("base")
        set_heads.assert_called_once_with(b"1")

    def test_models_that_only_the_other_package_has_are_unknown(self) -> None:
        self.refused(lambda: self.load("distil-large-v3"), "recognition.model_unknown")

    def test_sound_that_is_not_in_one_piece_is_taken(self) -> None:
        heard = self.loaded().recognise(Utterance(SPEECH.repeat(2)[::2], "de"))
        self.assertEqual(heard.text, "Guten tag.")


if __name__ == "__main__":
    unittest.main()
