"""The part that all stand-ins share: takes requests, counts, tells, holds back, and answers.

A service is a class with FAULTS, the answers it can be told to give, and admit(), which looks at a
request and gives what makes its answer, or raises Refused. It runs inside a test as a context
manager, or as a program of its own (program.py).
"""

from __future__ import annotations

import socket
import threading
import traceback
import urllib.parse
from dataclasses import dataclass, replace
from typing import Callable

from . import transport
from .controls import Controls
from .lines import Lines
from .messages import Answer, Checks, Refused, Request
from .server import Handler, Server

LONGEST_TOLD = 4000


@dataclass
class Settings:
    """What all stand-ins can be started with; a name here is an option of the programs."""

    key: str | None = None  # Without one every key is right.
    lines: list[str] | None = None  # What is understood; see Lines.
    fault: str | list[str] | None = None
    heard: str | None = None  # The language that is found where a request leaves it open.
    slow: float = 30.0  # How long the fault "slow" takes, in seconds.
    large: int = 64 * 1024 * 1024  # How many bytes the fault "large" adds.
    retry_after: int = 1
    wait: Callable[[float], object] | None = None  # What is called with the seconds of a delay.
    emit: Callable[..., None] | None = None  # What is called with every event.


class Service:
    FAULTS: dict[str, Callable[..., Answer]] = {}
    SPARED: tuple[str, ...] = ()  # Paths that no fault meets: they only lead to the others.

    def __init__(self, **settings) -> None:
        self.settings = Settings(**settings)
        self.key, self.heard = self.settings.key, self.settings.heard
        self.controls = Controls(self.FAULTS, self.settings.fault, self.settings.wait)
        self.events: list[dict] = []
        self._told = threading.Condition()
        self._arrival = threading.Lock()
        self._state = threading.Lock()
        self._lines = Lines(self.settings.lines)
        self._owed: dict[int, tuple[socket.socket, list[int]]] = {}
        self._connections: dict[int, socket.socket] = {}
        self._busy: set[int] = set()
        self._counts: dict[str, int] = {}
        self._server: Server | None = None

    # To be said by each service.

    def admit(self, request: Request, checks: Checks) -> Callable[[], Answer]:
        raise NotImplementedError

    # Its life.

    def open(self, address, handler=None) -> Server:
        """The server, which listens; whoever calls this lets it serve."""
        self._server = Server(address, self)
        return self._server

    @property
    def port(self) -> int:
        return self._server.server_address[1]

    def __enter__(self):
        self.open(('127.0.0.1', 0))
        self._thread = threading.Thread(target=self._take_connections, daemon=True)
        self._thread.start()
        return self

    def _take_connections(self) -> None:
        while not self.controls.ended.is_set():
            self._server.handle_request()

    def __exit__(self, *error) -> None:
        self.controls.end()
        self._server.socket.shutdown(socket.SHUT_RDWR)  # Which whoever waits for a client notices.
        self._thread.join()
        self._server.server_close()
        self._close(lambda number: True)

    def connected(self, connection: socket.socket) -> int:
        with self._state:
            number = self.count('connections')
            self._connections[number] = connection
            return number

    def disconnected(self, number: int) -> None:
        with self._state:
            self._connections.pop(number, None)

    def close_connections(self) -> None:
        """What a service does with connections that have been idle for long."""
        self._close(lambda number: number not in self._busy)

    def _close(self, which: Callable[[int], bool]) -> None:
        with self._state:
            for number, connection in self._connections.items():
                if which(number):
                    try:
                        connection.shutdown(socket.SHUT_RDWR)
                    except OSError:
                        pass  # It has ended by itself.

    # What it tells.

    def count(self, name: str) -> int:
        """How many there are with this one. Only under a lock."""
        self._counts[name] = self._counts.get(name, 0) + 1
        return self._counts[name]

    def tell(self, event: str, **facts) -> None:
        with self._told:
            entry = {'event': event, 'sequence': len(self.events) + 1, **facts}
            self.events.append(entry)
            self._told.notify_all()
            if self.settings.emit:
                self.settings.emit(**entry)

    def wait_for(self, event: str, count: int = 1, limit: float = 60) -> list[dict]:
        """All events of that name once there are so many of them; those there are, after the limit."""

        def found() -> list[dict]:
            return [entry for entry in self.events if entry['event'] == event]

        with self._told:
            self._told.wait_for(lambda: len(found()) >= count, limit)
            return found()

    # What it can be told as a line of JSON.

    def obey(self, command: dict) -> None:
        """What is no command is told as misuse."""
        try:
            for name, value in command.items():
                self._obey(name, value)
        except (AttributeError, TypeError, ValueError) as error:
            self.tell('misuse', what=str(error))

    def _obey(self, name: str, value) -> None:
        if name == 'fault':
            self.controls.fault(value)
        elif name == 'slow':
            self.controls.slow(float(value))
        elif name == 'hold' and value is True:
            self.controls.hold()
        elif name == 'release':
            self.controls.release(None if value is True else int(value))
        elif name == 'heard':
            self.heard = value
        elif name == 'closeConnections' and value is True:
            self.close_connections()
        else:
            raise ValueError(f'no command: {name} {value!r}')

    # Requests.

    def hear(self, checks: Checks, stretches: int) -> list[str]:
        """The lines that so many stretches of voice are understood as."""
        with self._state:
            taken = self._lines.take(stretches)
        checks.taken = [index for index, _ in taken]
        return [text for _, text in taken]

    def serve(self, handler: Handler, body: bytes, streamed: bool) -> None:
        with self._arrival:  # Numbers and lines go by arrival, however many come at a time.
            self._reclaim()
            request = self._request(handler, body, streamed)
            spared = request.path in (transport.ELSEWHERE, *self.SPARED)
            fault = None if spared else self.controls.next_fault()
            checks = Checks()
            answer = self._judge(request, fault, checks)
            with self._state:
                self._owed[request.number] = (handler.connection, checks.taken)
                self._busy.add(request.connection)
            self.controls.arrived(request.number)
            self._tell_request(request, checks)
        self.controls.wait_for_release(request.number)
        self.controls.pause(self.controls.delay())
        if fault == 'slow':
            self.controls.pause(self.settings.slow)
        sent = self._send(handler, request.number, answer, fault)
        self._tell_answer(request.number, answer, fault, sent)

    def _request(self, handler: Handler, body: bytes, streamed: bool) -> Request:
        target = urllib.parse.urlsplit(handler.path)
        headers: dict[str, str] = {}
        for name, value in handler.headers.items():
            before = headers.get(name.lower())
            headers[name.lower()] = value if before is None else f'{before}, {value}'
        with self._state:
            number = self.count('requests')
        return Request(
            number=number,
            connection=handler.connection_number,
            method=handler.command,
            path=urllib.parse.unquote(target.path),
            query=urllib.parse.parse_qs(target.query, keep_blank_values=True),
            headers=headers,
            body=body,
            streamed=streamed,
        )

    def _judge(self, request: Request, fault: str | None, checks: Checks) -> Answer:
        if request.path == transport.ELSEWHERE:
            checks.failed = 'followed-redirect'
            return Answer(200, transport.PORTAL, transport.HTML)
        try:
            make = self.admit(request, checks)
            if fault in self.FAULTS:
                answer = self.FAULTS[fault](self, request, checks)
            else:
                answer = make()
        except Refused as refused:
            answer = refused.answer
        except Exception:
            self.tell('defect', what=traceback.format_exc())
            raise
        if answer.status == 429:
            answer = self._limited(answer)
        on_the_way = transport.FAULTS.get(fault, transport.SOUND)
        if not on_the_way.keeps_text:
            with self._state:
                self._lines.give_back(checks.taken)
            checks.taken = []
            answer = replace(answer, text=())
        return on_the_way.change(self, answer)

    def _limited(self, answer: Answer) -> Answer:
        with self._state:
            every_second = self.count('limited') % 2 == 0
        if every_second:
            return answer.with_header('Retry-After', str(self.settings.retry_after))
        return answer

    def _reclaim(self) -> None:
        """Takes lines back from clients that went away before their answer, who may be back now."""
        with self._state:
            for number, (connection, lines) in list(self._owed.items()):
                if transport.is_gone(connection):
                    self._lines.give_back(lines)
                    del self._owed[number]

    def _send(self, handler: Handler, number: int, answer: Answer, fault: str | None) -> bool:
        # From here on the line is the client's: whoever has read an answer may close at once.
        with self._state:
            gone = transport.is_gone(handler.connection)
            lines = self._owed.pop(number, (None, []))[1]
            self._busy.discard(handler.connection_number)
        sent = not gone and transport.deliver(self, handler, answer, fault)
        if not sent:
            handler.close_connection = True
            with self._state:
                self._lines.give_back(lines)
        return sent

    def _tell_request(self, request: Request, checks: Checks) -> None:
        self.tell(
            'request',
            request=request.number,
            connection=request.connection,
            method=request.method,
            path=request.path,
            query=request.query,
            headers=request.relevant_headers(),
            checked=checks.passed,
            failed=checks.failed,
            **checks.facts,
        )

    def _tell_answer(self, number: int, answer: Answer, fault: str | None, sent: bool) -> None:
        self.tell(
            'answer',
            request=number,
            status=answer.status,
            text=list(answer.text),
            headers=dict(answer.headers),
            body=answer.body.decode(errors='replace')[:LONGEST_TOLD],
            fault=fault,
            sent=sent,
        )
