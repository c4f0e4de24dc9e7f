"""Sounds in which nobody speaks and nothing is played: hum, noise, machines, keys."""

from typing import Callable

import numpy as np
import numpy.typing as npt

from orvane_backend.audio import Samples
from tests.sounds import RATE, at_level

Wave = npt.NDArray[np.float64]


def silence(seconds: float) -> Samples:
    return np.zeros(int(seconds * RATE), np.float32)


def coloured(seconds: float, slope: float, seed: int) -> Wave:
    """Noise whose power falls with the frequency to the power of `slope`: 0 white, 1 pink, 2 brown."""
    random = np.random.default_rng(seed)
    count = int(seconds * RATE)
    spectrum = np.fft.rfft(random.normal(size=count))
    frequencies = np.fft.rfftfreq(count, 1 / RATE)
    spectrum *= np.maximum(frequencies, 20.0) ** (-slope / 2)
    made: Wave = np.fft.irfft(spectrum, count)
    return made / np.sqrt(np.mean(made**2))


def band(seconds: float, low: float, high: float, seed: int) -> Wave:
    """Noise between two frequencies."""
    count = int(seconds * RATE)
    spectrum = np.fft.rfft(np.random.default_rng(seed).normal(size=count))
    frequencies = np.fft.rfftfreq(count, 1 / RATE)
    spectrum[(frequencies < low) | (frequencies > high)] = 0
    made: Wave = np.fft.irfft(spectrum, count)
    return made / np.sqrt(np.mean(made**2))


def times(seconds: float) -> Wave:
    return np.arange(int(seconds * RATE)) / RATE


def noise(slope: float, decibels: float) -> Callable[[float], Samples]:
    """Noise at a level, as something that makes it in any length."""
    return lambda seconds: at_level(coloured(seconds, slope, 11), decibels).astype(np.float32)


def modulated(slope: float, rate: float, depth: float = 0.9) -> Callable[[float], Samples]:
    """Noise that swells and fades as often as syllables do."""

    def make(seconds: float) -> Samples:
        swell = 1 + depth * np.sin(2 * np.pi * rate * times(seconds))
        return at_level(coloured(seconds, slope, 12) * swell, -30).astype(np.float32)

    return make


def gusts(slope: float) -> Callable[[float], Samples]:
    """Noise whose level wanders by itself, as wind does."""

    def make(seconds: float) -> Samples:
        count = int(seconds * RATE)
        slow = np.interp(
            np.arange(count), np.arange(0, count + 4000, 4000),
            np.random.default_rng(13).normal(size=len(range(0, count + 4000, 4000))),
        )  # fmt: skip
        return at_level(coloured(seconds, slope, 14) * 10 ** (slow * 0.4), -30).astype(np.float32)

    return make


def hum(frequency: float) -> Callable[[float], Samples]:
    """Mains hum with twenty harmonics over a little hiss."""

    def make(seconds: float) -> Samples:
        random = np.random.default_rng(15)
        made = 0.003 * random.normal(size=int(seconds * RATE))
        for number in range(1, 21):
            phase = random.uniform(0, 6.28)
            made += np.sin(2 * np.pi * frequency * number * times(seconds) + phase) / number
        return at_level(made, -35).astype(np.float32)

    return make


def fan(seconds: float) -> Samples:
    """Blades at 97 Hz with harmonics, a bearing's wobble, and air."""
    t = times(seconds)
    phase = 2 * np.pi * 97 * t + 0.6 * np.sin(2 * np.pi * 1.3 * t)
    blades = sum(np.sin(number * phase) / number**1.5 for number in range(1, 9))
    air = coloured(seconds, 1.2, 16) * (1 + 0.15 * np.sin(2 * np.pi * 6.5 * t))
    return at_level(0.3 * blades + air, -38).astype(np.float32)


def keyboard(seconds: float) -> Samples:
    """Keys going down and up, five to nine a second, with a case that sounds."""
    random = np.random.default_rng(17)
    made = 0.002 * random.normal(size=int(seconds * RATE))
    place = 0.05
    while place < seconds - 0.2:
        for delay, strength in ((0.0, 1.0), (random.uniform(0.06, 0.1), 0.5)):
            length = int(0.03 * RATE)
            t = np.arange(length) / RATE
            click = random.normal(size=length) * np.exp(-t / random.uniform(0.002, 0.006))
            case = np.sin(2 * np.pi * random.uniform(180, 900) * t) * np.exp(-t / 0.008)
            first = int((place + delay) * RATE)
            made[first : first + length] += strength * (click + 0.7 * case)
        place += random.uniform(0.1, 0.25)
    return at_level(made, -38).astype(np.float32)


def knocks(seconds: float) -> Samples:
    """Steps and knocks: low thuds, one or two a second."""
    random = np.random.default_rng(18)
    made = 0.001 * random.normal(size=int(seconds * RATE))
    place = 0.1
    while place < seconds - 0.3:
        t = np.arange(int(0.2 * RATE)) / RATE
        thud = np.sin(2 * np.pi * random.uniform(70, 160) * t) * np.exp(-t / 0.03)
        thud += 0.5 * random.normal(size=len(t)) * np.exp(-t / 0.012)
        first = int(place * RATE)
        made[first : first + len(t)] += thud
        place += random.uniform(0.4, 0.8)
    return at_level(made, -34).astype(np.float32)


def tone(frequency: float) -> Callable[[float], Samples]:
    def make(seconds: float) -> Samples:
        return (0.1 * np.sin(2 * np.pi * frequency * times(seconds))).astype(np.float32)

    return make


def beeps(seconds: float) -> Samples:
    """Tones of 0.2 s, as of a machine or a telephone."""
    t = times(seconds)
    both = np.sin(2 * np.pi * 941 * t) + np.sin(2 * np.pi * 1336 * t)
    return (0.05 * both * ((t % 0.5) < 0.2)).astype(np.float32)


NOISES: dict[str, Callable[[float], Samples]] = {
    "silence": silence,
    "white -70 dB": noise(0, -70),
    "white -40 dB": noise(0, -40),
    "white -20 dB": noise(0, -20),
    "pink -40 dB": noise(1, -40),
    "pink -20 dB": noise(1, -20),
    "brown -40 dB": noise(2, -40),
    "brown -20 dB": noise(2, -20),
    "white, swelling 2 Hz": modulated(0, 2),
    "white, swelling 4 Hz": modulated(0, 4),
    "pink, swelling 3 Hz": modulated(1, 3),
    "pink, swelling 6 Hz": modulated(1, 6),
    "brown, swelling 4 Hz": modulated(2, 4),
    "brown, swelling 8 Hz": modulated(2, 8),
    "pink, in gusts": gusts(1),
    "brown, in gusts": gusts(2),
    "hum 50 Hz": hum(50),
    "hum 60 Hz": hum(60),
    "fan": fan,
    "keyboard": keyboard,
    "knocks": knocks,
    "tone 110 Hz": tone(110),
    "tone 220 Hz": tone(220),
    "tone 1 kHz": tone(1000),
    "beeps": beeps,
}
