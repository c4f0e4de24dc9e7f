"""The messages of a Vosk server, as functions from values to values.

The server compares the end's text as a string, byte for byte; what is spelled otherwise it takes for
sound. Its answers are one JSON object for each block of sound, and one for the end.
"""

import json
from dataclasses import dataclass
from typing import Any, Iterator, Optional, Sequence

from ..audio import RECOGNITION_RATE
from . import Evidence, Recognition, Word

CONFIG = f'{{ "config" : {{ "sample_rate" : {RECOGNITION_RATE}, "words" : true }} }}'
END = '{"eof" : 1}'

# 0.25 s in 16 bits: what Vosk's own clients send at once.
BLOCK_BYTES = RECOGNITION_RATE // 4 * 2


class Unreadable(ValueError):
    """What is no answer of a Vosk server."""


@dataclass(frozen=True)
class Answer:
    """One answer. `is_final` ends a sentence, whose text may be empty; else it is nothing to keep."""

    is_final: bool
    text: str = ""
    words: tuple[Word, ...] = ()
    confidences: tuple[float, ...] = ()


def blocks(pcm: bytes) -> Iterator[bytes]:
    """The sound in messages; none of them is empty."""
    for start in range(0, len(pcm), BLOCK_BYTES):
        yield pcm[start : start + BLOCK_BYTES]


def parse(message: Any) -> Answer:
    """Reads one message. Raises Unreadable."""
    try:
        record = json.loads(message)
        if "partial" in record:
            return Answer(False)
        if "alternatives" in record:
            # The first is the best. Its score is no probability.
            record = record["alternatives"][0] if record["alternatives"] else {"text": ""}
        text = record["text"]
        result = record.get("result", [])
        if not isinstance(text, str):
            raise Unreadable(message)
        return Answer(
            True,
            " ".join(text.split()),
            tuple(
                Word(str(word["word"]), float(word["start"]), float(word["end"])) for word in result
            ),
            tuple(float(word["conf"]) for word in result if "conf" in word),
        )
    except (ValueError, TypeError, KeyError, AttributeError, RecursionError) as error:
        raise Unreadable(message) from error


def recognition(answers: Sequence[Answer], language: str) -> Recognition:
    """The sentences as one text."""
    text = " ".join(answer.text for answer in answers if answer.text)
    confidences = [value for answer in answers for value in answer.confidences]
    return Recognition(
        text,
        language,
        evidence=Evidence(confidence=_mean(confidences)),
        words=tuple(word for answer in answers for word in answer.words),
    )


def _mean(values: Sequence[float]) -> Optional[float]:
    return sum(values) / len(values) if values else None
