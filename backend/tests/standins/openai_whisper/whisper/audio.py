"""Sound, and what the encoder gets of it."""

import os
from typing import Any, Optional

import numpy as np

SAMPLE_RATE = 16000
N_FFT = 400
HOP_LENGTH = 160
CHUNK_LENGTH = 30
N_SAMPLES = CHUNK_LENGTH * SAMPLE_RATE
N_FRAMES = N_SAMPLES // HOP_LENGTH


class Mel:
    """Stands for a spectrogram: knows its shape, and the sound it was made of."""

    def __init__(self, samples: Any, n_mels: int, frames: int) -> None:
        self.samples = samples
        self.shape = (n_mels, frames)
        self.ndim = 2

    def to(self, *_: Any, **__: Any) -> "Mel":
        """On another device, or as another type."""
        return self


def checked(audio: Any) -> Any:
    """Float32, one channel; other sound is refused by the transformation."""
    if isinstance(audio, (str, os.PathLike)):
        return load_audio(str(audio))
    if not isinstance(audio, np.ndarray):
        raise TypeError(f"expected np.ndarray (got {type(audio).__name__})")
    if not np.issubdtype(audio.dtype, np.floating):
        raise RuntimeError("stft requires the input to be floating point or complex")
    if audio.dtype != np.float32:
        raise RuntimeError("expected scalar type Double but found Float")
    if audio.ndim != 1:
        raise RuntimeError(f"expected one channel, got an array of shape {audio.shape}")
    return audio


def load_audio(file: str, sr: int = SAMPLE_RATE) -> Any:
    """The program for it is not there."""
    raise FileNotFoundError(2, "No such file or directory: 'ffmpeg'")


def pad_or_trim(array: Any, length: int = N_SAMPLES, *, axis: int = -1) -> Any:
    """Exactly so long; silence is appended."""
    if isinstance(array, Mel):
        return Mel(array.samples[: length * HOP_LENGTH], array.shape[0], length)
    array = np.take(array, range(min(length, array.shape[axis])), axis=axis)
    widths = [(0, 0)] * array.ndim
    widths[axis] = (0, length - array.shape[axis])
    return np.pad(array, widths)


def log_mel_spectrogram(
    audio: Any, n_mels: int = 80, padding: int = 0, device: Optional[Any] = None
) -> Mel:
    """The spectrogram of a sound."""
    if n_mels not in (80, 128):
        raise AssertionError(f"Unsupported n_mels: {n_mels}")
    samples = checked(audio)
    return Mel(samples, n_mels, (len(samples) + padding) // HOP_LENGTH)
