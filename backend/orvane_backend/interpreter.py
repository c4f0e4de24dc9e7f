"""Turns the chunks of one session into results, with the engines and translators there are."""

import asyncio
from dataclasses import dataclass
from typing import Callable, Optional

from . import protocol
from .audio import Samples, is_silent, split_at_quiet, to_recognition
from .engines import Engine, Engines, Report, Workers
from .languages import AUTO, short
from .protocol import AudioMessage, Config
from .recognisers import RecogniserError, Recognition
from .recognisers.selection import foreign_engine
from .translators import TranslatorError
from .translators.selection import Choice, choose

ChooseTranslator = Callable[..., Choice]

# After a failure the next best serves for this long before the better one is tried again.
RETRY_SECONDS = 30.0

# Longer chunks are recognised in pieces, so that nobody else waits long for the engine.
_PIECE_SECONDS = 20.0


@dataclass(frozen=True)
class Result:
    """A source text, not empty, and its translation."""

    original: str
    translated: str


class Interpreter:
    """Serves one session; its functions are called one after another on the event loop."""

    def __init__(
        self,
        engines: Engines,
        workers: Workers,
        report: Report,
        choose_translator: ChooseTranslator = choose,
    ) -> None:
        self._engines = engines
        self._workers = workers
        self._report = report
        self._choose_translator = choose_translator
        self._config = Config()
        self._engine: Optional[Engine] = None
        self._engine_reasons: list[str] = []
        self._failed_until: dict[tuple[object, ...], float] = {}
        self._choices: dict[str, tuple[Choice, float]] = {}

    def configure(self, config: Config) -> None:
        """Takes the wishes for all that follows; what failed before gets another chance."""
        self._config = config
        self._engine = None
        self._failed_until.clear()
        self._choices.clear()

    async def prepare(self) -> bool:
        """Loads the engine and tells the client what serves it; false when nothing can."""
        self._forgive()
        if self._engine is not None:
            return True
        await self._report(protocol.STATUS_ENGINE_LOADING, "⏳ Spracherkennung wird vorbereitet …")
        try:
            self._engine, reasons = await self._engines.find(
                self._config, self._failed_until, self._report
            )
        except RecogniserError as error:
            await self._report(protocol.STATUS_ERROR, f"❌ Keine Spracherkennung: {error}")
            return False
        foreign = foreign_engine(self._config)
        self._engine_reasons = ([foreign] if foreign else []) + reasons
        language = self._engine.recogniser.only_language or short(self._config.sourceLang)
        known = language != AUTO and not self._config.skipTranslation
        await self._announce(await self._choice(language) if known else None)
        return True

    async def interpret(self, chunk: AudioMessage) -> Optional[Result]:
        """The result of a chunk; none when nothing was said or no engine is left to hear it."""
        samples = await self._workers.run(lambda: to_recognition(chunk.pcm, chunk.sample_rate))
        texts: list[str] = []
        language = AUTO
        for piece in split_at_quiet(samples, _PIECE_SECONDS):
            heard = None if is_silent(piece) else await self._recognise(piece)
            if heard is not None and heard.text:
                texts.append(heard.text)
                language = heard.language
        if not texts:
            return None
        text = " ".join(texts)
        return Result(text, await self._translate(text, language))

    async def _recognise(self, samples: Samples) -> Optional[Recognition]:
        while await self.prepare():
            engine = self._engine
            assert engine is not None
            try:
                return await engine.recognise(samples, self._config.sourceLang)
            except RecogniserError as error:
                await self._report(protocol.STATUS_WARNING, f"⚠️ {error}")
                self._engines.forget(engine)
                self._engine = None
                self._failed_until[engine.key] = _now() + RETRY_SECONDS
        # Nothing is left: the next chunk tries all of them again.
        self._failed_until.clear()
        return None

    async def _translate(self, text: str, language: str) -> str:
        if self._config.skipTranslation:
            return ""
        known = language in self._choices
        choice = await self._choice(language)
        if not known:
            await self._announce(choice)
        try:
            return await self._workers.run(lambda: choice.translator.translate(text))
        except TranslatorError as error:
            await self._report(protocol.STATUS_WARNING, f"⚠️ {error}")
        choice = await self._choose(language, without_mistral=True)
        self._choices[language] = (choice, _now() + RETRY_SECONDS)
        await self._announce(choice)
        try:
            return await self._workers.run(lambda: choice.translator.translate(text))
        except TranslatorError as error:
            await self._report(protocol.STATUS_WARNING, f"⚠️ {error} — Text bleibt unübersetzt")
            return text

    async def _choice(self, language: str) -> Choice:
        if language not in self._choices:
            self._choices[language] = (await self._choose(language), float("inf"))
        return self._choices[language][0]

    async def _choose(self, language: str, *, without_mistral: bool = False) -> Choice:
        target = self._config.targetLang
        return await self._workers.run(
            lambda: self._choose_translator(language, target, without_mistral=without_mistral)
        )

    async def _announce(self, choice: Optional[Choice]) -> None:
        assert self._engine is not None
        recogniser = self._engine.recogniser
        reasons = list(self._engine_reasons)
        only = recogniser.only_language
        if only is not None and short(self._config.sourceLang) not in (AUTO, only):
            reasons.append(f"versteht „{self._config.sourceLang}“ nicht")
        await self._report(
            protocol.STATUS_ENGINE,
            f"🎙 Erkennung: {_with_reason(recogniser.name, '; '.join(reasons))}"
            f" · 🌐 Übersetzung: {self._translation_name(choice)}",
        )

    def _translation_name(self, choice: Optional[Choice]) -> str:
        if self._config.skipTranslation:
            return "beim Client"
        if choice is None:
            return "je nach erkannter Sprache"
        return _with_reason(choice.translator.name, choice.reason)

    def _forgive(self) -> None:
        """Lets failures go that are long enough past, so that the better one is tried again."""
        now = _now()
        recovered = [key for key, until in self._failed_until.items() if until <= now]
        for key in recovered:
            del self._failed_until[key]
            self._engine = None
        for language in [name for name, (_, until) in self._choices.items() if until <= now]:
            del self._choices[language]


def _with_reason(name: str, reason: str) -> str:
    return f"{name} ({reason})" if reason else name


def _now() -> float:
    return asyncio.get_running_loop().time()
