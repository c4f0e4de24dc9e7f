"""A plain client, on the library `websockets` and on `http.client`."""

import asyncio
import http.client
import json
import ssl
import unittest
from typing import Any

import websockets
from websockets.version import version

from tests.cloud_services._peer import Peer

PATIENT = 60.0  # Seconds for what must come.
HEADERS = 'extra_headers' if int(version.split('.')[0]) < 14 else 'additional_headers'


class Client:
    def __init__(self, socket: Any, peer: Peer) -> None:
        self.socket = socket
        self.peer = peer
        self.code: int | None = None  # Of the close; 1006 when there was none.
        self.reason = ''

    async def send(self, *messages: Any) -> None:
        for message in messages:
            known = isinstance(message, (str, bytes))
            await self.socket.send(message if known else json.dumps(message))

    async def raw(self) -> Any:
        return await asyncio.wait_for(self.socket.recv(), PATIENT)

    async def next(self) -> Any:
        return json.loads(await self.raw())

    async def until(self, key: str, value: Any) -> list[Any]:
        """The messages up to the one that says so."""
        messages = [await self.next()]
        while messages[-1].get(key) != value:
            messages.append(await self.next())
        return messages

    async def rest(self) -> list[Any]:
        """The messages up to the end of the connection."""
        messages = []
        try:
            while True:
                message = await self.raw()
                messages.append(json.loads(message) if isinstance(message, str) else message)
        except websockets.ConnectionClosed as closed:
            self.code = closed.rcvd.code if closed.rcvd else 1006
            self.reason = closed.rcvd.reason if closed.rcvd else ''
        return messages

    async def answered(self) -> None:
        """Everything that was sent so far has been dealt with by the service."""
        await asyncio.wait_for(await self.socket.ping(), PATIENT)
        self.peer.settle()


def knock(
    peer: Peer, path: str, headers: dict[str, str] | None = None, method: str = 'GET'
) -> tuple[int, dict[str, str], Any]:
    """The answer to a handshake: status, headers with names in lower case, body."""
    connection = http.client.HTTPConnection('127.0.0.1', peer.port, timeout=PATIENT)
    own = {'Upgrade': 'websocket', 'Connection': 'Upgrade', 'Sec-WebSocket-Version': '13'}
    own['Sec-WebSocket-Key'] = 'AAECAwQFBgcICQoLDA0ODw=='
    connection.request(method, path, headers=own | (headers or {}))
    answer = connection.getresponse()
    body = json.loads(answer.read()) if answer.status != 101 else None
    connection.close()
    return answer.status, {name.lower(): value for name, value in answer.getheaders()}, body


class PeerTest(unittest.IsolatedAsyncioTestCase):
    """Starts stand-ins, connects clients, and sees that no stand-in broke."""

    KIND: Any
    PATH: str
    HEADERS: dict[str, str]

    async def asyncSetUp(self) -> None:
        asyncio.get_running_loop().slow_callback_duration = PATIENT  # Nobody judges by the clock.

    def peer(self, **options: Any) -> Any:
        peer = self.KIND(**{'burst': float('inf')} | options).start()
        self.addCleanup(self._end, peer)
        return peer

    def _end(self, peer: Peer) -> None:
        peer.stop()
        self.assertEqual(peer.all('defect'), [])

    async def connect(
        self,
        peer: Peer,
        path: str | None = None,
        *,
        headers: dict[str, str] | None = None,
        trust: str | None = None,
        **options: Any,
    ) -> Client:
        options = {'max_size': None} | options
        options[HEADERS] = self.HEADERS if headers is None else headers
        if trust:
            options['ssl'] = ssl.create_default_context(cafile=trust)
        scheme = 'wss' if trust else 'ws'
        uri = f'{scheme}://127.0.0.1:{peer.port}{path or self.PATH}'
        connecting = websockets.connect(uri, ping_interval=None, close_timeout=1, **options)
        client = Client(await asyncio.wait_for(connecting, PATIENT), peer)
        self.addAsyncCleanup(client.socket.close)
        return client
