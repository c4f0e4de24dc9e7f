"""How long the stand-in of Deepgram waits, and how fast sound may come to it."""

from tests.cloud_services._clock import ManualClock
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import Client
from tests.cloud_services.tests.listening import END, StreamTest


class Time(StreamTest):
    def setUp(self) -> None:
        self.stand_in = self.peer(clock=ManualClock(), burst=2.0)

    async def closes_for_idleness(self, client: Client) -> None:
        await client.rest()
        self.assertEqual(client.code, 1011)
        self.assertTrue(client.reason.startswith('Deepgram did not receive audio data or a text'))

    async def test_ten_seconds_without_a_word(self) -> None:
        client = await self.connect(self.stand_in)
        await self.say(client, sounds.pcm(sounds.pause(0.1)))
        for message in (b'\0\0', {'type': 'KeepAlive'}):
            self.stand_in.obey({'advance': 9.9})
            await client.send(message)
            await client.answered()
        self.stand_in.obey({'advance': 9.9})
        await client.send({'type': 'Finalize'})
        self.assertTrue((await client.next())['from_finalize'])
        self.stand_in.obey({'advance': 10})
        await self.closes_for_idleness(client)

    async def test_text_alone_does_not_keep_a_stream_without_sound(self) -> None:
        client = await self.connect(self.stand_in)
        self.stand_in.obey({'advance': 9})
        await client.send({'type': 'KeepAlive'})
        await client.answered()
        self.stand_in.obey({'advance': 1})
        await self.closes_for_idleness(client)

    async def test_with_the_machines_clock(self) -> None:
        client = await self.connect(self.peer(patience=0.05))
        await self.closes_for_idleness(client)

    async def test_sound_that_is_too_fast_is_told(self) -> None:
        client = await self.connect(self.stand_in)
        for _ in range(20):
            self.stand_in.obey({'advance': 0.1})
            await client.send(bytes(4000))  # 125 ms.
            await client.answered()
        self.assertEqual(self.stand_in.all('too_fast'), [])
        await self.say(client, bytes(32000 * 3))
        told = self.stand_in.wait_for('too_fast')
        self.assertGreater(told['received'], 2.0)
        await client.send(END)
        await client.rest()
        self.assertEqual((client.code, len(self.stand_in.all('too_fast'))), (1000, 1))
