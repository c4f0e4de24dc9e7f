"""Fetches the files of Whisper's models, so that none is taken for whole before it is.

Needs nothing but the standard library and, for the addresses, the package `openai-whisper`, which
itself writes straight to the final name: what it breaks off looks like a model.
"""

import errno
from pathlib import Path


class DownloadError(Exception):
    """Why a model is not there, as one line for people."""


def disk_error(error: OSError, path: Path) -> DownloadError:
    """What a disk said about `path`."""
    if error.errno in (errno.ENOSPC, errno.EDQUOT):
        return DownloadError(f"Kein Platz mehr auf dem Datenträger: {path}")
    if error.errno in (errno.EACCES, errno.EPERM, errno.EROFS):
        return DownloadError(f"Keine Schreibrechte: {path}")
    return DownloadError(f"{error.strerror or error}: {path}")
