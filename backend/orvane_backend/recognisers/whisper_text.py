"""What both packages of Whisper have in common around their work: its bounds, and what it brought.

Settings that belong together: the work takes a bounded time because it is done once, greedily. At
higher temperatures, which the packages would try one after another where they doubt a text, it takes
up to six times as long, and what comes out is seldom better.
"""

import os
from dataclasses import dataclass
from typing import Any, Optional, Sequence

from ..audio import RECOGNITION_RATE, Samples
from . import Evidence, Recognition, Word

# A segment is silence when the model says so. By default the packages let it pass nevertheless if
# the text is fluent, and what they make up for silence is; so that test is switched off by none.
NO_SPEECH_THRESHOLD = 0.6
FLUENCY_THRESHOLD = None

# What is longer is worked on in several windows, which only times in the text can join.
WINDOW_SECONDS = 30.0

# The model takes at most 223 tokens of what was said before; much less tells it names and style,
# and each costs time.
_CONTEXT_CHARACTERS = 200


@dataclass(frozen=True)
class Segment:
    """A piece of text with what the model thinks of it; one shape for both packages."""

    text: str
    no_speech: float
    log_probability: float
    compression: float
    words: tuple[Word, ...] = ()
    confidences: tuple[float, ...] = ()


def segment(values: Any, words: Sequence[Any]) -> Segment:
    """One segment, and its words, from functions that give a value by the packages' own names."""
    return Segment(
        str(values("text")),
        float(values("no_speech_prob")),
        float(values("avg_logprob")),
        float(values("compression_ratio")),
        tuple(
            Word(str(word("word")).strip(), float(word("start")), float(word("end")))
            for word in words
        ),
        tuple(float(word("probability")) for word in words),
    )


def recognition(
    segments: Sequence[Segment], language: str, certainty: Optional[float]
) -> Recognition:
    """The segments as one text."""
    text = "".join(one.text for one in segments).strip()
    if not text:
        return Recognition("", language, certainty)
    words = tuple(word for one in segments for word in one.words if word.text)
    return Recognition(text, language, certainty, _evidence(segments), words)


def _evidence(segments: Sequence[Segment]) -> Evidence:
    # The segments of a window share its value; in several nothing was said only if in none was.
    no_speech = min(one.no_speech for one in segments)
    # The length of the text stands for the number of tokens, which not every version tells.
    lengths = [max(1, len(one.text)) for one in segments]
    total = sum(one.log_probability * length for one, length in zip(segments, lengths))
    confidences = [value for one in segments for value in one.confidences]
    return Evidence(
        no_speech,
        total / sum(lengths),
        max(one.compression for one in segments),
        sum(confidences) / len(confidences) if confidences else None,
    )


def prompt(context: str) -> Optional[str]:
    """The end of what was said before, from a word's beginning; none when there is nothing."""
    context = " ".join(context.split())
    if len(context) > _CONTEXT_CHARACTERS:
        end = context[-_CONTEXT_CHARACTERS:]
        # Languages without spaces have no better place to cut.
        context = end.partition(" ")[2] or end
    return context or None


def fits_one_window(samples: Samples) -> bool:
    """Whether a sound is worked on in one go."""
    return len(samples) <= WINDOW_SECONDS * RECOGNITION_RATE


def thread_count() -> int:
    """Half of the processors that this process may use, for games run beside it; at least two."""
    return max(2, len(os.sched_getaffinity(0)) // 2)
