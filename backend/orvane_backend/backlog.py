"""What a client sent and is not yet worked on: in order, and never old.

Sound that comes faster than it can be recognised must not make the subtitles later and later. So
whatever waits too long goes, silence first, and is told. What waits before a flush does not: then the
client is about to leave and waits for the last word.
"""

import asyncio
from collections import deque
from typing import Optional, Union

from .chunks import Chunk
from .protocol import ConfigMessage, FlushMessage, StopMessage

Order = Union[ConfigMessage, FlushMessage, StopMessage]
Item = Union[Chunk, Order]

# Speech may wait this long, and this much of it.
OLDEST_SECONDS = 10.0
MOST_SECONDS = 120.0

# Orders that may wait: no client has a reason for more than a few.
_MOST_ORDERS = 1000


class Backlog:
    """A queue between the reader of one connection and its worker, on one event loop."""

    def __init__(self, oldest_seconds: float = OLDEST_SECONDS) -> None:
        self._oldest_seconds = oldest_seconds
        self._items: deque[Item] = deque()
        self._arrived = asyncio.Event()

    def put(self, item: Item) -> None:
        """Adds what came last. Raises OverflowError for a flood of orders."""
        if not isinstance(item, Chunk) and len(self._items) - len(self.chunks()) >= _MOST_ORDERS:
            raise OverflowError("too many orders wait")
        self._items.append(item)
        self._arrived.set()

    @property
    def is_empty(self) -> bool:
        """Whether nothing waits."""
        return not self._items

    async def wait(self, seconds: Optional[float]) -> bool:
        """Whether there is something to take; waits for it, at most the given time."""
        try:
            await asyncio.wait_for(self._arrived.wait(), seconds)
        except asyncio.TimeoutError:
            return False
        return True

    def take(self, joins_seconds: float) -> Union[Order, list[Chunk]]:
        """The oldest order, or the oldest chunk with those behind it that fit into `joins_seconds`
        of sound together. There must be one."""
        first = self._pop()
        if not isinstance(first, Chunk):
            return first
        chunks = [first]
        seconds = first.seconds
        while self._items:
            following = self._items[0]
            if not isinstance(following, Chunk) or seconds + following.seconds > joins_seconds:
                break
            seconds += following.seconds
            chunks.append(following)
            self._pop()
        return chunks

    def shed(self, now: float) -> list[Chunk]:
        """Lets go of what has waited too long, and of what is too much, the oldest first."""
        gone: list[Chunk] = []
        if self._is_late(now) or self._is_too_much():
            self._drop([chunk for chunk in self.chunks() if not chunk.finding.is_speech], gone)
        while self._is_late(now) or self._is_too_much():
            self._drop(self.chunks()[:1], gone)
        return gone

    def chunks(self) -> list[Chunk]:
        """The chunks that wait."""
        return [item for item in self._items if isinstance(item, Chunk)]

    def _pop(self) -> Item:
        item = self._items.popleft()
        if not self._items:
            self._arrived.clear()
        return item

    def _drop(self, chunks: list[Chunk], gone: list[Chunk]) -> None:
        for chunk in chunks:
            self._items.remove(chunk)
            gone.append(chunk)
        if not self._items:
            self._arrived.clear()

    def _is_late(self, now: float) -> bool:
        waiting = self.chunks()
        if not waiting or any(isinstance(item, FlushMessage) for item in self._items):
            return False
        return now - (waiting[0].begin + waiting[0].seconds) > self._oldest_seconds

    def _is_too_much(self) -> bool:
        waiting = self.chunks()
        return len(waiting) > 1 and sum(chunk.seconds for chunk in waiting) > MOST_SECONDS
