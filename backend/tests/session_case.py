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
from orvane_backend.notices import Notice, notice
from orvane_backend.recognisers import Recogniser, RecogniserError, Recognition, Utterance
from orvane_backend.recognisers import Candidate
from orvane_backend.session import Surroundings
from orvane_backend.speech_gate import Finding
from orvane_backend.translators import Passage, Translator, TranslatorError
from orvane_backend.translators.selection import Choice
from tests.peers import Client

SECONDS = 20.0


def chunk(number: int, seconds: float = 0.5) -> bytes:
    """Sound whose level is its number, so that a recogniser can say which chunk it heard."""
    return np.full(int(seconds * 16000), number * 256, "<i2").tobytes()


def find_speech(samples: Samples) -> Finding:
    """Any sound is speech until shortly before its end."""
    seconds = len(samples) / 16000
    if not samples.any():
        return Finding(is_speech=False, speech_seconds=0.0, begin=0.0, end=0.0)
    return Finding(is_speech=True, speech_seconds=seconds, begin=0.0, end=seconds - 0.2)


def failure(reason: str) -> Notice:
    return notice("recognition.failed", engine="fake", reason=reason)


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
        self.is_passing = False
        self.refused: Optional[Notice] = None
        self.asked: list[Utterance] = []
        self.loads = 0
        self.heard: list[int] = []

    def load(self) -> None:
        self.loads += 1
        if self.load_failure:
            raise RecogniserError(failure(self.load_failure))

    def refusal(self, language: str) -> Optional[Notice]:
        return self.refused

    def recognise(self, utterance: Utterance) -> Recognition:
        self.asked.append(utterance)
        self.entered.set()
        if not self.gate.wait(SECONDS):
            raise AssertionError("the gate was never opened")
        if self.failure:
            raise RecogniserError(failure(self.failure), is_passing=self.is_passing)
        number = round(float(utterance.samples[len(utterance.samples) // 2]) * 128)
        self.heard.append(number)
        return Recognition("" if number == 99 else f"n{number}", self.language)


class Upper(Translator):
    """Translates into capitals, or fails."""

    failure: Optional[str] = None
    is_passing = False
    repeat = 1

    def __init__(self, name: str = "Groß") -> None:
        self.name = name
        self.key = (name,)
        self.asked: list[Passage] = []
        self.warmed = 0
        self.gate = threading.Event()
        self.gate.set()

    def warm_up(self) -> None:
        self.warmed += 1

    def translate(self, passage: Passage) -> str:
        self.asked.append(passage)
        if not self.gate.wait(SECONDS):
            raise AssertionError("the gate was never opened")
        if self.failure:
            told = notice("translation.failed", translator=self.name, reason=self.failure)
            raise TranslatorError(told, is_passing=self.is_passing)
        return passage.text.upper() * self.repeat


class SessionCase(unittest.IsolatedAsyncioTestCase):
    """A server in this process. `recognisers` and `translator` are what it finds; `chosen` is what
    translation it was asked for, `folder` where its files go. Its time is `now`, which stands still
    unless a test moves it."""

    def setUp(self) -> None:
        self.recognisers = [FakeRecogniser()]
        self.translator = Upper()
        self.fallback = Upper("Ersatz")
        self.chosen: list[tuple[str, str]] = []
        self.now = 1000.0
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.folder = Path(home.name)
        self.addCleanup(lambda: [one.gate.set() for one in self.recognisers])

    def choose(
        self, source: str, target: str, without: frozenset[tuple[object, ...]] = frozenset()
    ) -> Choice:
        self.chosen.append((source, target))
        for translator in (self.translator, self.fallback):
            if translator.key not in without:
                return Choice(translator, (notice("translation.awaits_language"),))
        return Choice(None, (notice("translation.no_target"),))

    def candidates(self, config: Config) -> list[Candidate]:
        def candidate(one: FakeRecogniser) -> Candidate:
            return Candidate((one.name,), lambda: one)

        return [candidate(one) for one in self.recognisers]

    @asynccontextmanager
    async def server(self, **options: Any) -> AsyncIterator[int]:
        workers = Workers(8)
        surroundings = Surroundings(
            Engines(workers, self.candidates), workers, self.choose, lambda: self.folder,
            **{"find_speech": find_speech, "clock": lambda: self.now, **options},
        )  # fmt: skip
        async with serving("127.0.0.1", 0, surroundings) as servers:
            yield servers[0].sockets[0].getsockname()[1]
            for one in self.recognisers:
                one.gate.set()
            self.translator.gate.set()

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
