"""What the stand-in of AssemblyAI does with clients of the second version."""

import base64
import json
from typing import Any

from tests.cloud_services._clock import ManualClock
from tests.cloud_services.assemblyai import AssemblyAI
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import Client, PeerTest, knock

END = {'terminate_session': True}
DEPRECATED = (
    'Model deprecated. See docs for new model information:'
    ' https://www.assemblyai.com/docs/speech-to-text/universal-streaming'
)
SCHEMA = 'Endpoint received a message with an invalid schema'


def sound(data: bytes) -> dict[str, str]:
    return {'audio_data': base64.b64encode(data).decode()}


class Old(PeerTest):
    KIND = AssemblyAI
    PATH = '/v2/realtime/ws?sample_rate=16000'
    HEADERS = {'Authorization': 'right'}

    async def closes(self, client: Client, code: int, text: str) -> list[Any]:
        """Gives what came before the error."""
        *messages, error = await client.rest()
        self.assertEqual((client.code, client.reason), (code, text))
        self.assertEqual(error, {'error': text})
        return messages

    async def test_it_is_dead(self) -> None:
        peer = self.peer()
        client = await self.connect(peer)
        self.assertEqual(await self.closes(client, 4105, DEPRECATED), [])
        peer.wait_for('refused', code=4105)

    def test_no_tokens(self) -> None:
        status, _, body = knock(self.peer(), '/v2/realtime/token', self.HEADERS, 'POST')
        self.assertEqual((status, body), (401, {'error': DEPRECATED}))

    def test_it_is_refused(self) -> None:
        for old, status in (('refused', 410), ('missing', 404)):
            self.assertEqual(knock(self.peer(old=old), self.PATH, self.HEADERS)[0], status)

    async def test_it_is_silent(self) -> None:
        peer = self.peer(old='silent')
        client = await self.connect(peer)
        await client.send(sound(bytes(3200)), END)
        await client.answered()
        peer.obey({'send': '{"mark":1}'})
        self.assertEqual(await client.next(), {'mark': 1})
        self.assertEqual(len(peer.all('text')), 2)

    async def test_it_is_alive(self) -> None:
        peer = self.peer(old='alive', lines=['Well, then.'])
        client = await self.connect(peer)
        for frame in sounds.frames(sounds.spoken(2)):
            await client.send(sound(frame))
        await client.send(END)
        messages = await client.rest()
        kinds = [one['message_type'] for one in messages]
        self.assertEqual((kinds[0], kinds[-1]), ('SessionBegins', 'SessionTerminated'))
        self.assertEqual(set(messages[0]), {'message_type', 'session_id', 'expires_at'})
        final = [one['text'] for one in messages if one['message_type'] == 'FinalTranscript']
        self.assertEqual(final, ['Well, then.', 'sentence number two.'])
        partial = [one['text'] for one in messages if one['message_type'] == 'PartialTranscript']
        self.assertEqual(partial[:2], ['well', 'well then'])
        self.assertEqual(client.code, 1000)
        self.assertEqual([one['number'] for one in peer.all('line')], [1, 2])

    async def test_keys_and_rates_of_the_living(self) -> None:
        peer = self.peer(old='alive', key='wrong')
        await self.closes(await self.connect(peer), 4001, 'Not Authorized')
        client = await self.connect(self.peer(old='alive'), '/v2/realtime/ws?sample_rate=x')
        await self.closes(client, 4000, 'Sample rate must be a positive integer')

    async def test_what_the_living_does_not_take(self) -> None:
        known = {
            b'\0' * 3200: (4101, SCHEMA),
            'hello': (4100, 'Endpoint received invalid JSON'),
            '{"type":"Terminate"}': (4101, SCHEMA),
            json.dumps(sound(b'')): (4034, 'Audio too small'),
            '{"audio_data":"?"}': (4101, 'audio_data is no base64'),
        }
        for message, (code, text) in known.items():
            client = await self.connect(self.peer(old='alive'))
            await client.send(message)
            await self.closes(client, code, text)

    async def test_sound_that_is_too_fast_for_the_living(self) -> None:
        client = await self.connect(self.peer(old='alive', clock=ManualClock(), burst=1.0))
        await client.send(*[sound(bytes(3200))] * 11)
        await self.closes(client, 4029, 'Client sent audio too fast')
