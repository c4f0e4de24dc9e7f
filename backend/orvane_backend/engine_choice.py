"""Which engine serves a session at the moment, and why."""

from typing import Callable, Optional

from . import protocol
from .engines import Engine, Engines, NothingServes, Report
from .languages import AUTO, canonical
from .notices import Notice, notice
from .protocol import Config
from .recognisers import RecogniserError
from .recognisers.selection import foreign_engine

# After a failure the next best serves for this long before the better one is tried again.
RETRY_SECONDS = 30.0
# Where nothing serves at all, the next chunks do not ask again before this time is over.
ASK_AGAIN_SECONDS = 5.0


class EngineChoice:
    """The engine of one session; its functions are called one after another on the event loop."""

    def __init__(
        self,
        engines: Engines,
        report: Report,
        now: Callable[[], float],
        neighbours: Callable[[], tuple[Notice, ...]] = tuple,
    ) -> None:
        self._engines = engines
        self._report = report
        self._now = now
        self._neighbours = neighbours
        self._config = Config()
        self._failed: dict[tuple[object, ...], tuple[float, Notice]] = {}
        self._resting: list[Engine] = []  # Kept loaded: they failed, but are well.
        self._nothing_until = 0.0
        self.engine: Optional[Engine] = None
        self.notes: tuple[Notice, ...] = ()

    def configure(self, config: Config) -> None:
        """Takes the wishes for all that follows; what failed before gets another chance."""
        self._config = config
        self._failed.clear()
        self._resting.clear()
        self._nothing_until = 0.0
        self.engine = None

    async def prepare(self) -> bool:
        """Loads an engine that knows the language, where there is none yet; false when none can."""
        self._forgive()
        if self.engine is not None:
            return True
        if self._now() < self._nothing_until:
            return False
        await self._report(protocol.STATUS_ENGINE_LOADING, notice("engine.preparing"))
        try:
            self.engine, reasons = await self._engines.find(
                self._config, self._failed, self._report
            )
        except NothingServes as error:
            self._nothing_until = self._now() + ASK_AGAIN_SECONDS
            await self._report(protocol.STATUS_ERROR, error.notice)
            return False
        self.notes = self._notes(reasons)
        return True

    async def failed(self, error: RecogniserError) -> None:
        """The engine could not do it: the next best takes over."""
        engine, self.engine = self.engine, None
        if engine is not None:
            await self._report(protocol.STATUS_WARNING, error.notice)
            if error.is_passing:
                self._resting.append(engine)
            else:
                self._engines.forget(engine)
            self._failed[engine.key] = self._now() + RETRY_SECONDS, error.notice

    def give_up(self) -> None:
        """None is left: the next chunk may try all of them again."""
        self._failed.clear()

    def _notes(self, reasons: list[Notice]) -> tuple[Notice, ...]:
        assert self.engine is not None
        foreign = foreign_engine(self._config)
        failures = [told for _, told in self._failed.values()]
        notes = ([foreign] if foreign else []) + failures + reasons
        notes.extend(self.engine.recogniser.remarks)
        if self._config.sttEngine == "whisper":
            notes.extend(self._neighbours())
        only = self.engine.recogniser.only_language
        if only == "en" and canonical(self._config.sourceLang) == AUTO:
            notes.append(notice("recognition.only_english"))
        return tuple(notes)

    def _forgive(self) -> None:
        """Lets failures go that are long enough past, so that the better one is tried again."""
        for key in [key for key, (until, _) in self._failed.items() if until <= self._now()]:
            del self._failed[key]
            self.engine = None
        if not self._failed and self.engine is not None:
            self._resting.clear()
