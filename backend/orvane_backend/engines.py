"""Loaded recognisers, shared by all sessions, and the threads on which they work."""

import asyncio
from concurrent.futures import ThreadPoolExecutor
from dataclasses import replace
from typing import Awaitable, Callable, Collection, Optional, TypeVar
from weakref import WeakValueDictionary

from . import protocol
from .languages import AUTO, canonical
from .notices import Notice, Problem, notice
from .protocol import Config
from .recognisers import Candidate, Recogniser, RecogniserError, Recognition, Utterance
from .recognisers.selection import candidates

T = TypeVar("T")
Report = Callable[[str, Notice], Awaitable[None]]


class NothingServes(Problem):
    """No engine can be had for a configuration."""


class Workers:
    """Threads for everything that blocks, so that the event loop never does.

    Threads are enough: PocketSphinx and numpy let go of the interpreter lock while they work, and
    unlike processes they cannot outlive the server.
    """

    def __init__(self, count: int = 32) -> None:
        self._pool = ThreadPoolExecutor(count, "worker")

    async def run(self, work: Callable[[], T], done: Callable[[], None] = lambda: None) -> T:
        """Runs `work` on a thread; `done` follows on the loop, even if the caller was cancelled."""
        future = asyncio.get_running_loop().run_in_executor(self._pool, work)

        def finished(ended: "asyncio.Future[T]") -> None:
            done()
            # Marks an error as seen that nobody waits for any more.
            _ = ended.cancelled() or ended.exception()

        future.add_done_callback(finished)
        return await asyncio.shield(future)


class Engine:
    """One recogniser with the places for its parallel calls; the places go in turn."""

    def __init__(self, key: tuple[object, ...], recogniser: Recogniser, workers: Workers) -> None:
        self.key = key
        self.recogniser = recogniser
        self._workers = workers
        self._places = asyncio.Semaphore(recogniser.parallel)
        self._loading: Optional["asyncio.Future[None]"] = None

    @property
    def is_loaded(self) -> bool:
        """Whether `load` has succeeded."""
        loading = self._loading
        return loading is not None and loading.done() and loading.exception() is None

    async def load(self) -> None:
        """Loads once, however many ask. Raises RecogniserError."""
        if self._loading is None:
            self._loading = asyncio.ensure_future(self._workers.run(self.recogniser.load))
        await asyncio.shield(self._loading)

    async def recognise(self, utterance: Utterance) -> Recognition:
        """Recognises one utterance when its turn comes. Raises RecogniserError."""
        await self._places.acquire()
        return await self._workers.run(
            lambda: self.recogniser.recognise(utterance), self._places.release
        )


class Engines:
    """Finds the engine for a configuration; sessions that want the same share it.

    The engine asked for last stays loaded when nobody uses it; others go with their last session.
    """

    def __init__(
        self, workers: Workers, choices: Callable[[Config], list[Candidate]] = candidates
    ) -> None:
        self._workers = workers
        self._choices = choices
        self._engines: WeakValueDictionary[tuple[object, ...], Engine] = WeakValueDictionary()
        self._latest: Optional[Engine] = None

    async def find(
        self, config: Config, without: Collection[tuple[object, ...]], report: Report
    ) -> tuple[Engine, list[Notice]]:
        """The first engine that loads and knows the language, and why those before it do not serve.

        `without` names engines to leave out. Raises NothingServes when none is left.
        """
        reasons: list[Notice] = []
        for candidate in self._choices(config):
            if candidate.key in without:
                continue
            engine = self._engine(candidate)
            try:
                await self._load(engine, report)
            except RecogniserError as error:
                self.forget(engine)
                reasons.append(error.notice)
                continue
            refusal = engine.recogniser.refusal(config.sourceLang)
            if refusal is None:
                self._latest = engine
                return engine, reasons
            reasons.append(refusal)
        raise NothingServes(_nothing(config.sourceLang, reasons))

    def _engine(self, candidate: Candidate) -> Engine:
        engine = self._engines.get(candidate.key)
        if engine is None:
            engine = Engine(candidate.key, candidate.create(), self._workers)
            self._engines[candidate.key] = engine
        return engine

    async def _load(self, engine: Engine, report: Report) -> None:
        if not engine.is_loaded:
            name = engine.recogniser.name
            await report(protocol.STATUS_MODEL_LOADING, notice("engine.loading", engine=name))
            await engine.load()
            await report(protocol.STATUS_MODEL_LOADED, notice("engine.loaded", engine=name))

    def forget(self, engine: Engine) -> None:
        """Drops an engine that failed: who asks for it next loads it anew."""
        if self._engines.get(engine.key) is engine:
            del self._engines[engine.key]
        if self._latest is engine:
            self._latest = None


def _nothing(language: str, reasons: list[Notice]) -> Notice:
    told = "; ".join(reason.german for reason in reasons) or "keine ist übrig"
    if canonical(language) == AUTO:
        nothing = notice("engine.none", reason=told)
    else:
        nothing = notice("engine.none_for_language", language=canonical(language), reason=told)
    return replace(nothing, because=tuple(reasons))
