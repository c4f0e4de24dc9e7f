"""Instrumental music made on the spot: single instruments, and pieces with a beat."""

from typing import Callable

import numpy as np

from orvane_backend.audio import Samples
from tests.noises import Wave, times
from tests.sounds import RATE, at_level

# Chords of four pieces, in semitones from A at 110 Hz, and the scale for tunes over them.
_CHORDS = ((0, 4, 7), (5, 9, 12), (7, 11, 14), (0, 4, 7), (-3, 0, 4), (2, 5, 9), (7, 11, 14))
_SCALE = (0, 2, 4, 5, 7, 9, 11, 12, 14, 16)

Instrument = Callable[[float, float], Wave]


def pitch(semitones: float, base: float = 110.0) -> float:
    """Hertz, by semitones above a base."""
    return base * float(2 ** (semitones / 12))


def piano(frequency: float, seconds: float) -> Wave:
    """Partials a little apart from whole multiples, the higher ones gone sooner."""
    t = times(seconds)
    made = np.zeros(len(t))
    for number in range(1, 16):
        partial = frequency * number * np.sqrt(1 + 0.0004 * number**2)
        if partial < 7500:
            fading = np.exp(-t * (1.2 + 0.5 * number))
            made += np.sin(2 * np.pi * partial * t + number) * fading / number**1.2
    return made * _edges(t, seconds, 0.003, 0.03)


def organ(frequency: float, seconds: float) -> Wave:
    t = times(seconds)
    parts = ((1, 1.0), (2, 0.7), (3, 0.5), (4, 0.4), (6, 0.25), (8, 0.2))
    made = sum(
        strength * np.sin(2 * np.pi * frequency * number * t + number)
        for number, strength in parts
        if frequency * number < 7500
    )
    return np.asarray(made) * _edges(t, seconds, 0.02, 0.04)


def strings(frequency: float, seconds: float, vibrato: float = 0.006) -> Wave:
    """A bowed section: saw-like, each of three players with a vibrato of their own."""
    t = times(seconds)
    made = np.zeros(len(t))
    for player in range(3):
        detuned = frequency * (1 + 0.002 * (player - 1))
        rate = 5.2 + 0.4 * player
        phase = 2 * np.pi * detuned * t
        phase += vibrato * detuned / rate * np.sin(2 * np.pi * rate * t + player)
        for number in range(1, 20):
            if frequency * number < 7000:
                made += np.sin(number * phase + player * number) / number
    return made * _edges(t, seconds, 0.08, 0.1)


def brass(frequency: float, seconds: float) -> Wave:
    """One that gets brighter as it gets louder."""
    t = times(seconds)
    swell = _edges(t, seconds, 0.05, 0.08)
    made = np.zeros(len(t))
    for number in range(1, 20):
        if frequency * number < 7000:
            made += np.sin(2 * np.pi * frequency * number * t) * swell**number / number**0.8
    return made


def flute(frequency: float, seconds: float) -> Wave:
    """Few partials, breath, and a vibrato of its level."""
    t = times(seconds)
    made = np.sin(2 * np.pi * frequency * t) + 0.3 * np.sin(4 * np.pi * frequency * t)
    breath = 0.03 * np.random.default_rng(int(frequency)).normal(size=len(t))
    return (made * (1 + 0.15 * np.sin(2 * np.pi * 5 * t)) + breath) * _edges(t, seconds, 0.05, 0.06)


def plucked(frequency: float, seconds: float) -> Wave:
    """A string after a pluck: a round of noise that loses its high parts each time."""
    period = RATE / frequency
    length = max(int(period), 2)
    round_ = np.random.default_rng(length).uniform(-1, 1, length)
    count = int(seconds * RATE)
    rounds = []
    for _ in range(count // length + 1):
        rounds.append(round_)
        round_ = 0.498 * (round_ + np.roll(round_, 1))
    made: Wave = np.concatenate(rounds)[:count]
    return made * _edges(times(seconds), seconds, 0.001, 0.02)[:count]


def _edges(t: Wave, seconds: float, attack: float, release: float) -> Wave:
    made: Wave = np.clip(np.minimum(t / attack, (seconds - t) / release), 0, 1)
    return made


def kick() -> Wave:
    t = times(0.25)
    phase = 2 * np.pi * (50 * t + 90 * 0.03 * (1 - np.exp(-t / 0.03)))
    return np.sin(phase) * np.exp(-t / 0.08)


def snare(random: np.random.Generator) -> Wave:
    t = times(0.2)
    body = np.sin(2 * np.pi * 185 * t) * np.exp(-t / 0.04)
    return 0.5 * body + 0.6 * random.normal(size=len(t)) * np.exp(-t / 0.06)


def hat(random: np.random.Generator, length: float = 0.03) -> Wave:
    t = times(0.12)
    hiss = np.diff(random.normal(size=len(t) + 1))
    return 0.3 * hiss * np.exp(-t / length)


def _put(made: Wave, sound: Wave, second: float, strength: float = 1.0) -> None:
    first = int(second * RATE)
    rest = sound[: max(len(made) - first, 0)]
    made[first : first + len(rest)] += strength * rest


def drums(seconds: float, tempo: float = 112, seed: int = 21) -> Wave:
    """Bass drum, snare and cymbals in a beat of four."""
    random = np.random.default_rng(seed)
    made = np.zeros(int(seconds * RATE))
    eighth = 30 / tempo
    for number in range(int(seconds / eighth) + 1):
        place = number * eighth
        _put(made, hat(random, 0.08 if number % 8 == 7 else 0.03), place, 0.6)
        if number % 8 in (0, 3, 4):
            _put(made, kick(), place, 1.2)
        if number % 4 == 2:
            _put(made, snare(random), place)
    return made


def chords(instrument: Instrument, seconds: float, length: float = 1.6) -> Wave:
    """One chord after another."""
    made = np.zeros(int(seconds * RATE))
    for number in range(int(seconds / length) + 1):
        for semitone in _CHORDS[number % len(_CHORDS)]:
            _put(made, instrument(pitch(semitone, 220), length), number * length)
    return made


def arpeggios(instrument: Instrument, seconds: float, length: float = 0.2) -> Wave:
    """The notes of chords one by one, up and down."""
    made = np.zeros(int(seconds * RATE))
    for number in range(int(seconds / length) + 1):
        chord = _CHORDS[number // 8 % len(_CHORDS)]
        semitone = (*chord, chord[0] + 12, chord[2], chord[1])[number % 6]
        _put(made, instrument(pitch(semitone, 220), length * 1.5), number * length)
    return made


def tune(instrument: Instrument, seconds: float, base: float = 220, seed: int = 22) -> Wave:
    """A walk over a scale, in notes of 0.15 to 0.6 s."""
    random = np.random.default_rng(seed)
    made = np.zeros(int(seconds * RATE))
    place, step = 0.0, 3
    while place < seconds:
        length = float(random.choice([0.15, 0.3, 0.3, 0.6]))
        step = int(np.clip(step + random.integers(-2, 3), 0, len(_SCALE) - 1))
        _put(made, instrument(pitch(_SCALE[step], base), length), place)
        place += length
    return made


def bass(seconds: float, tempo: float = 112) -> Wave:
    """A plucked bass on the roots."""
    made = np.zeros(int(seconds * RATE))
    beat = 60 / tempo
    for number in range(int(seconds / beat) + 1):
        semitone = _CHORDS[number // 4 % len(_CHORDS)][0]
        _put(made, plucked(pitch(semitone, 55), beat), number * beat)
    return made


def band(lead: Instrument, chord: Instrument, tempo: float) -> Callable[[float], Samples]:
    """Drums, bass, chords and a tune together."""

    def make(seconds: float) -> Samples:
        parts = (
            (drums(seconds, tempo), -24), (bass(seconds, tempo), -25),
            (chords(chord, seconds, 240 / tempo), -27), (tune(lead, seconds, 330), -26),
        )  # fmt: skip
        together = sum(at_level(part, decibels) for part, decibels in parts)
        return at_level(together, -20).astype(np.float32)

    return make


def _alone(make: Callable[[float], Wave]) -> Callable[[float], Samples]:
    return lambda seconds: at_level(make(seconds), -22).astype(np.float32)


MUSIC: dict[str, Callable[[float], Samples]] = {
    "piano, chords": _alone(lambda s: chords(piano, s)),
    "piano, arpeggios": _alone(lambda s: arpeggios(piano, s)),
    "piano, tune": _alone(lambda s: tune(piano, s)),
    "organ, chords": _alone(lambda s: chords(organ, s)),
    "organ, arpeggios": _alone(lambda s: arpeggios(organ, s)),
    "strings, chords": _alone(lambda s: chords(strings, s, 2.4)),
    "strings, tune": _alone(lambda s: tune(strings, s)),
    "brass, tune": _alone(lambda s: tune(brass, s)),
    "flute, tune": _alone(lambda s: tune(flute, s, 440)),
    "plucked, arpeggios": _alone(lambda s: arpeggios(plucked, s)),
    "plucked, tune": _alone(lambda s: tune(plucked, s)),
    "drums": _alone(drums),
    "bass": _alone(bass),
    "drums and bass": _alone(lambda s: drums(s) + 0.5 * bass(s)),
    "band, piano": band(piano, organ, 112),
    "band, strings": band(strings, piano, 92),
    "band, brass": band(brass, plucked, 126),
    "band, plucked": band(plucked, strings, 140),
}
