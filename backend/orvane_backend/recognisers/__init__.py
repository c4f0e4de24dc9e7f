"""Speech recognition: the interface, with one module per engine beside it."""

from abc import ABC, abstractmethod
from dataclasses import dataclass
from typing import Callable, Optional

from ..audio import Samples
from ..notices import Notice, Problem


class RecogniserError(Problem):
    """An engine that cannot be used, or an utterance it failed on.

    `is_passing` tells the two apart. Where it is true the engine failed on this utterance alone, or
    for a moment: it stays loaded and may be given the next one. Otherwise it is not worth asking
    again before it has been loaded anew.
    """


@dataclass(frozen=True)
class Utterance:
    """What is to be recognised: 16 kHz, one channel.

    `language` is what the client asked for: a code, with or without a region, or "auto" for
    detection. `context` are the last words before it in the same language, for engines that can use
    them; it may be empty.
    """

    samples: Samples
    language: str
    context: str = ""


@dataclass(frozen=True)
class Word:
    """One recognised word, and where it is in the utterance, in seconds from its beginning."""

    text: str
    begin: float
    end: float


@dataclass(frozen=True)
class Evidence:
    """What the engine itself thinks of its text; each is none when it does not tell.

    `no_speech` is the probability, 0 to 1, that nothing was said. `log_probability` is the mean over
    the tokens. `compression` is the text's length over its compressed one, above 2.4 where a text
    repeats itself. `confidence` is the probability, 0 to 1, that the words are right.
    """

    no_speech: Optional[float] = None
    log_probability: Optional[float] = None
    compression: Optional[float] = None
    confidence: Optional[float] = None


@dataclass(frozen=True)
class Recognition:
    """What was said (empty when no word was), and its language as a short code.

    `certainty` is the probability, 0 to 1, of a language that the engine detected; none when it was
    asked for, or is not told. `words` are the text's words with their places, in order; empty from an
    engine that has no places.
    """

    text: str
    language: str
    certainty: Optional[float] = None
    evidence: Evidence = Evidence()
    words: tuple[Word, ...] = ()


class Recogniser(ABC):
    """One speech engine. Its functions block and are called from worker threads.

    `load` is called once, before everything else; after it at most `parallel` calls of `recognise`
    run at the same time.
    """

    name: str
    parallel: int = 1
    # The one language the engine knows, whatever it is asked for; none when it follows the wish.
    only_language: Optional[str] = None
    # Up to this length utterances that wait are heard in one go, because a long one costs the engine
    # no more than a short one; zero when it does.
    joins_seconds: float = 0.0
    # What there is to tell after `load` although the engine serves, such as another model's use.
    remarks: tuple[Notice, ...] = ()

    @abstractmethod
    def load(self) -> None:
        """Gets ready. Raises RecogniserError when the engine cannot be used here."""

    def refusal(self, language: str) -> Optional[Notice]:
        """Why the engine cannot serve a language ("auto" for detection); none when it can.

        After `load`; does not block.
        """
        return None

    @abstractmethod
    def recognise(self, utterance: Utterance) -> Recognition:
        """Recognises one utterance. Raises RecogniserError when the engine fails on it."""

    def close(self) -> None:
        """Lets go of what the engine holds; it is not called again."""


@dataclass(frozen=True)
class Candidate:
    """A recogniser that might serve; equal keys are served by one and the same object."""

    key: tuple[object, ...]
    create: Callable[[], Recogniser]
