"""A self-hosted Vosk server, through its WebSocket interface.

One connection per utterance, which is all it takes to begin anew: a text message with the sample
rate, blocks of sound, each answered by one message, then the end, answered by the last sentence.
"""

import asyncio
from typing import Any, Awaitable, Callable, Coroutine, TypeVar

from ..audio import RECOGNITION_RATE, encode_pcm
from ..languages import AUTO, canonical
from ..notices import Parameter, notice
from ..websocket import ConnectionClosed, WebSocketException, connect
from . import Recogniser, RecogniserError, Recognition, Utterance
from .vosk_messages import BLOCK_BYTES, CONFIG, END, Answer, Unreadable, blocks, parse, recognition

T = TypeVar("T")

_CONNECT_SECONDS = 2.0
# A server takes a fraction of a sound's length for it; one that takes several times as long keeps
# nobody's pace, and one that says nothing for this long hangs.
_ANSWER_SECONDS = 15.0
_SLOWEST = 3.0


class VoskRecogniser(Recogniser):
    """The server's model decides the language; the configured one is taken for it."""

    parallel = 4

    def __init__(self, host: str, port: int) -> None:
        self._address = f"ws://{f'[{host}]' if ':' in host else host}:{port}"
        self._answer_seconds = _ANSWER_SECONDS
        self._takes_config = True
        self.name = f"Vosk ({host}:{port})"

    def load(self) -> None:
        self._takes_config = self._run(self._takes_configuration())
        if not self._takes_config:
            told = notice("recognition.rate_unsettable", engine=self.name, rate=RECOGNITION_RATE)
            self.remarks = (told,)

    def recognise(self, utterance: Utterance) -> Recognition:
        pcm = encode_pcm(utterance.samples)
        limit = self._answer_seconds + _SLOWEST * len(utterance.samples) / RECOGNITION_RATE
        work = self._twice(lambda: self._transcribe(pcm))
        answers = self._run(asyncio.wait_for(work, limit))
        # Without a configured language English is the best guess: most servers' models are.
        language = canonical(utterance.language)
        return recognition(answers, "en" if language == AUTO else language)

    def _run(self, work: Coroutine[Any, Any, T]) -> T:
        try:
            return asyncio.run(work)
        except ConnectionClosed as error:
            raise self._error("recognition.broken_off", reason=str(error)) from error
        except Unreadable as error:
            raise self._error("recognition.unreadable") from error
        except asyncio.TimeoutError as error:
            raise self._error("recognition.no_answer") from error
        except (OSError, WebSocketException, UnicodeError) as error:  # or no host has such a name
            reason = str(error) or type(error).__name__
            raise self._error("recognition.unreachable", reason=reason) from error

    def _error(self, code: str, **parameters: Parameter) -> RecogniserError:
        # None of them passes by itself: the server is gone, hangs, or is something else.
        return RecogniserError(notice(code, engine=self.name, **parameters))

    async def _twice(self, work: Callable[[], Awaitable[T]]) -> T:
        """Once more, with a fresh connection, where the server died on the way."""
        try:
            return await work()
        except ConnectionClosed:
            return await work()

    def _connect(self) -> Any:
        return connect(self._address, open_timeout=_CONNECT_SECONDS, close_timeout=1)

    async def _transcribe(self, pcm: bytes) -> list[Answer]:
        answers = []
        async with self._connect() as server:
            if self._takes_config:
                await server.send(CONFIG)
            for block in blocks(pcm):
                await server.send(block)
                answers.append(parse(await server.recv()))
            await server.send(END)
            answers.append(parse(await server.recv()))
        return answers

    async def _takes_configuration(self) -> bool:
        """Whether the server knows messages with settings; there is one kind that does not.

        That one takes them for sound: it either answers once more than it should, or it breaks off.
        Breaking off has other reasons as well, so it counts only where it is not so without them.
        """
        try:
            return await self._twice(lambda: self._probe(3, CONFIG)) == 2
        except ConnectionClosed:
            await self._probe(2)
            return False

    async def _probe(self, most: int, *before: str) -> int:
        """How many answers there are, up to `most`, to a moment of silence and its end."""
        count = 0
        async with self._connect() as server:
            for message in (*before, bytes(BLOCK_BYTES), END):
                await server.send(message)
            while count < most:
                try:
                    parse(await asyncio.wait_for(server.recv(), self._answer_seconds))
                except (ConnectionClosed, asyncio.TimeoutError):
                    # Two are due. A third one is missed by what comes in its place, the close.
                    if count < 2:
                        raise
                    break
                count += 1
        return count
