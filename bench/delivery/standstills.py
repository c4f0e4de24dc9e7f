"""Notes when the machine itself stands still, as a virtual one does while its host serves others.

    python3 standstills.py CPU

prints, until it is ended, one line "from to" (time.monotonic(), in seconds) for each time a process of
the highest priority on that processor was woken more than `_LATE` later than it had asked for: no
program can hold such a process up, so none can run meanwhile. It needs the right to such a priority
(root has it) and ends with status 1 without it.
"""

import contextlib
import os
import pathlib
import subprocess
import sys
import threading
import time

_STEP = 0.001
_LATE = 0.001


class Standstills:
    """Watches every processor from processes of their own, for as long as the context lasts.
    `watched` tells whether that was allowed."""

    def __init__(self):
        self._found = []
        self._watchers = []

    def __enter__(self):
        for processor in sorted(os.sched_getaffinity(0)):
            watcher = subprocess.Popen(
                [sys.executable, "-B", pathlib.Path(__file__).resolve(), str(processor)],
                stdout=subprocess.PIPE, text=True)
            reader = threading.Thread(target=self._read, args=(watcher,), daemon=True)
            reader.start()
            self._watchers.append((watcher, reader))
        return self

    def __exit__(self, *_):
        for watcher, reader in self._watchers:
            watcher.terminate()
            watcher.wait()
            reader.join()

    @property
    def watched(self):
        return all(watcher.poll() is None for watcher, _ in self._watchers)

    def seconds_between(self, begin, end):
        """How long of the time from `begin` to `end` at least one processor stood still."""
        total, reached = 0.0, begin
        for first, last in sorted(self._found):
            first, last = max(first, reached), min(last, end)
            if last > first:
                total, reached = total + last - first, last
        return total

    def _read(self, watcher):
        for line in watcher.stdout:
            first, last = line.split()
            self._found.append((float(first), float(last)))


def watch(processor):
    os.sched_setaffinity(0, {processor})
    try:
        os.sched_setscheduler(0, os.SCHED_FIFO, os.sched_param(os.sched_get_priority_max(os.SCHED_FIFO)))
    except PermissionError:
        return 1
    while True:
        due = time.monotonic() + _STEP
        time.sleep(_STEP)
        if (now := time.monotonic()) > due + _LATE:
            print(due, now, flush=True)


if __name__ == "__main__":
    with contextlib.suppress(KeyboardInterrupt):
        sys.exit(watch(int(sys.argv[1])))
