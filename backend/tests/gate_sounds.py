"""Chunks with speech and without, as a microphone or a computer's own sound would give them.

Two sets that share no voice, no sentence and no recording: one the gate is fitted to, one it is
judged by. The instruments and machines are the same in both, but play other pieces at other speeds.
"""

from dataclasses import dataclass
from typing import Iterator

import numpy as np

from orvane_backend.audio import Samples
from tests import sounds
from tests.music import MUSIC
from tests.noises import NOISES, coloured
from tests.recordings import short_recordings
from tests.sounds import RATE, at_level, cuts, said, within

_OTHER_VOICES = {
    "en+m7": "Nobody knows what the weather will be like next week, but we hope for sun.",
    "en+f5": "Please call me back when you have read the letter that I sent you.",
    "en-us+m6": "The second half of the game was much better than the first one.",
    "de+m7": "Niemand weiß, wie das Wetter nächste Woche wird, aber wir hoffen auf Sonne.",
    "de+f5": "Bitte rufen Sie mich zurück, wenn Sie den Brief gelesen haben.",
    "fr+m7": "Personne ne sait quel temps il fera la semaine prochaine.",
    "es+f5": "Por favor, llámame cuando hayas leído la carta que te envié.",
    "it+f4": "Nessuno sa che tempo farà la prossima settimana, ma speriamo nel sole.",
    "ja+f2": "おはようございます、きょうはてんきについてはなします。",
    "cs+m2": "Dobré ráno všem, dnes budeme mluvit o počasí a o hospodářství.",
    "ro+f4": "Bună dimineața tuturor, astăzi vorbim despre vreme.",
    "en+linda": "There is a small house at the end of the street, next to the river.",
}
_OTHER_WORDS = {
    "en+m7": "yes", "en+f5": "yes", "en-us+m6": "no", "de+m7": "nein", "de+f5": "ja", "fr+m7": "oui",
    "es+f5": "no", "it+f4": "sì", "en+linda": "okay", "cs+m2": "ano",
}  # fmt: skip
_OTHER_WHISPERS = {"it+whisper": "it+f4", "en-us+whisperf": "en+f5", "es+whisperf": "es+f5"}


@dataclass(frozen=True)
class Voices:
    """Speech without anything else: sentences of people and of machines, whispers, short words."""

    people: dict[str, Samples]
    machines: dict[str, Samples]
    whispers: dict[str, Samples]
    words: dict[str, Samples]


@dataclass(frozen=True)
class Chunk:
    """What the gate gets; `kind` is what it is a case of, `source` whom or what one hears."""

    kind: str
    source: str
    samples: Samples
    speech: bool


def fitting_voices() -> Voices:
    people = {
        name: one for name, one in sounds.people().items() if name in ("0870", "0890", "0920")
    }
    return Voices(people, sounds.sentences(), sounds.whispers(), sounds.short_words())


def judging_voices() -> Voices:
    people = {name: one for name, one in sounds.people().items() if name in ("0880", "0930")}
    people.update(short_recordings())
    machines = {voice: said(voice, text) for voice, text in _OTHER_VOICES.items()}
    whispers = {v: said(v, _OTHER_VOICES[of], 150) for v, of in _OTHER_WHISPERS.items()}
    words = {voice: said(voice, text) for voice, text in _OTHER_WORDS.items()}
    return Voices(people, machines, whispers, words)


def speech_chunks(voices: Voices, seed: int, often: int = 1) -> Iterator[Chunk]:
    """Every voice cut anywhere: clear, quiet, with noise, over music; whispers and short words.

    Cuts with less than 0.16 s within 15 dB of the sentence's loudest fall into a pause, and are none.
    """
    random = np.random.default_rng(seed)

    def pieces(samples: Samples, count: int) -> list[Samples]:
        found = cuts(samples, count * often, int(random.integers(1 << 30)))
        least = sounds.level(samples) - 15
        return [one for one in found if sounds.seconds_above(one, least) >= 0.16]

    for who, group in (("people", voices.people), ("machine", voices.machines)):
        for source, samples in group.items():
            for piece in pieces(samples, 8 if who == "people" else 5):
                yield Chunk(f"{who}, clear", source, piece, True)
                yield Chunk(f"{who}, -45 dB", source, at_level(piece, -45), True)
            for piece in pieces(samples, 2):
                yield Chunk(f"{who}, telephone, room", source, changed(piece, random), True)
            for ratio in (10, 5):
                for slope, name in ((0, "white"), (1, "pink"), (2, "brown")):
                    for piece in pieces(samples, 2):
                        noise = coloured(8, slope, int(random.integers(1 << 30)))
                        both = sounds.mixed(piece, noise, ratio)
                        yield Chunk(f"{who}, {name} noise {ratio} dB", source, both, True)
            for ratio in (10, 5, 0):
                for piece in pieces(samples, 3):
                    name = list(MUSIC)[int(random.integers(len(MUSIC)))]
                    music = played(MUSIC[name](11), random)
                    both = sounds.mixed(piece, music[: len(piece)], ratio)
                    yield Chunk(f"{who}, over music {ratio} dB", f"{source}, {name}", both, True)
    for source, samples in voices.whispers.items():
        for piece in pieces(samples, 10):
            yield Chunk("whispers", source, piece, True)
            yield Chunk("whispers, -50 dB", source, at_level(piece, -50), True)
    yield from _words(voices.words, random, often)


def _words(words: dict[str, Samples], random: np.random.Generator, often: int) -> Iterator[Chunk]:
    for source, word in words.items():
        word = at_level(word, -26)
        for seconds in (0.8, 2.0, 2.0, 5.0, 8.0) * often:
            begin = random.uniform(0, seconds - len(word) / RATE)
            for floor, name in ((-75, "a microphone"), (-200, "silence"), (-48, "louder hiss")):
                yield Chunk(
                    f"a short word in {name}", source, within(word, seconds, begin, floor), True
                )


def other_chunks(seed: int, count: int, seconds: float = 60) -> Iterator[Chunk]:
    """Every noise and every instrument, cut anywhere."""
    random = np.random.default_rng(seed)
    for kind, makers in (("noise", NOISES), ("music", MUSIC)):
        for source, make in makers.items():
            sound = make(seconds) if kind == "noise" else played(make(seconds), random)
            for number, piece in enumerate(cuts(sound, count, int(random.integers(1 << 30)))):
                if number % 3 == 2:
                    piece = changed(piece, random)
                yield Chunk(kind, source, piece, False)


def played(samples: Samples, random: np.random.Generator) -> Samples:
    """A recording at another speed, up to a third slower or faster, from somewhere in it."""
    speed = random.uniform(0.75, 1.35)
    places = np.arange(0, len(samples) - 1, speed)
    faster = np.interp(places, np.arange(len(samples)), samples).astype(np.float32)
    return np.roll(faster, int(random.integers(len(faster))))


def changed(samples: Samples, random: np.random.Generator) -> Samples:
    """The same in a room or through a telephone, at any level from -50 to -15 dB."""
    if random.random() < 0.6:
        length = int(RATE * random.uniform(0.1, 0.35))
        room = 0.15 * random.normal(size=length) * np.exp(-4 * np.arange(length) / length)
        room[0] = 1
        size = 1 << int(np.ceil(np.log2(len(samples) + length)))
        both = np.fft.rfft(samples, size) * np.fft.rfft(room, size)
        samples = np.fft.irfft(both, size)[: len(samples)].astype(np.float32)
    if random.random() < 0.6:
        spectrum = np.fft.rfft(samples)
        hertz = np.fft.rfftfreq(len(samples), 1 / RATE)
        low, high = random.uniform(50, 300), random.uniform(3300, 7000)
        spectrum /= 1 + (low / np.maximum(hertz, 1)) ** 4
        spectrum /= 1 + (hertz / high) ** 8
        samples = np.fft.irfft(spectrum, len(samples)).astype(np.float32)
    return at_level(samples, random.uniform(-50, -15)) if np.any(samples) else samples
