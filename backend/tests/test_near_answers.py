"""Forms and answers of `/v1/audio/transcriptions`, as bytes and values."""

import json
import unittest
from typing import Any, Optional

import numpy as np

from orvane_backend.audio import decode_pcm
from orvane_backend.recognisers import Evidence, Word
from orvane_backend.recognisers.near import answers, greeting, multipart
from orvane_backend.recognisers.near.transport import Answer
from tests.standins import _wav


class FormTest(unittest.TestCase):
    def test_the_bytes_of_a_form(self) -> None:
        body = multipart.encode_form({"model": "m", "prompt": "Ä\r\nb"}, b"RIFF", "bound")
        self.assertEqual(
            body,
            b'--bound\r\nContent-Disposition: form-data; name="model"\r\n\r\nm\r\n'
            b'--bound\r\nContent-Disposition: form-data; name="prompt"\r\n\r\n\xc3\x84\r\nb\r\n'
            b'--bound\r\nContent-Disposition: form-data; name="file"; filename="speech.wav"\r\n'
            b"Content-Type: audio/wav\r\n\r\nRIFF\r\n--bound--\r\n",
        )
        with self.assertRaises(ValueError):
            multipart.encode_form({"prompt": "a --bound"}, b"", "bound")

    def test_the_file_is_one_that_a_strict_reader_takes(self) -> None:
        for seconds in (0.0, 0.1, 2.0):
            sound = _wav.tone(seconds)
            samples = decode_pcm(sound.astype("<i2").tobytes())
            np.testing.assert_array_equal(_wav.samples_of(multipart.wav(samples)), sound)


class AnswersTest(unittest.TestCase):
    def read(self, seconds: float = 4.0, **answer: Any) -> answers.Transcription:
        return answers.transcription(json.dumps({"text": "", **answer}).encode(), seconds)

    def test_texts_are_one_line(self) -> None:
        self.assertEqual(self.read(text=" And so\n my fellow\n").text, "And so my fellow")

    def test_languages_come_as_codes_and_names(self) -> None:
        cases: list[tuple[object, Optional[str]]] = [
            ("english", "en"), ("German", "de"), ("fr", "fr"), ("pt-BR", "pt"), ("nb", "no"),
            ("", None), ("auto", None), ("klingon", None), (None, None), (7, None),
        ]  # fmt: skip
        for told, code in cases:
            self.assertEqual(self.read(language=told).language, code, told)

    def test_evidence_is_that_of_all_segments(self) -> None:
        segments = [
            {"text": "x" * 30, "no_speech_prob": 0.1, "avg_logprob": -0.2,
             "compression_ratio": 1.1},
            {"text": "x" * 10, "no_speech_prob": 0.5, "avg_logprob": -1.0,
             "compression_ratio": 2.5},
        ]  # fmt: skip
        evidence = self.read(segments=segments).evidence
        assert evidence.log_probability is not None
        self.assertAlmostEqual(evidence.log_probability, -0.4)
        self.assertEqual((evidence.no_speech, evidence.compression), (0.1, 2.5))
        self.assertIsNone(evidence.confidence)

    def test_what_is_made_up_for_silence_beside_speech_is_left_out(self) -> None:
        def segment(text: str, silence: object) -> dict[str, object]:
            word = {"word": text, "start": 0, "end": 1}
            return {"text": f" {text}", "no_speech_prob": silence, "words": [word]}

        spoken, made_up = segment("Hello.", 0.1), segment("Thanks.", 0.9)
        heard = self.read(text=" Hello. Thanks.\n", segments=[spoken, made_up])
        self.assertEqual((heard.text, heard.evidence.no_speech), ("Hello.", 0.1))
        self.assertEqual([word.text for word in heard.words], ["Hello."])
        # Alone it stays, with the evidence against it; so does what the segments do not spell.
        alone = self.read(text="Thanks.", segments=[made_up])
        self.assertEqual((alone.text, alone.evidence.no_speech), ("Thanks.", 0.9))
        other = self.read(text="Hello. So.", segments=[spoken, made_up])
        self.assertEqual(other.text, "Hello. So.")
        unsure = self.read(text="Hello. Thanks.", segments=[spoken, segment("Thanks.", None)])
        self.assertEqual(unsure.text, "Hello. Thanks.")

    def test_evidence_that_is_not_told_is_none(self) -> None:
        for segments in (None, [], "x", [{}], [{"no_speech_prob": 0.5}, {}], [7],
                         [{"no_speech_prob": "high"}], [{"avg_logprob": True}]):  # fmt: skip
            self.assertEqual(self.read(segments=segments).evidence, Evidence(), segments)

    def test_words_come_beside_the_segments_or_in_them(self) -> None:
        words = [{"word": "Hello,", "start": 0, "end": 0.5}, {"word": "you", "start": 1, "end": 2}]
        expected = (Word("Hello,", 0.0, 0.5), Word("you", 1.0, 2.0))
        self.assertEqual(self.read(text="Hello, you.", words=words).words, expected)
        segments = [{"words": words[:1]}, {"words": words[1:]}]
        self.assertEqual(self.read(text="Hello, you.", segments=segments).words, expected)

    def test_pieces_of_words_are_joined(self) -> None:
        pieces = [
            {"word": word, "start": place, "end": place + 1}
            for place, word in enumerate((" fel", "low", " Ameri", "cans", "."))
        ]
        self.assertEqual(
            self.read(5, text="fellow Americans.", words=pieces).words,
            (Word("fellow", 0, 2), Word("Americans.", 2, 5)),
        )

    def test_words_that_are_not_the_texts_or_have_no_places_are_left_out(self) -> None:
        def words(*pieces: tuple[object, object, object]) -> object:
            named = [{"word": word, "start": begin, "end": end} for word, begin, end in pieces]
            return self.read(text="one two", words=named).words

        self.assertEqual(len(words(("one", 0, 1), ("two", 1, 2))), 2)  # type: ignore[arg-type]
        for wrong in (
            [("one", 0, 1)], [("one", 0, 1), ("three", 1, 2)], [("one", 1, 0), ("two", 1, 2)],
            [("one", 0, 1), ("two", 1, 2e9)], [("one", None, 1), ("two", 1, 2)],
            [("one", -1, 1), ("two", 1, 2)], [(5, 0, 1), ("two", 1, 2)],
        ):  # fmt: skip
            self.assertEqual(words(*wrong), (), wrong)

    def test_reasons_of_every_shape(self) -> None:
        missing = {"detail": [{"loc": ["body", "model"], "msg": "Field required"}, "so", 7]}
        self.assertEqual(self.reason(missing), "model: Field required; so")
        for shape in ("x", {"detail": "x"}, {"error": {"message": "x"}}, {"error": "x"},
                      {"message": "x"}, {"detail": " ", "error": "x"}):  # fmt: skip
            self.assertEqual(self.reason(shape), "x")
        for empty in ({}, [], {"error": {}}, {"detail": []}, {"detail": [{}]}):
            self.assertEqual(self.reason(empty), "" if empty != [] else "[]", empty)
        page = b"<html><head><title>t</title><style>b{}</style></head><body><b>Bad</b> gate</body>"
        self.assertEqual(answers.error_text(page, ""), "Bad gate")
        self.assertEqual(answers.error_text(b"\xff broken", "text/plain"), "\ufffd broken")

    def reason(self, value: object) -> str:
        return answers.error_text(json.dumps(value).encode(), "application/json")


class GreetingTest(unittest.TestCase):
    def models(self, *data: object) -> Optional[list[greeting.Model]]:
        return greeting.listed_models(Answer(200, json.dumps({"data": data}).encode()))

    def test_a_task_says_what_a_model_is_and_else_its_name(self) -> None:
        found = self.models(
            {"id": "a", "task": "automatic-speech-recognition"},
            {"id": "whisper-voice", "task": "text-to-speech"},
            {"id": "Parakeet-TDT-0.6b-v3"}, {"id": "mistral-7b"}, {"id": ""}, {"id": "x" * 201},
            {"id": "\ud800"}, {"id": 7}, 7, {"id": "qwen3-asr-0.6b"}, {"id": "basralingua"},
        )  # fmt: skip
        assert found is not None
        speech = [model.name for model in found if model.is_speech]
        self.assertEqual(speech, ["a", "Parakeet-TDT-0.6b-v3", "qwen3-asr-0.6b"])
        self.assertEqual(len(found), 6)

    def test_no_list_is_none(self) -> None:
        for body in (b"", b"<html>", b"[]", b'{"data": 7}', b"[" * 100_000):
            self.assertIsNone(greeting.listed_models(Answer(200, body)))
        self.assertIsNone(greeting.listed_models(Answer(404, b'{"data": []}')))


if __name__ == "__main__":
    unittest.main()
