"""The stand-in of Google's streaming recognition refuses what the real one refuses."""

import json
import queue
import threading
from typing import Any, Iterable, Iterator, Optional

import numpy as np

from tests.standins.case import StandInCase

import standin_voice as voice

SPEECH = voice.speak("guten tag heute scheint die sonne")


class GoogleCase(StandInCase):
    folder = "google_cloud"

    def setUp(self) -> None:
        super().setUp()
        from google.api_core import exceptions
        from google.api_core.client_options import ClientOptions
        from google.cloud import speech_v2
        from google.cloud.speech_v2 import standin
        from google.oauth2.service_account import standin_account

        self.speech: Any = speech_v2
        self.types: Any = speech_v2.types.cloud_speech
        self.errors: Any = exceptions
        self.control: Any = standin.control
        # However slow the machine is, only the test that wants it runs into this.
        self.control.idle_seconds = 3600.0
        self.options: Any = ClientOptions
        self.account = self.cache / "account.json"
        self.account.write_text(json.dumps(standin_account()))

    def client(self, endpoint: Optional[str] = None) -> Any:
        return self.speech.SpeechClient.from_service_account_file(
            str(self.account), client_options=self.options(api_endpoint=endpoint)
        )

    def first(self, location: str = "global", **config: Any) -> Any:
        decoding = {"encoding": "LINEAR16", "sample_rate_hertz": 16000, "audio_channel_count": 1}
        given = {
            "explicit_decoding_config": decoding, "model": "long", "language_codes": ["de-DE"],
            **config,
        }  # fmt: skip
        return self.types.StreamingRecognizeRequest(
            recognizer=self.speech.SpeechClient.recognizer_path("a-project", location, "_"),
            streaming_config={"config": given, "streaming_features": {"interim_results": True}},
        )

    def sound(self, *sounds: Any, size: int = 6400) -> list[Any]:
        pcm = voice.as_pcm(np.concatenate(sounds))
        request = self.types.StreamingRecognizeRequest
        return [request(audio=pcm[at : at + size]) for at in range(0, len(pcm), size)]

    def stream(self, *requests: Any, endpoint: Optional[str] = None, **options: Any) -> list[Any]:
        client = self.client(endpoint)
        return list(client.streaming_recognize(requests=iter(requests), **options))

    def fails(self, name: str, text: str, *requests: Any, endpoint: Optional[str] = None) -> Any:
        with self.assertRaises(getattr(self.errors, name)) as raised:
            self.stream(*requests, endpoint=endpoint)
        self.assertIs(type(raised.exception), getattr(self.errors, name))
        self.assertIn(text, str(raised.exception))
        return raised.exception


class AnswersTest(GoogleCase):
    def test_interim_results_then_a_final(self) -> None:
        answers = self.stream(self.first(), *self.sound(SPEECH, voice.silence(1), SPEECH))
        finals = [a.results[0] for a in answers if a.results[0].is_final]
        texts = [final.alternatives[0].transcript for final in finals]
        spoken = "guten tag heute scheint die sonne"
        self.assertEqual(texts, [spoken, " " + spoken])
        self.assertEqual(finals[0].language_code, "de-de")
        self.assertAlmostEqual(finals[0].result_end_offset.total_seconds(), 2.3)
        interim = answers[1].results
        self.assertEqual([round(result.stability, 2) for result in interim], [0.9, 0.01])
        self.assertTrue(interim[1].alternatives[0].transcript.startswith(" "))

    def test_silence_and_noise_bring_nothing(self) -> None:
        for sound in (voice.silence(3), voice.noise(3), voice.tone(3)):
            self.assertEqual(self.stream(self.first(), *self.sound(sound)), [])

    def test_features_do_what_they_say(self) -> None:
        features = {"enable_automatic_punctuation": True, "enable_word_time_offsets": True}
        first = self.first(features=features)
        first.streaming_config.streaming_features = {"enable_voice_activity_events": True}
        begin, end, final = self.stream(first, *self.sound(SPEECH))
        events = self.types.StreamingRecognizeResponse.SpeechEventType
        self.assertEqual(begin.speech_event_type, events.SPEECH_ACTIVITY_BEGIN)
        self.assertEqual(end.speech_event_type, events.SPEECH_ACTIVITY_END)
        self.assertEqual(begin.results, [])
        best = final.results[0].alternatives[0]
        self.assertEqual(best.transcript, "Guten tag heute scheint die sonne.")
        self.assertEqual(best.words[1].word, "tag")

    def test_a_header_tells_the_rate(self) -> None:
        auto = {"explicit_decoding_config": None, "auto_decoding_config": {}}
        self.fails("InvalidArgument", "does not appear", self.first(**auto), *self.sound(SPEECH))
        header = b"RIFF" + bytes(18) + b"\1\0" + (16000).to_bytes(4, "little") + bytes(16)
        begin = self.types.StreamingRecognizeRequest(audio=header)
        answers = self.stream(self.first(**auto), begin, *self.sound(SPEECH))
        self.assertIn("guten tag", answers[-1].results[0].alternatives[0].transcript)

    def test_the_call_comes_back_with_the_first_answer_only(self) -> None:
        requests: "queue.Queue[Any]" = queue.Queue()
        taken, called = threading.Event(), threading.Event()
        answers: list[Any] = []

        def handed_over() -> Iterator[Any]:
            for request in iter(requests.get, None):
                if request is taken:
                    taken.set()
                else:
                    yield request

        def read() -> None:
            stream = self.client().streaming_recognize(requests=handed_over())
            called.set()
            answers.extend(stream)

        reader = threading.Thread(target=read)
        reader.start()
        for request in (self.first(), *self.sound(voice.silence(2)), taken):
            requests.put(request)
        self.assertTrue(taken.wait(60))
        self.assertFalse(called.is_set())
        for request in self.sound(SPEECH):
            requests.put(request)
        self.assertTrue(called.wait(60))
        requests.put(None)
        reader.join(60)
        self.assertTrue(answers[-1].results[0].is_final)

    def test_a_cancelled_call_says_so(self) -> None:
        gate = threading.Event()

        def requests() -> Iterator[Any]:
            yield self.first()
            yield from self.sound(SPEECH, voice.silence(1))
            gate.wait(60)

        stream = self.client().streaming_recognize(requests())
        stream.cancel()
        with self.assertRaises(self.errors.Cancelled):
            for _ in stream:
                pass
        gate.set()


class RefusalsTest(GoogleCase):
    def test_config_first_then_sound_alone(self) -> None:
        sound = self.sound(SPEECH)
        self.fails("InvalidArgument", "first message", *sound)
        self.fails("InvalidArgument", "only be in the first", self.first(), self.first())
        self.fails("InvalidArgument", "there is none")
        both = self.first()
        both.audio = b"\0\0"
        self.fails("InvalidArgument", "first message", both)
        empty = self.types.StreamingRecognizeRequest(audio=b"")
        self.fails("InvalidArgument", "no audio", self.first(), empty)

    def test_pieces_of_sound_have_a_greatest_size(self) -> None:
        self.stream(self.first(), *self.sound(voice.silence(1), size=15360))
        long = self.sound(voice.silence(1), size=15362)
        self.fails("InvalidArgument", "15360", self.first(), *long)

    def test_models_belong_to_locations(self) -> None:
        absent = 'The model "chirp_2" does not exist in the location named "global".'
        self.fails("InvalidArgument", absent, self.first(model="chirp_2"))
        self.fails("InvalidArgument", "does not exist", self.first(model="enormous"))
        self.fails("InvalidArgument", "does not exist", self.first(model=""))
        host = "europe-west4-speech.googleapis.com"
        self.stream(self.first("europe-west4", model="chirp_2"), endpoint=host)
        retired = self.first("asia-southeast1", model="chirp_3")
        host = "asia-southeast1-speech.googleapis.com"
        self.fails("PermissionDenied", "no longer", retired, endpoint=host)

    def test_hosts_belong_to_locations(self) -> None:
        other = "Expected resource location to be global, but found eu in resource name."
        self.fails("InvalidArgument", other, self.first("eu"))
        self.stream(self.first("eu"), endpoint="eu-speech.googleapis.com:443")
        for host in ("https://eu-speech.googleapis.com", "us-east1-speech.googleapis.com", "eu"):
            self.fails("ServiceUnavailable", "DNS", self.first("eu"), endpoint=host)
        unnamed = self.first()
        unnamed.recognizer = "projects/a-project"
        self.fails("InvalidArgument", "resource", unnamed)

    def test_languages_belong_to_models(self) -> None:
        for code in ("de", "he-IL", "zh-CN", "cy-GB", "auto", "de-de"):
            self.fails("InvalidArgument", code, self.first(language_codes=[code]))
        self.fails("InvalidArgument", "at most 3", self.first(language_codes="de-DE"))
        self.fails("InvalidArgument", "no language", self.first(language_codes=[]))
        four = ["de-DE", "en-US", "fr-FR", "it-IT"]
        self.stream(self.first(language_codes=four[:3]))
        self.fails("InvalidArgument", "at most 3", self.first(language_codes=four))
        regional = self.first("us-central1", language_codes=four[:2])
        host = "us-central1-speech.googleapis.com"
        self.fails("InvalidArgument", "Multiple", regional, endpoint=host)
        chirp = self.first("us-central1", model="chirp_2", language_codes=["pl-PL"])
        self.fails("InvalidArgument", "pl-PL", chirp, endpoint=host)
        auto = self.first("us-central1", model="chirp_2", language_codes=["auto"])
        answer = self.stream(auto, *self.sound(SPEECH), endpoint=host)[-1]
        self.assertEqual(answer.results[0].language_code, "de-de")

    def test_decoding_and_features_are_checked(self) -> None:
        for rate in (0, 7999, 48001):
            decoding = {"encoding": "LINEAR16", "sample_rate_hertz": rate}
            first = self.first(explicit_decoding_config=decoding)
            self.fails("InvalidArgument", "sample rate", first)
        unset = self.first(explicit_decoding_config={"sample_rate_hertz": 16000})
        self.fails("InvalidArgument", "no encoding", unset)
        none = self.first(explicit_decoding_config=None)
        self.fails("InvalidArgument", "no decoding", none)
        confident = {"features": {"enable_word_confidence": True}, "model": "chirp_3"}
        host = "us-speech.googleapis.com"
        first = self.first("us", **confident)
        self.fails("InvalidArgument", "word_level_confidence", first, endpoint=host)

    def test_a_stream_has_an_age_and_wants_sound(self) -> None:
        self.control.stream_seconds = 1
        requests = (self.first(), *self.sound(voice.silence(2)))
        self.assertEqual(self.fails("Aborted", "409 Max duration of 5", *requests).code, 409)
        self.control.of_first_version = True
        self.fails("OutOfRange", "400 Exceeded maximum", *requests)
        self.control.reset()
        self.control.idle_seconds = 0.01
        gate = threading.Event()

        def requests_that_stop() -> Iterator[Any]:
            yield self.first()
            gate.wait(60)

        with self.assertRaises(self.errors.Aborted) as raised:
            self.client().streaming_recognize(requests_that_stop())
        self.assertIn("no more client requests", str(raised.exception))
        gate.set()

    def test_a_call_has_the_time_it_is_given(self) -> None:
        gate = threading.Event()

        def requests_that_stop() -> Iterator[Any]:
            yield self.first()
            gate.wait(60)

        with self.assertRaises(self.errors.DeadlineExceeded):
            self.client().streaming_recognize(requests_that_stop(), timeout=0.01)
        gate.set()

    def test_failures_come_when_they_are_asked_for(self) -> None:
        requests = (self.first(), *self.sound(SPEECH))
        for name, code in (
            ("Unauthenticated", 401), ("ResourceExhausted", 429), ("ServiceUnavailable", 503),
            ("NotFound", 404), ("DeadlineExceeded", 504),
        ):  # fmt: skip
            self.control.failure = name
            self.assertEqual(self.fails(name, str(code), *requests).code, code)
        self.control.failure, self.control.failure_reason = "PermissionDenied", "SERVICE_DISABLED"
        failure = self.fails("PermissionDenied", "403", *requests)
        self.assertEqual(failure.reason, "SERVICE_DISABLED")
        self.assertEqual(failure.grpc_status_code.name, "PERMISSION_DENIED")
        self.control.failure_after = 100
        self.stream(*requests)
        self.control.projects = ("another",)
        self.fails("PermissionDenied", "a-project", *requests)

    def test_requests_that_break_break_the_call(self) -> None:
        def requests() -> Iterable[Any]:
            yield self.first()
            raise ZeroDivisionError

        self.fails("Unknown", "iterating requests", *[self.first(), "no request"])
        with self.assertRaises(self.errors.Unknown):
            self.client().streaming_recognize(requests())
        self.refuses(TypeError, "request", lambda: self.client().streaming_recognize(request=1))
