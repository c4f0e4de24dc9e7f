"""Sounds made on the spot, the same each time: speech of many voices, and what becomes of it.

All are samples at 16 kHz, one channel. Noise is in `tests.noises`, music in `tests.music`.
"""

import io
import subprocess
import wave
from functools import lru_cache

import numpy as np
import numpy.typing as npt

from orvane_backend.audio import RECOGNITION_RATE, Samples, decode_pcm, resample
from tests.recordings import recordings

RATE = RECOGNITION_RATE

# Language, voice and what it says; one sentence a voice, all of them different.
SENTENCES = {
    "en+m3": "Good morning everybody, the train to the city leaves from platform nine today.",
    "en+f2": "She opened the window because the room was warm, and then she went to sleep.",
    "en-us+m1": "I would like to know how much this costs, and when it can be delivered.",
    "en-us+f4": "We are going to talk about three things that matter to all of us.",
    "de+m3": "Guten Morgen zusammen, heute sprechen wir über das Wetter und die Wirtschaft.",
    "de+f3": "Die Sitzung beginnt um neun Uhr, und danach gibt es Kaffee für alle.",
    "fr+m2": "Bonjour à tous, nous allons parler de la situation économique de notre pays.",
    "fr+f1": "Je voudrais savoir combien cela coûte et quand vous pouvez le livrer.",
    "es+m3": "Buenos días a todos, hoy vamos a hablar del tiempo y de la economía.",
    "es+f2": "La reunión empieza a las nueve y después hay café para todos.",
    "it+m1": "Buongiorno a tutti, oggi parliamo del tempo e della situazione economica.",
    "pt+f2": "Bom dia a todos, hoje vamos falar sobre o tempo e sobre a economia.",
    "nl+m2": "Goedemorgen allemaal, vandaag praten we over het weer en de economie.",
    "pl+f3": "Dzień dobry wszystkim, dzisiaj porozmawiamy o pogodzie i gospodarce.",
    "ru+m3": "Доброе утро всем, сегодня мы поговорим о погоде и об экономике.",
    "tr+f1": "Herkese günaydın, bugün hava durumu ve ekonomi hakkında konuşacağız.",
    "hi+m2": "सभी को सुप्रभात, आज हम मौसम और अर्थव्यवस्था के बारे में बात करेंगे।",
    "cmn+f2": "大家早上好，今天我们来谈谈天气和经济。",
    "sv+m3": "God morgon allihopa, idag ska vi prata om vädret och ekonomin.",
    "fi+f3": "Hyvää huomenta kaikille, tänään puhumme säästä ja taloudesta.",
}
WHISPERS = ("en+whisper", "en+whisperf", "de+whisper", "fr+whisperf", "es+whisper")
SHORT_WORDS = {
    "en+m3": "yes", "en+f2": "no", "en-us+m1": "okay", "en-us+f3": "yes", "de+m3": "ja",
    "de+f2": "nein", "fr+f1": "oui", "fr+m3": "non", "es+m2": "sí", "it+f2": "no", "ru+m3": "да",
    "pl+f3": "tak",
}  # fmt: skip


@lru_cache(maxsize=None)
def said(voice: str, text: str, speed: int = 165) -> Samples:
    """What a voice of espeak-ng says, without the silence before and after it."""
    command = ["espeak-ng", "-v", voice, "-s", str(speed), "--stdout", text]
    spoken = subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout
    with wave.open(io.BytesIO(spoken)) as file:
        rate, pcm = file.getframerate(), file.readframes(1 << 24)
    return trimmed(resample(decode_pcm(pcm[: len(pcm) // 2 * 2]), rate, RATE))


def sentences() -> dict[str, Samples]:
    """Every voice with its sentence, by the voice's name."""
    return {voice: said(voice, text) for voice, text in SENTENCES.items()}


def whispers() -> dict[str, Samples]:
    """Sentences without a voice in them: noise alone, shaped by the mouth."""
    texts = {voice[:2]: text for voice, text in SENTENCES.items()}
    return {voice: said(voice, texts[voice[:2]], 150) for voice in WHISPERS}


def short_words() -> dict[str, Samples]:
    """One short word a voice, of some 0.3 s."""
    return {voice: said(voice, text) for voice, text in SHORT_WORDS.items()}


def people() -> dict[str, Samples]:
    """Recorded sentences, read by a woman."""
    return {one.name[-4:]: trimmed(decode_pcm(one.pcm)) for one in recordings()}


def trimmed(samples: Samples) -> Samples:
    """From the first to the last sample above a thousandth of the loudest."""
    loud = np.flatnonzero(np.abs(samples) > 1e-3 * np.abs(samples).max())
    return samples[loud[0] : loud[-1] + 1]


def level(samples: Samples) -> float:
    """Of the tenth of the 20 ms that is loudest, in dB below a full square wave."""
    powers = np.sort(_powers(samples))
    return float(10 * np.log10(np.mean(powers[-max(len(powers) // 10, 1) :]) + 1e-20))


def seconds_above(samples: Samples, decibels: float) -> float:
    """How long it is louder than that, in steps of 20 ms."""
    return 0.02 * float(np.sum(_powers(samples) > 10 ** (decibels / 10)))


def _powers(samples: Samples) -> npt.NDArray[np.float64]:
    """Of each 20 ms, apart from a constant part."""
    frames = samples[: len(samples) // 320 * 320].reshape(-1, 320)
    powers: npt.NDArray[np.float64] = np.var(frames.astype(np.float64), axis=1)
    return powers


def mean_level(samples: Samples) -> float:
    """Of the whole, in dB."""
    return float(10 * np.log10(np.mean(samples.astype(np.float64) ** 2) + 1e-20))


def at_level(samples: Samples, decibels: float) -> Samples:
    """The same louder or quieter, so that its mean level is the one given."""
    return samples * np.float32(10 ** ((decibels - mean_level(samples)) / 20))


def mixed(speech: Samples, other: Samples, ratio: float) -> Samples:
    """Speech over something else that goes on as long, by their mean levels in dB, at -20 dB."""
    around = np.resize(other, len(speech))
    both = at_level(speech, -26) + at_level(around, -26 - ratio)
    return at_level(both, -20)


def within(samples: Samples, seconds: float, begin: float, floor: float = -75) -> Samples:
    """A sound somewhere in a longer chunk with the hiss of a microphone."""
    chunk = at_level(np.random.default_rng(3).normal(size=int(seconds * RATE)), floor)
    first = int(begin * RATE)
    chunk[first : first + len(samples)] += samples[: len(chunk) - first]
    return chunk.astype(np.float32)


def cuts(samples: Samples, count: int, seed: int, shortest: float = 0.4) -> list[Samples]:
    """Chunks of random lengths from 0.4 to 8 s at random places."""
    random = np.random.default_rng(seed)
    found = []
    for _ in range(count):
        longest = min(8.0, len(samples) / RATE)
        length = int(RATE * random.uniform(min(shortest, longest), longest))
        first = int(random.integers(0, len(samples) - length + 1))
        found.append(samples[first : first + length])
    return found
