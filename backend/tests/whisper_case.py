"""What both packages of Whisper have to do alike, in front of their stand-ins."""

from pathlib import Path
from typing import Any, Callable
from unittest import mock

import numpy as np

from orvane_backend.recognisers import RecogniserError, Recognition, Utterance
from orvane_backend.recognisers import whisper_text
from orvane_backend.recognisers.whisper_engine import WhisperEngine
from tests.standins.case import StandInCase

import standin_notes
import standin_voice as voice

SPEECH = voice.speak("guten tag")


class WhisperCase(StandInCase):
    """`engine` makes one, `install` puts a model where the package looks for it."""

    engine: Callable[..., WhisperEngine]
    event = ""

    def install(self, model: str) -> Path:
        raise NotImplementedError

    def loaded(self, model: str = "base", **options: Any) -> WhisperEngine:
        self.install(model)
        return self.load(model, **options)

    def load(self, model: str, *, words: bool = False) -> WhisperEngine:
        recogniser = type(self).engine(model, words=words)
        recogniser.load()
        return recogniser

    def hear(self, sound: Any, language: str = "de", model: str = "base") -> Recognition:
        return self.loaded(model).recognise(Utterance(sound, language))

    def used(self) -> dict[str, Any]:
        """The settings of the last run."""
        return standin_notes.noted(self.event)[-1]

    def told(self, act: Callable[[], Any]) -> RecogniserError:
        with self.assertRaises(RecogniserError) as raised:
            act()
        return raised.exception

    def refused(self, act: Callable[[], Any], code: str, **parameters: str) -> None:
        error = self.told(act)
        self.assertEqual(error.notice.code, code)
        for name, value in parameters.items():
            self.assertEqual(error.notice.parameters[name], value)

    def no_traffic(self) -> None:
        self.assertEqual(standin_notes.noted("network"), [])


class WhisperTests:
    """Mixed into the tests of each package."""

    def test_speech_is_recognised_in_the_language_asked_for(self: Any) -> None:
        heard = self.hear(SPEECH)
        self.assertEqual((heard.text, heard.language), ("Guten tag.", "de"))
        self.assertIsNone(heard.certainty)
        self.assertEqual(heard.words, ())

    def test_evidence_is_what_the_model_thinks(self: Any) -> None:
        evidence = self.hear(SPEECH).evidence
        self.assertEqual((evidence.no_speech, evidence.log_probability), (0.01, -0.18))
        self.assertLess(evidence.compression, 2.4)

    def test_sentences_are_joined(self: Any) -> None:
        sound = np.concatenate([SPEECH, voice.silence(0.8), voice.speak("vielen dank")])
        heard = self.hear(sound)
        self.assertEqual(heard.text, "Guten tag. Vielen dank.")
        self.assertAlmostEqual(heard.evidence.log_probability, -0.18)

    def test_the_detected_language_comes_with_its_certainty(self: Any) -> None:
        heard = self.hear(voice.speak("bonjour le monde guten"), "auto")
        self.assertEqual(heard.language, "fr")
        self.assertAlmostEqual(heard.certainty, 0.5 + 0.48 * 3 / 4)

    def test_the_newest_model_detects_with_its_own_bands(self: Any) -> None:
        self.assertEqual(self.hear(voice.speak("bonjour"), "auto", "large-v3").language, "fr")

    def test_the_work_is_bounded_and_done_once(self: Any) -> None:
        self.hear(SPEECH)
        used = self.used()
        self.assertIn(used["temperature"], (0.0, [0.0]))
        self.assertIn(used.get("beam_size"), (None, 1))
        self.assertFalse(used["condition_on_previous_text"])
        self.assertEqual(used["task"], "transcribe")

    def test_silence_does_not_survive_as_fluent_text(self: Any) -> None:
        for language in ("de", "auto"):
            self.assertEqual(self.hear(voice.silence(3.0), language).text, "")

    def test_times_are_left_out_where_one_window_holds_all(self: Any) -> None:
        recogniser = self.loaded()
        recogniser.recognise(Utterance(SPEECH, "de"))
        self.assertTrue(self.used()["without_timestamps"])
        long = np.concatenate([SPEECH, voice.silence(30.0), SPEECH])
        self.assertEqual(recogniser.recognise(Utterance(long, "de")).text, "Guten tag. Guten tag.")
        self.assertFalse(self.used()["without_timestamps"])

    def test_words_have_places_when_they_are_asked_for(self: Any) -> None:
        sound = np.concatenate([voice.silence(1.0), SPEECH])
        heard = self.loaded(words=True).recognise(Utterance(sound, "de"))
        self.assertEqual([word.text for word in heard.words], ["guten", "tag"])
        self.assertEqual([type(word.begin) for word in heard.words], [float, float])
        for word, begin in zip(heard.words, (1.0, 1.4)):
            self.assertAlmostEqual(word.begin, begin, places=1)
            self.assertAlmostEqual(word.end, begin + 0.3, places=1)
        self.assertAlmostEqual(heard.evidence.confidence, 0.93)
        self.assertFalse(self.used()["without_timestamps"])

    def test_what_was_said_before_is_the_prompt(self: Any) -> None:
        recogniser = self.loaded()
        recogniser.recognise(Utterance(SPEECH, "de", "heute  scheint\n die sonne"))
        self.assertEqual(self.used()["initial_prompt"], "heute scheint die sonne")
        recogniser.recognise(Utterance(SPEECH, "de", " "))
        self.assertIsNone(self.used()["initial_prompt"])
        recogniser.recognise(Utterance(SPEECH, "de", "anfang " + "sonne " * 100))
        prompt = self.used()["initial_prompt"]
        self.assertLess(len(prompt), 201)
        self.assertEqual(set(prompt.split()), {"sonne"})

    def test_languages_that_are_lacking_are_refused_before_the_run(self: Any) -> None:
        recogniser = self.loaded("base")
        for language in ("ga", "yue", "xx-YY"):
            refusal = recogniser.refusal(language)
            self.assertEqual(refusal.code, "recognition.language_unknown")
            error = self.told(lambda: recogniser.recognise(Utterance(SPEECH, language)))
            self.assertEqual((error.notice, error.is_passing), (refusal, True))
        self.assertEqual(standin_notes.noted(self.event), [])
        self.assertEqual(recogniser.recognise(Utterance(SPEECH, "de")).text, "Guten tag.")

    def test_other_codes_of_a_language_reach_the_package_as_its_own(self: Any) -> None:
        recogniser = self.loaded()
        for asked, code in (("jv", "jw"), ("nb-NO", "no"), ("pt-BR", "pt")):
            heard = recogniser.recognise(Utterance(SPEECH, asked))
            self.assertEqual((heard.language, self.used()["language"]), (code, code))

    def test_the_newest_model_knows_cantonese(self: Any) -> None:
        recogniser = self.loaded("large")
        self.assertIsNone(recogniser.refusal("yue"))
        self.assertEqual(recogniser.recognise(Utterance(SPEECH, "yue")).language, "yue")

    def test_a_model_of_english_alone_says_so_and_detects_nothing(self: Any) -> None:
        recogniser = self.loaded("base.en")
        self.assertEqual(recogniser.only_language, "en")
        self.assertEqual(recogniser.refusal("de").code, "recognition.language_unknown")
        heard = recogniser.recognise(Utterance(voice.speak("hello"), "auto"))
        self.assertEqual((heard.text, heard.language, heard.certainty), ("Hello.", "en", None))
        self.assertIsNone(self.loaded("tiny").only_language)

    def test_a_missing_model_is_not_fetched(self: Any) -> None:
        self.refused(lambda: self.load("base"), "recognition.model_missing", model="base")
        self.no_traffic()

    def test_the_nearest_smaller_model_serves_and_says_so(self: Any) -> None:
        self.install("tiny")
        self.install("small")
        self.install("large")
        recogniser = self.load("medium")
        self.assertIn("small", recogniser.name)
        self.assertEqual(
            [remark.code for remark in recogniser.remarks],
            ["recognition.model_missing", "recognition.model_replaced"],
        )
        self.assertEqual(recogniser.remarks[1].parameters["used"], "small")
        recogniser.recognise(Utterance(SPEECH, "de"))
        self.assertEqual(self.used()["model"], "small")
        self.assertEqual(self.load("large").remarks, ())
        self.no_traffic()

    def test_no_larger_model_replaces_one(self: Any) -> None:
        self.install("small")
        self.refused(lambda: self.load("base"), "recognition.model_missing")

    def test_a_name_that_is_no_model_is_told(self: Any) -> None:
        self.refused(lambda: self.load("giant"), "recognition.model_unknown", model="giant")

    def test_threads_are_limited(self: Any) -> None:
        for processors, threads in ((1, 2), (4, 2), (16, 8)):
            with mock.patch("os.sched_getaffinity", lambda _: set(range(processors))):
                self.assertEqual(whisper_text.thread_count(), threads)
                self.loaded("tiny")
            self.assertEqual(self.threads(), threads)

    def test_a_failure_on_one_utterance_leaves_the_model_usable(self: Any) -> None:
        recogniser = self.loaded()
        for reason, passes in (("strange sound", True), ("CUDA out of memory\nmore", False)):
            standin_notes.hooks["transcribe"] = mock.Mock(side_effect=RuntimeError(reason))
            error = self.told(lambda: recogniser.recognise(Utterance(SPEECH, "de")))
            self.assertEqual(error.notice.code, "recognition.failed")
            self.assertEqual(error.notice.parameters["reason"], reason.splitlines()[0])
            self.assertEqual(error.is_passing, passes)
        standin_notes.hooks.clear()
        self.assertEqual(recogniser.recognise(Utterance(SPEECH, "de")).text, "Guten tag.")

    def test_one_call_at_a_time(self: Any) -> None:
        self.assertEqual(type(self).engine.parallel, 1)

    def test_a_package_that_is_not_there_is_told(self: Any) -> None:
        name = type(self).engine.package
        with mock.patch.dict("sys.modules", {name: None}):
            self.refused(lambda: self.load("base"), "recognition.not_installed")

    def test_a_package_that_cannot_be_imported_is_told(self: Any) -> None:
        for failure in (OSError("no such library"), ModuleNotFoundError("No module", name="x")):
            with mock.patch(
                "orvane_backend.recognisers.whisper_engine.import_module", side_effect=failure
            ):
                self.refused(lambda: self.load("base"), "recognition.not_loaded")

    def test_a_closed_engine_lets_go_of_its_model(self: Any) -> None:
        recogniser = self.loaded()
        model = recogniser._model
        recogniser.close()
        self.assertIsNotNone(model)
        self.assertIsNone(recogniser._model)
