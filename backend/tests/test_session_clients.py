"""Several clients at once, slow ones, and more sound than can be heard."""

import asyncio
import unittest
from unittest import mock

from tests.peers import Client, results
from tests.session_case import FakeRecogniser, SessionCase, chunk


class SessionClientsTest(SessionCase):
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

    async def test_speech_that_waits_too_long_is_left_out_and_told_until_it_is_over(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({}) as client:
            recogniser.gate.clear()
            await client.audio(chunk(1), 16000)
            await self.eventually(recogniser.entered.is_set)
            for number in (2, 0, 3):
                await client.audio(chunk(number), 16000)
            await client.send("not yet late")
            await client.until("status", "warning")
            self.now += 10.5
            await client.audio(chunk(4), 16000)
            told = (await client.until("status", "overloaded"))[-1]
            self.assertEqual(told["code"], "session.behind")
            self.assertEqual(told["parameters"], {"seconds": 1})
            recogniser.gate.set()
            messages = await client.flush()
            self.assertEqual(results(messages), [("n1", "N1"), ("n4", "N4")])
            self.assertNotIn("engine", [message.get("status") for message in messages])
            self.now += 10.0
            await client.audio(chunk(5), 16000)
            messages = await client.flush()
            self.assertEqual(messages[-1]["status"], "engine", "nothing is wrong any more")

    async def test_silence_goes_before_speech(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({}) as client:
            recogniser.gate.clear()
            await client.audio(chunk(1), 16000)
            await self.eventually(recogniser.entered.is_set)
            await client.audio(chunk(0), 16000)
            await client.send("the silence has come")
            await client.until("status", "warning")
            self.now += 8.0
            await client.audio(chunk(2), 16000)
            await client.send("the speech has come")
            await client.until("status", "warning")
            self.now += 4.0
            await client.audio(chunk(3), 16000)
            recogniser.gate.set()
            messages = await client.flush()
        self.assertEqual(results(messages), [("n1", "N1"), ("n2", "N2"), ("n3", "N3")])
        self.assertNotIn("overloaded", [message.get("status") for message in messages])
        self.assertEqual(client.processed, 4)

    async def test_nothing_is_left_out_before_a_flush(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({}) as client:
            recogniser.gate.clear()
            for number in range(1, 6):
                await client.audio(chunk(number), 16000)
            await client.send({"type": "flush"})
            await client.send("the flush has come")
            await client.until("status", "warning")
            self.now += 100.0
            recogniser.gate.set()
            messages = await client.until("flushed")
        self.assertEqual(results(messages), [(f"n{n}", f"N{n}") for n in range(1, 6)])

    async def test_no_more_than_two_minutes_of_sound_wait(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({}) as client:
            recogniser.gate.clear()
            for number in range(1, 9):
                await client.audio(chunk(number, 25.0), 16000)
            await client.until("status", "overloaded")
            recogniser.gate.set()
            numbers = {text.split()[0] for text, _ in results(await client.flush())}
        self.assertEqual(numbers, {"n1", "n5", "n6", "n7", "n8"})

    async def test_chunks_that_wait_are_heard_together_where_that_costs_nothing(self) -> None:
        recogniser = self.recognisers[0]
        recogniser.joins_seconds = 2.0
        async with self.client({}) as client:
            recogniser.gate.clear()
            await client.audio(chunk(1), 16000)
            await self.eventually(recogniser.entered.is_set)
            for number in range(2, 8):
                await client.audio(chunk(number), 16000)
            await client.send({"type": "flush"})
            await client.send("all have come")
            await client.until("status", "warning")
            recogniser.gate.set()
            messages = await client.until("flushed")
        self.assertEqual([message["type"] for message in messages].count("processed"), 7)
        self.assertEqual(len(recogniser.asked), 3)
        self.assertAlmostEqual(len(recogniser.asked[1].samples) / 16000, 2.0, delta=0.01)

    async def test_translating_and_recognising_go_on_at_the_same_time(self) -> None:
        recogniser, translator = self.recognisers[0], self.translator
        async with self.client({"targetLang": "es"}) as client:
            translator.gate.clear()
            for number in (1, 2, 3):
                await client.audio(chunk(number), 16000)
            await self.eventually(lambda: recogniser.heard == [1, 2, 3])
            self.assertEqual(len(translator.asked), 1)
            translator.gate.set()
            self.assertEqual(
                results(await client.flush()), [("n1", "N1"), ("n2", "N2"), ("n3", "N3")]
            )

    async def test_a_client_that_vanishes_while_much_waits_is_let_go(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({"saveTranscript": True}) as client:
            recogniser.gate.clear()
            for number in range(1, 9):
                await client.audio(chunk(number, 25.0), 16000)
            await client.until("status", "overloaded")
            lines: list[str] = []
            with mock.patch("orvane_backend.session.log", lines.append):
                await client.vanish()
                await self.eventually(lambda: any("Client weg" in line for line in lines))
            recogniser.gate.set()

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


if __name__ == "__main__":
    unittest.main()
