"""Voice in sound: where it is, and whether it is that of a recording."""

import wave

import numpy

RATE = 48000
_FRAME = RATE // 50            # Samples.
_VOICE_AMPLITUDE = 300         # Of 32768, root mean square. The private microphone has no noise.
_PAUSE_SECONDS = 0.5           # Ends a stretch.
_INTERIM_SECONDS = 0.8         # Of voice, between two interim results.
SHORTEST_VOICE_SECONDS = 0.2

# Of the comparison with a recording, in samples at its 16 kHz.
_PIECE = 1600
_LARGEST_GAP = 16000           # That a late player leaves before a piece.
_LARGEST_LOSS = 800
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

    def is_open(self):
        """Whether a stretch has begun that is not over yet."""
        return self._voice > 0

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
    """How much of a recording (16 kHz) is in sound of 48 kHz: the share of its tenths of a second
    with voice that are there, in their order. A player that is short of time leaves gaps between
    them; a tenth with a gap in it is not found, and what follows comes later."""
    with wave.open(str(file)) as sound:
        recording = samples_of(sound.readframes(sound.getnframes()))
    heard = samples_of(pcm)
    heard = heard[:len(heard) // 3 * 3].reshape(-1, 3).mean(axis=1)
    heard = numpy.pad(heard, _PIECE)
    starts = numpy.flatnonzero(_voiced(recording, _PIECE)) * _PIECE
    fits = _best_fits(heard, [recording[start:start + _PIECE] for start in starts])
    lags = [place - start for start, (place, likeness) in zip(starts, fits)
            if likeness > _LEAST_LIKENESS]
    return _longest_chain(lags) / len(fits)


def _longest_chain(lags):
    """How many pieces follow each other as in the recording, but for gaps."""
    lengths = []
    for index, lag in enumerate(lags):
        lengths.append(1 + max((lengths[before] for before in range(index)
                                if -_LARGEST_LOSS < lag - lags[before] < _LARGEST_GAP), default=0))
    return max(lengths, default=0)


def _best_fits(heard, pieces):
    """For each piece, where it fits best, and its correlation there."""
    size = 1 << (len(heard) + _PIECE).bit_length()
    spectrum = numpy.fft.rfft(heard, size)
    sums = numpy.concatenate([[0], (heard ** 2).cumsum()])
    energies = numpy.maximum(sums[_PIECE:] - sums[:-_PIECE], 1.0)
    fits = []
    for piece in pieces:
        products = numpy.fft.irfft(spectrum * numpy.conj(numpy.fft.rfft(piece, size)), size)
        likenesses = products[:len(energies)] / numpy.sqrt(energies * (piece ** 2).sum())
        place = int(likenesses.argmax())
        fits.append((place, likenesses[place]))
    return fits
