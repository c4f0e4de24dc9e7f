"""Recognisers behind `ws /v1/listen`, in front of a stand-in of WhisperLiveKit's."""

import unittest
from dataclasses import replace
from typing import Any, Mapping

import numpy as np

from orvane_backend.audio import decode_pcm
from orvane_backend.recognisers import RecogniserError, Recognition, Utterance, Word
from orvane_backend.recognisers.near.address import parse_address
from orvane_backend.recognisers.near.listen import ListenRecogniser
from orvane_backend.recognisers.near.named import Named, Timings
from tests.standins import _wav
from tests.standins._http import Reply, redirect_to
from tests.standins._websocket import Upgrade, WebSocketStandIn, say
from tests.standins.listen_server import ListenServer

TONE = decode_pcm(_wav.tone(2.53).astype("<i2").tobytes())


def recogniser_at(address: str, timings: Timings = Timings(), **wishes: Any) -> ListenRecogniser:
    return ListenRecogniser(Named("listen", parse_address(address), **wishes), timings)


def results(text: object, final: bool = True, **alternative: Any) -> Mapping[str, Any]:
    channel = {"alternatives": [{"transcript": text, "confidence": 0.0, **alternative}]}
    return {"type": "Results", "is_final": final, "channel": channel}


class Scripted(WebSocketStandIn):
    """Says this after it was told that the sound is over, or else before it hears any."""

    def __init__(self, *messages: Any, metadata: bool = True, code: int = 1000) -> None:
        super().__init__()
        self._messages = messages
        self._metadata = metadata
        self._code = code

    async def talk(self, connection: Any, request: Upgrade) -> None:
        if self._metadata:
            await say(connection, {"type": "Metadata"})
            while not isinstance(await connection.recv(), str):
                pass
        for message in self._messages:
            text = isinstance(message, (str, bytes))
            await (connection.send(message) if text else say(connection, message))
        await connection.close(self._code, "so")


class Elsewhere(WebSocketStandIn):
    """Sends everybody to another address, or away."""

    def __init__(self, reply: Reply) -> None:
        super().__init__()
        self._reply = reply

    def refuse(self, request: Upgrade) -> Reply:
        return self._reply


class ListenCase(unittest.TestCase):
    def start(self, server: Any) -> Any:
        return self.enterContext(server)

    def failed(self, work: Any, *arguments: Any) -> RecogniserError:
        with self.assertRaises(RecogniserError) as caught:
            work(*arguments)
        return caught.exception

    def code(self, recogniser: ListenRecogniser) -> str:
        error = self.failed(recogniser.recognise, Utterance(TONE, "de"))
        return error.notice.code.removeprefix("recognition.near_")


class ServerTest(ListenCase):
    def test_the_sound_is_heard_as_a_whole_and_the_finals_are_joined(self) -> None:
        server = self.start(ListenServer())
        recogniser = recogniser_at(server.address)
        recogniser.load()
        heard = recogniser.recognise(Utterance(TONE, "de"))
        self.assertEqual(heard, Recognition("2.5 seconds of sound at level 3000.", "de"))
        greeting, conversation = server.conversations
        self.assertAlmostEqual(conversation.seconds, 2.53)
        self.assertEqual(conversation.messages, [{"type": "CloseStream"}])
        server.wait_until(lambda: len(server.closings) == 2)
        self.assertEqual((greeting.seconds, greeting.messages), (0.0, conversation.messages))
        self.assertEqual(server.faults, [])

    def test_all_segments_of_an_utterance_are_taken(self) -> None:
        server = self.start(ListenServer(hear=lambda sound: f"{len(sound) / 16000:.1f}"))
        parts = [_wav.tone(1.0), _wav.silence(0.5), _wav.tone(0.7), _wav.silence(0.5)]
        samples = decode_pcm(np.concatenate(parts).astype("<i2").tobytes())
        heard = recogniser_at(server.address).recognise(Utterance(samples, "en"))
        # Each ends after 0.3 s of silence, the last holds what is left.
        self.assertEqual(heard.text, "1.3 1.2 0.2")

    def test_the_query_is_one_that_the_server_knows(self) -> None:
        server = self.start(ListenServer())
        recogniser = recogniser_at(server.address)
        for language, sent in (("de-AT", "de"), ("nb", "no"), ("auto", None)):
            recogniser.recognise(Utterance(TONE, language))
            self.assertEqual(server.conversations[-1].upgrade.query.get("language"), sent)
        self.assertEqual(server.conversations[-1].ignored, ())
        self.assertNotIn("authorization", server.conversations[-1].upgrade.headers)

    def test_the_key_is_sent_as_a_header_and_its_refusals_are_told(self) -> None:
        for options in ({}, {"key_status": 401}):
            server = self.start(ListenServer(key="right", **options))
            right = recogniser_at(server.address, key="right")
            right.load()
            self.assertIn("level", right.recognise(Utterance(TONE, "en")).text)
            upgrade = server.conversations[-1].upgrade
            self.assertEqual(upgrade.headers["authorization"], "Token right")
            self.assertNotIn("token", upgrade.query)
            for wishes, code in (({"key": "wrong"}, "key"), ({}, "key_missing")):
                wrong = recogniser_at(server.address, **wishes)
                self.assertEqual(self.code(wrong), code)
                self.assertTrue(self.failed(wrong.load).notice.code.endswith(code))

    def test_a_refusal_is_told_in_the_servers_words(self) -> None:
        server = self.start(ListenServer())
        recogniser = recogniser_at(server.address)
        error = self.failed(recogniser.recognise, Utterance(TONE, "x1"))
        self.assertEqual(error.notice.code, "recognition.near_refused")
        self.assertIn("language cannot be x1", str(error))

    def test_no_sound_is_not_sent(self) -> None:
        server = self.start(ListenServer())
        heard = recogniser_at(server.address).recognise(Utterance(TONE[:0], "de"))
        self.assertEqual((heard.text, server.requests), ("", []))

    def test_a_connection_that_ends_in_the_middle_is_told(self) -> None:
        server = self.start(ListenServer(drops_after=1.0))
        self.assertEqual(self.code(recogniser_at(server.address)), "broken_off")

    def test_a_server_that_is_gone_is_told(self) -> None:
        with ListenServer() as server:
            recogniser = recogniser_at(server.address)
            recogniser.load()
        self.assertEqual(self.code(recogniser), "silent")
        self.assertEqual(self.failed(recogniser.load).notice.code, "recognition.near_silent")


class ScriptedTest(ListenCase):
    def heard(self, *messages: Any, language: str = "en") -> Recognition:
        server = self.start(Scripted(*messages, {"type": "Metadata"}))
        return recogniser_at(server.address).recognise(Utterance(TONE, language))

    def test_only_finals_count_and_unknown_messages_are_passed_over(self) -> None:
        heard = self.heard(
            results("on", final=False), {"type": "SpeechStarted"}, results(" one\n"),
            results("", final=True), {"type": "UtteranceEnd"}, results("two"),
            {"type": "Results", "is_final": True}, results(None), results(5),
            {"type": "Results", "is_final": True, "channel": {"alternatives": []}},
        )  # fmt: skip
        self.assertEqual(heard, Recognition("one two", "en"))
        # A confidence of nothing is one that is not told.
        self.assertIsNone(heard.evidence.confidence)

    def test_words_are_those_of_all_finals_or_none(self) -> None:
        one = [{"word": "one", "punctuated_word": "One,", "start": 0.1, "end": 0.4}]
        two = [{"word": "two", "start": 1, "end": 1.5}]
        heard = self.heard(results("One,", words=one), results(""), results("two", words=two))
        self.assertEqual(heard.words, (Word("One,", 0.1, 0.4), Word("two", 1.0, 1.5)))
        self.assertEqual(self.heard(results("One,", words=one), results("two")).words, ())
        for wrong in ("x", [7], [{"word": "two", "start": 1}], [{"start": 1, "end": 2}]):
            self.assertEqual(self.heard(results("two", words=wrong)).words, ())

    def test_a_detected_language_is_taken_where_none_is_asked_for(self) -> None:
        french = results("oui", languages=["fr"])
        self.assertEqual(self.heard(french, language="auto").language, "fr")
        self.assertEqual(self.heard(french, language="de").language, "de")
        self.assertEqual(self.heard(results("oui"), language="auto").language, "en")

    def test_what_cannot_be_read_is_told(self) -> None:
        for nonsense in ("nonsense", b"\x00\xff", "[]", '{"type": 5}', "[" * 100_000):
            server = self.start(Scripted(nonsense))
            self.assertEqual(self.code(recogniser_at(server.address)), "unreadable")
        server = self.start(Scripted(results("early"), metadata=False))
        self.assertEqual(self.code(recogniser_at(server.address)), "unreadable")

    def test_an_end_before_the_last_word_is_told(self) -> None:
        for code in (1000, 1011, 4400):
            server = self.start(Scripted(results("half"), code=code))
            recogniser = recogniser_at(server.address)
            error = self.failed(recogniser.recognise, Utterance(TONE, "de"))
            self.assertEqual(error.notice.code, "recognition.near_broken_off")
            self.assertIn(f"{code} so", str(error))
        for code in (1008, 4401):
            server = self.start(Scripted(code=code))
            self.assertEqual(self.code(recogniser_at(server.address)), "key_missing")

    def test_a_redirect_is_not_followed(self) -> None:
        target = self.start(ListenServer())
        for status in (301, 302, 303, 307, 308):
            server = self.start(Elsewhere(redirect_to(f"{target.address}/v1/listen", status)))
            self.assertEqual(self.code(recogniser_at(server.address, key="k")), "redirect")
        self.assertEqual(target.requests, [])

    def test_refusals_before_the_conversation_are_told(self) -> None:
        for status, code in ((404, "path"), (503, "busy"), (500, "silent"), (403, "key_missing")):
            server = self.start(Elsewhere(Reply(status)))
            self.assertEqual(self.code(recogniser_at(server.address)), code)

    def test_a_server_that_never_answers_is_given_up(self) -> None:
        class Silent(ListenServer):
            async def talk(self, connection: Any, request: Upgrade) -> None:
                if self.greets:
                    await say(connection, {"type": "Metadata"})
                async for _ in connection:
                    pass

            greets = False

        server = self.start(Silent())
        timings = replace(Timings(), greet=0.05, answer=0.05)
        self.assertEqual(self.code(recogniser_at(server.address, timings)), "late")
        server.greets = True
        self.assertEqual(self.code(recogniser_at(server.address, timings)), "late")


if __name__ == "__main__":
    unittest.main()
