"""What servers of `/v1/audio/transcriptions` refuse, and answers that are none."""

import unittest
import unittest.mock
from dataclasses import replace

from orvane_backend.recognisers import Utterance
from tests.standins._http import Reply, Turn, html_page, json_reply, redirect_to, text_reply
from tests.standins.transcription_server import TranscriptionServer
from tests.test_near_http import MODEL, TIMINGS, TONE, NearHttpCase, recogniser_at


class RefusalsTest(NearHttpCase):
    def test_a_missing_model_is_said_with_its_name(self) -> None:
        server = self.serve("speaches")
        error = self.told(recogniser_at(server.address, model="no/such").load)
        self.assertEqual(error.notice.code, "recognition.near_model")
        self.assertEqual(error.notice.parameters["model"], "no/such")
        self.assertIn(MODEL, str(error))
        self.assertFalse(error.is_passing)

    def test_a_model_that_goes_later_is_said_with_its_name(self) -> None:
        for flavour in ("speaches", "localai", "nemo"):
            with self.subTest(flavour):
                server = self.serve(flavour)
                recogniser = self.loaded(server, model=MODEL)
                server.models[:] = ["other"]
                error = self.told(recogniser.recognise, Utterance(TONE, "en"))
                self.assertEqual(error.notice.code, "recognition.near_model")
                self.assertEqual(error.notice.parameters["model"], MODEL)

    def test_a_model_that_must_be_named_is_told(self) -> None:
        for flavour in ("speaches", "localai"):
            with self.subTest(flavour):
                server = self.serve(flavour, models=("a/whisper", "b/whisper"))
                recogniser = self.loaded(server)
                self.assertEqual(
                    self.code(recogniser.recognise, Utterance(TONE, "en")), "model_unset"
                )

    def test_keys_are_sent_and_their_refusals_told(self) -> None:
        for flavour, hidden in (("speaches", False), ("localai", True), ("nemo", False)):
            with self.subTest(flavour):
                server = self.serve(flavour, key="right", hidden_errors=hidden)
                right = self.loaded(server, key="right")
                self.assertIn("level", right.recognise(Utterance(TONE, "en")).text)
                self.assertEqual(self.code(recogniser_at(server.address).load), "key_missing")
                wrong = recogniser_at(server.address, key="wrong")
                self.assertEqual(self.code(wrong.load), "key")
                self.assertEqual(self.code(wrong.recognise, Utterance(TONE, "en")), "key")
                self.assertNotIn("wrong", repr(wrong.named))

    def test_a_redirect_is_not_followed(self) -> None:
        elsewhere = self.serve("speaches")
        target = f"{elsewhere.address}/v1/audio/transcriptions"
        for status in (301, 302, 303, 307, 308):
            server = self.serve("speaches", plan=[Turn(redirect_to(target, status))])
            recogniser = self.loaded(server)
            self.assertEqual(self.code(recogniser.recognise, Utterance(TONE, "en")), "redirect")
        self.assertEqual(elsewhere.requests, [])

    def test_no_proxy_of_the_environment_is_used(self) -> None:
        server, proxy = self.serve("speaches"), self.serve("speaches")
        names = ("http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY")
        with unittest.mock.patch.dict("os.environ", {name: proxy.address for name in names}):
            self.loaded(server).recognise(Utterance(TONE, "en"))
        self.assertEqual(proxy.requests, [])

    def test_what_a_server_says_is_shown_whatever_its_shape(self) -> None:
        shapes: list[tuple[Reply, str]] = [
            (json_reply({"detail": "the disk is full"}, 500), "the disk is full"),
            (json_reply({"error": {"message": "the disk is full"}}, 500), "the disk is full"),
            (json_reply({"error": "the disk is full"}, 500, content_type="text/html"), "full"),
            (text_reply("the disk\nis full", 500), "the disk is full"),
            (html_page(502), "502"),
            (Reply(500), "Internal Server Error"),
            (Reply(599), "?"),
        ]
        server = self.serve("speaches")
        recogniser = self.loaded(server)
        for reply, said in shapes:
            with self.subTest(reply):
                server.plan.append(Turn(reply))
                error = self.told(recogniser.recognise, Utterance(TONE, "en"))
                self.assertEqual(error.notice.code, "recognition.near_failed")
                self.assertIn(said, str(error.notice.parameters["reason"]))
                self.assertNotIn("<", str(error))

    def test_a_success_that_is_none_is_no_text(self) -> None:
        server = self.serve("speaches")
        recogniser = self.loaded(server)
        for reply, code in (
            (html_page(200), "unreadable"), (json_reply([]), "unreadable"), (Reply(), "unreadable"),
            (json_reply({"text": None}), "unreadable"), (text_reply("Hello"), "unreadable"),
            (json_reply({"error": "no 'file' field in the request"}), "refused"),
        ):  # fmt: skip
            with self.subTest(reply):
                server.plan.append(Turn(reply))
                self.assertEqual(self.code(recogniser.recognise, Utterance(TONE, "en")), code)

    def test_an_error_told_as_a_success_is_passing_once_it_has_served(self) -> None:
        server = self.serve("speaches")
        recogniser = self.loaded(server)
        refusal = Turn(json_reply({"error": "failed to read audio data"}))
        for has_served in (False, True):
            server.plan.append(refusal)
            error = self.told(recogniser.recognise, Utterance(TONE, "en"))
            self.assertEqual(error.is_passing, has_served)
            recogniser.recognise(Utterance(TONE, "en"))

    def test_an_answer_that_breaks_off_or_never_ends_is_told(self) -> None:
        server = self.serve(
            "speaches", plan=[Turn(cut=True), Turn(json_reply({"text": "x" * (5 << 20)}))]
        )
        recogniser = self.loaded(server)
        self.assertEqual(self.code(recogniser.recognise, Utterance(TONE, "en")), "silent")
        self.assertEqual(self.code(recogniser.recognise, Utterance(TONE, "en")), "too_long")

    def test_a_server_that_does_not_answer_in_time_is_given_up(self) -> None:
        server = self.serve("speaches", plan=[Turn(hold=True)])
        recogniser = self.loaded(server, replace(TIMINGS, answer=0.05))
        self.assertEqual(self.code(recogniser.recognise, Utterance(TONE, "en")), "late")

    def test_a_server_that_is_gone_is_told(self) -> None:
        with TranscriptionServer("speaches") as server:
            recogniser = self.loaded(server)
        self.assertEqual(self.code(recogniser.load), "silent")
        self.assertEqual(self.code(recogniser.recognise, Utterance(TONE, "en")), "silent")


if __name__ == "__main__":
    unittest.main()
