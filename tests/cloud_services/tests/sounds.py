"""Sounds as somebody speaks: syllables of a tone with gaps between them, and pauses."""

from collections.abc import Iterator

import numpy as np
import numpy.typing as npt

RATE = 16000
SYLLABLE, GAP = 0.16, 0.06  # Seconds; gaps of speech are shorter than any pause.


def pause(seconds: float, rate: int = RATE) -> npt.NDArray[np.float64]:
    """Silence with some noise in it, far below a voice."""
    return np.random.default_rng(1).normal(0, 0.0005, round(seconds * rate))


def speech(seconds: float, rate: int = RATE) -> npt.NDArray[np.float64]:
    """Begins and ends with a syllable."""
    at = np.arange(round(seconds * rate)) / rate
    tone = np.sum([np.sin(2 * np.pi * 170 * n * at) / n for n in range(1, 6)], axis=0)
    place = at % (SYLLABLE + GAP)
    shape = np.where(place < SYLLABLE, 0.6 + 0.4 * np.sin(np.pi * place / SYLLABLE), 0.0)
    shape[-round(SYLLABLE * rate) :] = 0.8
    return np.asarray(0.2 * tone * shape)


def level(decibels: float, seconds: float, rate: int = RATE) -> npt.NDArray[np.float64]:
    """A square wave, whose RMS is its amplitude."""
    wave = np.where(np.arange(round(seconds * rate)) // 8 % 2, 1.0, -1.0)
    return 10 ** (decibels / 20) * wave


def spoken(utterances: int, seconds: float = 1.0, silence: float = 0.6) -> bytes:
    """So many utterances, as PCM, with silence before, between and behind them."""
    parts = [pause(silence)]
    for _ in range(utterances):
        parts += [speech(seconds), pause(silence)]
    return pcm(*parts)


def pcm(*parts: npt.NDArray[np.float64]) -> bytes:
    samples = np.clip(np.concatenate(parts), -1, 1) * 32767
    return samples.round().astype('<i2').tobytes()


def frames(data: bytes, milliseconds: int = 100, rate: int = RATE) -> Iterator[bytes]:
    """The last one is filled up with silence."""
    size = rate * milliseconds // 1000 * 2
    for place in range(0, len(data), size):
        yield data[place : place + size].ljust(size, b'\0')
