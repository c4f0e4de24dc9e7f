"""Translation: the interface, with one module per translator beside it."""

from abc import ABC, abstractmethod


class TranslatorError(Exception):
    """A sentence that could not be translated. The text says why, in German."""


class Translator(ABC):
    """One way from a language to another. Its functions block and may be called in parallel."""

    name: str

    @abstractmethod
    def translate(self, text: str) -> str:
        """The translation of a non-empty text. Raises TranslatorError."""
