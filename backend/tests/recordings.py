"""Recorded sentences with transcripts (Debian's pocketsphinx-testdata), and what they turn into on
their way to the server."""

import subprocess
import wave
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from orvane_backend.audio import Samples, decode_pcm

_FOLDER = Path("/usr/share/pocketsphinx/test/data/librivox")

# The client's pause detection: level, length of a pause, least spacing, longest chunk, buffer.
_THRESHOLD_DB = -35.0
_PAUSE_SECONDS = 0.6
_SPACING_SECONDS = 1.0
_LONGEST_SECONDS = 8.0
_BUFFER = 4096
_LEAST_SAMPLES = 20001

# Cuts of one recording, and the bytes of 50 ms between them.
_CUTS = 50
_CUT_STEP = 1600


@dataclass(frozen=True)
class Recording:
    """One sentence: 16 kHz, one channel, 16-bit PCM, and what is said in it."""

    name: str
    pcm: bytes
    words: str

    @property
    def seconds(self) -> float:
        """The length of the recording."""
        return len(self.pcm) / 2 / 16000


def recordings() -> list[Recording]:
    """The five sentences, in the order of the book."""
    found = []
    for line in (_FOLDER / "transcription").read_text().splitlines():
        words, name = line.removesuffix(")").rsplit(" (", 1)
        with wave.open(str(_FOLDER / f"{name}.wav")) as file:
            pcm = file.readframes(file.getnframes())
        found.append(Recording(name, pcm, words.removeprefix("<s> ").removesuffix(" </s>")))
    return found


def short_recordings() -> dict[str, Samples]:
    """Nine commands and numbers said by other people, by their names."""
    found = {}
    for path in sorted((_FOLDER.parent / "cards").glob("*.wav")):
        with wave.open(str(path)) as file:
            found[f"card {path.stem}"] = decode_pcm(file.readframes(file.getnframes()))
    for name in ("goforward", "something", "numbers", "tidigits/dhd.2934z"):
        found[name] = decode_pcm((_FOLDER.parent / f"{name}.raw").read_bytes())
    return found


def cuts_by_beginning(recording: Recording, seconds: float = 3) -> list[bytes]:
    """Equally long pieces of a recording, each of which begins 50 ms after the one before."""
    length = 2 * int(16000 * seconds)
    starts = range(0, _CUTS * _CUT_STEP, _CUT_STEP)
    return [recording.pcm[start : start + length] for start in starts]


def cuts_by_end(recording: Recording) -> list[bytes]:
    """The same recording many times, each of which ends 50 ms before the one before."""
    length = len(recording.pcm)
    return [recording.pcm[:end] for end in range(length, length - _CUTS * _CUT_STEP, -_CUT_STEP)]


def at_48_khz(pcm: bytes) -> bytes:
    """16 kHz PCM at 48 kHz, by a resampler that is not the server's own."""
    raw = ["-t", "raw", "-e", "signed", "-b", "16", "-c", "1"]
    command = ["sox", *raw, "-r", "16000", "-", *raw, "-r", "48000", "-"]
    return subprocess.run(command, input=pcm, stdout=subprocess.PIPE, check=True).stdout


def planar(left: Samples, right: Samples, block: int = 960) -> Samples:
    """Two channels block by block, as screen capture delivers them."""
    length = len(left) // block * block
    channels = [channel[:length].reshape(-1, 1, block) for channel in (left, right)]
    return np.concatenate(channels, axis=1).reshape(-1)


def cut_at_pauses(pcm: bytes) -> list[bytes]:
    """48 kHz PCM in the chunks in which the client would send it."""
    samples = decode_pcm(pcm)
    chunks: list[bytes] = []
    begin = 0
    quiet_since = None
    speaking = False
    for end in range(_BUFFER, len(samples) + 1, _BUFFER):
        now, spoken = end / 48000, (end - begin) / 48000
        level = float(np.sqrt(np.mean(samples[end - _BUFFER : end] ** 2)))
        if 20 * np.log10(max(level, 1e-4)) > _THRESHOLD_DB:
            speaking, quiet_since = True, None
        elif speaking and quiet_since is None:
            quiet_since = now
        paused = quiet_since is not None and now - quiet_since >= _PAUSE_SECONDS
        if (paused and spoken >= _SPACING_SECONDS) or spoken >= _LONGEST_SECONDS:
            chunks.append(pcm[2 * begin : 2 * end])
            begin, quiet_since, speaking = end, None, speaking and not paused
    rest = pcm[2 * begin :]
    return [*chunks, rest] if len(rest) >= 2 * _LEAST_SAMPLES else chunks
