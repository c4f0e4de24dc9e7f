"""Which language is spoken, over many utterances of which each may be detected wrongly."""

from typing import Optional

from .languages import canonical

# From here on a detection counts as sure, and from here on as good enough to begin with.
_SURE = 0.8
_LIKELY = 0.5


class LanguageMemory:
    """Remembers the language that is spoken: another one needs two sure utterances in a row."""

    def __init__(self) -> None:
        self.current: Optional[str] = None
        self._rival: Optional[str] = None

    def settle(self, detected: str, certainty: Optional[float]) -> str:
        """The language to take an utterance for in which `detected` was heard.

        An engine that does not tell its certainty is taken to be sure.
        """
        detected = canonical(detected)
        certainty = 1.0 if certainty is None else certainty
        if self.current is None:
            if certainty >= _LIKELY:
                self.current = detected
            return detected
        if detected == self.current or certainty < _SURE:
            self._rival = None
        elif detected == self._rival:
            self.current, self._rival = detected, None
        else:
            self._rival = detected
        return self.current
