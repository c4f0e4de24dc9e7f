"""The faults and commands that both stand-ins have, at both of them."""

import asyncio
from typing import Any

from tests.cloud_services._faults import HUGE
from tests.cloud_services._peer import Peer, Unknown
from tests.cloud_services.assemblyai import AssemblyAI
from tests.cloud_services.deepgram import Deepgram
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import Client, PeerTest

LINES = ['First of all, this is said.', 'Then comes that.']


class Faults:
    """What is said of either service, in terms of it."""

    class Test(PeerTest):
        END: dict[str, str]
        LAST: str

        def final_texts(self, messages: list[Any]) -> list[str]:
            raise NotImplementedError

        async def speak(self, client: Client, utterances: int = 2) -> None:
            await client.send(*sounds.frames(sounds.spoken(utterances)))

        async def works(self, client: Client) -> list[Any]:
            """The session goes its way to the end; gives what else came."""
            await self.speak(client)
            await client.send(self.END)
            messages = await client.rest()
            known = [one for one in messages if isinstance(one, dict) and one.get('type')]
            self.assertEqual(self.final_texts(known), LINES)
            self.assertEqual((known[-1]['type'], client.code), (self.LAST, 1000))
            return messages

        async def opened(self, *faults: str, **options: Any) -> tuple[Peer, Client]:
            peer = self.peer(faults=faults, lines=LINES)
            return peer, await self.connect(peer, **options)

        # Handshake and network.

        async def test_slow_handshake(self) -> None:
            peer = self.peer(faults=['slow-handshake:1'], lines=LINES)
            slow = asyncio.create_task(self.connect(peer))
            await asyncio.to_thread(peer.wait_for, 'held', what='handshake')
            other = await self.connect(peer)
            await other.answered()
            self.assertFalse(slow.done())
            self.assertEqual(len(peer.all('accepted')), 1)
            peer.obey({'release': True})
            await self.works(await slow)

        async def test_silent(self) -> None:
            peer, client = await self.opened('silent')
            await self.speak(client)
            await client.send(self.END)
            await client.answered()
            peer.obey({'send': '{"mark":1}'})
            self.assertEqual(await client.next(), {'mark': 1})
            self.assertEqual([one['number'] for one in peer.all('lost')], [1, 2])
            self.assertEqual(peer.all('line'), [])

        async def test_cut_in_the_middle(self) -> None:
            for fault in ('drop', 'reset'):
                peer, client = await self.opened(fault)
                await client.send(sounds.pcm(sounds.speech(0.9)))
                messages = await client.rest()
                self.assertEqual(client.code, 1006)
                self.assertEqual(self.final_texts(messages), [])
                self.assertIn(LINES[0].split()[0].lower(), str(messages).lower())
                self.assertEqual(peer.wait_for('lost')['number'], 1)
                self.assertEqual(peer.wait_for('closed')['by'], 'cut')

        async def test_cut_at_once(self) -> None:
            peer, client = await self.opened('drop-open:2')
            await client.rest()
            second = await self.connect(peer)
            await second.rest()
            self.assertEqual((client.code, second.code), (1006, 1006))
            await self.works(await self.connect(peer))

        async def stands_still(self, peer: Peer, client: Client) -> None:
            """Until it is released, and says everything then."""
            await client.send(self.END)
            other = await self.connect(peer)
            await other.answered()
            first = peer.all('connection')[0]['connection']
            self.assertEqual(peer.all('text', connection=first), [])
            peer.obey({'release': True})
            messages = await client.rest()
            self.assertEqual(self.final_texts(messages), LINES)
            self.assertEqual(client.code, 1000)

        async def test_stall_in_the_middle(self) -> None:
            peer, client = await self.opened('stall')
            await self.speak(client)
            peer.wait_for('fault', name='stall')
            await self.stands_still(peer, client)

        async def test_stall_on_command(self) -> None:
            peer, client = await self.opened()
            await self.speak(client)
            await client.answered()
            peer.obey({'stall': True})
            await self.stands_still(peer, client)

        # Messages that should not be.

        async def test_broken_frames_make_a_client_close(self) -> None:
            for fault, code in (('garbage', 1002), ('bad-utf8', 1007), ('huge-length', 1009)):
                peer, client = await self.opened(fault, max_size=2**20)
                await client.rest()
                self.assertEqual(client.socket.close_code, 1006)
                ended = await asyncio.to_thread(peer.wait_for, 'closed')
                self.assertEqual((ended['by'], ended['code']), ('client', code), fault)

        async def test_text_that_is_no_json(self) -> None:
            _, client = await self.opened('garbage-text')
            texts = [await client.raw() for _ in range(1 + (self.KIND is AssemblyAI))]
            self.assertEqual(texts[-1], 'no {JSON')

        async def test_wrong_shapes(self) -> None:
            peer, client = await self.opened()
            await client.answered()
            peer.obey({'fault': 'wrong-shape', 'now': True})
            shapes = [await client.next() for _ in range(7 + (self.KIND is AssemblyAI))]
            self.assertIn([], shapes)
            self.assertIn({'type': 7}, shapes)

        async def test_unknown_types_come_between(self) -> None:
            _, client = await self.opened('unknown-type')
            messages = await self.works(client)
            unknown = [one for one in messages if one['type'] == 'Weather']
            self.assertEqual(len(unknown) * 2, len(messages))

        async def test_binary_messages(self) -> None:
            _, client = await self.opened('binary-down')
            messages = await self.works(client)
            self.assertEqual(len([one for one in messages if isinstance(one, bytes)]), 1)

        async def test_a_huge_message(self) -> None:
            _, client = await self.opened('huge')
            messages = await self.works(client)
            self.assertEqual(max(len(one.get('padding', '')) for one in messages), HUGE)

        # Commands.

        async def test_faults_come_and_go(self) -> None:
            peer = self.peer(lines=LINES)
            peer.obey({'fault': 'drop-open', 'times': 1})
            await (first := await self.connect(peer)).rest()
            self.assertEqual(first.code, 1006)
            await (second := await self.connect(peer)).answered()
            peer.obey({'fault': 'drop-open'})
            await second.rest()
            self.assertEqual(second.code, 1006)
            peer.obey({'clear': 'drop-open'})
            peer.obey({'fault': 'drop-open'})
            peer.obey({'clear': True})
            await self.works(await self.connect(peer))

        async def test_a_command_for_one_connection(self) -> None:
            peer = self.peer(lines=LINES)
            first, second = await self.connect(peer), await self.connect(peer)
            await second.answered()
            number = peer.all('accepted')[0]['connection']
            peer.obey({'close': 4999, 'reason': 'told to', 'connection': number})
            await first.rest()
            self.assertEqual((first.code, first.reason), (4999, 'told to'))
            await self.works(second)

        async def test_drop_on_command(self) -> None:
            for how in (True, 'reset'):
                peer, client = await self.opened()
                await client.answered()
                peer.obey({'drop': how})
                await client.rest()
                self.assertEqual(client.code, 1006)

        def test_unknown_commands_are_refused(self) -> None:
            peer = self.peer()
            for command in ({'fault': 'weather'}, {'fault': 'weather', 'now': True}, {'jump': 1}):
                with self.assertRaises(Unknown):
                    peer.obey(command)
            with self.assertRaises(Unknown):
                self.KIND(faults=['weather'])

        # What is told.

        async def test_sound_is_counted(self) -> None:
            peer, client = await self.opened()
            await client.send(bytes(3200), bytes(6400))
            await client.answered()
            frames = [(one['frame_ms'], one['bytes'], one['ms']) for one in peer.all('audio')]
            self.assertEqual(frames, [(100, 3200, 100), (200, 9600, 300)])

        async def test_what_the_client_asked_for_is_told(self) -> None:
            peer, client = await self.opened()
            told = peer.wait_for('connection')
            self.assertEqual(told['path'], self.PATH.partition('?')[0])
            self.assertIn(('sample_rate', '16000'), told['query'])
            self.assertEqual(told['headers']['authorization'], self.HEADERS['Authorization'])
            await client.socket.close(1000, 'bye')
            told = peer.wait_for('closed')
            self.assertEqual((told['code'], told['reason'], told['by']), (1000, 'bye', 'client'))

        async def test_tls(self) -> None:
            peer = self.peer(tls=True, lines=LINES, faults=['stall:1'])
            client = await self.connect(peer, trust=peer.certificate)
            await self.speak(client)
            peer.wait_for('fault', name='stall')
            await client.send(self.END)
            peer.obey({'release': True})
            await client.rest()
            self.assertEqual(client.code, 1000)


class DeepgramFaults(Faults.Test):
    KIND = Deepgram
    HEADERS = {'Authorization': 'Token x'}
    PATH = (
        '/v1/listen?model=nova-3&encoding=linear16&sample_rate=16000'
        '&punctuate=true&interim_results=true'
    )
    END = {'type': 'CloseStream'}
    LAST = 'Metadata'

    def final_texts(self, messages: list[Any]) -> list[str]:
        finals = [one for one in messages if one.get('is_final')]
        texts = [one['channel']['alternatives'][0]['transcript'] for one in finals]
        return [text for text in texts if text]


class AssemblyAIFaults(Faults.Test):
    KIND = AssemblyAI
    HEADERS = {'Authorization': 'x'}
    PATH = '/v3/ws?sample_rate=16000&format_turns=true&speech_model=universal-streaming-english'
    END = {'type': 'Terminate'}
    LAST = 'Termination'

    def final_texts(self, messages: list[Any]) -> list[str]:
        return [one['transcript'] for one in messages if one.get('turn_is_formatted')]
