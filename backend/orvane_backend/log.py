"""Log lines on standard output that never stop the server.

The lines go to whoever started the server. That program may be gone (the pipe is broken) or stuck
(the pipe is full) while the server lives on, so a thread of its own writes them: a broken output
loses lines, a stuck one loses lines once a thousand wait, and nobody else notices.
"""

import io
import queue
import sys
import threading
from typing import Optional, TextIO


class LineWriter:
    """Writes lines to a stream from its own thread. `write` may be called from any thread."""

    def __init__(self, stream: TextIO, limit: int = 1000) -> None:
        self._stream = stream
        self._lines: "queue.Queue[Optional[str]]" = queue.Queue(limit)
        self._thread = threading.Thread(target=self._run, name="log", daemon=True)
        self._thread.start()

    def write(self, line: str) -> None:
        """Queues one line; returns at once."""
        try:
            self._lines.put_nowait(line)
        except queue.Full:
            pass

    def close(self, seconds: float) -> None:
        """Writes what is queued, but waits no longer than the given time for it."""
        try:
            self._lines.put_nowait(None)
        except queue.Full:
            return
        self._thread.join(seconds)

    def _run(self) -> None:
        while (line := self._lines.get()) is not None:
            try:
                self._stream.write(line + "\n")
                self._stream.flush()
            except (OSError, ValueError):
                # A reader that has gone does not come back; the loop goes on to empty the queue.
                continue


_writer: Optional[LineWriter] = None


def start() -> None:
    """Sends log lines to standard output, as UTF-8 whatever the locale says."""
    global _writer
    if isinstance(sys.stdout, io.TextIOWrapper):
        sys.stdout.reconfigure(encoding="utf-8", errors="backslashreplace")
    _writer = LineWriter(sys.stdout)


def stop(seconds: float) -> None:
    """Writes what is queued, within the given time."""
    if _writer is not None:
        _writer.close(seconds)


def log(line: str) -> None:
    """Logs one line, from any thread; silent until `start` was called."""
    if _writer is not None:
        _writer.write(line)
