"""What the stand-ins that speak HTTP share: the server, its records, and the ways to misbehave."""

import argparse
import json
import socket
import sys
import threading
from contextlib import nullcontext, suppress
from dataclasses import dataclass, field, replace
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from typing import Any, Callable, Iterable, Mapping, Optional
from urllib.parse import parse_qsl, urlsplit

_LONGEST_BODY = 64 << 20
# How long a test waits for what has to come; a busy machine takes many times what is usual.
_SECONDS = 60.0


@dataclass(frozen=True)
class Request:
    method: str
    path: str
    query: Mapping[str, str]
    headers: Any  # Of any case.
    body: bytes

    def json(self) -> Any:
        """Fails with ValueError."""
        return json.loads(self.body)

    def media_type(self) -> str:
        return (self.headers.get("Content-Type") or "").partition(";")[0].strip().lower()

    def bearer(self) -> Optional[str]:
        """The key, when it is sent as it has to be."""
        scheme, _, key = (self.headers.get("Authorization") or "").partition(" ")
        return key if scheme.lower() == "bearer" and key else None


@dataclass(frozen=True)
class Reply:
    status: int = 200
    body: bytes = b""
    content_type: str = "application/json"
    headers: tuple[tuple[str, str], ...] = ()
    cut: bool = False  # Half the body, then the connection ends.
    streamed: bool = False  # Without a length; ends with the connection.


@dataclass(frozen=True)
class Turn:
    """How one call is met. What is not named is as the honest server does it."""

    reply: Optional[Reply] = None  # Instead of the honest one.
    hold: bool = False  # Only after `release`.
    cut: bool = False


def json_reply(value: object, status: int = 200, **more: Any) -> Reply:
    return Reply(status, json.dumps(value, ensure_ascii=False).encode(), **more)


def text_reply(text: str, status: int = 200, **more: Any) -> Reply:
    plain = Reply(status, text.encode(), "text/plain; charset=utf-8")
    return replace(plain, **more)


def html_page(status: int = 502) -> Reply:
    """What a proxy in between answers."""
    page = f"<!DOCTYPE html><html><title>{status}</title><body><h1>{status}</h1></body></html>"
    return text_reply(page, status, content_type="text/html")


def redirect_to(address: str, status: int = 307) -> Reply:
    return Reply(status, b"", headers=(("Location", address),))


class Recorder:
    """What a test asks of every stand-in: what came, what was wrong with it, and who waits.

    `faults` holds what the real server puts up with though no client should do it.
    """

    def __init__(self) -> None:
        self.requests: list[Any] = []
        self.faults: list[str] = []
        self.held = 0  # Calls that wait for `release`.
        self.most_at_once = 0  # Calls that were under way at the same time, waiting ones included.
        self.log: Callable[[Mapping[str, object]], None] = lambda entry: None
        self._at_once = 0
        self._released = 0
        self._open = False
        self._changed = threading.Condition()

    def release(self, calls: int = 1) -> None:
        """Lets so many of the held calls go on, those to come included."""
        with self._changed:
            self._released += calls
            self._changed.notify_all()

    def release_all(self) -> None:
        """Holds none any more."""
        with self._changed:
            self._open = True
            self._changed.notify_all()

    def wait_until(self, condition: Callable[[], bool]) -> None:
        """Waits for what is true after something was recorded; fails when it never is."""
        with self._changed:
            assert self._changed.wait_for(condition, _SECONDS), "what was waited for did not come"

    def record(self, request: Any, entry: Mapping[str, object]) -> None:
        with self._changed:
            self.requests.append(request)
            self._changed.notify_all()
        self.log(entry)

    def fault(self, text: str) -> None:
        with self._changed:
            self.faults.append(text)
            self._changed.notify_all()
        self.log({"fault": text})

    def hold(self) -> None:
        """Waits for `release`."""
        with self._changed:
            self.held += 1
            self._changed.notify_all()
            self._changed.wait_for(lambda: self._open or self._released > 0)
            self._released -= 0 if self._open else 1
            self.held -= 1
            self._changed.notify_all()

    def count(self, step: int) -> None:
        """A call begins (1) or ends (-1)."""
        with self._changed:
            self._at_once += step
            self.most_at_once = max(self.most_at_once, self._at_once)
            self._changed.notify_all()


class HttpStandIn(Recorder):
    """A server on loopback whose `answer` the stand-in writes. A context manager.

    Each call of the route that matters takes the next of `plan`, as long as there is one.
    """

    def __init__(self, port: int = 0, plan: Iterable[Turn] = ()) -> None:
        super().__init__()
        self.plan = list(plan)
        self._http = _Server(("127.0.0.1", port), _handler(self))
        self._thread = threading.Thread(target=self._http.serve_forever, args=(0.01,), daemon=True)
        self.port: int = self._http.server_port
        self.address = f"http://127.0.0.1:{self.port}"

    def __enter__(self) -> Any:
        self._thread.start()
        return self

    def __exit__(self, *_: object) -> None:
        self.release_all()
        self._http.shutdown()
        self._thread.join()
        self._http.close_connections()
        self._http.server_close()

    def answer(self, request: Request) -> Reply:
        raise NotImplementedError

    def planned(self, honest: Callable[[], Reply], one: Any = nullcontext()) -> Reply:
        """The answer to a call of the route that matters, given while `one` is locked."""
        with self._changed:
            turn = self.plan.pop(0) if self.plan else Turn()
        self.count(1)
        try:
            with one:
                if turn.hold:
                    self.hold()
                reply = turn.reply or honest()
            return replace(reply, cut=True) if turn.cut else reply
        finally:
            self.count(-1)


@dataclass
class _Connections:
    """Those that are open, to be ended with the server."""

    sockets: set[socket.socket] = field(default_factory=set)
    lock: threading.Lock = field(default_factory=threading.Lock)


class _Server(ThreadingHTTPServer):
    daemon_threads = True
    block_on_close = False

    def __init__(self, *arguments: Any) -> None:
        self._connections = _Connections()
        super().__init__(*arguments)

    def process_request(self, request: Any, client_address: Any) -> None:
        with self._connections.lock:
            self._connections.sockets.add(request)
        super().process_request(request, client_address)

    def shutdown_request(self, request: Any) -> None:
        with self._connections.lock:
            self._connections.sockets.discard(request)
        super().shutdown_request(request)

    def close_connections(self) -> None:
        with self._connections.lock:
            for connection in self._connections.sockets:
                with suppress(OSError):
                    connection.shutdown(socket.SHUT_RDWR)

    def handle_error(self, request: Any, client_address: Any) -> None:
        if not isinstance(sys.exc_info()[1], ConnectionError):
            super().handle_error(request, client_address)


def _handler(server: HttpStandIn) -> type[BaseHTTPRequestHandler]:
    class Handler(BaseHTTPRequestHandler):
        protocol_version = "HTTP/1.1"
        disable_nagle_algorithm = True
        wbufsize = -1

        def do_GET(self) -> None:
            self._meet(b"")

        def do_POST(self) -> None:
            length = self.headers.get("Content-Length") or ""
            if not (length.isascii() and length.isdigit()) or int(length) > _LONGEST_BODY:
                self.close_connection = True
                _send(self, text_reply("a length is needed", 413 if length.isdigit() else 411))
                return
            body = self.rfile.read(int(length))
            if len(body) == int(length):
                self._meet(body)

        def _meet(self, body: bytes) -> None:
            parts = urlsplit(self.path)
            query = dict(parse_qsl(parts.query, keep_blank_values=True))
            request = Request(self.command, parts.path, query, self.headers, body)
            server.record(request, {"method": self.command, "path": self.path, "bytes": len(body)})
            _send(self, server.answer(request))

        def log_message(self, *_: object) -> None:
            pass

    return Handler


def _send(handler: BaseHTTPRequestHandler, reply: Reply) -> None:
    handler.send_response(reply.status)
    for name, value in reply.headers:
        handler.send_header(name, value)
    handler.send_header("Content-Type", reply.content_type)
    if reply.streamed or reply.cut:
        handler.close_connection = True
        handler.send_header("Connection", "close")
    if not reply.streamed:
        handler.send_header("Content-Length", str(len(reply.body)))
    handler.end_headers()
    handler.wfile.write(reply.body[: len(reply.body) // 2] if reply.cut else reply.body)
    handler.wfile.flush()


def options(description: str) -> argparse.ArgumentParser:
    """The options that every stand-in has as a process."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--port", type=int, default=0, help="0 takes a free one")
    parser.add_argument("--key", help="demand this key")
    parser.add_argument("--log", action="store_true", help="print a line of JSON for each request")
    return parser


def run(stand_in: Any, log: bool) -> None:
    """Says the address, then serves until it is ended; a line `release` on stdin releases a call."""
    if log:
        stand_in.log = lambda entry: print(json.dumps(entry), flush=True)
    with stand_in, suppress(KeyboardInterrupt):
        print(stand_in.address, flush=True)
        for line in sys.stdin:
            if line.strip() == "release":
                stand_in.release()
        threading.Event().wait()
