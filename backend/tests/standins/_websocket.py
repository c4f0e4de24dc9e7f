"""What the stand-ins that speak WebSocket share: the loop's thread, and refusals before the upgrade.

A front takes each connection, reads its request, answers what is refused, and hands the rest to
the library's server behind it. So it is the same with every version of the library.
"""

import asyncio
import json
import threading
from contextlib import suppress
from dataclasses import dataclass
from http import HTTPStatus
from typing import Any, Coroutine, Mapping, Optional
from urllib.parse import parse_qsl, urlsplit

from orvane_backend.websocket import ConnectionClosed, serve

from ._http import Recorder, Reply

_HEAD = 64 << 10


@dataclass(frozen=True)
class Upgrade:
    """The request of a connection; names of headers are in lower case."""

    path: str
    query: Mapping[str, str]
    headers: Mapping[str, str]


class WebSocketStandIn(Recorder):
    """A server on loopback whose `refuse` and `talk` the stand-in writes. A context manager.

    `requests` holds every Upgrade, `closings` the code and reason each conversation ended with:
    what the client said, or 1006 when it said nothing.
    """

    def __init__(self, port: int = 0, largest: Optional[int] = None) -> None:
        super().__init__()
        self.closings: list[tuple[int, str]] = []
        self.port = port
        self.address = ""
        self._largest = largest
        self._loop = asyncio.new_event_loop()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._started = threading.Event()
        self._behind = 0
        self._pumps: set[asyncio.Task[None]] = set()

    def __enter__(self) -> Any:
        self._thread.start()
        self._started.wait()
        assert self.address, "did not start"
        return self

    def __exit__(self, *_: object) -> None:
        self.release_all()
        self._loop.call_soon_threadsafe(self._end.set)
        self._thread.join()

    def refuse(self, request: Upgrade) -> Optional[Reply]:
        """The answer instead of an upgrade."""
        return None

    async def talk(self, connection: Any, request: Upgrade) -> None:
        """One conversation; ConnectionClosed ends it, and other failures close it with 1011."""
        raise NotImplementedError

    def call(self, step: Coroutine[Any, Any, Any]) -> Any:
        """Runs a step among the conversations, from a test's thread."""
        return asyncio.run_coroutine_threadsafe(step, self._loop).result(60)

    async def released(self) -> None:
        """Waits for `release`; the other conversations go on."""
        await asyncio.get_running_loop().run_in_executor(None, self.hold)

    def _run(self) -> None:
        try:
            self._loop.run_until_complete(self._serve())
        finally:
            self._started.set()
            self._loop.run_until_complete(self._loop.shutdown_default_executor())
            self._loop.close()

    async def _serve(self) -> None:
        self._end = asyncio.Event()
        # The library does not see the end of a client whose message it refused to read.
        behind = serve(
            self._handle, host="127.0.0.1", port=0, max_size=self._largest, close_timeout=3
        )
        async with behind as server:
            self._behind = next(iter(server.sockets)).getsockname()[1]
            front = await asyncio.start_server(self._front, "127.0.0.1", self.port, limit=_HEAD)
            self.port = front.sockets[0].getsockname()[1]
            self.address = f"ws://127.0.0.1:{self.port}"
            self._started.set()
            await self._end.wait()
            front.close()
        for pump in self._pumps:
            pump.cancel()
        await asyncio.gather(*self._pumps, return_exceptions=True)

    async def _front(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
        this = asyncio.current_task()
        assert this
        self._pumps.add(this)
        try:
            await self._admit(reader, writer)
        except (OSError, EOFError, asyncio.LimitOverrunError, ValueError):
            pass
        finally:
            self._pumps.discard(this)
            writer.close()

    async def _admit(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
        head = await reader.readuntil(b"\r\n\r\n")
        request = _upgrade(head)
        self.record(request, {"path": request.path, "query": dict(request.query)})
        refusal = self.refuse(request)
        if refusal:
            writer.write(_wire(refusal))
            await writer.drain()
            return
        self.count(1)
        try:
            await self._hand_on(head, reader, writer)
        finally:
            # Before the client learns that it is over.
            self.count(-1)
        # What it still sends is read, or the end would overtake the last words.
        writer.write_eof()
        while await reader.read(1 << 16):
            pass

    async def _hand_on(
        self, head: bytes, reader: asyncio.StreamReader, writer: asyncio.StreamWriter
    ) -> None:
        """Until the server behind ends the connection."""
        reader_behind, writer_behind = await asyncio.open_connection("127.0.0.1", self._behind)
        writer_behind.write(head)
        up = asyncio.ensure_future(_pump(reader, writer_behind))
        up.add_done_callback(lambda _: writer_behind.close())
        try:
            await _pump(reader_behind, writer)
        finally:
            up.cancel()
            await asyncio.gather(up, return_exceptions=True)
            writer_behind.transport.abort()

    async def _handle(self, connection: Any) -> None:
        held = getattr(connection, "request", connection)
        headers = getattr(held, "headers", None) or connection.request_headers
        query = dict(parse_qsl(urlsplit(held.path).query, keep_blank_values=True))
        lower = {name.lower(): value for name, value in headers.raw_items()}
        try:
            await self.talk(connection, Upgrade(urlsplit(held.path).path, query, lower))
        except ConnectionClosed:
            pass
        except Exception as error:
            self.fault(f"ended by {error!r}")
            await connection.close(1011)
        finally:
            received = getattr(connection, "close_rcvd", None)
            protocol = getattr(connection, "protocol", None)
            received = received or getattr(protocol, "close_rcvd", None)
            self._note((received.code, received.reason) if received else (1006, ""))

    def _note(self, closing: tuple[int, str]) -> None:
        with self._changed:
            self.closings.append(closing)
            self._changed.notify_all()
        self.log({"closed": closing[0]})


def drop(connection: Any) -> None:
    """Ends the connection without a word."""
    connection.transport.abort()


async def say(connection: Any, message: Mapping[str, object]) -> None:
    await connection.send(json.dumps(message, ensure_ascii=False))


def _upgrade(head: bytes) -> Upgrade:
    first, *lines = head.decode("latin-1").split("\r\n")
    _, target, _ = first.split(" ")
    pairs = (line.partition(":") for line in lines if line)
    headers = {name.lower(): value.strip() for name, _, value in pairs}
    parts = urlsplit(target)
    return Upgrade(parts.path, dict(parse_qsl(parts.query, keep_blank_values=True)), headers)


def _wire(reply: Reply) -> bytes:
    phrase = HTTPStatus(reply.status).phrase
    lines = [f"HTTP/1.1 {reply.status} {phrase}", f"Content-Type: {reply.content_type}"]
    lines += [f"{name}: {value}" for name, value in reply.headers]
    lines += [f"Content-Length: {len(reply.body)}", "Connection: close", "", ""]
    return "\r\n".join(lines).encode() + reply.body


async def _pump(reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
    """Hands on until there is no more."""
    with suppress(OSError):
        while piece := await reader.read(1 << 16):
            writer.write(piece)
            await writer.drain()
