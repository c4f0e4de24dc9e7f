"""Speech recognition: the interface, with one module per engine beside it."""

from abc import ABC, abstractmethod
from dataclasses import dataclass
from typing import Optional

from ..audio import Samples


class RecogniserError(Exception):
    """An engine that cannot be used, or a chunk it failed on. The text says why, in German."""


@dataclass(frozen=True)
class Recognition:
    """What was said (empty when no word was), and its language as a short code."""

    text: str
    language: str


class Recogniser(ABC):
    """One speech engine. Its functions block and are called from worker threads.

    `load` is called once, before everything else; after it at most `parallel` calls of `recognise`
    run at the same time.
    """

    name: str
    parallel: int = 1
    # The one language the engine knows, whatever it is asked for; none when it follows the wish.
    only_language: Optional[str] = None

    @abstractmethod
    def load(self) -> None:
        """Gets ready. Raises RecogniserError when the engine cannot be used here."""

    @abstractmethod
    def recognise(self, samples: Samples, language: str) -> Recognition:
        """Recognises one utterance at 16 kHz in a language ("auto" for detection).

        Raises RecogniserError when the engine fails on it.
        """
