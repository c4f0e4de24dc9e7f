"""The faults that the stand-in of Deepgram has by itself."""

from typing import Any

from tests.cloud_services._clock import ManualClock
from tests.cloud_services.deepgram import Deepgram
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import Client, PeerTest, knock

HEADERS = {'Authorization': 'Token x'}
PATH = (
    '/v1/listen?model=nova-3&encoding=linear16&sample_rate=16000'
    '&interim_results=true&utterance_end_ms=1000'
)


class Refusals(PeerTest):
    KIND = Deepgram

    def test_each_has_its_status_and_code(self) -> None:
        known = {
            'key': (401, 'INVALID_AUTH', 'Invalid credentials.'),
            'permission': (403, 'INSUFFICIENT_PERMISSIONS', 'Project does not have access'),
            'permission-401': (401, 'INSUFFICIENT_PERMISSIONS', 'Project does not have access'),
            'model': (400, 'Bad Request', 'Bad Request: No such model/language/tier combination'),
            'credit': (402, 'ASR_PAYMENT_REQUIRED', ''),
            'too-many': (429, 'TOO_MANY_REQUESTS', 'Too many requests. Please try again later'),
            'unavailable': (503, 'SERVICE_UNAVAILABLE', ''),
        }
        peer = self.peer()
        for name, (status, code, message) in known.items():
            peer.obey({'fault': name, 'times': 1})
            got, headers, body = knock(peer, PATH, HEADERS)
            self.assertEqual((got, body['err_code']), (status, code), name)
            self.assertTrue(headers['dg-error'].startswith(message), name)
            self.assertEqual(headers['dg-request-id'], body['request_id'])
            self.assertEqual(knock(peer, PATH, HEADERS)[0], 101, name)
        peer.settle()
        self.assertEqual(len(peer.all('accepted')), len(known))


class Closes(PeerTest):
    KIND = Deepgram
    HEADERS = HEADERS
    PATH = PATH

    async def opened(self, fault: str, **options: Any) -> tuple[Any, Client]:
        peer = self.peer(faults=[fault], **options)
        return peer, await self.connect(peer)

    async def test_internal(self) -> None:
        _, client = await self.opened('internal')
        await client.rest()
        self.assertEqual((client.code, client.reason[:9]), (1011, 'NET-0000:'))

    async def test_close_in_the_middle(self) -> None:
        peer, client = await self.opened('close-mid')
        await client.send(sounds.pcm(sounds.speech(0.8)))
        messages = await client.rest()
        self.assertEqual((client.code, client.reason[:9]), (1011, 'NET-0000:'))
        self.assertEqual([one['is_final'] for one in messages], [False])
        peer.wait_for('lost', number=1)

    async def test_undecodable(self) -> None:
        _, client = await self.opened('undecodable')
        await client.answered()
        await client.send(bytes(3200))
        self.assertEqual(await client.rest(), [])
        self.assertEqual((client.code, client.reason[:10]), (1008, 'DATA-0000:'))

    async def test_too_fast(self) -> None:
        _, client = await self.opened('too-fast', clock=ManualClock(), burst=1.0)
        await client.send(*[bytes(3200)] * 11)
        await client.rest()
        self.assertEqual(client.code, 1008)

    async def test_idle_with_a_code(self) -> None:
        peer, client = await self.opened('idle-code', clock=ManualClock())
        await client.answered()
        peer.obey({'advance': 10})
        await client.rest()
        self.assertEqual((client.code, client.reason[:8]), (1011, 'NET-0001'))


class Answers(PeerTest):
    KIND = Deepgram
    HEADERS = HEADERS
    PATH = PATH

    async def hear(self, fault: str, data: bytes) -> list[Any]:
        client = await self.connect(self.peer(faults=[fault]))
        await client.send(*sounds.frames(data), {'type': 'Finalize'}, {'type': 'CloseStream'})
        return await client.rest()

    async def test_finalize_that_leaves_the_utterance_open(self) -> None:
        for fault, final in (('finalize-open', False), ('idle-code', True)):
            messages = await self.hear(fault, sounds.pcm(sounds.speech(0.8)))
            answer = next(one for one in messages if one['from_finalize'])
            self.assertEqual((answer['is_final'], answer['speech_final']), (True, final))

    async def test_finalize_without_an_answer(self) -> None:
        messages = await self.hear('finalize-unanswered', sounds.pcm(sounds.pause(0.2)))
        self.assertEqual([one.get('from_finalize') for one in messages], [False, None])

    async def test_finalize_is_answered_where_there_is_speech(self) -> None:
        messages = await self.hear('finalize-unanswered', sounds.pcm(sounds.speech(0.8)))
        self.assertEqual(len([one for one in messages if one.get('from_finalize')]), 1)

    async def test_no_speech_is_final(self) -> None:
        messages = await self.hear('no-speech-final', sounds.spoken(2, silence=1.5))
        finals = [one for one in messages if one.get('is_final')]
        said = [one for one in finals if one['channel']['alternatives'][0]['transcript']]
        self.assertEqual(len(said), 2)
        self.assertFalse(any(one['speech_final'] for one in finals))
        self.assertEqual(len([one for one in messages if one['type'] == 'UtteranceEnd']), 2)
