"""Whether somebody speaks in a chunk, decided before any recogniser hears it.

What is said must not be lost, so doubt counts as speech: what wrongly passes is still stopped by what
the recogniser thinks of its words.
"""

from dataclasses import dataclass
from functools import lru_cache
from importlib import import_module
from typing import Any, Callable, Optional, Protocol

import numpy as np
import numpy.typing as npt

from . import speech_weights as fitted
from .audio import RECOGNITION_RATE, Samples
from .speech_features import FRAMES_PER_SECOND, Array, Windows, frames, windows

Flags = npt.NDArray[np.bool_]

# A half second whose score reaches this makes its chunk one with speech. `measure_gate` shows what
# limits around it would lose and let through.
LIMIT = 0.0
# Once somebody speaks, half seconds above this belong to it, too: ends of words are weak.
_LIMIT_INSIDE = -2.0
# No speech stays below this, in dB.
_LEAST_LEVEL = -66.0
# Frames this far below the loudest of their half second are pauses, in dB.
_PAUSE = 20.0
# What is kept before the first and after the last speech heard, in seconds.
_MARGIN = 0.2
_HALF_FRAME = 0.02

_MIDDLES, _SPREADS = np.array(fitted.MIDDLES), np.array(fitted.SPREADS)
_HIDDEN, _HIDDEN_BIAS = np.array(fitted.HIDDEN), np.array(fitted.HIDDEN_BIAS)
_OUT, _OUT_BIAS = np.array(fitted.OUT), np.array(fitted.OUT_BIAS)


@dataclass(frozen=True)
class Finding:
    """What was found in a chunk.

    `speech_seconds` counts the speech without its pauses. `begin` and `end`, in seconds of the
    chunk, lie a margin before and after it. `strength`, 0 to 1, says how clear it is: 0.5 and above
    is speech.
    """

    is_speech: bool
    speech_seconds: float = 0.0
    begin: float = 0.0
    end: float = 0.0
    strength: float = 0.0


class Detector(Protocol):
    """Finds speech in samples at 16 kHz. Raises any exception when it cannot."""

    def __call__(self, samples: Samples) -> Finding:
        ...


class SpeechGate:
    """A detector with the built-in one behind it, which serves whenever the first one fails."""

    def __init__(self, detector: Optional[Detector] = None) -> None:
        self._detector = detector

    def find_speech(self, samples: Samples) -> Finding:
        """What the chunk holds; never raises."""
        if self._detector is not None:
            try:
                return self._detector(samples)
            except Exception:  # Somebody else's code: whatever goes wrong there, speech goes on.
                self._detector = None
        return find_speech(samples)


class FasterWhisperDetector:
    """The voice detector that the package `faster_whisper` brings along."""

    # Below the package's own 0.5, as doubt counts as speech.
    _THRESHOLD = 0.3

    def __init__(self) -> None:
        """Raises ImportError without the package."""
        package = import_module("faster_whisper.vad")
        self._stamps: Callable[..., list[dict[str, Any]]] = package.get_speech_timestamps
        self._options = package.VadOptions(
            threshold=self._THRESHOLD, min_silence_duration_ms=300, speech_pad_ms=0
        )

    def __call__(self, samples: Samples) -> Finding:
        found = self._stamps(samples, vad_options=self._options)
        if not found:
            return Finding(False)
        spoken = sum(one["end"] - one["start"] for one in found) / RECOGNITION_RATE
        first, last = found[0]["start"], found[-1]["end"]
        return _finding(
            len(samples), first / RECOGNITION_RATE, last / RECOGNITION_RATE, spoken, 1.0
        )


def best_gate() -> SpeechGate:
    """With the package's detector where it is installed."""
    try:
        return SpeechGate(FasterWhisperDetector())
    except Exception:  # Also a package that is there but broken.
        return SpeechGate()


@lru_cache(maxsize=1)
def _best() -> SpeechGate:
    return best_gate()


def find_speech_best(samples: Samples) -> Finding:
    """What the chunk holds, by the best detector there is; the first call may take seconds."""
    return _best().find_speech(samples)


def find_speech(samples: Samples) -> Finding:
    """What the chunk holds, from the signal alone."""
    samples = np.nan_to_num(samples, posinf=0.0, neginf=0.0)
    heard = frames(samples)
    found = windows(heard)
    judged = np.where(found.levels > _LEAST_LEVEL, scores(found.figures), -np.inf)
    best = float(judged.max())
    strength = 1 / (1 + np.exp(np.clip(LIMIT - best, -50, 50)))
    if best < LIMIT:
        return Finding(False, strength=float(strength))
    places = np.flatnonzero(_spoken(heard.level, found, judged >= min(LIMIT, _LIMIT_INSIDE)))
    begin = places[0] / FRAMES_PER_SECOND - _HALF_FRAME
    end = (places[-1] + 1) / FRAMES_PER_SECOND + _HALF_FRAME
    spoken = len(places) / FRAMES_PER_SECOND
    return _finding(len(samples), begin, end, spoken, float(strength))


def scores(figures: Array) -> Array:
    """How much each half second sounds like speech: the higher, the more."""
    scaled = np.clip((figures - _MIDDLES) / _SPREADS, -4, 4)
    judged: Array = np.tanh(scaled @ _HIDDEN + _HIDDEN_BIAS) @ _OUT + _OUT_BIAS
    return judged


def _spoken(level: Array, found: Windows, speech: Flags) -> Flags:
    """Whether each frame is loud enough in one of the half seconds with speech."""
    spoken = np.zeros(len(level), bool)
    for begin, loud in zip(found.begins[speech], found.levels[speech]):
        part = slice(begin, begin + found.length)
        spoken[part] |= level[part] > loud - _PAUSE
    return spoken


def _finding(count: int, begin: float, end: float, spoken: float, strength: float) -> Finding:
    seconds = count / RECOGNITION_RATE
    return Finding(
        True, min(spoken, seconds), max(begin - _MARGIN, 0), min(end + _MARGIN, seconds), strength
    )
