"""A stand-in as a whole: its thread, its socket, its connections, what it tells and what it is told."""

import asyncio
import ssl
import threading
from collections.abc import Callable, Iterable, Sequence
from typing import Any, ClassVar

from tests.cloud_services._clock import Clock, ManualClock
from tests.cloud_services._events import PATIENT, Events
from tests.cloud_services._faults import COMMON, Armed, Fault, Moment
from tests.cloud_services._session import Session
from tests.cloud_services._speech import Lines
from tests.cloud_services._support import tls_context
from tests.cloud_services._websocket import Answer, Handshake, Link


class Unknown(ValueError):
    """A command or a fault that does not exist."""


class Peer(Events):
    """Serves on a free port of loopback between `start` and `stop`, in a thread of its own.

    `rate` and `burst` say how fast sound may come (see `Pace`), `sessions` how many there may be at
    once.
    """

    FAULTS: ClassVar[dict[str, Fault]] = COMMON
    RATE: ClassVar[float] = 1.0

    def __init__(
        self,
        *,
        key: str | None = None,
        faults: Iterable[str] = (),
        lines: Sequence[str] = (),
        tls: bool = False,
        clock: Clock | None = None,
        rate: float | None = None,
        burst: float = 2.0,
        sessions: int | None = None,
        say: Callable[..., None] | None = None,
    ) -> None:
        super().__init__(say)
        self.key = key
        self.lines = Lines(lines)
        self.clock = clock or Clock()
        self.rate = self.RATE if rate is None else rate
        self.burst = burst
        self.most_sessions = sessions
        self.port = 0
        self.certificate: str | None = None
        self._tls = tls
        self._armed = Armed()
        self._links: dict[int, Link] = {}
        self._held: dict[int, Callable[[], None]] = {}
        self._timers: dict[int, asyncio.TimerHandle] = {}
        self._connections = 0
        self.sessions: dict[int, Session] = {}
        for fault in faults:
            name, _, times = fault.partition(':')
            self._arm(name, float(times or 'inf'))

    # What a service fills in.

    def admit(self, link: Link, handshake: Handshake, faults: list[str]) -> Session | Answer:
        raise NotImplementedError

    def extra_headers(self, session: Session) -> tuple[tuple[str, str], ...]:
        return ()

    def subprotocol(self, handshake: Handshake) -> str | None:
        return None

    # Its life.

    def start(self) -> 'Peer':
        self._loop = asyncio.new_event_loop()
        context, self.certificate = tls_context() if self._tls else (None, None)
        ready = threading.Event()
        self._thread = threading.Thread(target=self._serve, args=(context, ready), daemon=True)
        self._thread.start()
        ready.wait()
        self.note('listening', port=self.port, certificate=self.certificate)
        return self

    def stop(self) -> None:
        self._loop.call_soon_threadsafe(self._loop.stop)
        self._thread.join()

    def __enter__(self) -> Any:
        return self.start()

    def __exit__(self, *failure: object) -> None:
        self.stop()

    def _serve(self, context: ssl.SSLContext | None, ready: threading.Event) -> None:
        self._loop.set_exception_handler(self._note_defect)
        serving = self._loop.create_server(self._connect, '127.0.0.1', 0, ssl=context)
        server = self._loop.run_until_complete(serving)
        self.port = server.sockets[0].getsockname()[1]
        self._loop.call_soon(ready.set)
        self._loop.run_forever()
        server.close()
        for link in list(self._links.values()):
            link.drop()
        self._loop.run_until_complete(self._no_links())
        self._loop.close()

    async def _no_links(self) -> None:
        while self._links:
            await asyncio.sleep(0)

    def _note_defect(self, loop: asyncio.AbstractEventLoop, facts: dict[str, Any]) -> None:
        """A client that breaks off is part of the tests, a mistake in the stand-in is not."""
        if not isinstance(facts.get('exception'), OSError):
            self.note('defect', what=str(facts.get('exception') or facts['message']))

    # Its connections; all of this in the loop's thread.

    def _connect(self) -> Link:
        self._connections += 1
        link = Link(self._connections, self._arrive)
        link.on_gone = lambda: self._lose(link)
        self._links[link.number] = link
        return link

    def _lose(self, link: Link) -> None:
        self._links.pop(link.number, None)
        self._held.pop(link.number, None)

    def _arrive(self, link: Link, handshake: Handshake) -> None:
        self.note(
            'connection',
            connection=link.number,
            method=handshake.method,
            path=handshake.path,
            query=handshake.query,
            headers=dict(handshake.headers),
        )
        faults = self._armed.draw()
        if any(self.FAULTS[name].moment is Moment.HOLD for name in faults):
            self.hold(link, 'handshake', lambda: self._decide(link, handshake, faults))
        else:
            self._decide(link, handshake, faults)

    def hold(self, link: Link, what: str, go_on: Callable[[], None]) -> None:
        """Does it when the connection is released."""
        self.note('held', connection=link.number, what=what)
        self._held[link.number] = go_on

    def is_held(self, link: Link) -> bool:
        return link.number in self._held

    def _decide(self, link: Link, handshake: Handshake, faults: list[str]) -> None:
        for name in faults:
            fault = self.FAULTS[name]
            if fault.moment is Moment.HANDSHAKE:
                self.note('fault', connection=link.number, name=name)
                self._refuse(link, fault.act(self))
                return
        outcome = self.admit(link, handshake, faults)
        if isinstance(outcome, Answer):
            self._refuse(link, outcome)
        else:
            self._open(link, handshake, outcome)

    def _refuse(self, link: Link, answer: Answer) -> None:
        kind = 'refused' if answer.status >= 400 else 'answered'
        self.note(kind, connection=link.number, status=answer.status, body=dict(answer.body))
        link.refuse(answer)

    def _open(self, link: Link, handshake: Handshake, session: Session) -> None:
        if not link.accept(self.extra_headers(session), self.subprotocol(handshake)):
            self.note('refused', connection=link.number, body={'error': 'no WebSocket handshake'})
            return
        link.on_text, link.on_binary = session.on_text, session.on_binary
        link.on_gone = session.on_gone
        self.sessions[link.number] = session
        self.note('accepted', connection=link.number)
        session.strike(Moment.DISMISS)
        if not link.closing:
            session.begin()
        session.strike(Moment.OPEN)
        self.watch(session)

    def forget(self, session: Session) -> None:
        self._lose(session.link)
        self.sessions.pop(session.link.number, None)
        if timer := self._timers.pop(session.link.number, None):
            timer.cancel()

    def full(self) -> bool:
        """Whether there are as many sessions as there may be."""
        return self.most_sessions is not None and len(self.sessions) >= self.most_sessions

    # Time-outs.

    def watch(self, session: Session) -> None:
        """Looks after the deadline of a session, which may have moved."""
        number = session.link.number
        if timer := self._timers.pop(number, None):
            timer.cancel()
        deadline = session.deadline()
        if session.link.closing or deadline is None:
            return
        left = deadline - self.clock.now()
        if left <= 0:
            session.overdue()
        elif not self.clock.manual:
            self._timers[number] = self._loop.call_later(left, self.watch, session)

    # What it is told.

    def obey(self, command: dict[str, Any]) -> None:
        """One command, see README.md; has been carried out when this returns."""

        async def carry_out() -> None:
            self._carry_out(command)

        asyncio.run_coroutine_threadsafe(carry_out(), self._loop).result(PATIENT)

    def settle(self) -> None:
        """Returns when what has been read so far has been dealt with."""
        asyncio.run_coroutine_threadsafe(asyncio.sleep(0), self._loop).result(PATIENT)

    def _arm(self, name: str, times: float) -> None:
        if name not in self.FAULTS:
            raise Unknown(f'no fault is called {name}')
        self._armed.arm(name, times)

    def _carry_out(self, command: dict[str, Any]) -> None:
        wanted = command.get('connection')
        links = [link for number, link in self._links.items() if wanted in (None, number)]
        match command:
            case {'fault': str(name)}:
                self._fault(name, command, links)
            case {'clear': name}:
                self._armed.disarm(None if name is True else name)
            case {'advance': seconds}:
                self._advance(seconds)
            case {'drop': how}:
                for link in links:
                    link.drop(reset=how == 'reset')
            case {'stall': True}:
                for link in links:
                    link.stall()
            case {'release': True}:
                for link in links:
                    self._release(link)
            case {'send': str(text)}:
                for link in links:
                    link.send_text(text)
            case {'close': int(code)}:
                for link in links:
                    link.close(code, command.get('reason', ''))
            case _:
                raise Unknown(f'no such command: {command}')

    def _fault(self, name: str, command: dict[str, Any], links: list[Link]) -> None:
        if not command.get('now'):
            self._arm(name, float(command.get('times', 'inf')))
        elif name not in self.FAULTS:
            raise Unknown(f'no fault is called {name}')
        for link in links:
            if (session := self.sessions.get(link.number)) and not command.get('times'):
                session.arm(name)

    def _advance(self, seconds: float) -> None:
        if not isinstance(self.clock, ManualClock):
            raise Unknown('this clock goes by itself')
        self.clock.move(seconds)
        for session in list(self.sessions.values()):
            self.watch(session)

    def _release(self, link: Link) -> None:
        if go_on := self._held.pop(link.number, None):
            go_on()
        link.release()
