"""Sessions over real WebSockets, with recognisers and translators that do as they are told."""

import asyncio
import tempfile
import threading
import unittest
from contextlib import asynccontextmanager
from pathlib import Path
from typing import Any, AsyncIterator, Callable, Optional
from unittest import mock

import numpy as np

from orvane_backend import interpreter
from orvane_backend.audio import Samples
from orvane_backend.engines import Engines, Workers
from orvane_backend.main import serving
from orvane_backend.protocol import Config
from orvane_backend.recognisers import Recogniser, RecogniserError, Recognition
from orvane_backend.recognisers.selection import Candidate
from orvane_backend.session import Surroundings
from orvane_backend.translators import Translator, TranslatorError
from orvane_backend.translators.selection import Choice
from tests.peers import Client, results

_SECONDS = 20.0


def chunk(number: int, seconds: float = 0.5) -> bytes:
    """Sound whose level is its number, so that a recogniser can say which chunk it heard."""
    return np.full(int(seconds * 16000), number * 256, "<i2").tobytes()


class FakeRecogniser(Recogniser):
    """Hears the number of a chunk; a closed gate holds it up, a failure is raised."""

    def __init__(self, name: str = "fake", language: str = "en") -> None:
        self.name = name
        self.language = language
        self.gate = threading.Event()
        self.gate.set()
        self.entered = threading.Event()
        self.load_failure: Optional[str] = None
        self.failure: Optional[str] = None
        self.loads = 0
        self.heard: list[int] = []

    def load(self) -> None:
        self.loads += 1
        if self.load_failure:
            raise RecogniserError(self.load_failure)

    def recognise(self, samples: Samples, language: str) -> Recognition:
        self.entered.set()
        if not self.gate.wait(_SECONDS):
            raise AssertionError("the gate was never opened")
        if self.failure:
            raise RecogniserError(self.failure)
        number = round(float(samples[len(samples) // 2]) * 128)
        self.heard.append(number)
        return Recognition("" if number == 99 else f"n{number}", self.language)


class Upper(Translator):
    """Translates into capitals, or fails."""

    name = "Groß"
    failure: Optional[str] = None
    repeat = 1

    def translate(self, text: str) -> str:
        if self.failure:
            raise TranslatorError(self.failure)
        return text.upper() * self.repeat


class SessionTest(unittest.IsolatedAsyncioTestCase):
    def setUp(self) -> None:
        self.recognisers = [FakeRecogniser()]
        self.translator = Upper()
        self.fallback = Upper()
        self.chosen: list[tuple[str, str]] = []
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.folder = Path(home.name)
        self.addCleanup(lambda: [one.gate.set() for one in self.recognisers])

    def choose(self, source: str, target: str, *, without_mistral: bool = False) -> Choice:
        self.chosen.append((source, target))
        return Choice(self.fallback if without_mistral else self.translator, "weil")

    def candidates(self, config: Config) -> list[Candidate]:
        def candidate(one: FakeRecogniser) -> Candidate:
            return Candidate((one.name,), lambda: one)

        return [candidate(one) for one in self.recognisers]

    @asynccontextmanager
    async def server(self, **options: Any) -> AsyncIterator[int]:
        workers = Workers(8)
        surroundings = Surroundings(
            Engines(workers, self.candidates), workers, self.choose, lambda: self.folder, **options
        )
        async with serving("127.0.0.1", 0, surroundings) as servers:
            yield servers[0].sockets[0].getsockname()[1]
            for one in self.recognisers:
                one.gate.set()

    @asynccontextmanager
    async def client(self, config: Optional[dict[str, Any]] = None, **options: Any) -> Any:
        async with self.server(**options) as port, await Client.connect(port) as client:
            self.port = port
            if config is not None:
                await client.config(**config)
                await client.until("status", "engine")
            yield client

    async def eventually(self, condition: Callable[[], bool]) -> None:
        async def watch() -> None:
            while not condition():
                await asyncio.sleep(0.005)

        await asyncio.wait_for(watch(), _SECONDS)

    async def test_the_first_message_is_the_version(self) -> None:
        async with self.client() as client:
            message = await client.next()
        self.assertEqual((message["status"], message["version"]), ("backend_version", 4))

    async def test_a_config_is_answered_by_loading_and_naming_the_engine(self) -> None:
        async with self.client() as client:
            await client.config(targetLang="es")
            messages = await client.until("status", "engine")
        self.assertEqual(
            [message["status"] for message in messages[1:]],
            ["engine_loading", "model_loading", "model_loaded", "engine"],
        )
        self.assertIn("fake", messages[-1]["message"])
        self.assertIn("Groß (weil)", messages[-1]["message"])

    async def test_results_come_in_order_and_flushed_after_them(self) -> None:
        async with self.client({"targetLang": "es"}) as client:
            for number in range(1, 31):
                await client.audio(chunk(number), 16000)
            messages = await client.flush()
        self.assertEqual(results(messages), [(f"n{n}", f"N{n}") for n in range(1, 31)])

    async def test_flushed_waits_for_a_chunk_in_work(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({}) as client:
            recogniser.gate.clear()
            await client.audio(chunk(1), 16000)
            await client.send({"type": "flush"})
            await self.eventually(recogniser.entered.is_set)
            # The reader is not held up by the worker: this is answered while the chunk waits.
            await client.send("no json")
            self.assertEqual((await client.next())["status"], "warning")
            recogniser.gate.set()
            messages = await client.until("flushed")
        self.assertEqual(results(messages), [("n1", "N1")])

    async def test_flushes_without_audio_are_each_confirmed(self) -> None:
        async with self.client() as client:
            await client.next()
            self.assertEqual(await client.flush(), [])
            self.assertEqual(await client.flush(), [])

    async def test_silence_and_chunks_without_words_give_no_result(self) -> None:
        async with self.client({}) as client:
            await client.audio(chunk(0), 16000)
            await client.audio(b"", 16000)
            await client.audio(chunk(99), 16000)
            self.assertEqual(await client.flush(), [])
        self.assertEqual(self.recognisers[0].heard, [99])

    async def test_audio_before_a_config_is_heard_with_the_defaults(self) -> None:
        async with self.client() as client:
            await client.audio(chunk(5), 16000)
            self.assertEqual(results(await client.flush()), [("n5", "N5")])
        self.assertEqual(self.chosen[-1], ("en", "de"))

    async def test_skipTranslation_leaves_translating_to_the_client(self) -> None:
        async with self.client({"targetLang": "es", "skipTranslation": True}) as client:
            await client.audio(chunk(5), 16000)
            self.assertEqual(results(await client.flush()), [("n5", "")])
        self.assertEqual(self.chosen, [])

    async def test_the_detected_language_decides_the_translator(self) -> None:
        self.recognisers[0].language = "fr"
        async with self.client({"sourceLang": "auto", "targetLang": "es"}) as client:
            self.assertEqual(self.chosen, [])
            await client.audio(chunk(5), 16000)
            messages = await client.flush()
        self.assertEqual(self.chosen, [("fr", "es")])
        self.assertEqual(messages[0]["status"], "engine")

    async def test_a_recogniser_of_one_language_decides_it_for_auto(self) -> None:
        self.recognisers[0].only_language = "en"
        async with self.client({"sourceLang": "auto", "targetLang": "es"}):
            self.assertEqual(self.chosen, [("en", "es")])

    async def test_a_recogniser_of_one_language_says_when_it_is_the_wrong_one(self) -> None:
        self.recognisers[0].only_language = "en"
        async with self.client() as client:
            await client.config(sourceLang="de", targetLang="es")
            message = (await client.until("status", "engine"))[-1]["message"]
        self.assertIn("versteht „de“ nicht", message)

    async def test_a_held_up_client_does_not_hold_up_another_or_the_server(self) -> None:
        slow, quick = FakeRecogniser("slow"), FakeRecogniser("quick")
        self.recognisers = [slow]
        async with self.client({}) as first:
            slow.gate.clear()
            await first.audio(chunk(1), 16000)
            await self.eventually(slow.entered.is_set)
            self.recognisers = [quick]
            async with await Client.connect(self.port) as second:
                await second.config(targetLang="es")
                await second.audio(chunk(2), 16000)
                self.assertEqual(results(await second.flush()), [("n2", "N2")])
            slow.gate.set()
            self.assertEqual(results(await first.flush()), [("n1", "N1")])
        self.recognisers = [slow, quick]

    async def test_several_clients_share_one_engine_and_get_their_own_results(self) -> None:
        async def serve(client: Client, first: int) -> list[tuple[str, str]]:
            await client.config(targetLang="es")
            for number in range(first, first + 10):
                await client.audio(chunk(number), 16000)
            return results(await client.flush())

        async with self.server() as port:
            clients = [await Client.connect(port) for _ in range(5)]
            answers = await asyncio.gather(
                *(serve(client, 10 * index + 1) for index, client in enumerate(clients))
            )
            for client in clients:
                await client.close()
        for index, answer in enumerate(answers):
            numbers = range(10 * index + 1, 10 * index + 11)
            self.assertEqual(answer, [(f"n{n}", f"N{n}") for n in numbers])
        self.assertEqual(self.recognisers[0].loads, 1)

    async def test_a_client_that_reads_nothing_does_not_hold_up_another(self) -> None:
        async with self.client({}) as deaf:
            deaf.stop_reading()
            self.translator.repeat = 2_000_000
            for number in range(1, 11):
                await deaf.audio(chunk(number), 16000)
            # A result of megabytes fills every buffer on the way, and the worker stands still.
            await self.eventually(lambda: len(self.recognisers[0].heard) > 0)
            async with await Client.connect(self.port) as other:
                await other.config(skipTranslation=True)
                await other.audio(chunk(3), 16000)
                self.assertEqual(results(await other.flush()), [("n3", "")])
            self.assertLess(len(self.recognisers[0].heard), 10)
            await deaf.vanish()

    async def test_too_much_audio_is_told_and_none_is_lost(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({}, backlog_seconds=5) as client:
            recogniser.gate.clear()

            async def send() -> list[tuple[str, str]]:
                for number in range(1, 41):
                    await client.audio(chunk(number), 16000)
                await client.send({"type": "flush"})
                return results(await client.until("flushed"))

            sending = asyncio.ensure_future(send())
            await self.eventually(recogniser.entered.is_set)
            recogniser.gate.set()
            self.assertEqual(await sending, [(f"n{n}", f"N{n}") for n in range(1, 41)])

    async def test_an_overload_is_announced_once(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({}, backlog_seconds=5) as client:
            recogniser.gate.clear()
            for number in range(1, 21):
                await client.audio(chunk(number), 16000)
            self.assertEqual((await client.next())["status"], "overloaded")
            recogniser.gate.set()
            messages = await client.flush()
        self.assertEqual(len(results(messages)), 20)
        self.assertNotIn("overloaded", [message.get("status") for message in messages])

    async def test_an_engine_that_does_not_load_is_replaced_and_named(self) -> None:
        self.recognisers = [FakeRecogniser("first"), FakeRecogniser("second")]
        self.recognisers[0].load_failure = "kaputt"
        async with self.client() as client:
            await client.config(targetLang="es")
            message = (await client.until("status", "engine"))[-1]["message"]
        self.assertIn("second (kaputt)", message)

    async def test_an_engine_that_fails_on_a_chunk_is_replaced_and_the_chunk_heard(self) -> None:
        self.recognisers = [FakeRecogniser("first"), FakeRecogniser("second")]
        self.recognisers[0].failure = "weg"
        async with self.client({}) as client:
            await client.audio(chunk(4), 16000)
            messages = await client.flush()
        self.assertEqual(results(messages), [("n4", "N4")])
        self.assertEqual((messages[0]["status"], messages[0]["message"]), ("warning", "⚠️ weg"))
        self.assertNotIn("error", [message.get("status") for message in messages])

    async def test_a_replaced_engine_is_tried_again_later(self) -> None:
        first, second = self.recognisers = [FakeRecogniser("first"), FakeRecogniser("second")]
        first.failure = "weg"
        with mock.patch.object(interpreter, "RETRY_SECONDS", 0.0):
            async with self.client({}) as client:
                # It fails, is due again at once, and would be asked for ever were it not well.
                first.entered.clear()
                first.gate.clear()
                await client.audio(chunk(4), 16000)
                await self.eventually(first.entered.is_set)
                first.failure = None
                first.gate.set()
                await client.flush()
        self.assertEqual((first.heard, second.heard), ([4], []))

    async def test_no_engine_at_all_is_an_error_and_the_next_chunk_tries_again(self) -> None:
        recogniser = self.recognisers[0]
        recogniser.load_failure = "nichts da"
        async with self.client() as client:
            await client.config()
            error = (await client.until("status", "error"))[-1]
            self.assertIn("nichts da", error["message"])
            await client.audio(chunk(1), 16000)
            messages = await client.flush()
            self.assertEqual(messages[-1]["status"], "error")
            recogniser.load_failure = None
            await client.audio(chunk(2), 16000)
            self.assertEqual(results(await client.flush()), [("n2", "N2")])

    async def test_a_translator_that_fails_is_replaced(self) -> None:
        self.translator.failure = "stumm"
        async with self.client({"targetLang": "es"}) as client:
            await client.audio(chunk(1), 16000)
            await client.audio(chunk(2), 16000)
            messages = await client.flush()
        self.assertEqual(results(messages), [("n1", "N1"), ("n2", "N2")])
        self.assertEqual([m.get("message") for m in messages].count("⚠️ stumm"), 1)

    async def test_a_text_nobody_can_translate_is_its_own_translation(self) -> None:
        self.translator.failure = self.fallback.failure = "stumm"
        async with self.client({"targetLang": "es"}) as client:
            await client.audio(chunk(1), 16000)
            self.assertEqual(results(await client.flush()), [("n1", "n1")])

    async def test_a_fault_in_the_server_itself_does_not_end_the_session(self) -> None:
        async with self.client({}) as client:
            with mock.patch.object(interpreter, "is_silent", side_effect=ZeroDivisionError("oops")):
                await client.audio(chunk(1), 16000)
                self.assertEqual((await client.flush())[-1]["status"], "error")
            await client.audio(chunk(2), 16000)
            self.assertEqual(results(await client.flush()), [("n2", "N2")])

    async def test_a_long_chunk_is_one_result(self) -> None:
        async with self.client({}) as client:
            await client.audio(chunk(3, 50), 16000)
            ((original, translated),) = results(await client.flush())
        pieces = len(self.recognisers[0].heard)
        self.assertGreaterEqual(pieces, 3)
        self.assertEqual(original, " ".join(["n3"] * pieces))
        self.assertEqual(translated, original.upper())

    async def test_a_client_that_leaves_frees_the_engine_for_others(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({}) as client:
            recogniser.gate.clear()
            for number in (1, 2, 3):
                await client.audio(chunk(number), 16000)
            await self.eventually(recogniser.entered.is_set)
            await client.close()
            recogniser.gate.set()
            async with await Client.connect(self.port) as other:
                await other.audio(chunk(7), 16000)
                self.assertEqual(results(await other.flush()), [("n7", "N7")])
        self.assertEqual(recogniser.heard, [1, 7])

    async def test_an_engine_of_the_client_is_loaded_only_when_audio_comes(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client() as client:
            await client.next()
            await client.config(sttEngine="azure")
            self.assertEqual(await client.flush(), [])
            self.assertEqual(recogniser.loads, 0)
            await client.audio(chunk(1), 16000)
            messages = await client.flush()
        self.assertIn("„azure“ läuft nicht im Backend", messages[-2]["message"])
        self.assertEqual(results(messages), [("n1", "N1")])

    async def test_transcripts_are_written_when_asked_for_and_end_with_stop(self) -> None:
        wishes = {"targetLang": "es", "saveTranscript": True, "saveSRT": True}
        async with self.client(wishes) as client:
            await client.audio(chunk(1), 16000)
            await client.flush()
            (transcript,) = self.folder.glob("transcript_*.txt")
            (subtitles,) = self.folder.glob("subtitles_*.srt")
            self.assertIn("Source: en\nTarget: es\n", transcript.read_text())
            self.assertIn("Original: n1\nTranslation: N1\n\n", transcript.read_text())
            self.assertTrue(subtitles.read_text().endswith("\nn1\nN1\n\n"))
            await client.send({"type": "stop"})
            await client.audio(chunk(2), 16000)
            self.assertEqual(results(await client.flush()), [("n2", "N2")])
            self.assertNotIn("n2", transcript.read_text())
            # The same wishes after a stop begin files of their own.
            await client.config(**wishes)
            await client.flush()
            self.assertEqual(len(list(self.folder.glob("transcript_*.txt"))), 2)

    async def test_a_client_that_recognises_by_itself_gets_files_only_for_what_is_heard_here(
        self,
    ) -> None:
        wishes = {"sttEngine": "deepgram", "saveTranscript": True, "saveSRT": True}
        async with self.client() as client:
            await client.config(**wishes)
            await client.flush()
            self.assertEqual(list(self.folder.iterdir()), [])
            await client.audio(chunk(1), 16000)
            await client.audio(chunk(2), 16000)
            await client.flush()
            (transcript,) = self.folder.glob("transcript_*.txt")
            (subtitles,) = self.folder.glob("subtitles_*.srt")
            self.assertIn("Original: n1\n", transcript.read_text())
            self.assertIn("Original: n2\n", transcript.read_text())
            self.assertTrue(subtitles.read_text().endswith("\nn2\nN2\n\n"))

    async def test_the_same_config_again_keeps_the_files(self) -> None:
        wishes = {"saveTranscript": True, "saveSRT": True}
        async with self.client(wishes) as client:
            await client.config(**wishes)
            await client.flush()
        self.assertEqual(len(list(self.folder.iterdir())), 2)

    async def test_no_files_without_the_wish(self) -> None:
        async with self.client({}) as client:
            await client.audio(chunk(1), 16000)
            await client.flush()
        self.assertEqual(list(self.folder.iterdir()), [])

    async def test_a_folder_that_refuses_costs_no_result(self) -> None:
        self.folder = Path("/dev/null/output")
        async with self.client({"saveTranscript": True}) as client:
            await client.audio(chunk(1), 16000)
            self.assertEqual(results(await client.flush()), [("n1", "N1")])

    async def test_wrong_types_in_a_config_are_told_and_the_rest_holds(self) -> None:
        async with self.client() as client:
            await client.config(targetLang="es", whisperModel=5)
            messages = await client.until("status", "engine")
        self.assertIn("whisperModel", messages[1]["message"])
        self.assertEqual(messages[1]["status"], "warning")
        self.assertEqual(self.chosen, [("en", "es")])


if __name__ == "__main__":
    unittest.main()
