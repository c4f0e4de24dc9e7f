"""What the recognisers behind WebSockets share: a conversation of its own for each utterance."""

import asyncio
from contextlib import asynccontextmanager, suppress
from typing import Any, AsyncIterator, Awaitable, Callable, Coroutine, Mapping, Optional, TypeVar

from ...websocket import ConnectionClosed, Redirected, WebSocketException
from ...websocket import closing, connect, refused_status
from .. import RecogniserError
from . import failure
from .named import NearRecogniser

T = TypeVar("T")

_CLOSE_SECONDS = 1.0

# How servers close on a wrong key.
_KEY_CLOSINGS = (1008, 4401)


class Conversing(NearRecogniser):
    """A recogniser that holds one conversation per utterance."""

    def converse(self, talk: Coroutine[Any, Any, T]) -> T:
        """Runs a conversation to its end, with its failures as errors of the engine."""
        try:
            return asyncio.run(talk)
        except (OSError, EOFError, asyncio.TimeoutError, WebSocketException) as error:
            raise self._error(error) from error

    @asynccontextmanager
    async def connected(
        self, path: str, headers: Optional[Mapping[str, str]] = None
    ) -> AsyncIterator[Any]:
        """A connection to the named address. It stands only while the context lasts."""
        address = self.named.address.socket() + path
        async with connect(
            address, headers, open_timeout=self.timings.connect, close_timeout=_CLOSE_SECONDS
        ) as server:
            yield server

    def _error(self, error: BaseException) -> RecogniserError:
        status = refused_status(error)
        if isinstance(error, Redirected):
            return failure("redirect", self.name)
        if status in (401, 403):
            return self.key_error()
        if status in (429, 503):
            return failure("busy", self.name, is_passing=True)
        if status == 404:
            return failure("path", self.name, address=self.named.address.authority)
        if isinstance(error, ConnectionClosed):
            return self.closed_error(error)
        if isinstance(error, asyncio.TimeoutError):
            return failure("late", self.name, seconds=round(self.timings.connect))
        reason = str(error) or type(error).__name__
        return failure("silent", self.name, address=self.named.address.authority, reason=reason)

    def closed_error(self, error: BaseException) -> RecogniserError:
        """The error of a server that closed before its text was complete."""
        code, reason = closing(error)
        if code in _KEY_CLOSINGS:
            return self.key_error()
        told = " ".join(filter(None, (str(code or ""), reason))) or "?"
        return failure("broken_off", self.name, reason=told)

    async def refused(self, server: Any, reason: str) -> RecogniserError:
        """The error of a server that says why it closes, once it has closed."""
        try:
            async with asyncio.timeout(_CLOSE_SECONDS):
                while True:
                    await server.recv()
        except (ConnectionClosed, TimeoutError) as error:
            if closing(error)[0] in _KEY_CLOSINGS:
                return self.key_error()
        return failure("refused", self.name, reason=reason)

    def key_error(self) -> RecogniserError:
        """The error of a server that refuses the key, or asks for one."""
        return failure("key" if self.named.key else "key_missing", self.name)


async def while_sending(
    send: Callable[[], Awaitable[None]], receive: Callable[[], Awaitable[T]]
) -> T:
    """Receives while sending goes on beside it: a server that waits to be heard reads nothing.

    That the connection ended is learnt where it is received from.
    """

    async def sending() -> None:
        with suppress(ConnectionClosed):
            await send()

    task = asyncio.ensure_future(sending())
    try:
        return await receive()
    finally:
        task.cancel()
        with suppress(asyncio.CancelledError):
            await task
