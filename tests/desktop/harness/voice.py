"""Voice in sound: where it is, and whether it is that of a recording."""

import wave

import numpy

RATE = 48000
_FRAME = RATE // 50            # Samples.
_VOICE_AMPLITUDE = 300         # Of 32768, root mean square. The private microphone has no noise.
_PAUSE_SECONDS = 0.5           # Ends a stretch.
_INTERIM_SECONDS = 0.8         # Of voice, between two interim results.
SHORTEST_VOICE_SECONDS = 0.2

# Of the comparison with a recording, at its 16 kHz.
_HALF_SECOND = 8000
_LARGEST_SHIFT = 800
_LEAST_LIKENESS = 0.9          # The sound server's way there and back leaves 0.97 and more.


def samples_of(pcm):
    """Signed 16-bit little-endian bytes as numbers."""
    return numpy.frombuffer(pcm, dtype="<i2").astype(numpy.float64)


def _voiced(samples, frame=_FRAME):
    """For each whole frame, whether there is voice in it."""
    frames = samples[:len(samples) // frame * frame].reshape(-1, frame)
    return numpy.sqrt((frames ** 2).mean(axis=1)) > _VOICE_AMPLITUDE


def voice_seconds(pcm):
    return float(_voiced(samples_of(pcm)).sum()) * _FRAME / RATE


def voice_seconds_in(file):
    """The same for a recording."""
    with wave.open(str(file)) as sound:
        frame = sound.getframerate() * _FRAME // RATE
        samples = samples_of(sound.readframes(sound.getnframes()))
    return float(_voiced(samples, frame).sum()) * _FRAME / RATE


class Stretches:
    """Finds the stretches of voice in sound that comes in pieces."""

    def __init__(self):
        self._rest = b""
        self._number = 0
        self._voice = 0    # Frames of voice in this stretch.
        self._quiet = 0    # Frames since the last one of them.
        self._told = 0     # Frames of voice at the last interim result.

    def take(self, pcm):
        """(number, seconds of voice, whether it is over) for each result that is due."""
        pcm = self._rest + pcm
        whole = len(pcm) // (2 * _FRAME) * 2 * _FRAME
        self._rest = pcm[whole:]
        due = []
        for voiced in _voiced(samples_of(pcm[:whole])):
            due += self._frame(voiced)
        return due

    def _frame(self, voiced):
        if voiced:
            self._voice += 1
            self._quiet = 0
            if self._seconds(self._voice - self._told) < _INTERIM_SECONDS:
                return []
            self._told = self._voice
            return [(self._number + 1, self._seconds(self._voice), False)]
        self._quiet += 1
        if not self._voice or self._seconds(self._quiet) < _PAUSE_SECONDS:
            return []
        seconds = self._seconds(self._voice)
        self._voice = self._told = 0
        if seconds < SHORTEST_VOICE_SECONDS:
            return []
        self._number += 1
        return [(self._number, seconds, True)]

    @staticmethod
    def _seconds(frames):
        return frames * _FRAME / RATE


def share_found(pcm, file):
    """How much of a recording (16 kHz) is in sound of 48 kHz: the share of its half seconds that
    are there, all at the same distance from where they were. A sound server that is short of time
    inserts or leaves out some milliseconds, so the recording as a whole need not fit."""
    with wave.open(str(file)) as sound:
        recording = samples_of(sound.readframes(sound.getnframes()))
    heard = samples_of(pcm)
    heard = heard[:len(heard) // 3 * 3].reshape(-1, 3).mean(axis=1)
    heard = numpy.pad(heard, _HALF_SECOND)
    starts = range(0, len(recording) - _HALF_SECOND + 1, _HALF_SECOND)
    fits = [_best_fit(heard, recording[start:start + _HALF_SECOND]) for start in starts]
    lags = numpy.array([place - start for start, (place, likeness) in zip(starts, fits)
                        if likeness > _LEAST_LIKENESS])
    return max((int((abs(lags - lag) < _LARGEST_SHIFT).sum()) for lag in lags), default=0) / len(fits)


def _best_fit(heard, piece):
    """Where a piece fits best, and its correlation there."""
    size = 1 << (len(heard) + len(piece)).bit_length()
    spectrum = numpy.fft.rfft(heard, size) * numpy.conj(numpy.fft.rfft(piece, size))
    products = numpy.fft.irfft(spectrum, size)[:len(heard) - len(piece) + 1]
    place = int(products.argmax())
    energy = (heard[place:place + len(piece)] ** 2).sum() * (piece ** 2).sum()
    return place, products[place] / numpy.sqrt(max(energy, 1.0))
