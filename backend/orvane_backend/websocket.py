"""WebSockets for the rest of the server, whichever version of the library `websockets` is there.

Its interface is another one since version 13. Debian 12 has version 10.4, Debian 13 has 15. What
differs between them is met here alone; connections of both send, receive and close alike.
"""

import logging
from http import HTTPStatus
from inspect import signature
from socket import socket
from typing import Any, Awaitable, Callable, Mapping, Optional

from websockets.exceptions import ConnectionClosed as ConnectionClosed
from websockets.exceptions import InvalidHandshake as InvalidHandshake
from websockets.exceptions import WebSocketException as WebSocketException

try:
    from websockets.asyncio.client import connect as _connect
    from websockets.asyncio.server import serve as _serve
except ImportError:
    from websockets import connect as _connect, serve as _serve

    _HAS_REQUESTS = False
else:
    _HAS_REQUESTS = True

# Versions that look for a proxy use none: whom this server talks to is on this machine or near it.
_DIRECTLY = {"proxy": None} if "proxy" in signature(_connect).parameters else {}

_HEADERS = "additional_headers" if _HAS_REQUESTS else "extra_headers"


class Redirected(InvalidHandshake):
    """A server that names another address, where nothing is sent."""


_AnyConnect: Any = _connect


class _ConnectThere(_AnyConnect):  # type: ignore[misc]
    """The library follows redirects, older versions by the first function, newer by the second."""

    def handle_redirect(self, uri: str) -> None:
        raise Redirected("redirected")

    def process_redirect(self, exc: Exception) -> Exception:
        status = refused_status(exc)
        return Redirected("redirected") if status and 300 <= status < 400 else exc


def connect(address: str, headers: Optional[Mapping[str, str]] = None, **options: Any) -> Any:
    """A connection to a server, to be awaited or entered; neither compressed nor pinged.

    The library's own options hold, those that all versions have. Fails with OSError,
    asyncio.TimeoutError or WebSocketException; with Redirected rather than go elsewhere.
    """
    ours = {_HEADERS: dict(headers or {}), "logger": _quiet_logger(), **_DIRECTLY}
    return _ConnectThere(address, compression=None, ping_interval=None, **ours, **options)


def refused_status(error: BaseException) -> Optional[int]:
    """The status with which a server refused a connection; none for any other failure."""
    answer = getattr(error, "response", error)
    status = getattr(answer, "status_code", None)
    return status if isinstance(status, int) else None


def closing(error: BaseException) -> tuple[Optional[int], str]:
    """The code and the reason with which the other side closed; no code when it just went."""
    said = getattr(error, "rcvd", None)
    return (said.code, said.reason) if said is not None else (None, "")


def serve(
    handle: Callable[[Any], Awaitable[None]],
    *,
    admit: Callable[[Mapping[str, str]], bool] = lambda headers: True,
    **options: Any,
) -> Any:
    """A server to be entered, which calls `handle` with each connection; closing it says 1001.

    Clients whose headers `admit` turns down get status 403. Messages are neither compressed nor
    pinged for, and nothing is logged. One message is read ahead of `handle`, and what the sockets'
    buffers hold: a client that sends more has to wait.
    """
    return _serve(
        handle,
        process_request=_admission(admit),
        max_queue=1,
        compression=None,
        ping_interval=None,
        logger=_quiet_logger(),
        **options,
    )


def socket_of(connection: Any) -> Optional[socket]:
    """The connection's socket, for its options."""
    found: Optional[socket] = connection.transport.get_extra_info("socket")
    return found


def _admission(admit: Callable[[Mapping[str, str]], bool]) -> Any:
    def with_request(connection: Any, request: Any) -> Any:
        return None if admit(request.headers) else connection.respond(HTTPStatus.FORBIDDEN, "")

    async def with_headers(_path: str, headers: Any) -> Any:
        return None if admit(headers) else (HTTPStatus.FORBIDDEN, [], b"")

    return with_request if _HAS_REQUESTS else with_headers


def _quiet_logger() -> logging.Logger:
    """Silences the library: port probes and clients that vanish are no news, and it logs traces."""
    logger = logging.getLogger("orvane.websocket")
    logger.addHandler(logging.NullHandler())
    logger.propagate = False
    return logger
