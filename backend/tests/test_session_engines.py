"""Recognisers and translators that do not load, fail, are replaced, and come back."""

import unittest

from orvane_backend import engine_choice
from orvane_backend.notices import notice
from tests.peers import results
from tests.session_case import FakeRecogniser, SessionCase, chunk


class SessionEnginesTest(SessionCase):
    async def test_an_engine_that_does_not_load_is_replaced_and_named(self) -> None:
        self.recognisers = [FakeRecogniser("first"), FakeRecogniser("second")]
        self.recognisers[0].load_failure = "kaputt"
        async with self.client() as client:
            await client.config(targetLang="es")
            message = (await client.until("status", "engine"))[-1]["message"]
        self.assertIn("second (fake: kaputt)", message)

    async def test_an_engine_that_fails_on_a_chunk_is_replaced_and_the_chunk_heard(self) -> None:
        self.recognisers = [FakeRecogniser("first"), FakeRecogniser("second")]
        self.recognisers[0].failure = "weg"
        async with self.client({}) as client:
            await client.audio(chunk(4), 16000)
            messages = await client.flush()
        self.assertEqual(results(messages), [("n4", "N4")])
        self.assertEqual(
            (messages[0]["status"], messages[0]["message"]), ("warning", "⚠️ fake: weg")
        )
        self.assertNotIn("error", [message.get("status") for message in messages])

    async def test_a_replaced_engine_is_tried_again_later(self) -> None:
        first, second = self.recognisers = [FakeRecogniser("first"), FakeRecogniser("second")]
        first.failure = "weg"
        async with self.client({}) as client:
            await client.audio(chunk(4), 16000)
            messages = await client.flush()
            self.assertIn("second (fake: weg)", messages[-1]["message"])
            first.failure = None
            await client.audio(chunk(5), 16000)
            await client.flush()
            self.now += engine_choice.RETRY_SECONDS
            await client.audio(chunk(6), 16000)
            messages = await client.flush()
        self.assertEqual((first.heard, second.heard), ([6], [4, 5]))
        self.assertNotIn("second", messages[-1]["message"])

    async def test_an_engine_that_is_busy_for_a_moment_is_asked_once_more_and_kept(self) -> None:
        first, second = self.recognisers = [FakeRecogniser("first"), FakeRecogniser("second")]
        first.failure, first.is_passing = "voll", True
        async with self.client({}) as client:
            await client.audio(chunk(4), 16000)
            await client.flush()
            self.assertEqual((len(first.asked), second.heard), (2, [4]))
            first.failure = None
            self.now += engine_choice.RETRY_SECONDS
            await client.audio(chunk(5), 16000)
            await client.flush()
        self.assertEqual((first.heard, first.loads), ([5], 1))

    async def test_a_language_that_an_engine_lacks_is_told_before_any_sound(self) -> None:
        first, second = self.recognisers = [FakeRecogniser("first"), FakeRecogniser("second")]
        first.refused = notice("recognition.language_unknown", engine="first", language="ga")
        async with self.client() as client:
            await client.config(sourceLang="ga")
            message = (await client.until("status", "engine"))[-1]
            self.assertEqual(message["parameters"]["recogniser"], "second")
            self.assertEqual(message["recognition"], [first.refused.record()])
            second.refused = first.refused
            await client.config(sourceLang="ga", targetLang="fr")
            error = (await client.until("status", "error"))[-1]
            self.assertEqual(error["code"], "engine.none_for_language")
            self.assertEqual(error["parameters"]["language"], "ga")
            self.assertEqual(error["recognition"], [first.refused.record()] * 2)
            await client.audio(chunk(3), 16000)
            self.assertEqual(results(await client.flush()), [])

    async def test_no_engine_at_all_is_an_error_and_the_next_chunk_tries_again(self) -> None:
        recogniser = self.recognisers[0]
        recogniser.load_failure = "nichts da"
        async with self.client() as client:
            await client.config()
            error = (await client.until("status", "error"))[-1]
            self.assertIn("nichts da", error["message"])
            await client.audio(chunk(1), 16000)
            self.assertEqual(await client.flush(), [], "told once, not for each chunk")
            recogniser.load_failure = None
            self.now += engine_choice.ASK_AGAIN_SECONDS
            await client.audio(chunk(2), 16000)
            messages = await client.flush()
            self.assertEqual(results(messages), [("n2", "N2")])
            self.assertIn("engine", [message.get("status") for message in messages])

    async def test_a_translator_that_fails_is_replaced(self) -> None:
        self.translator.failure = "stumm"
        async with self.client({"targetLang": "es"}) as client:
            await client.audio(chunk(1), 16000)
            await client.audio(chunk(2), 16000)
            messages = await client.flush()
        self.assertEqual(results(messages), [("n1", "N1"), ("n2", "N2")])
        self.assertEqual([m.get("message") for m in messages].count("⚠️ Groß: stumm"), 1)

    async def test_a_text_nobody_can_translate_is_its_own_translation(self) -> None:
        self.translator.failure = self.fallback.failure = "stumm"
        async with self.client({"targetLang": "es"}) as client:
            await client.audio(chunk(1), 16000)
            self.assertEqual(results(await client.flush()), [("n1", "n1")])

    async def test_other_recognisers_are_named_where_whisper_is_asked_for(self) -> None:
        told = notice("recognition.near_found", engine="Speaches")
        async with self.client(neighbours=lambda: (told,)) as client:
            for engine, expected in (("whisper", [told.record()]), ("vosk", [])):
                await client.config(sttEngine=engine)
                message = (await client.until("status", "engine"))[-1]
                self.assertEqual(message["recognition"], expected)

    async def test_an_engine_of_the_client_is_loaded_only_when_audio_comes(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client() as client:
            await client.next()
            await client.config(sttEngine="azure")
            self.assertEqual(await client.flush(), [])
            self.assertEqual(recogniser.loads, 0)
            await client.audio(chunk(1), 16000)
            messages = await client.flush()
        told = " ".join(message.get("message", "") for message in messages)
        self.assertIn("„azure“ läuft nicht im Backend", told)
        self.assertEqual(results(messages), [("n1", "N1")])


if __name__ == "__main__":
    unittest.main()
