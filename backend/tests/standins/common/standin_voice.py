"""A language of sounds: what a test says is what a stand-in hears.

Each word is 0.3 s of a tone of its own pitch with one overtone, then 0.1 s of silence. So a
stand-in hears exactly what reached it: sound that is lost, doubled, out of order, at another rate
than the one told, or folded wrongly comes out as other words or none. Noise, plain tones and hum
are no words.
"""

from dataclasses import dataclass
from typing import Any, Optional

import numpy as np

Samples = Any

_WORDS = {
    "en": (
        "hello world good morning this is a test of the speech server one two three four five"
        " six seven thank you again and now we go on"
    ),
    "de": "guten tag heute scheint die sonne eins zwei drei vielen dank",
    "fr": "bonjour merci le monde",
    "es": "hola gracias",
}
LANGUAGE_OF = {word: code for code, words in _WORDS.items() for word in words.split()}
VOCABULARY = list(LANGUAGE_OF)

_LOWEST = 300.0
_STEP = 16.0
_WORD_SECONDS = 0.3
_GAP_SECONDS = 0.1
_FRAME_SECONDS = 0.01
# Below this loudness nothing is there; a word is also not below a quarter of the loudest part.
_SILENT = 0.004
_RELATIVE = 0.25
_SHORTEST, _LONGEST = 0.12, 0.5
# Pauses longer than this part sentences.
_PAUSE_SECONDS = 0.4


@dataclass(frozen=True)
class Word:
    """A word and its time in seconds."""

    text: str
    start: float
    end: float

    @property
    def language(self) -> str:
        """The language it belongs to, by Whisper's code."""
        return LANGUAGE_OF[self.text]


def pitch(word: str) -> float:
    """The pitch of a word in Hz; KeyError for a word that the language of sounds lacks."""
    if word not in LANGUAGE_OF:
        raise KeyError(word)
    return _LOWEST + _STEP * VOCABULARY.index(word)


def speak(text: str, rate: int = 16000, level: float = 0.3) -> Samples:
    """Words one after the other, float32; each takes 0.4 s."""
    parts = []
    for word in text.split():
        times = np.arange(int(_WORD_SECONDS * rate)) / rate
        angle = 2 * np.pi * pitch(word) * times
        sound = level * (np.sin(angle) + 0.5 * np.sin(2 * angle))
        ramp = np.minimum(1.0, np.minimum(times, times[::-1]) / 0.01)
        parts += [sound * ramp, np.zeros(int(_GAP_SECONDS * rate))]
    return np.concatenate([np.zeros(0), *parts]).astype(np.float32)


def silence(seconds: float, rate: int = 16000) -> Samples:
    """Nothing, float32."""
    return np.zeros(int(seconds * rate), np.float32)


def noise(seconds: float, rate: int = 16000, level: float = 0.1, seed: int = 1) -> Samples:
    """White noise, the same for the same seed."""
    sound = np.random.default_rng(seed).normal(0.0, level, int(seconds * rate))
    return np.clip(sound, -1, 1).astype(np.float32)


def tone(seconds: float, rate: int = 16000, hertz: float = 440.0, level: float = 0.3) -> Samples:
    """A plain tone."""
    times = np.arange(int(seconds * rate)) / rate
    return (level * np.sin(2 * np.pi * hertz * times)).astype(np.float32)


def as_pcm(samples: Samples) -> bytes:
    """Signed 16-bit little endian."""
    return (np.clip(samples, -1, 1) * 32767).astype("<i2").tobytes()


def from_pcm(pcm: bytes) -> Samples:
    """The opposite; an odd byte at the end is lost."""
    return np.frombuffer(pcm[: len(pcm) // 2 * 2], "<i2").astype(np.float32) / 32768


def hear(samples: Samples, rate: int = 16000) -> list[Word]:
    """The words in a sound."""
    words = []
    for start, end in _bursts(samples, rate):
        if _SHORTEST <= (end - start) / rate <= _LONGEST:
            text = _word_of(samples[start:end], rate)
            if text is not None:
                words.append(Word(text, start / rate, end / rate))
    return words


def sentences(words: list[Word]) -> list[list[Word]]:
    """The words, parted where there is a pause."""
    found: list[list[Word]] = []
    for word in words:
        if found and word.start - found[-1][-1].end < _PAUSE_SECONDS:
            found[-1].append(word)
        else:
            found.append([word])
    return found


def kind_of(samples: Samples, rate: int = 16000) -> str:
    """What a sound is: "speech", "silence", "tone" or "noise"."""
    if hear(samples, rate):
        return "speech"
    if len(samples) == 0 or float(np.sqrt(np.mean(np.square(samples)))) < _SILENT:
        return "silence"
    power = np.abs(np.fft.rfft(samples)) ** 2
    strongest = np.sort(power)[-max(8, len(power) // 200) :]
    return "tone" if strongest.sum() > 0.5 * power.sum() else "noise"


def _bursts(samples: Samples, rate: int) -> list[tuple[int, int]]:
    frame = max(1, int(_FRAME_SECONDS * rate))
    count = len(samples) // frame
    if count == 0:
        return []
    frames = np.asarray(samples[: count * frame], np.float64).reshape(count, frame)
    loudness = np.sqrt(np.mean(frames**2, axis=1))
    loud = loudness > max(_SILENT, _RELATIVE * float(loudness.max()))
    edges = np.flatnonzero(np.diff(np.concatenate([[0], loud.astype(np.int8), [0]])))
    return [(int(a) * frame, int(b) * frame) for a, b in zip(edges[::2], edges[1::2])]


def _word_of(sound: Samples, rate: int) -> Optional[str]:
    size = 1 << int(np.ceil(np.log2(max(len(sound), rate))))
    power = np.abs(np.fft.rfft(sound * np.hanning(len(sound)), size)) ** 2
    spacing = rate / size
    last = _LOWEST + _STEP * (len(VOCABULARY) - 1)
    first = int((_LOWEST - _STEP) / spacing)
    found = (first + int(np.argmax(power[first : int((last + _STEP) / spacing)]))) * spacing

    def around(hertz: float) -> float:
        return float(power[int((hertz - 25) / spacing) : int((hertz + 25) / spacing)].sum())

    ground, overtone = around(found), around(2 * found)
    if ground + overtone < 0.6 * float(power.sum()) or not 0.03 < overtone / ground < 1:
        return None
    index = round((found - _LOWEST) / _STEP)
    near = abs(found - _LOWEST - _STEP * index) < 0.4 * _STEP
    return VOCABULARY[index] if near and 0 <= index < len(VOCABULARY) else None
