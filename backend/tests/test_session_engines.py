"""Recognisers and translators that do not load, fail, are replaced, and come back."""

import unittest
from unittest import mock

from orvane_backend import interpreter
from tests.peers import results
from tests.session_case import FakeRecogniser, SessionCase, chunk


class SessionEnginesTest(SessionCase):
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


if __name__ == "__main__":
    unittest.main()
