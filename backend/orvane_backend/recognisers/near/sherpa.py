"""A sherpa-onnx streaming server, the one in C++ or the one in Python.

One connection per utterance: samples as 32-bit floats, little-endian, then the text `Done`. The one
in C++ ends with the bare text `Done!`, the one in Python by closing the connection.
"""

import asyncio
from typing import Any

from ...audio import RECOGNITION_RATE, Samples
from ...websocket import ConnectionClosed, closing
from .. import Recognition, Utterance
from . import failure
from .answers import one_line, read_json
from .sockets import Conversing, while_sending

_BLOCK = RECOGNITION_RATE // 10
_GOOD_CLOSING = 1000


class SherpaRecogniser(Conversing):
    """The server has one model and takes no settings."""

    def load(self) -> None:
        self.converse(self._greet())
        self.greeted("sherpa-onnx")

    def recognise(self, utterance: Utterance) -> Recognition:
        language = self.language_of(utterance.language, None)
        if not len(utterance.samples):
            return Recognition("", language)
        return Recognition(self.converse(self._heard(utterance.samples)), language)

    async def _greet(self) -> None:
        async with self.connected(""):
            pass

    async def _heard(self, samples: Samples) -> str:
        segments: dict[int, str] = {}
        done = asyncio.Event()

        async def send() -> None:
            for start in range(0, len(samples), _BLOCK):
                await server.send(floats(samples[start : start + _BLOCK]))
            done.set()
            await server.send("Done")

        async with self.connected("") as server:
            try:
                async with asyncio.timeout(self.timings.answer):
                    await while_sending(send, lambda: self._collect(server, segments, done))
            except TimeoutError:
                raise failure("late", self.name, seconds=round(self.timings.answer)) from None
        return one_line(" ".join(segments[number] for number in sorted(segments)))

    async def _collect(self, server: Any, segments: dict[int, str], done: asyncio.Event) -> None:
        """Takes the latest text of each segment until the server has said all."""
        while True:
            try:
                message = await server.recv()
            except ConnectionClosed as error:
                if done.is_set() and closing(error)[0] == _GOOD_CLOSING:
                    return
                raise
            if message == "Done!":
                return
            number, text = self._segment(message)
            segments[number] = text

    def _segment(self, message: Any) -> tuple[int, str]:
        told = read_json(message) if isinstance(message, str) else None
        if not isinstance(told, dict) or not isinstance(told.get("text"), str):
            raise failure("unreadable", self.name)
        number = told.get("segment")
        return (number if isinstance(number, int) else 0), told["text"]


def floats(samples: Samples) -> bytes:
    """The samples as the server takes them, none beyond -1 to 1."""
    data: bytes = samples.clip(-1.0, 1.0).astype("<f4").tobytes()
    return data
