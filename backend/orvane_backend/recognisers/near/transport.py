"""One HTTP request to a server near by: to the named address and nowhere else, within bounds.

The standard library's client underneath follows no redirect and asks no proxy.
"""

import socket
import ssl
import threading
from contextlib import suppress
from dataclasses import dataclass
from http.client import HTTPConnection, HTTPException, HTTPResponse, HTTPSConnection
from typing import Mapping, Optional

from .address import Address

_LONGEST_ANSWER = 4 << 20


class NoAnswer(Exception):
    """A server that did not answer; says why."""


class LateAnswer(NoAnswer):
    """A server that did not answer in time."""


class LongAnswer(NoAnswer):
    """An answer beyond all measure."""


@dataclass(frozen=True)
class Answer:
    """What a server answered; `kind` is its content type without parameters, in lower case."""

    status: int
    body: bytes
    kind: str = ""
    retry_after: Optional[str] = None

    @property
    def is_redirect(self) -> bool:
        """Whether it names another address."""
        return 300 <= self.status < 400


@dataclass(frozen=True)
class Call:
    """A request; a body makes it a POST. `path` is behind the address's own."""

    path: str
    headers: Mapping[str, str]
    body: Optional[bytes] = None


def ask(
    address: Address,
    call: Call,
    *,
    connect_seconds: float,
    seconds: float,
    longest: int = _LONGEST_ANSWER,
) -> Answer:
    """Sends the request over a connection of its own. Raises NoAnswer.

    `seconds` bound everything after the connection stands, however slowly its bytes come.
    """
    connection = _connection(address, connect_seconds)
    late = threading.Event()
    try:
        connection.connect()
        wire: socket.socket = connection.sock
        wire.settimeout(seconds)

        def end() -> None:
            late.set()
            with suppress(OSError):
                wire.shutdown(socket.SHUT_RDWR)

        watch = threading.Timer(seconds, end)
        watch.daemon = True
        watch.start()
        try:
            answer = _exchange(connection, address.path + call.path, call, longest)
        finally:
            watch.cancel()
        if late.is_set():
            # What ends with the connection looks whole then.
            raise LateAnswer("cut off")
        return answer
    except (OSError, HTTPException, ValueError) as error:
        if late.is_set() or isinstance(error, TimeoutError):
            raise LateAnswer(str(error)) from error
        raise NoAnswer(str(error) or type(error).__name__) from error
    finally:
        connection.close()


def _connection(address: Address, seconds: float) -> HTTPConnection:
    if address.is_secure:
        context = ssl.create_default_context()
        return HTTPSConnection(address.host, address.port, timeout=seconds, context=context)
    return HTTPConnection(address.host, address.port, timeout=seconds)


def _exchange(connection: HTTPConnection, path: str, call: Call, longest: int) -> Answer:
    method = "GET" if call.body is None else "POST"
    headers = {"Connection": "close", "Accept": "application/json", **call.headers}
    # A server may refuse before it has read the sound, and closes then: its answer is there.
    with suppress(BrokenPipeError, ConnectionResetError):
        connection.request(method, path, call.body, headers)
    with connection.getresponse() as response:
        body = response.read(longest + 1)
        if len(body) > longest:
            raise LongAnswer("too long")
        if response.length:
            raise HTTPException("the answer ended early")
        return Answer(
            response.status, body, _kind(response), response.getheader("Retry-After")
        )  # fmt: skip


def _kind(response: HTTPResponse) -> str:
    return (response.getheader("Content-Type") or "").partition(";")[0].strip().lower()
