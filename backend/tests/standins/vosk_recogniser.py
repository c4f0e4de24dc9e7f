"""What Vosk's recogniser answers: words in lower case without punctuation, as pretty JSON."""

import json
from dataclasses import dataclass
from typing import Any

import numpy as np
from standin_voice import Word, from_pcm, hear

# A pause this long ends an utterance; so much without a word ends one that has no text.
_PAUSE_SECONDS = 0.5
_WORDLESS_SECONDS = 5.0


@dataclass
class Options:
    """What a client's config message can change before the first audio."""

    sample_rate: float = 8000
    words: bool = True
    max_alternatives: int = 0
    phrase_list: tuple[str, ...] = ()


class Recogniser:
    """One stream of sound."""

    def __init__(self, options: Options) -> None:
        self._options = options
        self._buffer = np.zeros(0, np.float32)
        self._begin = 0.0

    def accept(self, pcm: bytes) -> str:
        """The one answer to a piece of sound: a partial, or a result at an utterance's end."""
        self._buffer = np.concatenate([self._buffer, from_pcm(pcm)])
        words = self._words()
        seconds = len(self._buffer) / self._options.sample_rate
        if words and seconds - words[-1].end >= _PAUSE_SECONDS:
            return self.result()
        if not words and seconds >= _WORDLESS_SECONDS:
            return self.result()
        return _pretty({"partial": _text(words)})

    def result(self) -> str:
        """The utterance as it is; the next begins here."""
        words = self._words()
        answer = self._answer(words)
        self._begin += len(self._buffer) / self._options.sample_rate
        self._buffer = self._buffer[:0]
        return _pretty(answer)

    def _words(self) -> list[Word]:
        heard = hear(self._buffer, int(self._options.sample_rate))
        allowed = " ".join(self._options.phrase_list).split()
        return [word for word in heard if not allowed or word.text in allowed]

    def _answer(self, words: list[Word]) -> dict[str, Any]:
        if not words:
            return {"text": ""}
        count = self._options.max_alternatives
        if count == 0:
            timed = {"result": self._timed(words, True)} if self._options.words else {}
            return {**timed, "text": _text(words)}
        found = []
        for number in range(count):
            kept = words[: len(words) - number] if number < len(words) else words[:1]
            timed = {"result": self._timed(kept, False)} if self._options.words else {}
            found.append({"confidence": 231.4 - number, **timed, "text": _text(kept)})
        return {"alternatives": found}

    def _timed(self, words: list[Word], certain: bool) -> list[dict[str, Any]]:
        return [
            {
                **({"conf": 1.0} if certain else {}), "end": round(self._begin + word.end, 6),
                "start": round(self._begin + word.start, 6), "word": word.text,
            }
            for word in words
        ]  # fmt: skip


def _text(words: list[Word]) -> str:
    return " ".join(word.text for word in words)


def _pretty(answer: dict[str, Any]) -> str:
    return json.dumps(answer, indent=2, separators=(",", " : "), ensure_ascii=False)
