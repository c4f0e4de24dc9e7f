"""Sound as the stand-ins take it: WAV files of 16 kHz, one channel, signed 16-bit, nothing else."""

import struct
from typing import Callable

import numpy as np
from numpy.typing import NDArray

RATE = 16_000
# Below this level, of 32768, there is nobody speaking.
SILENCE = 50

Samples = NDArray[np.int16]
# What a stand-in "hears"; each line of the text is a segment where the real one has segments.
Hearing = Callable[[Samples], str]


class BadSound(Exception):
    """Not the sound that was asked for; the text says in which way."""


def samples_of(file: bytes) -> Samples:
    """The samples of a WAV file of which every length and every number is right."""
    if len(file) < 12 or file[:4] != b"RIFF" or file[8:12] != b"WAVE":
        raise BadSound("no RIFF header")
    if struct.unpack("<I", file[4:8])[0] != len(file) - 8:
        raise BadSound("the RIFF header's length is not the file's")
    chunks = _chunks(file)
    if list(chunks)[:1] != [b"fmt "] or b"data" not in chunks:
        raise BadSound("no format before the data")
    _check_format(chunks[b"fmt "])
    return raw_samples(chunks[b"data"])


def raw_samples(data: bytes) -> Samples:
    """Samples without a header."""
    if len(data) % 2:
        raise BadSound("half a sample")
    return np.frombuffer(data, "<i2").astype(np.int16)


def level_of(samples: Samples) -> int:
    """The root of the mean square, 0 to 32768."""
    if not len(samples):
        return 0
    return round(float(np.sqrt(np.mean(np.square(samples.astype(np.float64))))))


def is_silent(samples: Samples) -> bool:
    return level_of(samples) < SILENCE


def describe(samples: Samples) -> str:
    """What is heard unless a test says otherwise: two segments, and none in silence."""
    if is_silent(samples):
        return ""
    return f"{len(samples) / RATE:.1f} seconds of sound\nat level {level_of(samples)}."


def tone(seconds: float, level: int = 3000) -> Samples:
    """Sound of this level."""
    times = np.arange(round(seconds * RATE)) / RATE
    wave = np.sin(2 * np.pi * 440 * times) * level * np.sqrt(2)
    samples: Samples = np.clip(np.round(wave), -32768, 32767).astype(np.int16)
    return samples


def silence(seconds: float) -> Samples:
    return np.zeros(round(seconds * RATE), np.int16)


def wav_of(samples: Samples, rate: int = RATE, channels: int = 1, bits: int = 16) -> bytes:
    """A WAV file; with other numbers than the usual ones its header says so, its data stays."""
    data = samples.astype("<i2").tobytes()
    block = channels * bits // 8
    form = struct.pack("<HHIIHH", 1, channels, rate, rate * block, block, bits)
    body = b"WAVEfmt " + struct.pack("<I", len(form)) + form
    body += b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", len(body)) + body


def _chunks(file: bytes) -> dict[bytes, bytes]:
    found: dict[bytes, bytes] = {}
    at = 12
    while at < len(file):
        if at + 8 > len(file):
            raise BadSound("half a chunk's header")
        name, length = file[at : at + 4], struct.unpack("<I", file[at + 4 : at + 8])[0]
        end = at + 8 + length
        if end > len(file):
            raise BadSound("a chunk longer than the file")
        if name in found:
            raise BadSound("a chunk twice")
        found[name] = file[at + 8 : end]
        at = end + length % 2
    return found


def _check_format(form: bytes) -> None:
    if len(form) not in (16, 18):
        raise BadSound("a format chunk of an odd length")
    if struct.unpack("<HHIIHH", form[:16]) != (1, 1, RATE, RATE * 2, 2, 16):
        raise BadSound("not 16 kHz, one channel, signed 16-bit")
