"""Recognisers behind sherpa-onnx's streaming servers, in front of stand-ins of both."""

import unittest
from dataclasses import replace
from typing import Any

import numpy as np

from orvane_backend.audio import decode_pcm
from orvane_backend.recognisers import RecogniserError, Recognition, Utterance
from orvane_backend.recognisers.near.address import parse_address
from orvane_backend.recognisers.near.named import Named, Timings
from orvane_backend.recognisers.near.sherpa import SherpaRecogniser, floats
from tests.standins import _wav
from tests.standins._http import redirect_to
from tests.standins._websocket import Upgrade, WebSocketStandIn, say
from tests.standins.sherpa_server import KINDS, SherpaServer
from tests.test_near_listen import Elsewhere

SOUND = _wav.tone(2.53)
TONE = decode_pcm(SOUND.astype("<i2").tobytes())


def recogniser_at(address: str, timings: Timings = Timings(), **wishes: Any) -> SherpaRecogniser:
    return SherpaRecogniser(Named("sherpa", parse_address(address), **wishes), timings)


class Scripted(WebSocketStandIn):
    """Says this after `Done`, and closes."""

    def __init__(self, *messages: Any, code: int = 1000, early: bool = False) -> None:
        super().__init__()
        self._messages = messages
        self._code = code
        self._early = early

    async def talk(self, connection: Any, request: Upgrade) -> None:
        while not self._early and await connection.recv() != "Done":
            pass
        for message in self._messages:
            text = isinstance(message, (str, bytes))
            await (connection.send(message) if text else say(connection, message))
        await connection.close(self._code)


class SherpaTest(unittest.TestCase):
    def start(self, server: Any) -> Any:
        return self.enterContext(server)

    def code(self, recogniser: SherpaRecogniser, samples: Any = TONE) -> str:
        with self.assertRaises(RecogniserError) as caught:
            recogniser.recognise(Utterance(samples, "de"))
        return caught.exception.notice.code.removeprefix("recognition.near_")

    def heard(self, *messages: Any) -> str:
        server = self.start(Scripted(*messages))
        return recogniser_at(server.address).recognise(Utterance(TONE, "en")).text

    def test_both_servers_hear_the_whole_sound(self) -> None:
        for kind in KINDS:
            with self.subTest(kind):
                server = self.start(SherpaServer(kind))
                recogniser = recogniser_at(server.address)
                recogniser.load()
                heard = recogniser.recognise(Utterance(TONE, "de"))
                self.assertEqual(heard, Recognition("2.5 seconds of sound at level 3000.", "de"))
                np.testing.assert_array_equal(server.sounds[-1], SOUND)
                self.assertEqual(server.faults, [])
                self.assertEqual(recogniser.name, f"sherpa-onnx (127.0.0.1:{server.port})")

    def test_segments_are_joined(self) -> None:
        for kind in KINDS:
            with self.subTest(kind):
                server = SherpaServer(kind, hear=lambda sound: f"{len(sound) / 16000:.1f}")
                self.start(server)
                parts = [_wav.tone(1.0), _wav.silence(1.5), _wav.tone(0.7)]
                samples = decode_pcm(np.concatenate(parts).astype("<i2").tobytes())
                heard = recogniser_at(server.address).recognise(Utterance(samples, "en"))
                # The first ends after 1.2 s of silence.
                self.assertEqual(heard.text, "2.2 1.0")

    def test_the_latest_text_of_a_segment_counts_and_they_go_by_number(self) -> None:
        self.assertEqual(
            self.heard(
                {"text": " on", "segment": 0}, {"text": " one\n", "segment": 0, "is_final": True},
                {"text": "thr", "segment": 2}, {"text": "two", "segment": 1},
                {"text": "three", "segment": 2}, {"text": "", "segment": 3}, "Done!",
            ),
            "one two three",
        )  # fmt: skip
        self.assertEqual(self.heard({"text": "alone"}), "alone")

    def test_the_samples_are_small_floats_in_whole_numbers(self) -> None:
        data = floats(np.array([0.5, -2.0, 2.0], np.float32))
        self.assertEqual(data, b"\x00\x00\x00\x3f\x00\x00\x80\xbf\x00\x00\x80\x3f")

    def test_messages_are_read_while_sound_is_sent(self) -> None:
        class Talkative(WebSocketStandIn):
            """Listens on only when all that it has to say first is on its way."""

            async def talk(self, connection: Any, request: Upgrade) -> None:
                for number in range(80):
                    await say(connection, {"text": str(number) + " " * 900_000, "segment": 0})
                while await connection.recv() != "Done":
                    pass
                await connection.send("Done!")

        server = self.start(Talkative())
        # In both directions more than all buffers between hold.
        samples = np.zeros(500 * 16000, np.float32)
        heard = recogniser_at(server.address).recognise(Utterance(samples, "en"))
        self.assertEqual(heard.text, "79")

    def test_no_sound_is_not_sent(self) -> None:
        server = self.start(SherpaServer())
        heard = recogniser_at(server.address).recognise(Utterance(TONE[:0], "de"))
        self.assertEqual((heard.text, server.requests), ("", []))

    def test_a_server_that_is_full_is_passing(self) -> None:
        server = self.start(SherpaServer("python", most=0))
        recogniser = recogniser_at(server.address)
        for work in (recogniser.load, lambda: recogniser.recognise(Utterance(TONE, "en"))):
            with self.assertRaises(RecogniserError) as caught:
                work()
            self.assertEqual(caught.exception.notice.code, "recognition.near_busy")
            self.assertTrue(caught.exception.is_passing)

    def test_ends_that_are_none_are_told(self) -> None:
        for kind in KINDS:
            server = self.start(SherpaServer(kind, drops_after=1.0))
            self.assertEqual(self.code(recogniser_at(server.address)), "broken_off")
        half = {"text": "half", "segment": 0}
        for scripted in (Scripted(half, code=1011), Scripted(half, early=True)):
            server = self.start(scripted)
            # Longer than what is on its way when the end comes.
            samples = np.concatenate([TONE] * 100)
            self.assertEqual(self.code(recogniser_at(server.address), samples), "broken_off")

    def test_what_cannot_be_read_is_told(self) -> None:
        for nonsense in ("Done", "nonsense", b"Done!", "[]", '{"segment": 0}', '{"text": 5}'):
            server = self.start(Scripted(nonsense))
            self.assertEqual(self.code(recogniser_at(server.address)), "unreadable")

    def test_a_redirect_is_not_followed(self) -> None:
        target = self.start(SherpaServer())
        server = self.start(Elsewhere(redirect_to(target.address)))
        self.assertEqual(self.code(recogniser_at(server.address)), "redirect")
        self.assertEqual(target.requests, [])

    def test_a_server_that_is_gone_or_never_answers_is_told(self) -> None:
        class Silent(SherpaServer):
            async def talk(self, connection: Any, request: Upgrade) -> None:
                async for _ in connection:
                    pass

        with Silent() as server:
            recogniser = recogniser_at(server.address, replace(Timings(), answer=0.05))
            self.assertEqual(self.code(recogniser), "late")
        self.assertEqual(self.code(recogniser), "silent")


if __name__ == "__main__":
    unittest.main()
