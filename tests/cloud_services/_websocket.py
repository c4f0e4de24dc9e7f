"""One connection of a client: the WebSocket protocol over a TCP or TLS connection.

The library's part without input and output keeps the rules of the protocol, here and on both Debians
alike; what it does not know is done by hand: refusing with headers of one's own, standing still,
breaking off, and sending what no service should.
"""

import asyncio
import collections
import dataclasses
import http
import json
import logging
import socket
import struct
import urllib.parse
from collections.abc import Callable, Mapping
from typing import Any

from websockets.frames import Frame, Opcode

try:
    from websockets.server import ServerProtocol
except ImportError:  # Version 10.4 of Debian 12 calls it otherwise.
    from websockets.server import ServerConnection as ServerProtocol

MAX_MESSAGE = 64 * 1024 * 1024  # Bytes.
MAX_HEAD = 64 * 1024

# Clients that break the protocol are part of the tests.
_quiet = logging.Logger('quiet', logging.CRITICAL + 1)


@dataclasses.dataclass(frozen=True)
class Handshake:
    """What a client asked for."""

    method: str
    path: str
    query: list[tuple[str, str]]
    headers: Mapping[str, str]  # Names in lower case.

    @property
    def subprotocols(self) -> list[str]:
        offered = self.headers.get('sec-websocket-protocol', '')
        return [name.strip() for name in offered.split(',') if name.strip()]

    def value(self, name: str) -> str | None:
        return next((value for key, value in self.query if key == name), None)


@dataclasses.dataclass(frozen=True)
class Answer:
    """An answer of HTTP, given instead of a WebSocket."""

    status: int
    body: Mapping[str, Any]
    headers: tuple[tuple[str, str], ...] = ()


def handshake_of(head: bytes) -> Handshake:
    request, *lines = head.decode('latin-1').split('\r\n')
    method, target, *_ = (request + '  ').split(' ')
    parts = urllib.parse.urlsplit(target)
    pairs = (line.partition(':') for line in lines if ':' in line)
    return Handshake(
        method,
        parts.path,
        urllib.parse.parse_qsl(parts.query, keep_blank_values=True),
        {name.strip().lower(): value.strip() for name, _, value in pairs},
    )


class Link(asyncio.Protocol):
    """The connection. Belongs to the thread of its loop.

    `begin` gets it with the client's handshake, and answers by `accept` or `refuse`, at once or later.
    Afterwards `on_text`, `on_binary` and `on_gone` are called.
    """

    def __init__(self, number: int, begin: Callable[['Link', Handshake], None]) -> None:
        self.number = number
        self._begin = begin
        self._protocol = ServerProtocol(max_size=MAX_MESSAGE, logger=_quiet)
        self._head: bytes | None = b''
        self._handshake: Any = None
        self._parts: list[bytes] = []
        self._is_text = False
        self._stalled = False
        self._arrived: collections.deque[bytes | Frame] = collections.deque()
        self._waiting_out: list[bytes] = []
        self.closing = False
        self.on_text: Callable[[str], None] = lambda text: None
        self.on_binary: Callable[[bytes], None] = lambda data: None
        self.on_gone: Callable[[], None] = lambda: None

    # What the loop says.

    def connection_made(self, transport: asyncio.BaseTransport) -> None:
        self.transport: Any = transport

    def connection_lost(self, error: Exception | None) -> None:
        self.closing = True
        self.on_gone()

    def data_received(self, data: bytes) -> None:
        self._arrived.append(data)
        self._go_on()

    def _go_on(self) -> None:
        """Takes what has come, in its order, until there is no more or a message makes it stall."""
        while self._arrived and not self._stalled:
            first = self._arrived.popleft()
            if isinstance(first, Frame):
                self._take_frame(first)
            elif self._head is None:
                self._feed(first)
            else:
                self._take_head(self._head + first)

    def eof_received(self) -> bool:
        return False  # So that the loop closes the connection.

    # The handshake.

    def _take_head(self, head: bytes) -> None:
        self._head = head
        if b'\r\n\r\n' not in head:
            if len(head) > MAX_HEAD:
                self.drop()
            return
        self._head = None
        handshake = handshake_of(head[: head.index(b'\r\n\r\n')])
        if handshake.method == 'GET':
            self._feed(head)
        if self._handshake is None:
            self.closing = True
        self._begin(self, handshake)

    def accept(
        self, headers: tuple[tuple[str, str], ...] = (), subprotocol: str | None = None
    ) -> bool:
        """Completes the handshake; false, and refused, when it was not one of a WebSocket."""
        if self._handshake is None:
            self.refuse(Answer(400, {'error': 'not a handshake'}))
            return False
        self._protocol.available_subprotocols = [subprotocol] if subprotocol else None
        response = self._protocol.accept(self._handshake)
        for name, value in headers:
            response.headers[name] = value
        self._protocol.send_response(response)
        self._flush()
        self.closing = response.status_code != 101
        return not self.closing

    def refuse(self, answer: Answer) -> None:
        """Answers with HTTP, and closes."""
        body = json.dumps(answer.body).encode()
        status = http.HTTPStatus(answer.status)
        head = [f'HTTP/1.1 {answer.status} {status.phrase}', 'Content-Type: application/json']
        head += [f'Content-Length: {len(body)}', 'Connection: close']
        head += [f'{name}: {value}' for name, value in answer.headers]
        self.closing = True
        self.write('\r\n'.join(head).encode('latin-1') + b'\r\n\r\n' + body)
        self._finish()

    # Messages.

    def _feed(self, data: bytes) -> None:
        self._protocol.receive_data(data)
        events = self._protocol.events_received()
        for event in events:
            if not isinstance(event, Frame):
                self._handshake = event
        self._arrived.extendleft(event for event in reversed(events) if isinstance(event, Frame))
        self._flush()

    def _take_frame(self, frame: Frame) -> None:
        if frame.opcode is Opcode.CLOSE:
            self.closing = True
        if self.closing or frame.opcode not in (Opcode.TEXT, Opcode.BINARY, Opcode.CONT):
            return
        if frame.opcode is not Opcode.CONT:
            self._is_text = frame.opcode is Opcode.TEXT
        self._parts.append(bytes(frame.data))
        if frame.fin:
            data, self._parts = b''.join(self._parts), []
            self._take_message(data)

    def _take_message(self, data: bytes) -> None:
        if not self._is_text:
            self.on_binary(data)
            return
        try:
            text = data.decode()
        except UnicodeDecodeError:
            self.close(1007, 'invalid UTF-8')
            return
        self.on_text(text)

    def _can_send(self) -> bool:
        """Not behind a close that has been read already, though its turn is still to come."""
        return not self.closing and self._protocol.state.name == 'OPEN'

    def send_text(self, text: str) -> None:
        if self._can_send():
            self._protocol.send_text(text.encode())
            self._flush()

    def send_binary(self, data: bytes) -> None:
        if self._can_send():
            self._protocol.send_binary(data)
            self._flush()

    def close(self, code: int, reason: str) -> None:
        if self._can_send():
            self.closing = True
            self._protocol.send_close(code, reason)
            self._flush()

    def ended(self) -> tuple[int, str, str]:
        """Code, reason, and who closed: "service", "client", or nobody ("cut")."""
        sent, received = self._protocol.close_sent, self._protocol.close_rcvd
        if received and (not sent or self._protocol.close_rcvd_then_sent):
            return received.code, received.reason, 'client'
        if sent:
            return sent.code, sent.reason, 'service'
        return 1006, '', 'cut'

    # The connection itself.

    def write(self, data: bytes) -> None:
        """Sends bytes past the protocol."""
        if self._stalled:
            self._waiting_out.append(data)
        else:
            self.transport.write(data)

    def _flush(self) -> None:
        for data in self._protocol.data_to_send():
            if data:
                self.write(data)
            else:
                self._finish()

    def _finish(self) -> None:
        if self._stalled:
            self._waiting_out.append(b'')
        else:
            self.transport.close()

    def drop(self, reset: bool = False) -> None:
        """Breaks the TCP connection off, without a word; with a reset where that is wanted."""
        self.closing = True
        if reset:
            own = self.transport.get_extra_info('socket')
            own.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack('ii', 1, 0))
        self.transport.abort()

    def stall(self) -> None:
        """Neither reads nor writes until it is released."""
        if not self._stalled and not self.transport.is_closing():
            self._stalled = True
            self.transport.pause_reading()

    def release(self) -> None:
        if not self._stalled:
            return
        self._stalled = False
        self.transport.resume_reading()
        waiting, self._waiting_out = self._waiting_out, []
        for data in waiting:
            if data:
                self.transport.write(data)
            else:
                self.transport.close()
        self._go_on()
