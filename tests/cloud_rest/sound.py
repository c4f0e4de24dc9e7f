"""Sound as the services take it: the header of a WAV file, and where in it there is voice."""

from __future__ import annotations

import struct
from dataclasses import dataclass

import numpy

WINDOW = 0.020
THRESHOLD = 10 ** (-45 / 20)  # of full scale
GAP = 0.300
# A tone's first and last samples are near zero, so that a gap seems longer, never shorter. This is for
# the rounding of a gap that is exactly as long as it has to be.
ROUNDING = 0.0005

PCM = 1
UNKNOWN_SIZES = (0, 0x7FFFFFFF, 0xFFFFFFFF)


class NotSound(ValueError):
    """The text says what is wrong."""


@dataclass(frozen=True)
class Wave:
    encoding: int
    channels: int
    rate: int
    bits: int
    data: bytes


def read_wave(content: bytes, streamed: bool = False) -> Wave:
    """A RIFF/WAVE file whose sizes are true. One that was streamed may leave its sizes unknown."""
    if len(content) < 12 or content[:4] != b'RIFF' or content[8:12] != b'WAVE':
        raise NotSound('no RIFF/WAVE header')
    size = struct.unpack_from('<I', content, 4)[0]
    if not (size == len(content) - 8 or streamed and size in (*UNKNOWN_SIZES, 36)):
        raise NotSound(f'RIFF size {size}, {len(content) - 8} bytes follow')
    form = None
    at = 12
    while at + 8 <= len(content):
        name, size = content[at : at + 4], struct.unpack_from('<I', content, at + 4)[0]
        at += 8
        if name == b'data':
            if form is None:
                raise NotSound('data before fmt')
            return _with_data(form, content[at:], size, streamed)
        if name == b'fmt ':
            form = _read_format(content[at : at + size])
        at += size + size % 2
    raise NotSound('no data chunk')


def _read_format(chunk: bytes) -> tuple[int, int, int, int]:
    if len(chunk) < 16:
        raise NotSound('fmt chunk too short')
    encoding, channels, rate, per_second, align, bits = struct.unpack_from('<HHIIHH', chunk)
    if align != channels * bits // 8 or per_second != rate * align:
        raise NotSound(f'byte rate {per_second} and block {align} contradict the format')
    return encoding, channels, rate, bits


def _with_data(form, rest: bytes, size: int, streamed: bool) -> Wave:
    if streamed and size in UNKNOWN_SIZES:
        size = len(rest)
    if size > len(rest):
        raise NotSound(f'{size} bytes of data announced, {len(rest)} follow')
    encoding, channels, rate, bits = form
    if channels * bits and size % (channels * bits // 8 or 1):
        raise NotSound(f'{size} bytes are no whole number of samples')
    return Wave(encoding, channels, rate, bits, rest[:size])


def samples_of(data: bytes, channels: int = 1) -> numpy.ndarray:
    """16-bit samples as parts of full scale; the mean of several channels."""
    samples = numpy.frombuffer(data, '<i2').astype(numpy.float64) / 32768
    return samples.reshape(-1, channels).mean(axis=1)


@dataclass(frozen=True)
class Stretch:
    start: float
    end: float


def find_voice(samples: numpy.ndarray, rate: int) -> list[Stretch]:
    """The stretches of voice, which have GAP or more of silence between each other."""
    window = max(1, round(rate * WINDOW))
    padded = numpy.zeros(-(-len(samples) // window) * window)
    padded[: len(samples)] = samples
    windows = padded.reshape(-1, window)
    # The last window may be a part of one, and is judged by what there is of it.
    counts = numpy.full(len(windows), window)
    if len(counts):
        counts[-1] = len(samples) - window * (len(windows) - 1)
    loud = numpy.sqrt((windows**2).sum(axis=1) / counts) > THRESHOLD
    stretches: list[Stretch] = []
    for index in numpy.flatnonzero(loud):
        above = numpy.flatnonzero(numpy.abs(windows[index]) > THRESHOLD)
        start, end = ((index * window + place) / rate for place in (above[0], above[-1] + 1))
        if stretches and start - stretches[-1].end < GAP - ROUNDING:
            stretches[-1] = Stretch(stretches[-1].start, end)
        else:
            stretches.append(Stretch(start, end))
    return stretches


def voiced(stretches: list[Stretch]) -> float:
    return sum(stretch.end - stretch.start for stretch in stretches)
