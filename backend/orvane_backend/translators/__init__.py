"""Translation: the interface, with one module per translator beside it."""

import re
from abc import ABC, abstractmethod
from dataclasses import dataclass

from ..notices import Notice, Problem

_BREAKS = re.compile(r"\s*[\n\r\v\f\x1c-\x1e\x85\u2028\u2029]\s*")
_CONTROLS = re.compile(r"[\x00-\x08\x0e-\x1b\x1f\x7f]")


class TranslatorError(Problem):
    """A text that could not be translated, or a translator that cannot be used.

    `is_passing` says that it is expected to go by itself: a model is still loading, a service has
    too much to do. Whoever asks again soon may well get an answer. `is_of_text` says that it is
    this one text that had no usable answer: the next one may well have.
    """

    def __init__(self, told: Notice, is_passing: bool = False, is_of_text: bool = False) -> None:
        super().__init__(told)
        self.is_passing = is_passing
        self.is_of_text = is_of_text


@dataclass(frozen=True)
class Passage:
    """A text to translate, not empty, and up to two sentences that were said before it in the same
    language, the older one first, for translators that can use them."""

    text: str
    context: tuple[str, ...] = ()


class Translator(ABC):
    """One way from a language to another. Its functions block and may be called in parallel."""

    # As a person reads it: what translates, without the languages.
    name: str

    # What is left out when it has failed: the same for every pair of languages it serves.
    key: tuple[object, ...]

    def warm_up(self) -> None:
        """Gets ready for the first text, which may take a minute. Raises TranslatorError.

        Needs not be called: a translator that has to get ready does so by itself, too, and fails
        with a passing error until it is.
        """

    @abstractmethod
    def translate(self, passage: Passage) -> str:
        """The translation, not empty, without line breaks. Raises TranslatorError."""


def one_line(text: str) -> str:
    """The text with a space for each line break and control character, and without spaces around it;
    nothing else changes, but for what is no character at all."""
    whole = text.encode("utf-8", "replace").decode()
    return _CONTROLS.sub(" ", _BREAKS.sub(" ", whole)).strip()
