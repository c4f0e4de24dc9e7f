"""Recognisers behind `/v1/audio/transcriptions`, in front of stand-ins of their servers."""

import threading
import unittest
from dataclasses import replace
from typing import Any

import numpy as np

from orvane_backend.audio import decode_pcm
from orvane_backend.recognisers import RecogniserError, Utterance
from orvane_backend.recognisers.near.address import parse_address
from orvane_backend.recognisers.near.http import TranscriptionsRecogniser
from orvane_backend.recognisers.near.named import Named, Timings, turn_of
from tests.standins import _wav
from tests.standins._http import Turn, json_reply
from tests.standins.transcription_server import TranscriptionServer

MODEL = "Systran/faster-whisper-small"
# Nothing waits long here; where one must never wait, the limits are generous.
TIMINGS = Timings(loading=1.0, pause=0.001, longest_pause=0.001)
TONE = decode_pcm(_wav.tone(1.5).astype("<i2").tobytes())


def recogniser_at(
    address: str, timings: Timings = TIMINGS, **wishes: Any
) -> TranscriptionsRecogniser:
    return TranscriptionsRecogniser(
        Named("transcriptions", parse_address(address), **wishes), timings
    )


class NearHttpCase(unittest.TestCase):
    def serve(self, *arguments: Any, **options: Any) -> TranscriptionServer:
        server = TranscriptionServer(*arguments, **options)
        self.enterContext(server)
        return server

    def loaded(
        self, server: TranscriptionServer, timings: Timings = TIMINGS, **wishes: Any
    ) -> TranscriptionsRecogniser:
        recogniser = recogniser_at(server.address, timings, **wishes)
        recogniser.load()
        return recogniser

    def told(self, work: Any, *arguments: Any) -> RecogniserError:
        with self.assertRaises(RecogniserError) as caught:
            work(*arguments)
        return caught.exception

    def code(self, work: Any, *arguments: Any) -> str:
        return self.told(work, *arguments).notice.code.removeprefix("recognition.near_")


class FlavoursTest(NearHttpCase):
    def test_every_server_hears_the_sound_that_was_sent(self) -> None:
        for flavour in ("speaches", "whisper_cpp", "localai", "whisperlivekit", "nemo"):
            with self.subTest(flavour), TranscriptionServer(flavour) as server:
                recogniser = self.loaded(server)
                for _ in range(2):
                    heard = recogniser.recognise(Utterance(TONE, "de", "Guten Tag"))
                    self.assertEqual(heard.text, "1.5 seconds of sound at level 3000.")
                    self.assertEqual(heard.language, "de")
                self.assertEqual(len(server.uploads), 2)
                for upload in server.uploads:
                    np.testing.assert_array_equal(upload.samples, _wav.tone(1.5))
                    self.assertEqual(upload.fields["prompt"], "Guten Tag")
                    self.assertEqual(upload.fields["language"], "de")
                    self.assertEqual(upload.fields["temperature"], "0")
                    self.assertEqual(upload.fields["response_format"], "verbose_json")
                self.assertEqual(server.faults, [])

    def test_the_only_recogniser_listed_is_named_and_the_persons_choice_before_it(self) -> None:
        server = self.serve("speaches", models=("kokoro-voice", MODEL))
        self.loaded(server).recognise(Utterance(TONE, "en"))
        two = self.serve("speaches", models=(MODEL, "other/whisper"))
        self.loaded(two, model="other/whisper").recognise(Utterance(TONE, "en"))
        self.assertEqual(server.uploads[0].fields["model"], MODEL)
        self.assertEqual(two.uploads[0].fields["model"], "other/whisper")

    def test_detection_leaves_the_language_out_and_takes_the_servers(self) -> None:
        answer = {"text": " Bonjour.\n", "language": "french"}
        for flavour, sent in (("speaches", None), ("whisper_cpp", "auto")):
            with self.subTest(flavour):
                server = self.serve(flavour)
                recogniser = self.loaded(server)
                recogniser.recognise(Utterance(TONE, "auto"))
                self.assertEqual(server.uploads[0].fields.get("language"), sent)
                server.plan.append(Turn(json_reply(answer, content_type="text/html")))
                heard = recogniser.recognise(Utterance(TONE, "auto"))
                self.assertEqual((heard.text, heard.language), ("Bonjour.", "fr"))
        server = self.serve("localai", models=("whisper-x",))
        self.loaded(server).recognise(Utterance(TONE, "de-AT"))
        self.assertEqual(server.uploads[0].fields["language"], "de")

    def test_only_the_last_words_before_are_sent(self) -> None:
        server = self.serve("speaches")
        recogniser = self.loaded(server)
        for context, sent in (
            ("", None), (" two\nwords ", "two words"), ("begin " + "x" * 194 + " end", "x" * 194 + " end"),
            ("字" * 300, "字" * 200),
        ):  # fmt: skip
            recogniser.recognise(Utterance(TONE, "en", context))
            self.assertEqual(server.uploads[-1].fields.get("prompt"), sent)

    def test_the_shown_name_tells_the_product_and_the_remark_why_it_serves(self) -> None:
        server = self.serve("speaches")
        authority = f"127.0.0.1:{server.port}"
        recogniser = self.loaded(server)
        self.assertEqual(recogniser.name, f"Speaches ({authority})")
        self.assertEqual(recogniser.remarks[0].code, "recognition.near_serves")
        self.assertEqual(recogniser.remarks[0].parameters["address"], authority)
        self.assertEqual(self.loaded(server, name="Küche").name, "Küche")
        for flavour, name in (("whisper_cpp", "whisper.cpp"), ("whisperlivekit", "WhisperLiveKit")):
            self.assertTrue(self.loaded(self.serve(flavour)).name.startswith(f"{name} ("))

    def test_nothing_said_is_no_text_and_no_sound_is_not_sent(self) -> None:
        server = self.serve("speaches")
        recogniser = self.loaded(server)
        silence = np.zeros(8000, np.float32)
        self.assertEqual(recogniser.recognise(Utterance(silence, "de")).text, "")
        before = len(server.requests)
        self.assertEqual(recogniser.recognise(Utterance(silence[:0], "de")).text, "")
        self.assertEqual(len(server.requests), before)


class PathsAndFormsTest(NearHttpCase):
    def paths(self, server: TranscriptionServer) -> list[str]:
        return [request.path for request in server.requests if request.method == "POST"]

    def test_the_other_path_of_whisper_cpp_is_found_once(self) -> None:
        server = self.serve("whisper_cpp")
        recogniser = self.loaded(server)
        for _ in range(2):
            recogniser.recognise(Utterance(TONE, "en"))
        self.assertEqual(
            self.paths(server), ["/v1/audio/transcriptions", "/inference", "/inference"]
        )

    def test_whisper_cpp_at_the_usual_path_is_told_not_to_listen_twice(self) -> None:
        server = self.serve("whisper_cpp", path="/v1/audio/transcriptions")
        self.loaded(server).recognise(Utterance(TONE, "en"))
        self.assertEqual(self.paths(server), ["/v1/audio/transcriptions"])
        self.assertEqual(server.faults, [])

    def test_a_server_with_neither_path_is_told(self) -> None:
        server = self.serve("whisper_cpp", path="/elsewhere")
        recogniser = self.loaded(server)
        self.assertEqual(self.code(recogniser.recognise, Utterance(TONE, "en")), "path")
        self.assertEqual(server.uploads, [])

    def test_a_form_that_is_refused_is_asked_for_once(self) -> None:
        for flavour, plain in (("nemo", False), ("whisper_cpp", True), ("speaches", False)):
            with self.subTest(flavour):
                server = self.serve(flavour, verbose=False, plain_errors=plain)
                recogniser = self.loaded(server)
                before = len(self.paths(server))
                texts = [recogniser.recognise(Utterance(TONE, "en")).text for _ in range(2)]
                self.assertEqual(texts, ["1.5 seconds of sound at level 3000."] * 2)
                forms = [upload.fields["response_format"] for upload in server.uploads]
                self.assertEqual(forms, ["json", "json"])
                extra = 2 if flavour == "whisper_cpp" else 1
                self.assertEqual(len(self.paths(server)) - before, 2 + extra)

    def test_a_passing_refusal_of_the_sound_changes_no_form(self) -> None:
        server = self.serve("speaches")
        recogniser = self.loaded(server)
        refusal = Turn(json_reply({"detail": "cannot decode"}, 400))
        server.plan += [refusal, refusal]
        error = self.told(recogniser.recognise, Utterance(TONE, "en"))
        self.assertEqual((error.notice.code, error.is_passing), ("recognition.near_sound", True))
        recogniser.recognise(Utterance(TONE, "en"))
        server.plan.append(refusal)
        self.assertEqual(self.code(recogniser.recognise, Utterance(TONE, "en")), "sound")
        forms = [upload.fields["response_format"] for upload in server.uploads]
        self.assertEqual(forms, ["verbose_json"])
        self.assertEqual(server.plan, [])


class LoadingTest(NearHttpCase):
    def test_a_server_that_loads_its_model_is_waited_for(self) -> None:
        for flavour in ("speaches", "whisper_cpp", "localai", "whisperlivekit", "nemo"):
            for again in ("0", "Wed, 21 Oct 2026 07:28:00 GMT", None):
                with self.subTest(flavour, again=again):
                    server = self.serve(flavour, retry_after=again, loading=3)
                    recogniser = self.loaded(server)
                    server.loading = 3
                    heard = recogniser.recognise(Utterance(TONE, "en"))
                    self.assertIn("level", heard.text)
                    self.assertLess(server.loading, 0)

    def test_one_that_takes_long_is_told_as_passing(self) -> None:
        server = self.serve("localai", retry_after="100000")
        timings = replace(TIMINGS, loading=0.01, longest_pause=0.004)
        recogniser = self.loaded(server, timings)
        server.loading = 1000
        error = self.told(recogniser.recognise, Utterance(TONE, "en"))
        self.assertEqual((error.notice.code, error.is_passing), ("recognition.near_loading", True))
        # Asked at once, and again after each pause that is left.
        self.assertEqual(server.loading, 1000 - 3)

    def test_one_that_is_not_ready_when_it_is_greeted_is_told_as_passing(self) -> None:
        for flavour in ("whisper_cpp", "whisperlivekit", "nemo"):
            server = self.serve(flavour, loading=1000)
            error = self.told(recogniser_at(server.address, replace(TIMINGS, loading=0.0)).load)
            self.assertEqual(error.notice.code, "recognition.near_loading")
            self.assertTrue(error.is_passing)

    def test_closing_ends_the_waiting(self) -> None:
        server = self.serve("localai", retry_after=None)
        recogniser = self.loaded(
            server, Timings(loading=5000.0, pause=1000.0, longest_pause=1000.0)
        )
        server.loading = 1000
        errors: list[RecogniserError] = []
        thread = threading.Thread(
            target=lambda: errors.append(self.told(recogniser.recognise, Utterance(TONE, "en")))
        )
        thread.start()
        server.wait_until(lambda: any(request.method == "POST" for request in server.requests))
        recogniser.close()
        thread.join(60)
        self.assertEqual([error.is_passing for error in errors], [True])

    def test_a_busy_server_is_passing(self) -> None:
        server = self.serve("speaches", plan=[Turn(json_reply({"error": "x"}, 429))] * 2)
        recogniser = self.loaded(server, replace(TIMINGS, loading=0.001))
        error = self.told(recogniser.recognise, Utterance(TONE, "en"))
        self.assertEqual((error.notice.code, error.is_passing), ("recognition.near_busy", True))


class TurnsTest(NearHttpCase):
    def test_one_server_is_asked_one_thing_at_a_time_whoever_asks(self) -> None:
        server = self.serve("speaches", plan=[Turn(hold=True)] * 3)
        recognisers = [self.loaded(server, model=model) for model in (MODEL, "", "whisper-1")]
        server.models.append("whisper-1")
        texts: list[str] = []

        def hear(recogniser: TranscriptionsRecogniser) -> None:
            texts.append(recogniser.recognise(Utterance(TONE, "en")).text)

        threads = [threading.Thread(target=hear, args=(one,)) for one in recognisers]
        for thread in threads:
            thread.start()
        for _ in threads:
            server.wait_until(lambda: server.held == 1)
            self.assertEqual(server.most_at_once, 1)
            server.release()
        for thread in threads:
            thread.join(60)
        self.assertEqual((len(texts), server.most_at_once), (3, 1))

    def test_other_servers_have_turns_of_their_own(self) -> None:
        one, other = parse_address("http://h:1"), parse_address("http://h:2/v1")
        self.assertIs(turn_of(one), turn_of(parse_address("http://h:1/v1")))
        first = turn_of(one)
        self.assertIsNot(first, turn_of(other))


class LanguagesTest(unittest.TestCase):
    def test_only_the_languages_that_are_named_are_served(self) -> None:
        address = "http://127.0.0.1:1"
        chosen = recogniser_at(address, languages=("de", "no"))
        for language in ("de", "de-AT", "nb", "auto"):
            self.assertIsNone(chosen.refusal(language))
        refusal = chosen.refusal("fr-FR")
        self.assertIsNotNone(refusal)
        assert refusal
        self.assertEqual(refusal.parameters["language"], "fr")
        self.assertIsNone(recogniser_at(address).refusal("fr"))
        # What nobody tells is the one language it is there for.
        self.assertEqual(recogniser_at(address, languages=("de",)).language_of("auto", None), "de")
        self.assertEqual(chosen.language_of("auto", None), "en")


if __name__ == "__main__":
    unittest.main()
