"""Several clients at once, slow ones, and more sound than can be heard."""

import asyncio
import unittest

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
