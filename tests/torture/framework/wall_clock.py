"""The wall clock of programs, which can be set: see clock/WallClock.cpp."""

import mmap
import os
import struct
import time


class WallClock:
    """For programs that are started with its `environment`."""

    def __init__(self, folder):
        file = folder / "clock"
        file.write_bytes(bytes(8))
        with file.open("r+b") as opened:
            self._shift = mmap.mmap(opened.fileno(), 8)
        self._seconds = 0
        self.environment = {"LD_PRELOAD": os.environ["ORVANE_TORTURE_CLOCK"], "ORVANE_CLOCK": str(file)}

    def move(self, seconds):
        """Sets it forth, or back, by so much."""
        self._seconds += seconds
        # All eight bytes at once.
        self._shift[:] = struct.pack("=q", self._seconds * 10**9)

    def now(self):
        """What it shows, in seconds since 1970."""
        return time.time() + self._seconds
