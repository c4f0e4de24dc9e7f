"""Starts the server and ends it on a signal."""

import asyncio
import os
import signal
from contextlib import AsyncExitStack, asynccontextmanager
from typing import Any, AsyncIterator, Mapping

from . import log as log_lines
from . import protocol
from .engines import Engines, Workers
from .listening import describe, is_welcome, keep_alive, listen
from .log import log
from .recognisers.near.neighbours import Neighbours
from .session import Session, Surroundings
from .websocket import serve, socket_of

_DEFAULT_PORT = 8765

# Larger messages than the protocol allows are read and answered with a warning up to this size;
# beyond it the connection is closed, so that memory stays bounded.
_MAX_FRAME_BYTES = 4 * protocol.MAX_MESSAGE_BYTES

# For saying goodbye on a signal; what is not done by then is cut off.
_CLOSE_SECONDS = 0.1
_LOG_SECONDS = 0.05


def main() -> int:
    """Runs until SIGTERM, SIGINT or SIGHUP; returns only when the server cannot start."""
    log_lines.start()
    try:
        port = int(os.environ.get("ORV_PORT", _DEFAULT_PORT))
        asyncio.run(_serve_until_signal(os.environ.get("ORV_BIND_HOST", "localhost"), port))
    except (OSError, OverflowError, ValueError) as error:
        log(f"❌ Backend kann nicht lauschen: {error}")
    log_lines.stop(_LOG_SECONDS)
    return 1


async def _serve_until_signal(bind_host: str, port: int) -> None:
    signalled = asyncio.Event()
    loop = asyncio.get_running_loop()
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        loop.add_signal_handler(number, signalled.set)
    loop.set_exception_handler(_log_exception)
    workers = Workers()
    neighbours = Neighbours()
    surroundings = Surroundings(Engines(workers), workers, neighbours=neighbours.notices)
    async with serving(bind_host, port, surroundings) as servers:
        neighbours.look()
        await signalled.wait()
        log("🛑 Backend beendet")
        for server in servers:
            server.close()
        await asyncio.wait(
            [asyncio.ensure_future(server.wait_closed()) for server in servers],
            timeout=_CLOSE_SECONDS,
        )
        log_lines.stop(_LOG_SECONDS)
        # Not by returning: a recogniser may be in the middle of its work for seconds.
        os._exit(0)


@asynccontextmanager
async def serving(
    bind_host: str, port: int, surroundings: Surroundings
) -> AsyncIterator[list[Any]]:
    """Serves clients while the context lasts. Raises OSError when the address cannot be had."""

    async def handle(connection: Any) -> None:
        keep_alive(socket_of(connection))
        log("🔌 Client verbunden")
        await Session(connection, surroundings).run()
        log("🔌 Client getrennt")

    async with AsyncExitStack() as stack:
        servers = []
        sockets = listen(bind_host, port)
        for listener in sockets:
            server = serve(handle, admit=_admit, sock=listener, max_size=_MAX_FRAME_BYTES)
            servers.append(await stack.enter_async_context(server))
        log("✓ Backend lauscht auf " + ", ".join(map(describe, sockets)))
        yield servers


def _admit(headers: Mapping[str, str]) -> bool:
    welcome = is_welcome(headers.get("Origin"), headers.get("Host"))
    if not welcome:
        log("🚫 Verbindung von fremder Webseite abgelehnt")
    return welcome


def _log_exception(_loop: asyncio.AbstractEventLoop, context: dict[str, Any]) -> None:
    log(f"❌ {context.get('message')}: {context.get('exception')!r}")
