"""The file that a download grows in until it is whole."""

import fcntl
import hashlib
import json
import os
from contextlib import suppress
from dataclasses import asdict, dataclass
from pathlib import Path
from typing import Callable, Optional

from . import disk_error


@dataclass(frozen=True)
class Source:
    """What the bytes of a part are the beginning of. `total` is None when nobody told."""

    address: str
    etag: str
    total: Optional[int]


class Part:
    """`NAME.part` beside the file it is to become, and `NAME.part.source`, which says what it is the
    beginning of, for the download that goes on with it another day.

    One process has it at a time; the lock goes with the process, however that ends. A context
    manager. Whatever the disk refuses is raised as DownloadError, with the bytes so far kept.
    """

    def __init__(self, target: Path, waiting: Callable[[], None] = lambda: None) -> None:
        """Waits while another process has the part; `waiting` is called before."""
        self._target = target
        self.path = target.with_name(target.name + ".part")
        self._note = target.with_name(target.name + ".part.source")
        try:
            self._descriptor = self._locked(waiting)
        except OSError as error:
            raise disk_error(error, self.path) from error
        self.length = os.fstat(self._descriptor).st_size
        self.source = self._read_source()

    def __enter__(self) -> "Part":
        return self

    def __exit__(self, *_: object) -> None:
        os.close(self._descriptor)

    def _locked(self, waiting: Callable[[], None]) -> int:
        while True:
            descriptor = os.open(self.path, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o644)
            try:
                fcntl.flock(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except BlockingIOError:
                waiting()
                fcntl.flock(descriptor, fcntl.LOCK_EX)
            # Whoever had it may have given it its final name, or removed it.
            with suppress(FileNotFoundError):
                if os.path.samestat(os.fstat(descriptor), os.stat(self.path)):
                    return descriptor
            os.close(descriptor)

    def _read_source(self) -> Optional[Source]:
        try:
            told = json.loads(self._note.read_text("utf-8"))
            source = Source(str(told["address"]), str(told["etag"]), told["total"])
        except (OSError, ValueError, KeyError, TypeError):
            return None
        is_usable = source.total is None or type(source.total) is int
        return source if is_usable else None

    def begin(self, source: Source) -> None:
        """Throws away what there is; what is appended from now on is of `source`."""
        try:
            # In this order the note never speaks of bytes that came from elsewhere.
            os.ftruncate(self._descriptor, 0)
            self.length = 0
            self._note.write_text(json.dumps(asdict(source)), "utf-8")
        except OSError as error:
            raise disk_error(error, self.path) from error
        self.source = source

    def forget(self) -> None:
        """Throws away what there is."""
        try:
            os.ftruncate(self._descriptor, 0)
            self._note.unlink(missing_ok=True)
        except OSError as error:
            raise disk_error(error, self.path) from error
        self.length = 0
        self.source = None

    def append(self, data: bytes) -> None:
        """Writes at the end."""
        rest = memoryview(data)
        try:
            while rest:
                written = os.pwrite(self._descriptor, rest, self.length)
                self.length += written
                rest = rest[written:]
        except OSError as error:
            raise disk_error(error, self.path) from error

    def digest(self) -> str:
        """The SHA-256 of what is there, read from the disk again."""
        return digest_of(self.path)

    def finish(self) -> None:
        """Gives the file its final name, once all of it is on the disk."""
        try:
            os.fsync(self._descriptor)
            os.rename(self.path, self._target)
            self._note.unlink(missing_ok=True)
            _sync_folder(self._target.parent)
        except OSError as error:
            raise disk_error(error, self._target) from error

    def discard(self) -> None:
        """Removes the part and what belongs to it."""
        try:
            self._note.unlink(missing_ok=True)
            self.path.unlink(missing_ok=True)
        except OSError as error:
            raise disk_error(error, self.path) from error
        self.length = 0
        self.source = None


def digest_of(path: Path) -> str:
    """The SHA-256 of a file, in hexadecimal. Raises DownloadError when it cannot be read."""
    try:
        with path.open("rb") as file:
            return hashlib.file_digest(file, "sha256").hexdigest()
    except OSError as error:
        raise disk_error(error, path) from error


def _sync_folder(folder: Path) -> None:
    descriptor = os.open(folder, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
    try:
        os.fsync(descriptor)
    finally:
        os.close(descriptor)
