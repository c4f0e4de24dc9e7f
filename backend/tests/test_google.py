"""Google's streaming recognition in front of a stand-in of the package and the service."""

import json
import unittest
from pathlib import Path
from types import SimpleNamespace
from typing import Any, Callable
from unittest import mock

import numpy as np

from orvane_backend.audio import encode_pcm
from orvane_backend.recognisers import RecogniserError, Recognition, Utterance
from orvane_backend.recognisers.google import GoogleRecogniser
from tests.standins.case import StandInCase

import standin_notes
import standin_voice as voice

SPEECH = voice.speak("guten tag")


class GoogleTest(StandInCase):
    folder = "google_cloud"

    def setUp(self) -> None:
        super().setUp()
        from google.cloud.speech_v2.standin import control
        from google.oauth2.service_account import standin_account

        self.control: Any = control
        self.addCleanup(control.reset)
        self.account = self.cache / "key.json"
        self.account.write_text(json.dumps(standin_account("a-project")))

    def loaded(self, location: str = "eu", project: str = "") -> GoogleRecogniser:
        recogniser = GoogleRecogniser(str(self.account), project, location)
        recogniser.load()
        self.addCleanup(recogniser.close)
        return recogniser

    def hear(self, sound: Any = SPEECH, language: str = "de", location: str = "eu") -> Recognition:
        return self.loaded(location).recognise(Utterance(sound, language))

    def told(self, act: Callable[[], Any], code: str, **parameters: Any) -> RecogniserError:
        with self.assertRaises(RecogniserError) as raised:
            act()
        self.assertEqual(raised.exception.notice.code, f"recognition.{code}")
        for name, value in parameters.items():
            self.assertEqual(raised.exception.notice.parameters[name], value)
        return raised.exception

    def config(self) -> str:
        return str(standin_notes.noted("google.config")[-1]["config"])

    def test_final_results_are_joined(self) -> None:
        sound = np.concatenate([SPEECH, voice.silence(1.0), voice.speak("vielen dank")])
        heard = self.hear(sound)
        self.assertEqual((heard.text, heard.language), ("Guten tag. Vielen dank.", "de"))
        self.assertAlmostEqual(heard.evidence.confidence or 0, 0.93)
        self.assertIsNone(heard.certainty)

    def test_silence_gives_no_text(self) -> None:
        for sound in (voice.silence(1.0), voice.silence(0.0)):
            heard = self.hear(sound)
            self.assertEqual((heard.text, heard.evidence.confidence), ("", None))

    def test_languages_without_spaces_are_joined_without(self) -> None:
        sound = np.concatenate([SPEECH, voice.silence(1.0), SPEECH])
        self.assertEqual(self.hear(sound, "ja").text, "Guten tag.Guten tag.")

    def test_all_sound_goes_in_small_messages_after_the_settings(self) -> None:
        sound = np.concatenate([SPEECH] * 4)
        self.hear(sound)
        sizes = [note["bytes"] for note in standin_notes.noted("google.audio")]
        self.assertEqual(sum(sizes), len(encode_pcm(sound)))
        self.assertLessEqual(max(sizes), 15000)
        self.assertEqual(len(standin_notes.noted("google.config")), 1)

    def test_place_and_project_are_in_the_path(self) -> None:
        for location, project, path, host in (
            ("", "", "projects/a-project/locations/global/recognizers/_", "speech.googleapis.com"),
            ("EU", "own", "projects/own/locations/eu/recognizers/_", "eu-speech.googleapis.com"),
        ):
            self.loaded(location, project).recognise(Utterance(SPEECH, "de"))
            stream = standin_notes.noted("google.stream")[-1]
            self.assertEqual((stream["recognizer"], stream["endpoint"]), (path, host))

    def test_each_place_takes_its_model(self) -> None:
        for location, model in (
            ("global", "long"), ("eu", "chirp_3"), ("us", "chirp_3"), ("us-central1", "chirp_2"),
            ("asia-southeast1", "chirp_2"), ("europe-west3", "chirp_3"),
        ):  # fmt: skip
            self.assertEqual(self.hear(location=location).text, "Guten tag.")
            self.assertIn(f"model='{model}'", self.config())
        self.assertEqual(self.hear(language="pl", location="us-central1").text, "Guten tag.")

    def test_automatic_detection_tells_the_language(self) -> None:
        for location in ("eu", "us-central1"):
            heard = self.hear(voice.speak("bonjour le monde"), "auto", location)
            self.assertEqual((heard.text, heard.language), ("Bonjour le monde.", "fr"))
        self.assertEqual(self.hear(voice.silence(1.0), "auto").language, "auto")

    def test_a_place_without_detection_refuses_before_the_run(self) -> None:
        recogniser = self.loaded("global")
        refused = recogniser.refusal("auto")
        assert refused is not None
        error = self.told(
            lambda: recogniser.recognise(Utterance(SPEECH, "auto")),
            "no_detection_there", location="global",
        )  # fmt: skip
        self.assertEqual((error.notice, error.is_passing), (refused, True))
        self.assertEqual(standin_notes.noted("google.stream"), [])
        self.assertIsNone(recogniser.refusal("de"))

    def test_languages_that_are_lacking_are_refused_before_the_run(self) -> None:
        recogniser = self.loaded()
        for code in ("ga", "nn", "be", "yo-NG"):
            refused = recogniser.refusal(code)
            assert refused is not None
            error = self.told(
                lambda: recogniser.recognise(Utterance(SPEECH, code)), "language_unknown"
            )
            self.assertEqual((error.notice, error.is_passing), (refused, True))
        self.assertEqual(standin_notes.noted("google.stream"), [])

    def test_the_package_tries_nothing_again_by_itself(self) -> None:
        recogniser = self.loaded()
        with mock.patch.object(recogniser, "_client") as client:
            client.streaming_recognize.return_value = []
            recogniser.recognise(Utterance(SPEECH, "de"))
        self.assertIsNone(client.streaming_recognize.call_args.kwargs["retry"])
        self.assertGreater(client.streaming_recognize.call_args.kwargs["timeout"], 0)

    def test_what_is_not_final_or_says_nothing_is_left_out(self) -> None:
        def result(text: str, final: bool, confidence: float) -> Any:
            best = SimpleNamespace(transcript=text, confidence=confidence)
            words = [best] if text else []
            return SimpleNamespace(is_final=final, alternatives=words, language_code="de-de")

        results = [
            result("gut", False, 0.1), result("guten", True, 0.0), result("", True, 0.0),
            result(" tag", True, 0.8),
        ]  # fmt: skip
        recogniser = self.loaded()
        with mock.patch.object(recogniser, "_client") as client:
            client.streaming_recognize.return_value = [SimpleNamespace(results=results)]
            heard = recogniser.recognise(Utterance(SPEECH, "de"))
        self.assertEqual((heard.text, heard.evidence.confidence), ("guten tag", 0.8))

    def test_a_stream_that_came_to_its_end_is_opened_anew_without_a_message(self) -> None:
        for name in ("Aborted", "OutOfRange"):
            recogniser = self.loaded()
            before = len(standin_notes.noted("google.stream"))
            failed = self.control.failed
            failures = [failed]

            def fail_once(seconds: float) -> Any:
                if seconds < 0.5 or not failures:
                    return None
                failures.pop()
                return self.control.too_old()

            self.control.of_first_version = name == "OutOfRange"
            with mock.patch.object(self.control, "failed", fail_once):
                heard = recogniser.recognise(Utterance(SPEECH, "de"))
            self.assertEqual(heard.text, "Guten tag.")
            self.assertEqual(failures, [])
            self.assertEqual(len(standin_notes.noted("google.stream")) - before, 2)

    def test_a_stream_that_ends_again_and_again_is_told(self) -> None:
        self.control.stream_seconds = 0.3
        recogniser = self.loaded()
        error = self.told(lambda: recogniser.recognise(Utterance(SPEECH, "de")), "unavailable")
        self.assertTrue(error.is_passing)
        self.assertEqual(len(standin_notes.noted("google.stream")), 2)

    def test_other_failures_are_told_at_once_with_the_services_reason(self) -> None:
        for name, code, passes in (
            ("ServiceUnavailable", "unavailable", True),
            ("ResourceExhausted", "too_many", True),
            ("PermissionDenied", "not_permitted", False),
            ("Unauthenticated", "account_refused", False),
        ):
            standin_notes.forget()
            self.control.failure, self.control.failure_message = name, "because.\nmore"
            recogniser = self.loaded()
            error = self.told(
                lambda: recogniser.recognise(Utterance(SPEECH, "de")), code, reason="because."
            )
            self.assertEqual(error.is_passing, passes)
            self.assertEqual(len(standin_notes.noted("google.stream")), 1)

    def test_a_project_that_the_account_may_not_use_is_told(self) -> None:
        self.control.projects = ("another",)
        self.told(self.hear, "not_permitted")

    def test_a_place_that_does_not_exist_is_told(self) -> None:
        self.told(lambda: self.hear(location="nowhere"), "unavailable")

    def test_accounts_of_no_use_are_told(self) -> None:
        missing = GoogleRecogniser(str(self.cache / "none.json"), "", "eu")
        self.told(missing.load, "account_missing", path=str(self.cache / "none.json"))
        self.told(GoogleRecogniser("", "", "eu").load, "account_unset")
        for name, value in (("private_key", "no key"), ("project_id", None)):
            account = json.loads(self.account.read_text())
            account[name] = value
            path = Path(self.cache, f"{name}.json")
            path.write_text(json.dumps(account))
            self.told(GoogleRecogniser(str(path), "", "eu").load, "account_unreadable")
        self.assertIsNone(GoogleRecogniser(str(path), "given", "eu").load())

    def test_a_package_that_is_not_there_is_told(self) -> None:
        with mock.patch.dict("sys.modules", {"google.cloud.speech_v2": None}):
            self.told(self.loaded, "not_installed")

    def test_a_package_that_cannot_be_imported_is_told(self) -> None:
        for failure in (ImportError("bad grpc"), ModuleNotFoundError("No grpc", name="grpc")):
            with mock.patch("orvane_backend.recognisers.google.import_module", side_effect=failure):
                self.told(self.loaded, "not_loaded")

    def test_a_closed_engine_closes_its_connection(self) -> None:
        recogniser = self.loaded()
        transport = recogniser._client.transport
        recogniser.close()
        self.assertTrue(transport.closed)
        recogniser.close()


if __name__ == "__main__":
    unittest.main()
