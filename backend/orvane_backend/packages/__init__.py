"""Puts Whisper's packages into the server's Python environment and takes them out again.

The environment that is in use is never changed: a copy beside it is, which takes its place whole once
it is proven. Needs nothing but the standard library, for it is run by Debian's Python.
"""

import re
from dataclasses import dataclass
from typing import Optional

MEGABYTE = 1_000_000


class PackageError(Exception):
    """Why nothing was changed, as one line for people, in the installer's language."""


class Interrupted(BaseException):
    """A signal asked for the end."""

    def __init__(self, number: int) -> None:
        super().__init__(number)
        self.number = number


@dataclass(frozen=True)
class Package:
    """One package that brings Whisper.

    `name` is what the index calls it, `module` what Python does. `proof` is what a working one does
    without a complaint. `download` and `room` are rough bytes, for what is told before anything is
    known for certain; below `least` bytes of free room there is no point in beginning.
    """

    name: str
    module: str
    proof: str
    download: int
    room: int
    least: int


FASTER = Package(
    "faster-whisper",
    "faster_whisper",
    "import ctranslate2, faster_whisper.vad; from faster_whisper import WhisperModel, download_model",
    150 * MEGABYTE,
    500 * MEGABYTE,
    300 * MEGABYTE,
)
OPENAI = Package(
    "openai-whisper",
    "whisper",
    "import torch, whisper; whisper.load_model, whisper.log_mel_spectrogram",
    3000 * MEGABYTE,
    7000 * MEGABYTE,
    1000 * MEGABYTE,
)
# The better one first.
PACKAGES = (FASTER, OPENAI)
# The module's name is what people say.
_OTHER_NAMES = {"whisper": OPENAI.name, "faster_whisper": FASTER.name}


def package_called(name: str) -> Optional[Package]:
    """The package of this name or alias; none for any other."""
    wanted = _OTHER_NAMES.get(name, name)
    return next((package for package in PACKAGES if package.name == wanted), None)


def plain(name: str) -> str:
    """A distribution's name in the one spelling that can be compared."""
    return re.sub(r"[-_.]+", "-", name).lower()


def amount(size: int) -> str:
    """Bytes for people."""
    if size >= 1000 * MEGABYTE:
        return f"{size / 1e9:.1f} GB"
    return f"{max(1, round(size / MEGABYTE))} MB"
