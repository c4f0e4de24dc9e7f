"""A Vosk server's messages, and the engine in front of a stand-in of either kind of server."""

import asyncio
import json
import socket
import threading
import unittest
from contextlib import suppress
from typing import Any, Optional
from unittest import mock

import numpy as np

from orvane_backend.audio import encode_pcm
from orvane_backend.recognisers import RecogniserError, Recognition, Utterance, Word
from orvane_backend.recognisers import vosk
from orvane_backend.recognisers import vosk_messages as messages
from orvane_backend.recognisers.vosk import VoskRecogniser
from orvane_backend.websocket import ConnectionClosed, serve
from tests.standins.vosk_server import VoskServer

import standin_voice as voice

SPEECH = voice.speak("guten tag")


class MessageTest(unittest.TestCase):
    def test_the_texts_are_right_to_the_byte(self) -> None:
        self.assertEqual(messages.END, '{"eof" : 1}')
        self.assertEqual(
            messages.CONFIG, '{ "config" : { "sample_rate" : 16000, "words" : true } }'
        )

    def test_sound_goes_in_quarters_of_a_second(self) -> None:
        pcm = bytes(range(256)) * 100
        blocks = list(messages.blocks(pcm))
        self.assertEqual(b"".join(blocks), pcm)
        self.assertEqual([len(block) for block in blocks], [8000, 8000, 8000, 1600])
        self.assertEqual(list(messages.blocks(b"")), [])

    def test_the_three_shapes_of_answers(self) -> None:
        word = '{"conf" : 0.5,"end" : 1.2,"start" : 0.9,"word" : "hallo"}'
        hello = messages.Answer(True, "hallo", (Word("hallo", 0.9, 1.2),), (0.5,))
        for text, answer in (
            ('{"partial" : "hal"}', messages.Answer(False)),
            ('{"partial" : ""}', messages.Answer(False)),
            ('{"text" : "hallo welt"}', messages.Answer(True, "hallo welt")),
            ('{"text": ""}', messages.Answer(True)),
            (f'{{"result" : [{word}],"text" : "hallo"}}', hello),
            ('{"alternatives" : []}', messages.Answer(True)),
            (
                '{"alternatives" : [{"confidence" : 231.4,"text" : " eins"},{"text" : "zwei"}]}',
                messages.Answer(True, "eins"),
            ),
        ):
            self.assertEqual(messages.parse(text), answer)

    def test_other_answers_are_unreadable(self) -> None:
        for text in ("nonsense", "[]", "1", "{}", '{"text": 1}', '{"text": "a", "result": 1}',
                     '{"text": "a", "result": [{}]}', '{"alternatives": [1]}',
                     b"\xff\xfe\x00"):  # fmt: skip
            with self.assertRaises(messages.Unreadable):
                messages.parse(text)


class VoskTest(unittest.TestCase):
    def engine(self, server: Any) -> VoskRecogniser:
        recogniser = VoskRecogniser("127.0.0.1", server.port)
        recogniser.load()
        return recogniser

    def hear(self, sound: Any, language: str = "de", **behaviour: Any) -> Recognition:
        with VoskServer(**behaviour) as server:
            return self.engine(server).recognise(Utterance(sound, language))

    def told(self, recogniser: VoskRecogniser, code: str) -> None:
        with self.assertRaises(RecogniserError) as raised:
            recogniser.recognise(Utterance(SPEECH, "de"))
        self.assertEqual(raised.exception.notice.code, code)
        self.assertFalse(raised.exception.is_passing)
        self.assertIn("127.0.0.1", raised.exception.notice.german)

    def test_sentences_ended_on_the_way_and_the_last_are_joined(self) -> None:
        sound = np.concatenate([SPEECH, voice.silence(1.0), voice.speak("vielen dank")])
        heard = self.hear(sound)
        self.assertEqual((heard.text, heard.language), ("guten tag vielen dank", "de"))
        self.assertEqual([word.text for word in heard.words], heard.text.split())
        for word, begin in zip(heard.words, (0.0, 0.4, 1.8, 2.2)):
            self.assertAlmostEqual(word.begin, begin, places=1)
            self.assertAlmostEqual(word.end, begin + 0.3, places=1)
        self.assertEqual(heard.evidence.confidence, 1.0)

    def test_the_server_gets_settings_sound_and_the_end_and_nothing_else(self) -> None:
        with VoskServer() as server:
            recogniser = self.engine(server)
            self.assertTrue(server.wait_for("closed"))
            before = len(server.log)
            recogniser.recognise(Utterance(SPEECH, "de"))
            self.assertTrue(server.wait_for("closed", 2))
            said = server.log[before:]
        self.assertEqual(said[0], ("config", {"sample_rate": 16000, "words": True}))
        self.assertEqual([kind for kind, _ in said[-2:]], ["eof", "closed"])
        self.assertEqual({kind for kind, _ in said[1:-2]}, {"audio"})
        self.assertEqual(b"".join(sound for _, sound in said[1:-2]), encode_pcm(SPEECH))

    def test_one_answer_is_read_for_each_block(self) -> None:
        with VoskServer() as server:
            recogniser = self.engine(server)
            before = len(server.answers)
            recogniser.recognise(Utterance(SPEECH, "de"))
            self.assertEqual(len(server.answers) - before, 5)

    def test_alternatives_give_the_best_one(self) -> None:
        heard = self.hear(SPEECH, max_alternatives=3)
        self.assertEqual(heard.text, "guten tag")
        self.assertEqual(len(heard.words), 2)
        self.assertIsNone(heard.evidence.confidence)

    def test_silence_gives_no_text(self) -> None:
        for seconds in (0.0, 0.01, 6.0):
            self.assertEqual(self.hear(voice.silence(seconds), "auto").text, "")

    def test_the_language_is_the_one_asked_for_and_english_without_a_wish(self) -> None:
        for asked, told in (("auto", "en"), ("pt-BR", "pt"), ("nb", "no")):
            self.assertEqual(self.hear(SPEECH, asked).language, told)

    def test_a_server_that_knows_no_settings_gets_none(self) -> None:
        with VoskServer(kind="cpp", sample_rate=16000) as server:
            recogniser = self.engine(server)
            self.assertEqual(
                [remark.code for remark in recogniser.remarks], ["recognition.rate_unsettable"]
            )
            texts = len(server.events("text"))
            for _ in range(2):
                heard = recogniser.recognise(Utterance(SPEECH, "de"))
                self.assertEqual(heard.text, "guten tag")
            self.assertEqual(len(server.events("text")), texts)

    def test_a_server_that_knows_settings_is_not_told_to_be_one_that_does_not(self) -> None:
        with VoskServer() as server:
            self.assertEqual(self.engine(server).remarks, ())

    def test_a_server_that_is_not_there_is_told(self) -> None:
        with VoskServer() as server:
            recogniser = self.engine(server)
        self.told(recogniser, "recognition.unreachable")
        with self.assertRaises(RecogniserError) as raised:
            recogniser.load()
        self.assertEqual(raised.exception.notice.code, "recognition.unreachable")

    def test_a_server_that_says_nothing_is_told(self) -> None:
        with VoskServer() as server:
            recogniser = self.engine(server)
            recogniser._answer_seconds = 0.05
            with mock.patch.object(server, "behaviour", _but(server, silent_after=1)):
                with mock.patch.object(vosk, "_SLOWEST", 0.0):
                    self.told(recogniser, "recognition.no_answer")

    def test_a_server_that_dies_in_the_middle_is_asked_once_more(self) -> None:
        with VoskServer() as server:
            recogniser = self.engine(server)
            before = server.connections
            with mock.patch.object(server, "behaviour", _but(server, dies_after=2)):
                self.told(recogniser, "recognition.broken_off")
            self.assertEqual(server.connections - before, 2)

    def test_a_server_that_is_there_again_answers_the_second_time(self) -> None:
        with Scripted(dies=[True, False]) as server:
            recogniser = VoskRecogniser("127.0.0.1", server.port)
            self.assertEqual(recogniser.recognise(Utterance(SPEECH, "de")).text, "drei")

    def test_a_server_that_dies_of_settings_gets_none(self) -> None:
        with Scripted(dies_of_text=True) as server:
            recogniser = self.engine(server)
            self.assertEqual(
                [remark.code for remark in recogniser.remarks], ["recognition.rate_unsettable"]
            )
            self.assertEqual(recogniser.recognise(Utterance(SPEECH, "de")).text, "drei")

    def test_one_death_says_nothing_about_settings(self) -> None:
        with Scripted(dies=[True, False]) as server:
            self.assertEqual(self.engine(server).remarks, ())

    def test_a_server_that_always_dies_is_no_server(self) -> None:
        with Scripted(dies=[True] * 3) as server:
            with self.assertRaises(RecogniserError) as raised:
                self.engine(server)
        self.assertEqual(raised.exception.notice.code, "recognition.broken_off")

    def test_an_answer_that_is_none_is_told(self) -> None:
        with Scripted(final="nonsense") as server:
            recogniser = VoskRecogniser("127.0.0.1", server.port)
            self.told(recogniser, "recognition.unreadable")

    def test_something_else_on_the_port_is_told(self) -> None:
        with socket.create_server(("127.0.0.1", 0)) as listener:

            def hang_up() -> None:
                for _ in range(2):
                    client, _ = listener.accept()
                    client.recv(1000)
                    client.sendall(b"220 mail.invalid\r\n")
                    client.close()

            thread = threading.Thread(target=hang_up, daemon=True)
            thread.start()
            recogniser = VoskRecogniser("127.0.0.1", listener.getsockname()[1])
            self.told(recogniser, "recognition.unreachable")

    def test_a_name_that_no_host_can_have_is_told(self) -> None:
        for host in ("a" * 70, ""):
            with self.assertRaises(RecogniserError) as raised:
                VoskRecogniser(host, 9).load()
            self.assertEqual(raised.exception.notice.code, "recognition.unreachable")

    def test_a_server_that_ends_without_an_answer_is_told(self) -> None:
        with VoskServer(silent_after=0) as server:
            with self.assertRaises(RecogniserError) as raised:
                self.engine(server)
        self.assertEqual(raised.exception.notice.code, "recognition.broken_off")

    def test_addresses_with_colons_are_bracketed(self) -> None:
        self.assertEqual(VoskRecogniser("::1", 1)._address, "ws://[::1]:1")
        self.assertEqual(VoskRecogniser("host", 1)._address, "ws://host:1")


def _but(server: VoskServer, **changes: Any) -> Any:
    return type(server.behaviour)(**{**vars(server.behaviour), **changes})


class Scripted:
    """Answers as told: may die at the first sound of the n-th connection, or of any settings."""

    def __init__(
        self,
        dies: Optional[list[bool]] = None,
        dies_of_text: bool = False,
        final: str = '{"text" : "drei"}',
    ) -> None:
        self._dies = dies or []
        self._dies_of_text = dies_of_text
        self._final = final
        self._ready = threading.Event()
        self._thread = threading.Thread(target=lambda: asyncio.run(self._serve()))

    def __enter__(self) -> "Scripted":
        self._thread.start()
        self._ready.wait()
        return self

    def __exit__(self, *_: object) -> None:
        self._loop.call_soon_threadsafe(self._stop.set)
        self._thread.join()

    async def _serve(self) -> None:
        self._loop, self._stop = asyncio.get_running_loop(), asyncio.Event()
        async with serve(self._handle, host="127.0.0.1", port=0) as server:
            self.port = next(iter(server.sockets)).getsockname()[1]
            self._ready.set()
            await self._stop.wait()

    async def _handle(self, client: Any) -> None:
        dies = self._dies.pop(0) if self._dies else False
        async for message in client:
            if message == messages.END:
                await client.send(self._final)
                return
            if dies or (self._dies_of_text and isinstance(message, str)):
                client.transport.abort()
                # What already came keeps the library from noticing until it is read.
                with suppress(ConnectionClosed):
                    while True:
                        await client.recv()
                return
            if isinstance(message, bytes):
                await client.send(json.dumps({"partial": ""}))


if __name__ == "__main__":
    unittest.main()
