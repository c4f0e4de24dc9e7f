"""The conversation of a session: what is answered to what, and in which order."""

import unittest
from unittest import mock

from orvane_backend import hearing
from tests.peers import results
from tests.session_case import SessionCase, chunk


class SessionTest(SessionCase):
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
        self.assertEqual(messages[-1]["code"], "engine.serving")
        self.assertEqual(messages[-1]["parameters"], {"recogniser": "fake", "translator": "Groß"})
        self.assertEqual(
            messages[-1]["translation"], [{"code": "translation.awaits_language", "parameters": {}}]
        )
        self.assertEqual(
            (messages[2]["code"], messages[2]["parameters"]), ("engine.loading", {"engine": "fake"})
        )
        self.assertIn("Groß (die Übersetzung richtet sich nach", messages[-1]["message"])

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
            self.assertEqual(client.processed, 3)
        self.assertEqual(self.recognisers[0].heard, [99])

    async def test_each_chunk_is_said_to_be_done_with_after_its_result(self) -> None:
        async with self.client({}) as client:
            await client.audio(chunk(5), 16000)
            messages = await client.until("processed")
            self.assertEqual(results(messages), [("n5", "N5")])
            await client.audio(chunk(6), 16000)
            messages = await client.until("processed")
            self.assertEqual(results(messages), [("n6", "N6")])

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

    async def test_a_recogniser_that_may_hear_another_language_says_which_it_knows(self) -> None:
        self.recognisers[0].only_language = "en"
        async with self.client() as client:
            await client.config(sourceLang="auto", targetLang="es")
            message = (await client.until("status", "engine"))[-1]
        self.assertIn(
            {"code": "recognition.only_english", "parameters": {}}, message["recognition"]
        )

    async def test_a_fault_in_the_server_itself_does_not_end_the_session(self) -> None:
        async with self.client({}) as client:
            with mock.patch.object(hearing, "stretch", side_effect=ZeroDivisionError("oops")):
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

    async def test_wrong_types_in_a_config_are_told_and_the_rest_holds(self) -> None:
        async with self.client() as client:
            await client.config(targetLang="es", whisperModel=5)
            messages = await client.until("status", "engine")
        self.assertIn("whisperModel", messages[1]["message"])
        self.assertEqual(messages[1]["status"], "warning")
        self.assertEqual(self.chosen, [("en", "es")])


if __name__ == "__main__":
    unittest.main()
