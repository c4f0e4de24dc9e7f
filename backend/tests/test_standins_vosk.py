"""The stand-in of a Vosk server keeps exactly to its protocol."""

import asyncio
import json
import subprocess
import sys
import threading
import unittest
from pathlib import Path
from typing import Any

import numpy as np

from orvane_backend.websocket import ConnectionClosed, connect
from tests.standins.vosk_server import EOF, RESET, VoskServer

import standin_voice as voice

CONFIG = '{ "config" : { "sample_rate" : 16000 } }'
_SECONDS = 60.0


def config(**keys: Any) -> str:
    return json.dumps({"config": {"sample_rate": 16000, **keys}})


def frames(*sounds: Any) -> list[bytes]:
    """A quarter of a second each."""
    pcm = voice.as_pcm(np.concatenate(sounds))
    return [pcm[start : start + 8000] for start in range(0, len(pcm), 8000)]


HELLO = frames(voice.silence(0.5), voice.speak("hello world"), voice.silence(0.2))


async def _talk(port: int, messages: list[Any]) -> tuple[list[Any], int]:
    answers = []
    async with connect(f"ws://127.0.0.1:{port}") as connection:
        try:
            for message in messages:
                await connection.send(message)
            while True:
                answers.append(json.loads(await asyncio.wait_for(connection.recv(), _SECONDS)))
        except ConnectionClosed:
            return answers, connection.close_code


class VoskServerTest(unittest.TestCase):
    def talk(self, *messages: Any, **behaviour: Any) -> tuple[list[Any], int]:
        """All answers to these messages up to the close, and its code."""
        with VoskServer(**behaviour) as server:
            self.server = server
            return asyncio.run(_talk(server.port, list(messages)))

    def test_each_frame_has_one_answer_and_the_config_none(self) -> None:
        answers, code = self.talk(CONFIG, *HELLO, EOF)
        self.assertEqual(len(answers), len(HELLO) + 1)
        self.assertEqual(code, 1000)
        self.assertTrue(all(set(answer) == {"partial"} for answer in answers[:-1]))
        self.assertEqual(answers[0], {"partial": ""})
        self.assertEqual(answers[-2], {"partial": "hello world"})
        self.assertEqual(answers[-1]["text"], "hello world")
        self.assertEqual(
            answers[-1]["result"][1], {"conf": 1.0, "end": 1.2, "start": 0.9, "word": "world"}
        )
        self.assertEqual(self.server.sound(), b"".join(HELLO))
        self.assertEqual(self.server.events("config"), [{"sample_rate": 16000}])

    def test_answers_are_pretty_printed(self) -> None:
        self.talk(CONFIG, HELLO[0], EOF)
        self.assertEqual(self.server.answers[0], '{\n  "partial" : ""\n}')

    def test_a_pause_ends_an_utterance_and_times_go_on(self) -> None:
        sound = frames(voice.speak("one"), voice.silence(1), voice.speak("two"))
        answers, _ = self.talk(CONFIG, *sound, EOF)
        self.assertEqual(len(answers), len(sound) + 1)
        self.assertEqual([a["text"] for a in answers if "text" in a], ["one", "two"])
        self.assertAlmostEqual(answers[-1]["result"][0]["start"], 1.4)

    def test_silence_brings_empty_texts_in_place_of_partials(self) -> None:
        answers, _ = self.talk(CONFIG, *frames(voice.silence(6)), EOF)
        self.assertEqual(answers[19], {"text": ""})
        self.assertEqual(answers[20], {"partial": ""})
        self.assertEqual(answers[-1], {"text": ""})

    def test_the_rate_counts_and_only_before_the_first_sound(self) -> None:
        self.assertEqual(self.talk(*HELLO, EOF)[0][-1], {"text": ""})
        self.assertEqual(self.talk(HELLO[0], CONFIG, *HELLO[1:], EOF)[0][-1], {"text": ""})
        answers, _ = self.talk(*HELLO, EOF, sample_rate=16000)
        self.assertEqual(answers[-1]["text"], "hello world")

    def test_another_spelling_of_the_end_is_fed_as_sound(self) -> None:
        for text in ('{"eof":1}', '{"eof": 1}', '{ "eof" : 1 }', '{"eof" : true}', "hello"):
            answers, code = self.talk(CONFIG, HELLO[0], text)
            self.assertEqual((len(answers), code), (1, 1011), text)
        for text in ('{"config"', '{"configuration": {}}', config(model="elsewhere")):
            self.assertEqual(self.talk(text)[1], 1011, text)
        self.assertEqual(self.talk(config(phrase_list="hello"))[1], 1011)

    def test_reset_gives_a_result_and_goes_on(self) -> None:
        answers, code = self.talk(CONFIG, *HELLO, RESET, *HELLO, EOF)
        self.assertEqual([a["text"] for a in answers if "text" in a], ["hello world"] * 2)
        self.assertEqual((len(answers), code), (2 * len(HELLO) + 2, 1000))
        self.assertEqual(self.talk(CONFIG, HELLO[0], '{"reset":1}')[1], 1011)

    def test_words_alternatives_and_phrases(self) -> None:
        plain = self.talk(config(words=False), *HELLO, EOF)[0][-1]
        self.assertEqual(plain, {"text": "hello world"})
        several = self.talk(config(max_alternatives=2), *HELLO, EOF)[0][-1]
        self.assertEqual([a["text"] for a in several["alternatives"]], ["hello world", "hello"])
        self.assertGreater(several["alternatives"][0]["confidence"], 1)
        self.assertNotIn("text", several)
        few = self.talk(config(phrase_list=["world"]), *HELLO, EOF)[0][-1]
        self.assertEqual(few["text"], "world")

    def test_a_model_is_swapped(self) -> None:
        answers, _ = self.talk(config(model="small"), HELLO[0], EOF, models=("small",))
        self.assertEqual(len(answers), 2)

    def test_the_other_kind_takes_a_config_for_sound(self) -> None:
        wrong = '{"eof":1}'
        answers, code = self.talk(CONFIG, *HELLO, wrong, EOF, b"", kind="cpp", sample_rate=16000)
        self.assertEqual(len(answers), len(HELLO) + 3)
        self.assertEqual((answers[-1]["text"], code), ("hello world", 1000))
        self.assertEqual(self.server.events("text"), [CONFIG, wrong])

    def test_the_other_kind_closes_only_after_its_next_read(self) -> None:
        async def talk(server: VoskServer) -> None:
            async with connect(f"ws://127.0.0.1:{server.port}") as connection:
                await connection.send(EOF)
                await asyncio.wait_for(connection.recv(), _SECONDS)
                # It still answers to pings, so it has not closed.
                await asyncio.wait_for(await connection.ping(), _SECONDS)
                self.assertEqual(server.events("closed"), [])
                await connection.send(b"")
                with self.assertRaises(ConnectionClosed):
                    await asyncio.wait_for(connection.recv(), _SECONDS)

        with VoskServer(kind="cpp") as server:
            asyncio.run(talk(server))

    def test_it_dies_without_a_word(self) -> None:
        async def talk(server: VoskServer) -> tuple[int, int]:
            count = 0
            async with connect(f"ws://127.0.0.1:{server.port}") as connection:
                with self.assertRaises(ConnectionClosed):
                    # One by one: what is still under way when it dies is lost.
                    for frame in HELLO:
                        await connection.send(frame)
                        await asyncio.wait_for(connection.recv(), _SECONDS)
                        count += 1
                return count, connection.close_code

        with VoskServer(dies_after=2) as server:
            self.assertEqual(asyncio.run(talk(server)), (2, 1006))

    def test_it_falls_silent_or_holds_until_let_go(self) -> None:
        async def talk(server: VoskServer) -> None:
            async with connect(f"ws://127.0.0.1:{server.port}") as connection:
                for frame in HELLO:
                    await connection.send(frame)
                await asyncio.wait_for(connection.recv(), _SECONDS)
                for _ in HELLO[1:] if server.behaviour.holds_after else ():
                    server.go_on()
                    await asyncio.wait_for(connection.recv(), _SECONDS)

        with VoskServer(holds_after=1) as server:
            asyncio.run(talk(server))
            self.assertEqual(len(server.answers), len(HELLO))
        with VoskServer(silent_after=1) as server:
            asyncio.run(talk(server))
            self.assertTrue(server.wait_for("closed"))
            self.assertEqual((len(server.answers), len(server.events("audio"))), (1, len(HELLO)))

    def test_as_a_process(self) -> None:
        process = subprocess.Popen(
            [sys.executable, "-m", "tests.standins.vosk_server", "--sample-rate", "16000"],
            cwd=Path(__file__).resolve().parent.parent, stdout=subprocess.PIPE, encoding="utf-8",
        )  # fmt: skip
        try:
            assert process.stdout is not None
            port = int(process.stdout.readline().removeprefix("listening on "))
            answers, _ = asyncio.run(_talk(port, [*HELLO, EOF]))
            self.assertEqual(answers[-1]["text"], "hello world")
        finally:
            process.kill()
            process.communicate()

    def test_a_port_that_is_taken_is_told(self) -> None:
        before = set(threading.enumerate())
        with VoskServer() as server:
            with self.assertRaises(OSError):
                with VoskServer(port=server.port):
                    self.fail("both have it")
        self.assertRaises(ValueError, VoskServer, kind="java")
        self.assertLessEqual(set(threading.enumerate()), before)


if __name__ == "__main__":
    unittest.main()
