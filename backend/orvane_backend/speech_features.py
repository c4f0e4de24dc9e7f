"""What can be measured in half a second of sound to tell whether somebody speaks in it.

The sound is looked at in frames of 40 ms, 80 a second; half seconds of them, a tenth apart, are then
described by twenty figures. None of them depends on how loud the sound is.
"""

from dataclasses import dataclass

import numpy as np
import numpy.typing as npt

from .audio import RECOGNITION_RATE, Samples

Array = npt.NDArray[np.float64]

STEP = 200
FRAMES_PER_SECOND = RECOGNITION_RATE // STEP
_FRAME = 640
_TRANSFORM = 1024
_WINDOW = 40
# Ten frames; a chunk that is shorter gets silence around it.
_SHORTEST_CHUNK = _FRAME + 9 * STEP
_WINDOW_STEP = 8

# Frames of a window that lie this far below its loudest do not count, in dB.
_DEPTH = 25.0
# Hiss below this counts as silence, so that its absence makes no difference.
_FLOOR = 1e-8

_BANDS = 18
_LOWEST_PITCH, _HIGHEST_PITCH = 72, 450
# The pitch is looked for in half of the spectrum, so its lags are at 8 kHz.
_PITCH_RATE = RECOGNITION_RATE // 2
_SHORTEST, _LONGEST = _PITCH_RATE // _HIGHEST_PITCH, _PITCH_RATE // _LOWEST_PITCH
# A partial that is still there 62 ms earlier and later is held, as instruments hold them.
_HELD = 5

NAMES = (
    "change", "shape", "attack", "low", "high", "tilt", "slow", "voiced", "harmonic", "gliding",
    "constant", "gliding apart", "harmonic apart", "held", "held least", "new", "flatness",
    "flatness moves", "level", "rise",
)  # fmt: skip


@dataclass(frozen=True)
class Frames:
    """Figures of each frame: its level in dB, its bands in dB, and what becomes of its partials."""

    level: Array
    bands: Array
    pitch: Array
    harmonic: Array
    pitch_apart: Array
    harmonic_apart: Array
    held: Array
    new: Array
    flatness: Array


@dataclass(frozen=True)
class Windows:
    """Half seconds: their first frames, levels in dB (that of the loudest tenth), and figures."""

    begins: npt.NDArray[np.int64]
    length: int
    levels: Array
    figures: Array


def _mel(hertz: float) -> float:
    return float(2595 * np.log10(1 + hertz / 700))


def _filters() -> Array:
    mels = np.linspace(_mel(120), _mel(7000), _BANDS + 2)
    edges = 700 * (10 ** (mels / 2595) - 1)
    hertz = np.fft.rfftfreq(_TRANSFORM, 1 / RECOGNITION_RATE)[:, None]
    low, middle, high = edges[:-2], edges[1:-1], edges[2:]
    filters: Array = np.clip(
        np.minimum((hertz - low) / (middle - low), (high - hertz) / (high - middle)), 0, None
    )
    return filters


def _lag_weights() -> Array:
    """Makes up for the frame's own shape, and prefers the shorter of equal lags."""
    shape = np.hanning(_FRAME)[::2]
    own = np.correlate(shape, shape, "full")[len(shape) - 1 :]
    lags = np.arange(_SHORTEST, _LONGEST)
    weights: Array = np.sqrt(own[0] / np.maximum(own[lags], 0.4 * own[0]))
    return weights * (1 - 0.0012 * (lags - _SHORTEST))


_SHAPE = np.hanning(_FRAME).astype(np.float32)
_SCALE = float(np.sum(_SHAPE.astype(np.float64) ** 2)) * _TRANSFORM / 2
_FILTERS = _filters().astype(np.float32)
_LAG_WEIGHTS = _lag_weights()
_COSINES = np.cos(np.pi * (np.arange(_BANDS)[:, None] + 0.5) * np.arange(1, 6) / _BANDS)
_COSINES *= np.sqrt(2 / _BANDS)
# Bins from 150 to 3500 Hz, where voices have their harmonics.
_VOICE = slice(10, 225)
_HEARD = slice(8, 450)


def frames(samples: Samples) -> Frames:
    """All whole frames of a chunk."""
    if len(samples) < _SHORTEST_CHUNK:
        samples = np.pad(samples, (_SHORTEST_CHUNK - len(samples)) // 2 + 1)
    cut = np.lib.stride_tricks.sliding_window_view(samples, _FRAME)[::STEP]
    spectrum = np.fft.rfft(cut * _SHAPE, _TRANSFORM, axis=1)
    power = ((spectrum.real**2 + spectrum.imag**2) / _SCALE).astype(np.float32)
    voice = np.sqrt(power[:, _VOICE])
    around = np.pad(voice, ((_HELD, _HELD), (0, 0)), mode="edge")
    before, after = around[: len(voice)], around[2 * _HELD :]
    held = np.minimum(np.minimum(before, after), voice).sum(axis=1)
    apart = np.maximum(voice - np.maximum(before, after), 0)
    total = np.maximum(voice.sum(axis=1), 1e-9)
    pitch, harmonic = _pitches(voice)
    pitch_apart, harmonic_apart = _pitches(apart)
    audible = power[:, _VOICE] + np.float32(1e-12)
    return Frames(
        level=10 * np.log10(power[:, _HEARD].sum(axis=1) + _FLOOR),
        bands=_smoothed(10 * np.log10(power @ _FILTERS + _FLOOR / 10).astype(np.float64)),
        pitch=pitch,
        harmonic=harmonic,
        pitch_apart=pitch_apart,
        harmonic_apart=harmonic_apart,
        held=held / total,
        new=apart.sum(axis=1) / total,
        flatness=np.log(audible).mean(axis=1) - np.log(audible.mean(axis=1)),
    )


def _smoothed(values: Array) -> Array:
    """The mean of each frame and its neighbours."""
    around = np.pad(values, ((1, 1), (0, 0)), mode="edge")
    mean: Array = (around[:-2] + around[1:-1] + around[2:]) / 3
    return mean


def _pitches(voice: Samples) -> tuple[Array, Array]:
    """Each frame's pitch, as its logarithm to the base of 2, and how well it fits, 0 to 1."""
    spectra = np.zeros((len(voice), _TRANSFORM // 4 + 1), np.float32)
    spectra[:, _VOICE] = voice
    lags = np.fft.irfft(spectra, axis=1)[:, : _LONGEST + 1]
    fits = lags[:, _SHORTEST:_LONGEST] / np.maximum(lags[:, :1], 1e-12) * _LAG_WEIGHTS
    best = np.clip(np.argmax(fits, axis=1), 1, fits.shape[1] - 2)
    rows = np.arange(len(fits))
    left, top, right = fits[rows, best - 1], fits[rows, best], fits[rows, best + 1]
    bend = np.minimum(left - 2 * top + right, -1e-9)
    lag = _SHORTEST + best + np.clip(0.5 * (left - right) / bend, -1, 1)
    return np.log2(_PITCH_RATE / lag), np.where((top >= left) & (top >= right), top, 0)


def _motion(pitch: Array, harmonic: Array, least: float) -> tuple[Array, Array]:
    """The frames in which the pitch glides, and those in which it stays, over 37 ms without a jump."""
    gliding, constant = np.zeros(len(pitch)), np.zeros(len(pitch))
    if len(pitch) < 4:
        return gliding, constant
    jumps = np.abs(np.diff(pitch))
    steady = np.maximum(np.maximum(jumps[:-2], jumps[1:-1]), jumps[2:]) < 0.045
    sure = steady & (np.minimum(harmonic[3:], harmonic[:-3]) > least)
    moved = np.abs(pitch[3:] - pitch[:-3])
    gliding[1:-2] = sure & (moved > 0.010) & (moved < 0.12)
    constant[1:-2] = sure & (moved <= 0.004)
    return gliding, constant


def windows(of: Frames) -> Windows:
    """The chunk in half seconds; a shorter one is a window by itself."""
    count = len(of.level)
    length = min(_WINDOW, count)
    begins = np.arange(0, count - length + 1, _WINDOW_STEP)
    if begins[-1] + length < count:
        begins = np.append(begins, count - length)
    index = begins[:, None] + np.arange(length)
    level = of.level[index]
    levels = np.percentile(level, 90, axis=1)
    weights = np.clip((level - levels[:, None] + _DEPTH) / _DEPTH, 0, 1) + 1e-3
    weights /= weights.sum(axis=1, keepdims=True)
    figures = np.stack(
        [*_spectral(of, index, weights), *_tonal(of, index, weights), *_levels(level)], axis=1
    )
    return Windows(begins, length, levels, figures)


def _levels(level: Array) -> list[Array]:
    steps = np.diff(level, axis=1)
    return [level.std(axis=1), np.percentile(steps, 95, axis=1)]


def _tonal(of: Frames, index: npt.NDArray[np.int64], weights: Array) -> list[Array]:
    """How much of it has a pitch, whether that moves, and whether partials are held."""

    def mean(values: Array) -> Array:
        result: Array = (weights * values[index]).sum(axis=1)
        return result

    gliding, constant = _motion(of.pitch, of.harmonic, 0.35)
    apart, _ = _motion(of.pitch_apart, of.harmonic_apart, 0.25)
    flatness = mean(of.flatness)
    wandering = np.sqrt(np.maximum(mean(of.flatness**2) - flatness**2, 0))
    return [
        mean((of.harmonic > 0.45).astype(np.float64)), mean(of.harmonic),
        gliding[index].mean(axis=1), constant[index].mean(axis=1), apart[index].mean(axis=1),
        mean(of.harmonic_apart), mean(of.held), of.held[index].min(axis=1), mean(of.new),
        flatness, wandering,
    ]  # fmt: skip


def _spectral(of: Frames, index: npt.NDArray[np.int64], weights: Array) -> list[Array]:
    """How the envelope of the spectrum, which the mouth shapes, moves."""
    bands = of.bands[index]
    shapes = bands @ _COSINES
    mean = (weights[:, :, None] * shapes).sum(axis=1, keepdims=True)
    spread = np.sqrt((weights[:, :, None] * (shapes - mean) ** 2).sum(axis=1))
    both = np.minimum(weights[:, 4:], weights[:, :-4])
    moved = np.sqrt(((shapes[:, 4:] - shapes[:, :-4]) ** 2).sum(axis=2))
    steps = np.diff(bands, axis=1)
    either = np.maximum(weights[:, 1:], weights[:, :-1])[:, :, None]
    up = (either * np.maximum(steps, 0) ** 2).sum(axis=(1, 2))
    down = (either * np.maximum(-steps, 0) ** 2).sum(axis=(1, 2))
    power = 10 ** (bands / 10)
    total = power.sum(axis=2)
    swing = np.hanning(shapes.shape[1])[:, None] * (shapes - shapes.mean(axis=1, keepdims=True))
    rates = np.abs(np.fft.rfft(swing[:, :, :4], 80, axis=1)) ** 2
    slow = rates[:, 2:9].sum(axis=(1, 2)) / (rates[:, 2:36].sum(axis=(1, 2)) + 1e-6)
    return [
        (both * moved).sum(axis=1) / both.sum(axis=1), spread[:, :3].sum(axis=1),
        np.log(up + 1e-3) - np.log(down + 1e-3),
        (weights * power[:, :, :3].sum(axis=2) / total).sum(axis=1),
        (weights * power[:, :, 13:].sum(axis=2) / total).sum(axis=1),
        spread[:, 0], slow,
    ]  # fmt: skip
