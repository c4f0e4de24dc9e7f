"""What a client sent and is not yet worked on: ordered, and bounded by its length in seconds."""

import asyncio
from collections import deque

from .protocol import AudioMessage, Message

# What a message without sound counts as, so that no flood of small ones is unbounded.
_LEAST_SECONDS = 0.02


class Backlog:
    """A queue between the reader of one connection and its worker, on one event loop."""

    def __init__(self, limit_seconds: float) -> None:
        self._limit = limit_seconds
        self._messages: deque[Message] = deque()
        self._changed = asyncio.Condition()
        self.seconds = 0.0

    def has_room(self, message: Message) -> bool:
        """Whether `put` would return at once. An empty backlog has room for anything."""
        return not self._messages or self.seconds + _cost(message) <= self._limit

    async def put(self, message: Message) -> None:
        """Adds a message; waits while there is no room for it."""
        async with self._changed:
            await self._changed.wait_for(lambda: self.has_room(message))
            self._messages.append(message)
            self.seconds += _cost(message)
            self._changed.notify_all()

    async def get(self) -> Message:
        """Takes the oldest message; waits for one."""
        async with self._changed:
            await self._changed.wait_for(lambda: bool(self._messages))
            message = self._messages.popleft()
            self.seconds -= _cost(message)
            self._changed.notify_all()
            return message

    def waiting_chunks(self) -> int:
        """How many audio chunks wait."""
        return sum(isinstance(message, AudioMessage) for message in self._messages)


def _cost(message: Message) -> float:
    return max(message.seconds if isinstance(message, AudioMessage) else 0.0, _LEAST_SECONDS)
