"""Sessions over real WebSockets, with recognisers and translators that do as they are told: what
their tests share."""

import asyncio
import tempfile
import threading
import unittest
from contextlib import asynccontextmanager
from pathlib import Path
from typing import Any, AsyncIterator, Callable, Optional

import numpy as np

from orvane_backend.audio import Samples
from orvane_backend.engines import Engines, Workers
from orvane_backend.main import serving
from orvane_backend.protocol import Config
from orvane_backend.recognisers import Recogniser, RecogniserError, Recognition
from orvane_backend.recognisers.selection import Candidate
from orvane_backend.session import Surroundings
from orvane_backend.translators import Translator, TranslatorError
from orvane_backend.translators.selection import Choice
from tests.peers import Client

SECONDS = 20.0


def chunk(number: int, seconds: float = 0.5) -> bytes:
    """Sound whose level is its number, so that a recogniser can say which chunk it heard."""
    return np.full(int(seconds * 16000), number * 256, "<i2").tobytes()


class FakeRecogniser(Recogniser):
    """Hears the number of a chunk; a closed gate holds it up, a failure is raised."""

    def __init__(self, name: str = "fake", language: str = "en") -> None:
        self.name = name
        self.language = language
        self.gate = threading.Event()
        self.gate.set()
        self.entered = threading.Event()
        self.load_failure: Optional[str] = None
        self.failure: Optional[str] = None
        self.loads = 0
        self.heard: list[int] = []

    def load(self) -> None:
        self.loads += 1
        if self.load_failure:
            raise RecogniserError(self.load_failure)

    def recognise(self, samples: Samples, language: str) -> Recognition:
        self.entered.set()
        if not self.gate.wait(SECONDS):
            raise AssertionError("the gate was never opened")
        if self.failure:
            raise RecogniserError(self.failure)
        number = round(float(samples[len(samples) // 2]) * 128)
        self.heard.append(number)
        return Recognition("" if number == 99 else f"n{number}", self.language)


class Upper(Translator):
    """Translates into capitals, or fails."""

    name = "Groß"
    failure: Optional[str] = None
    repeat = 1

    def translate(self, text: str) -> str:
        if self.failure:
            raise TranslatorError(self.failure)
        return text.upper() * self.repeat


class SessionCase(unittest.IsolatedAsyncioTestCase):
    """A server in this process. `recognisers` and `translator` are what it finds; `chosen` is what
    translation it was asked for, `folder` where its files go."""

    def setUp(self) -> None:
        self.recognisers = [FakeRecogniser()]
        self.translator = Upper()
        self.fallback = Upper()
        self.chosen: list[tuple[str, str]] = []
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.folder = Path(home.name)
        self.addCleanup(lambda: [one.gate.set() for one in self.recognisers])

    def choose(self, source: str, target: str, *, without_mistral: bool = False) -> Choice:
        self.chosen.append((source, target))
        return Choice(self.fallback if without_mistral else self.translator, "weil")

    def candidates(self, config: Config) -> list[Candidate]:
        def candidate(one: FakeRecogniser) -> Candidate:
            return Candidate((one.name,), lambda: one)

        return [candidate(one) for one in self.recognisers]

    @asynccontextmanager
    async def server(self, **options: Any) -> AsyncIterator[int]:
        workers = Workers(8)
        surroundings = Surroundings(
            Engines(workers, self.candidates), workers, self.choose, lambda: self.folder, **options
        )
        async with serving("127.0.0.1", 0, surroundings) as servers:
            yield servers[0].sockets[0].getsockname()[1]
            for one in self.recognisers:
                one.gate.set()

    @asynccontextmanager
    async def client(self, config: Optional[dict[str, Any]] = None, **options: Any) -> Any:
        async with self.server(**options) as port, await Client.connect(port) as client:
            self.port = port
            if config is not None:
                await client.config(**config)
                await client.until("status", "engine")
            yield client

    async def eventually(self, condition: Callable[[], bool]) -> None:
        async def watch() -> None:
            while not condition():
                await asyncio.sleep(0.005)

        await asyncio.wait_for(watch(), SECONDS)
