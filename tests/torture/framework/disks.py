"""Small disks for folders of a home, which can be filled and made read-only."""

import contextlib
import ctypes
import errno
import itertools
import os

from harness.processes import wait_until

_MS_RDONLY = 0x1
_MS_REMOUNT = 0x20
_MNT_DETACH = 0x2

_SIZE = "2m"    # Enough for all that a program writes in a run.
_ENTRIES = 200  # Files and folders.
_BLOCK = 4096

_libc = ctypes.CDLL(None, use_errno=True)


def _check(result):
    if result != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


class Disk:
    """A disk in memory in the place of `folder`, seen by this process, which has its mounts for itself
    (see harness.isolation), and by what it starts. A context."""

    def __init__(self, folder):
        self._folder = folder

    def __enter__(self):
        self._folder.mkdir(mode=0o700, parents=True, exist_ok=True)
        _check(_libc.mount(b"tmpfs", str(self._folder).encode(), b"tmpfs", 0,
                           f"size={_SIZE},nr_inodes={_ENTRIES},mode=0700".encode()))
        return self

    def __exit__(self, *_):
        _check(_libc.umount2(str(self._folder).encode(), _MNT_DETACH))

    @contextlib.contextmanager
    def full(self):
        """Neither a byte nor a name finds room inside the context."""
        fillers = []
        try:
            with open(self._new(fillers), "wb", buffering=0) as file:
                self._fill(lambda: file.write(bytes(_BLOCK)))
            self._fill(lambda: self._new(fillers).touch(exist_ok=False))
            yield
        finally:
            for filler in fillers:
                filler.unlink(missing_ok=True)

    @contextlib.contextmanager
    def read_only(self):
        """Begins as soon as nobody has a file on it open for writing."""
        self._remount(_MS_RDONLY)
        try:
            yield
        finally:
            self._remount(0)

    def _new(self, fillers):
        fillers.append(self._folder / f"filler-{len(fillers)}")
        return fillers[-1]

    @staticmethod
    def _fill(act):
        for _ in itertools.count():
            try:
                act()
            except OSError as error:
                if error.errno != errno.ENOSPC:
                    raise
                return

    def _remount(self, flags):
        def done():
            try:
                _check(_libc.mount(b"none", str(self._folder).encode(), None, _MS_REMOUNT | flags,
                                   f"size={_SIZE},nr_inodes={_ENTRIES},mode=0700".encode()))
            except OSError as error:
                if error.errno != errno.EBUSY:
                    raise
                return False
            return True

        wait_until(done, "nobody to write")
