"""What only a client without a library sees: single bytes, and a connection that takes no more."""

import json
import socket
from typing import Any

from tests.cloud_services.deepgram import Deepgram
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import PATIENT, PeerTest

TEXT, BINARY, CONTINUED, FINAL = 1, 2, 0, 0x80
FINALIZE = b'{"type":"Finalize"}'
MUCH = 256 * 1024 * 1024  # Bytes, more than any two sockets hold.


def frame(head: int, data: bytes) -> bytes:
    """Masked with zeros, which leaves it as it is."""
    return bytes([head, 0x80 | 127]) + len(data).to_bytes(8, 'big') + bytes(4) + data


class Raw(PeerTest):
    KIND = Deepgram
    PATH = '/v1/listen?model=nova-3&encoding=linear16&sample_rate=16000'
    HEADERS = {'Authorization': 'Token x'}

    def setUp(self) -> None:
        self.stand_in = self.peer()

    def dial(self, peer: Any) -> socket.socket:
        """A connection whose handshake is through."""
        connection = socket.create_connection(('127.0.0.1', peer.port), PATIENT)
        self.addCleanup(connection.close)
        lines = [f'GET {self.PATH} HTTP/1.1', 'Host: x', 'Upgrade: websocket']
        lines += ['Connection: Upgrade', 'Sec-WebSocket-Key: AAECAwQFBgcICQoLDA0ODw==']
        lines += ['Sec-WebSocket-Version: 13', 'Authorization: Token x', '', '']
        for byte in '\r\n'.join(lines).encode():
            connection.send(bytes([byte]))
        head = b''
        while not head.endswith(b'\r\n\r\n'):
            head += connection.recv(1)
        self.assertIn(b' 101 ', head.splitlines()[0])
        return connection

    def message(self, connection: socket.socket) -> Any:
        head = connection.recv(2, socket.MSG_WAITALL)
        size = head[1]
        if size == 126:
            size = int.from_bytes(connection.recv(2, socket.MSG_WAITALL), 'big')
        data = connection.recv(size, socket.MSG_WAITALL)
        return json.loads(data) if head[0] == FINAL | TEXT else (head[0], data)

    def test_messages_in_parts_and_bytes(self) -> None:
        connection = self.dial(self.stand_in)
        parts = frame(TEXT, FINALIZE[:5]) + frame(CONTINUED, FINALIZE[5:9])
        for byte in parts + frame(FINAL | CONTINUED, FINALIZE[9:]):
            connection.send(bytes([byte]))
        self.assertTrue(self.message(connection)['from_finalize'])

    def test_what_breaks_the_protocol(self) -> None:
        for data, code in (
            (frame(FINAL | TEXT, b'\xff'), 1007),
            (frame(FINAL | CONTINUED, b'x'), 1002),
            (frame(FINAL | 0x70 | TEXT, b'x'), 1002),
            (b'\x81\x01x', 1002),
        ):
            connection = self.dial(self.stand_in)
            connection.send(data)
            kind, reason = self.message(connection)
            self.assertEqual((kind, int.from_bytes(reason[:2], 'big')), (0x88, code))

    def test_a_close_right_behind_a_question(self) -> None:
        connection = self.dial(self.stand_in)
        close = frame(FINAL | 8, (1001).to_bytes(2, 'big'))
        connection.sendall(frame(FINAL | TEXT, FINALIZE) + close)
        self.assertEqual(self.message(connection), (FINAL | 8, (1001).to_bytes(2, 'big')))
        self.assertEqual(self.stand_in.wait_for('closed')['by'], 'client')
        self.assertEqual(len(self.stand_in.all('text')), 1)

    def test_a_stall_holds_what_came_with_the_same_bytes(self) -> None:
        peer = self.peer(faults=['stall:1'])
        connection = self.dial(peer)
        speech = frame(FINAL | BINARY, sounds.pcm(sounds.speech(0.5)))
        connection.sendall(speech + frame(FINAL | TEXT, FINALIZE))
        peer.wait_for('fault', name='stall')
        other = self.dial(peer)
        other.sendall(frame(FINAL | TEXT, FINALIZE))
        self.assertTrue(self.message(other)['from_finalize'])
        self.assertEqual([one['connection'] for one in peer.all('text')], [2])
        peer.obey({'send': '{"mark":1}', 'connection': 1})
        connection.setblocking(False)
        with self.assertRaises(BlockingIOError):
            connection.recv(1)
        connection.settimeout(PATIENT)
        peer.obey({'release': True})
        self.assertEqual(self.message(connection), {'mark': 1})
        self.assertTrue(self.message(connection)['from_finalize'])

    def test_a_stalled_connection_takes_no_more(self) -> None:
        connection, other = self.dial(self.stand_in), self.dial(self.stand_in)
        self.stand_in.obey({'stall': True, 'connection': 1})
        connection.setblocking(False)
        sent = tried = 0
        while tried < 5 and sent < MUCH:
            try:
                sent += connection.send(bytes(1 << 20))
                tried = 0
            except BlockingIOError:
                other.sendall(frame(FINAL | TEXT, FINALIZE))
                self.message(other)  # So it would have had the time to read.
                tried += 1
        self.assertLess(sent, MUCH)
