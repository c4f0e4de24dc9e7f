"""Turns the chunks of one session into what was said, in order."""

from dataclasses import dataclass
from typing import Optional, Sequence

from .audio import RECOGNITION_RATE, split_at_quiet
from .chunks import Chunk, Stretch, stretch
from .cuts import cut, fresh_words, quietest
from .engine_choice import EngineChoice
from .invented import reason_to_drop
from .language_memory import LanguageMemory
from .languages import AUTO, canonical, same
from .log import log
from .protocol import Config
from .recognisers import Recognition, RecogniserError, Utterance, Word

# Longer stretches are recognised in pieces, so that nobody else waits long for the engine.
_PIECE_SECONDS = 20.0

# A cut is looked for in this much of a stretch's end by engines that do not place their words.
_LAST_SECONDS = 2.5
# Shorter stretches are not cut: what they hold is heard as it is.
_LEAST_SECONDS = 2.0

# What an engine is told of what was said before.
_CONTEXT_CHARACTERS = 200
_CONTEXT_AGE_SECONDS = 30.0


@dataclass(frozen=True)
class Heard:
    """What was said, not empty, its language, and when it was spoken: the loop's time.

    Until `quiet_until` nothing else was said.
    """

    text: str
    language: str
    begin: float
    end: float
    quiet_until: float


@dataclass(frozen=True)
class _Held:
    """Sound to be heard again, what of it is new, and the last word that was shown of it.

    `unsure` are the words that were heard in it the first time, none where nobody knows them, and
    `language` is theirs.
    """

    stretch: Stretch
    fresh: float = 0.0
    last: str = ""
    unsure: str = ""
    language: str = ""


class Hearing:
    """The ears of one session; its functions are called one after another on the event loop."""

    def __init__(self, choice: EngineChoice) -> None:
        self._choice = choice
        self._config = Config()
        self._memory = LanguageMemory()
        self._held: Optional[_Held] = None
        self._said: list[Heard] = []
        self._places_words: Optional[bool] = None

    @property
    def holds_back(self) -> bool:
        """Whether the end of a cut sentence waits for what comes next."""
        return self._held is not None

    @property
    def joins_seconds(self) -> float:
        """Up to this length chunks that wait are best heard together."""
        engine = self._choice.engine
        return engine.recogniser.joins_seconds if engine else 0.0

    def configure(self, config: Config) -> None:
        """Takes the wishes for all that follows. Nothing may be held back."""
        self._config = config
        self._choice.configure(config)
        self._memory = LanguageMemory()
        self._said.clear()
        self._places_words = None

    async def hear(self, chunks: Sequence[Chunk]) -> Optional[Heard]:
        """What is said in chunks, with what was held back before; none when nothing is."""
        spoken = [chunk for chunk in chunks if chunk.finding.is_speech]
        if not spoken:
            return await self.finish()
        held, self._held = self._held, None
        whole = stretch(held.stretch if held else None, spoken)
        goes_on = chunks[-1].is_unfinished and whole.seconds > _LEAST_SECONDS
        return await self._recognised(whole, held, goes_on)

    async def finish(self) -> Optional[Heard]:
        """What was held back, when nothing more comes; none when nothing is."""
        held, self._held = self._held, None
        if held is None:
            return None
        if held.unsure:
            # They were heard with the whole sentence before them, which tells more than they do alone.
            return self._said_in(held.stretch, held, held.unsure, held.language)
        return await self._recognised(held.stretch, held, goes_on=False)

    async def _recognised(
        self, whole: Stretch, held: Optional[_Held], goes_on: bool
    ) -> Optional[Heard]:
        shown: list[Heard] = []
        while whole.seconds > _PIECE_SECONDS:
            first = len(split_at_quiet(whole.samples, _PIECE_SECONDS)[0]) / RECOGNITION_RATE
            shown += await self._shown(whole.head(first), held)
            whole, held = whole.tail(first), None
        if goes_on and self._places_words is False:
            point = quietest(whole.samples, _LAST_SECONDS)
            shown += await self._shown(whole.head(point), held)
            self._held = _Held(whole.tail(point))
        else:
            shown += await self._shown(whole, held, goes_on)
        return _joined(shown)

    async def _shown(
        self, part: Stretch, held: Optional[_Held], goes_on: bool = False
    ) -> list[Heard]:
        """What of a part is to be shown, if anything; what is not sure yet is held back."""
        recognition = await self._recognise(part)
        if recognition is None or not recognition.text:
            return []
        if self._places_words is None:
            self._places_words = bool(recognition.words)
        reason = reason_to_drop(
            recognition.text, recognition.language, recognition.evidence, part.finding, part.seconds
        )
        if reason is not None:
            log(f"🔇 Nicht gezeigt ({reason}): {recognition.text}")
            return []
        text = self._sure_text(recognition, part, held, goes_on)
        if not text:
            return []
        return [self._said_in(part, held, text, recognition.language)]

    def _said_in(self, part: Stretch, held: Optional[_Held], text: str, language: str) -> Heard:
        """Notes what is shown of a part."""
        begin = part.speech_begin + (held.fresh if held else 0.0)
        heard = Heard(text, language, begin, part.speech_end, part.quiet_until)
        self._said.append(heard)
        return heard

    def _sure_text(
        self, recognition: Recognition, part: Stretch, held: Optional[_Held], goes_on: bool
    ) -> str:
        words: Sequence[Word] = recognition.words
        if not words:
            return recognition.text
        parted = cut(words, part.seconds) if goes_on else None
        unsure: Sequence[Word] = ()
        if parted is not None:
            words, unsure = words[: parted.sure], words[parted.sure :]
        if held is not None and held.fresh > 0:
            words, unsure = (fresh_words(one, held.fresh, held.last) for one in (words, unsure))
        if parted is not None:
            last = words[-1].text if words else ""
            self._held = _Held(
                part.tail(parted.again),
                parted.fresh - parted.again,
                last,
                _text(unsure),
                recognition.language,
            )
        elif held is None or held.fresh == 0:
            return recognition.text  # As it was written, when nothing of it is left away.
        return _text(words)

    async def _recognise(self, part: Stretch) -> Optional[Recognition]:
        """What an engine hears in a part, in the language that is spoken; none when none is left."""
        recognition = await self._asked(part, self._config.sourceLang)
        if recognition is None or not recognition.text or not self._detects():
            return recognition
        language = self._memory.settle(recognition.language, recognition.certainty)
        if same(language, recognition.language):
            return recognition
        return await self._asked(part, language)

    def _detects(self) -> bool:
        engine = self._choice.engine
        return (
            canonical(self._config.sourceLang) == AUTO
            and engine is not None
            and engine.recogniser.only_language is None
        )

    async def _asked(self, part: Stretch, language: str) -> Optional[Recognition]:
        utterance = Utterance(part.samples, language, self._context(part.speech_begin, language))
        was_asked_again = False
        while await self._choice.prepare():
            engine = self._choice.engine
            assert engine is not None
            try:
                return await engine.recognise(utterance)
            except RecogniserError as error:
                if error.is_passing and not was_asked_again:
                    was_asked_again = True
                    continue
                await self._choice.failed(error)
                was_asked_again = False
        self._choice.give_up()
        return None

    def _context(self, now: float, language: str) -> str:
        """The last words that were said in a language (any, where it is to be detected)."""
        self._said = [one for one in self._said if now - one.end < _CONTEXT_AGE_SECONDS]
        known = self._memory.current if canonical(language) == AUTO else language
        texts = [one.text for one in self._said if known is not None and same(one.language, known)]
        text = " ".join(texts)[-_CONTEXT_CHARACTERS:]
        return text.partition(" ")[2] if len(text) == _CONTEXT_CHARACTERS else text


def _text(words: Sequence[Word]) -> str:
    return " ".join(word.text.strip() for word in words)


def _joined(shown: Sequence[Heard]) -> Optional[Heard]:
    if not shown:
        return None
    text = " ".join(one.text for one in shown)
    last = shown[-1]
    return Heard(text, last.language, shown[0].begin, last.end, last.quiet_until)
