"""Fetches the files of Whisper's models, so that none is taken for whole before it is.

For `openai-whisper` only its addresses are used: it writes straight to the final name, and what it
breaks off looks like a model. `faster-whisper` fetches by itself, and is watched.
"""

import errno
from pathlib import Path


class DownloadError(Exception):
    """Why a model is not there, as one line for people."""


class PackageProblem(DownloadError):
    """The package is there and cannot be used; another may be."""


def disk_error(error: OSError, path: Path) -> DownloadError:
    """What a disk said about `path`."""
    if error.errno in (errno.ENOSPC, errno.EDQUOT):
        return DownloadError(f"Kein Platz mehr auf dem Datenträger: {path}")
    if error.errno in (errno.EACCES, errno.EPERM, errno.EROFS):
        return DownloadError(f"Keine Schreibrechte: {path}")
    return DownloadError(f"{error.strerror or error}: {path}")
