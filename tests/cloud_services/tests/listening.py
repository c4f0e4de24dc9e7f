"""How a client of the stand-in of Deepgram speaks and reads."""

from typing import Any

from tests.cloud_services.deepgram import Deepgram
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import Client, PeerTest

END = {'type': 'CloseStream'}
PATH = '/v1/listen?model=nova-3&language=en'


def path(query: str) -> str:
    return f'{PATH}&encoding=linear16&sample_rate=16000&{query}'


def results(messages: list[Any]) -> list[Any]:
    return [message for message in messages if message['type'] == 'Results']


def text(message: Any) -> str:
    return str(message['channel']['alternatives'][0]['transcript'])


def utterances(messages: list[Any]) -> list[str]:
    """As a client has to put them together."""
    found, pieces = [], []
    for message in results(messages):
        if message['is_final'] and text(message):
            pieces.append(text(message))
        if message['speech_final'] and pieces:
            found.append(' '.join(pieces))
            pieces = []
    return found + pieces


class StreamTest(PeerTest):
    KIND = Deepgram
    PATH = path('interim_results=true&punctuate=true&endpointing=300')
    HEADERS = {'Authorization': 'Token x'}

    async def say(self, client: Client, data: bytes) -> None:
        await client.send(*sounds.frames(data))

    async def hear(self, peer: Any, data: bytes, query: str | None = None) -> list[Any]:
        """All that is said to a sound, until the end of the stream."""
        client = await self.connect(peer, None if query is None else path(query))
        await self.say(client, data)
        await client.send(END)
        messages = await client.rest()
        self.assertEqual((client.code, client.reason), (1000, ''))
        return messages
