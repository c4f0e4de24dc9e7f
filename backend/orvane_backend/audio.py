"""Chunks as numbers: decoding, folding planar stereo, resampling, finding speech.

Samples are 32-bit floats in [-1, 1], one channel.
"""

from functools import lru_cache
from math import ceil, gcd

import numpy as np
import numpy.typing as npt

Samples = npt.NDArray[np.float32]

# What every recogniser here takes.
RECOGNITION_RATE = 16000

_BLOCKS_PER_SECOND = 50
_MIN_BOUNDARIES = 6
# Measured over recorded speech in chunks of 0.4 s: mono stays above 16, planar stereo below 0.25.
_PLANAR_RATIO = 0.5

_RATE_STEP = 25
_STOPBAND_DB = 80.0
_TRANSITION = 0.12

_FRAME = RECOGNITION_RATE // 100
_SILENCE_LEVEL = 10 ** (-60 / 20)


def decode_pcm(pcm: bytes) -> Samples:
    """Signed 16-bit little-endian PCM as samples. The byte count is even."""
    return np.frombuffer(pcm, dtype="<i2").astype(np.float32) / np.float32(32768)


def encode_pcm(samples: Samples) -> bytes:
    """The inverse of `decode_pcm`, clamped."""
    pcm: bytes = np.clip(np.rint(samples * 32768), -32768, 32767).astype("<i2").tobytes()
    return pcm


def is_planar_stereo(samples: Samples, rate: int) -> bool:
    """Whether the chunk is planar stereo taken for mono.

    Screen capture delivers blocks of 20 ms, in each all samples of the left channel and then all of
    the right. Where one block ends and the next begins such a signal jumps, but it runs smoothly
    from each block to the one after the next. One channel's signal does the opposite. Periodic
    sounds (mains hum) run smoothly both ways, noise and silence neither, and count as mono.
    """
    block = rate // _BLOCKS_PER_SECOND
    count = len(samples) // block
    if count - 2 < _MIN_BOUNDARIES:
        return False
    blocks = samples[: count * block].reshape(count, block)
    last = _extrapolated(blocks[:-2])
    to_next = float(np.sum((blocks[1:-1, 0] - last) ** 2))
    to_after_next = float(np.sum((blocks[2:, 0] - last) ** 2))
    return to_after_next < _PLANAR_RATIO * to_next


def _extrapolated(blocks: Samples) -> Samples:
    """Where each block's signal would stand one sample after its end, by a straight line."""
    return 2 * blocks[:, -1] - blocks[:, -2]


def fold_planar_stereo(samples: Samples, rate: int) -> Samples:
    """The mean of both channels of planar stereo, with half the samples.

    A last incomplete pair of blocks, shorter than 40 ms, is left away.
    """
    block = rate // _BLOCKS_PER_SECOND
    pairs = len(samples) // (2 * block)
    channels = samples[: pairs * 2 * block].reshape(pairs, 2, block)
    folded: Samples = channels.mean(axis=1, dtype=np.float32).reshape(-1)
    return folded


def resample(samples: Samples, rate: int, target: int = RECOGNITION_RATE) -> Samples:
    """The samples at another rate, low-passed against aliases (80 dB, pass band to 88 %)."""
    if rate == target or len(samples) == 0:
        return samples
    divisor = gcd(rate, target)
    up, down = target // divisor, rate // divisor
    filters = _phase_filters(up, down)
    taps = filters.shape[1]
    half = taps // 2
    length = ceil(len(samples) * up / down)
    padded = np.concatenate(
        [np.zeros(half, np.float32), samples, np.zeros(taps + down, np.float32)]
    )
    windows = np.lib.stride_tricks.sliding_window_view(padded, taps)
    result = np.empty(length, np.float32)
    for phase in range(min(up, length)):
        start, offset = divmod(phase * down, up)
        count = len(range(phase, length, up))
        result[phase::up] = windows[start::down][:count] @ filters[offset]
    return result


@lru_cache(maxsize=4)
def _phase_filters(up: int, down: int) -> Samples:
    """One windowed-sinc filter per fraction k / up of an input sample, as rows."""
    cutoff = min(1.0, up / down) * (1 - _TRANSITION / 2)
    width = min(1.0, up / down) * _TRANSITION
    half = ceil((_STOPBAND_DB - 7.95) / (2.285 * np.pi * width) / 2)
    beta = 0.1102 * (_STOPBAND_DB - 8.7)
    fractions = np.arange(up)[:, None] / up
    positions = np.arange(-half, half + 1)[None, :] - fractions
    inside = np.clip(1 - (positions / (half + 1)) ** 2, 0, None)
    filters = cutoff * np.sinc(cutoff * positions) * np.i0(beta * np.sqrt(inside)) / np.i0(beta)
    scaled: Samples = (filters / filters.sum(axis=1, keepdims=True)).astype(np.float32)
    return scaled


def to_recognition(pcm: bytes, rate: int) -> Samples:
    """A chunk as a recogniser wants it: one channel at 16 kHz.

    The rate is taken to the nearest 25 Hz, a difference nobody hears: an odd one, such as 48001,
    would need a filter for every one of thousands of phases.
    """
    rate = round(rate / _RATE_STEP) * _RATE_STEP
    samples = decode_pcm(pcm)
    if is_planar_stereo(samples, rate):
        samples = fold_planar_stereo(samples, rate)
    return resample(samples, rate)


def is_silent(samples: Samples) -> bool:
    """Whether no 10 ms of the chunk at 16 kHz rise above -60 dB, which no speech stays below."""
    return len(samples) < _FRAME or float(_frame_levels(samples).max()) < _SILENCE_LEVEL


def split_at_quiet(samples: Samples, seconds: float) -> list[Samples]:
    """Pieces of at most the given length, cut at the quietest 100 ms of each second half."""
    limit = int(seconds * RECOGNITION_RATE)
    pieces = []
    while len(samples) > limit:
        levels = np.convolve(_frame_levels(samples[:limit]), np.ones(10), "same")
        first = len(levels) // 2
        cut = (first + int(np.argmin(levels[first:-5]))) * _FRAME
        pieces.append(samples[:cut])
        samples = samples[cut:]
    return [*pieces, samples]


def _frame_levels(samples: Samples) -> Samples:
    frames = samples[: len(samples) // _FRAME * _FRAME].reshape(-1, _FRAME)
    levels: Samples = np.sqrt(np.mean(frames * frames, axis=1))
    return levels
