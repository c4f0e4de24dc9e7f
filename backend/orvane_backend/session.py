"""One client: takes its messages in, answers them in order."""

import asyncio
from contextlib import suppress
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Awaitable, Callable, Optional, Union

from . import protocol
from .backlog import OLDEST_SECONDS, Backlog, Order
from .chunks import Chunk, FindSpeech, received
from .engine_choice import EngineChoice
from .engines import Engines, Workers
from .hearing import Heard, Hearing
from .languages import canonical
from .log import log
from .notices import Notice, notice
from .protocol import AudioMessage, BadMessage, Config, ConfigMessage, FlushMessage
from .recognisers.selection import is_served_elsewhere
from .session_files import SessionFiles
from .speech_gate import find_speech_best
from .transcripts import output_folder
from .translating import ChooseTranslator, Translating
from .translators.selection import choose
from .websocket import ConnectionClosed

# What was held back of a cut sentence is heard without what follows when nothing does: the client
# sends at least every eight seconds.
_HOLD_SECONDS = 10.0

# What is recognised may wait for its translation, so that both go on at the same time.
_MOST_UNTRANSLATED = 4


@dataclass(frozen=True)
class Surroundings:
    """What sessions share, and where they reach outside."""

    engines: Engines
    workers: Workers
    choose_translator: ChooseTranslator = choose
    folder: Callable[[], Path] = output_folder
    find_speech: FindSpeech = find_speech_best
    # What there is to tell about other recognisers; looks at a small file.
    neighbours: Callable[[], tuple[Notice, ...]] = tuple
    # Speech that waits longer for recognition is left out.
    oldest_seconds: float = OLDEST_SECONDS
    hold_seconds: float = _HOLD_SECONDS
    # Seconds since whenever; the event loop's own time if none is handed in.
    clock: Optional[Callable[[], float]] = None


class Session:
    """Serves one connection.

    A reader takes messages in and always goes on, so that it sees a client leave. A first worker
    turns sound into words and a second one words into results, at the same time and in order. What
    waits too long is left out and told.
    """

    def __init__(self, connection: Any, surroundings: Surroundings) -> None:
        clock = surroundings.clock or asyncio.get_running_loop().time
        self._connection = connection
        self._surroundings = surroundings
        self._now = clock
        self._backlog = Backlog(surroundings.oldest_seconds)
        self._choice = EngineChoice(
            surroundings.engines, self._report, clock, surroundings.neighbours
        )
        self._hearing = Hearing(self._choice)
        self._translating = Translating(
            surroundings.workers, self._report, clock, surroundings.choose_translator
        )
        self._results: "asyncio.Queue[Union[Heard, str]]" = asyncio.Queue(_MOST_UNTRANSLATED)
        self._config: Optional[Config] = None
        self._files = SessionFiles(surroundings.folder, clock)
        self._announced = ""
        self._is_disturbed = False
        self._left_out = 0.0  # Seconds of speech, since this was last told to be over.
        self._behind_until = 0.0

    async def run(self) -> None:
        """Serves until the client leaves."""
        workers = [asyncio.ensure_future(self._listen()), asyncio.ensure_future(self._interpret())]
        try:
            await self._connection.send(protocol.backend_version())
            async for frame in self._connection:
                await self._receive(frame)
        except ConnectionClosed:
            pass
        finally:
            for worker in workers:
                worker.cancel()
            await asyncio.wait(workers)
            self._translating.close()
            self._files.close()
            if chunks := len(self._backlog.chunks()):
                log(f"🧹 Client weg, {chunks} Audio-Abschnitte nicht mehr erkannt")

    async def _receive(self, frame: Any) -> None:
        arrived = self._now()
        try:
            message = protocol.parse(frame)
        except BadMessage as error:
            told = notice("session.unreadable", reason=str(error))
            await self._report(protocol.STATUS_WARNING, told)
            return
        if isinstance(message, protocol.UnknownMessage):
            log(f"⚠️ Unbekannte Nachricht: {message.type[:40]}")
        elif isinstance(message, AudioMessage):
            pcm, rate, find = message.pcm, message.sample_rate, self._surroundings.find_speech
            self._backlog.put(
                await self._surroundings.workers.run(lambda: received(pcm, rate, arrived, find))
            )
            await self._leave_out()
        else:
            self._backlog.put(message)

    async def _leave_out(self) -> None:
        """Lets go of what has waited too long, and says so when somebody spoke in it."""
        gone = self._backlog.shed(self._now())
        for _ in gone:
            await self._connection.send(protocol.processed())
        spoken = sum(chunk.finding.speech_seconds for chunk in gone if chunk.finding.is_speech)
        if spoken > 0:
            self._left_out += spoken
            self._behind_until = self._now() + self._surroundings.oldest_seconds
            told = notice("session.behind", seconds=max(round(self._left_out), 1))
            await self._report(protocol.STATUS_OVERLOADED, told)

    async def _listen(self) -> None:
        with suppress(ConnectionClosed):
            while True:
                held = self._surroundings.hold_seconds if self._hearing.holds_back else None
                if not await self._backlog.wait(held):
                    await self._guarded(self._finish())
                    continue
                await self._leave_out()
                if self._backlog.is_empty:
                    continue
                await self._guarded(self._answer(self._backlog.take(self._hearing.joins_seconds)))

    async def _guarded(self, work: Awaitable[None]) -> None:
        """Does one piece of work, which must not end the session whatever goes wrong in it."""
        try:
            await work
        except ConnectionClosed:
            raise
        except Exception as error:
            log(f"❌ Unerwarteter Fehler: {type(error).__name__}: {error}")
            await self._report(protocol.STATUS_ERROR, notice("session.fault", reason=str(error)))

    async def _answer(self, item: Union[Order, list[Chunk]]) -> None:
        if isinstance(item, list):
            try:
                await self._pass_on(await self._hearing.hear(item))
            finally:
                for _ in item:
                    await self._results.put(protocol.processed())
            return
        await self._finish()
        if isinstance(item, FlushMessage):
            await self._results.put(protocol.flushed())
            return
        await self._results.join()
        if isinstance(item, ConfigMessage):
            await self._configure(item)
        else:
            log("🛑 Client beendet die Sitzung")
            self._files.close()
            self._config = None

    async def _finish(self) -> None:
        await self._pass_on(await self._hearing.finish())

    async def _pass_on(self, heard: Optional[Heard]) -> None:
        if heard is not None:
            await self._results.put(heard)

    async def _configure(self, message: ConfigMessage) -> None:
        config = message.config
        log(f"✓ Config: {config.sourceLang} → {config.targetLang}, Engine {config.sttEngine}")
        if message.problems:
            told = notice("session.config_keys", keys=", ".join(message.problems))
            await self._report(protocol.STATUS_WARNING, told)
        if config != self._config:
            self._config = config
            self._hearing.configure(config)
            self._translating.configure(config)
        self._files.configure(config)
        # A client that recognises by itself sends sound only if that fails or at its end.
        if not is_served_elsewhere(config) and await self._choice.prepare():
            await self._announce(self._first_language(config), anew=True)

    def _first_language(self, config: Config) -> str:
        """The language that will be translated from, as far as it is known before any sound."""
        engine = self._choice.engine
        only = engine.recogniser.only_language if engine else None
        return only or canonical(config.sourceLang)

    async def _interpret(self) -> None:
        with suppress(ConnectionClosed):
            while True:
                item = await self._results.get()
                try:
                    if isinstance(item, str):
                        await self._connection.send(item)
                    else:
                        await self._guarded(self._deliver(item))
                finally:
                    self._results.task_done()

    async def _deliver(self, heard: Heard) -> None:
        if not self._translating.has_chosen(heard.language):
            await self._announce(heard.language)
        translated = await self._translating.translate(heard)
        log(f"📝 {heard.text} → {translated}")
        self._files.append(heard, translated)
        await self._connection.send(protocol.translation(heard.text, translated))
        await self._announce(heard.language)

    async def _announce(self, language: str, *, anew: bool = False) -> None:
        """Tells who serves, when that has changed or something else was told since."""
        if self._choice.engine is None:
            return
        translator, on_translation = await self._translating.told(language)
        name = self._choice.engine.recogniser.name
        who = protocol.Serving(name, translator, self._choice.notes, on_translation)
        message = protocol.serving(who)
        is_over = self._is_disturbed and self._now() >= self._behind_until
        if anew or is_over or message != self._announced:
            self._is_disturbed, self._announced, self._left_out = False, message, 0.0
            log(f"📋 [{protocol.STATUS_ENGINE}] {protocol.german(who)}")
            await self._connection.send(message)

    async def _report(self, status: str, told: Notice) -> None:
        self._is_disturbed = self._is_disturbed or status in protocol.DISTURBING
        log(f"📋 [{status}] {told.german}")
        await self._connection.send(protocol.status(status, told))
