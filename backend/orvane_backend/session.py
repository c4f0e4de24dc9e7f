"""One client: takes its messages in, answers them in order."""

import asyncio
from contextlib import suppress
from dataclasses import dataclass
from datetime import datetime, timezone
from pathlib import Path
from typing import Any, Callable, Optional

from . import protocol
from .backlog import Backlog
from .engines import Engines, Workers
from .interpreter import ChooseTranslator, Interpreter
from .log import log
from .protocol import AudioMessage, BadMessage, Config, ConfigMessage, FlushMessage, StopMessage
from .recognisers.selection import is_served_elsewhere
from .transcripts import TranscriptWriter, output_folder
from .translators.selection import choose
from .websocket import ConnectionClosed


@dataclass(frozen=True)
class Surroundings:
    """What sessions share, and where they reach outside."""

    engines: Engines
    workers: Workers
    choose_translator: ChooseTranslator = choose
    folder: Callable[[], Path] = output_folder
    # Sound that may wait for recognition before the server reads on only as fast as it works.
    backlog_seconds: float = 120.0


class Session:
    """Serves one connection.

    A reader takes messages in and a worker answers them, so that a client hears at once about a
    message that is not usable, while results keep the order of their chunks. A client that sends
    faster than it can be served is told so and then read more slowly; nothing is thrown away.
    """

    def __init__(self, connection: Any, surroundings: Surroundings) -> None:
        self._connection = connection
        self._surroundings = surroundings
        self._backlog = Backlog(surroundings.backlog_seconds)
        self._overloaded = False
        self._interpreter = Interpreter(
            surroundings.engines, surroundings.workers, self._report, surroundings.choose_translator
        )
        self._config: Optional[Config] = None
        self._transcript: Optional[TranscriptWriter] = None
        self._awaits_transcript = False  # Asked for by the config, not tried yet.
        self._configured = datetime.now(timezone.utc)

    async def run(self) -> None:
        """Serves until the client leaves."""
        worker = asyncio.ensure_future(self._work())
        try:
            await self._connection.send(protocol.backend_version())
            async for frame in self._connection:
                await self._receive(frame)
        except ConnectionClosed:
            pass
        finally:
            worker.cancel()
            await asyncio.wait([worker])
            self._close_transcript()
            if chunks := self._backlog.waiting_chunks():
                log(f"🧹 Client weg, {chunks} Audio-Abschnitte nicht mehr erkannt")

    async def _receive(self, frame: Any) -> None:
        try:
            message = protocol.parse(frame)
        except BadMessage as error:
            await self._report(protocol.STATUS_WARNING, f"⚠️ {error}")
            return
        if isinstance(message, protocol.UnknownMessage):
            log(f"⚠️ Unbekannte Nachricht: {message.type[:40]}")
            return
        if not self._backlog.has_room(message):
            await self._report_overload()
        await self._backlog.put(message)

    async def _report_overload(self) -> None:
        if not self._overloaded:
            self._overloaded = True
            seconds = round(self._backlog.seconds)
            await self._report(
                protocol.STATUS_OVERLOADED,
                f"⚠️ Erkennung kommt nicht nach: {seconds} s Audio warten",
            )

    async def _work(self) -> None:
        with suppress(ConnectionClosed):
            while True:
                message = await self._backlog.get()
                if self._backlog.seconds < self._surroundings.backlog_seconds / 2:
                    self._overloaded = False
                await self._answer_or_tell(message)

    async def _answer_or_tell(self, message: protocol.Message) -> None:
        try:
            await self._answer(message)
        except ConnectionClosed:
            raise
        except Exception as error:  # one message must not end the session
            log(f"❌ Unerwarteter Fehler: {type(error).__name__}: {error}")
            await self._report(protocol.STATUS_ERROR, f"❌ Interner Fehler: {error}")

    async def _answer(self, message: protocol.Message) -> None:
        if isinstance(message, ConfigMessage):
            await self._configure(message)
        elif isinstance(message, AudioMessage):
            try:
                await self._interpret(message)
            finally:
                await self._connection.send(protocol.processed())
        elif isinstance(message, FlushMessage):
            await self._connection.send(protocol.flushed())
        elif isinstance(message, StopMessage):
            log("🛑 Client beendet die Sitzung")
            self._close_transcript()
            self._config = None

    async def _configure(self, message: ConfigMessage) -> None:
        config = message.config
        log(f"✓ Config: {config.sourceLang} → {config.targetLang}, Engine {config.sttEngine}")
        if message.problems:
            keys = ", ".join(message.problems)
            await self._report(protocol.STATUS_WARNING, f"⚠️ Config: nicht verstanden: {keys}")
        if config != self._config:
            self._config = config
            self._close_transcript()
            self._configured = datetime.now(timezone.utc)
            self._awaits_transcript = config.saveTranscript or config.saveSRT
            self._interpreter.configure(config)
        # A client that recognises by itself also writes by itself; sound comes here only if that
        # fails or at its end.
        if not is_served_elsewhere(config):
            self._open_transcript()
            await self._interpreter.prepare()

    async def _interpret(self, chunk: AudioMessage) -> None:
        result = await self._interpreter.interpret(chunk)
        if result is None:
            return
        log(f"📝 {result.original} → {result.translated}")
        self._open_transcript()
        if self._transcript is not None:
            self._transcript.append(datetime.now(timezone.utc), result.original, result.translated)
        await self._connection.send(protocol.translation(result.original, result.translated))

    def _open_transcript(self) -> None:
        config = self._config
        if config is None or not self._awaits_transcript:
            return
        self._awaits_transcript = False
        self._transcript = TranscriptWriter.open(
            self._surroundings.folder(),
            self._configured,
            (config.sourceLang, config.targetLang),
            transcript=config.saveTranscript,
            subtitles=config.saveSRT,
        )

    def _close_transcript(self) -> None:
        if self._transcript is not None:
            self._transcript.close()
            self._transcript = None

    async def _report(self, status: str, message: str) -> None:
        log(f"📋 [{status}] {message}")
        await self._connection.send(protocol.status(status, message))
