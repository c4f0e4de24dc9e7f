"""Programs that this one runs and that end with it, however it ends."""

import ctypes
import os
import selectors
import signal
import subprocess
import time
from contextlib import contextmanager, suppress
from pathlib import Path
from typing import Callable, Iterator, Mapping, Optional, Sequence

from . import Interrupted

_LOOK_SECONDS = 0.5
_PATIENCE_SECONDS = 0.5
_PR_SET_PDEATHSIG = 1

_libc = ctypes.CDLL(None, use_errno=True)


def _dies_with_parent() -> None:
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGTERM)


def end_on_signals() -> None:
    """SIGINT, SIGTERM and SIGHUP raise Interrupted from now on."""

    def raised(number: int, _frame: object) -> None:
        ignore_signals()  # once is enough, and the way out is not to be broken off
        raise Interrupted(number)

    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, raised)


def ignore_signals() -> None:
    """What follows is short, and better done than broken off."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)


class Child:
    """A running program in a process group of its own, its output in one pipe. A context manager
    that leaves nothing of it running."""

    def __init__(
        self, command: Sequence[str], environment: Optional[Mapping[str, str]] = None
    ) -> None:
        # A signal that has been ignored here would be ignored there, too.
        self._process = subprocess.Popen(
            command, env=environment, cwd="/", stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=_dies_with_parent,
        )  # fmt: skip

    def __enter__(self) -> "Child":
        return self

    def __exit__(self, *_: object) -> None:
        self.end()
        assert self._process.stdout is not None
        self._process.stdout.close()

    def lines(self, look: Callable[[], None], seconds: float = float("inf")) -> Iterator[str]:
        """What it prints, until it closes its output; `look` is called every now and then
        meanwhile. When time is up it is ended."""
        assert self._process.stdout is not None
        descriptor = self._process.stdout.fileno()
        rest = b""
        last = time.monotonic() + seconds
        with selectors.DefaultSelector() as selector:
            selector.register(descriptor, selectors.EVENT_READ)
            while time.monotonic() < last:
                is_there = bool(selector.select(_LOOK_SECONDS))
                look()
                if not is_there:
                    continue
                piece = os.read(descriptor, 1 << 16)
                *whole, rest = (rest + piece).replace(b"\r", b"\n").split(b"\n")
                yield from (line.decode("utf-8", "replace") for line in whole)
                if not piece:
                    break
            else:
                self.end()
        if rest:
            yield rest.decode("utf-8", "replace")

    def ended(self) -> int:
        """Waits for its end; the exit status, or a signal's number below zero."""
        if self._process.returncode is None:
            os.waitid(os.P_PID, self._process.pid, os.WEXITED | os.WNOWAIT)
            self._reap()
        return self._process.wait()

    def end(self) -> None:
        """Ends it, and what it has started."""
        if self._process.returncode is not None:
            return
        with self._watched() as has_ended:
            self._send(signal.SIGTERM)
            has_ended.select(_PATIENCE_SECONDS)
        self._reap()

    def _reap(self) -> None:
        # What it has started itself is of the same group, whose number is nobody else's before the
        # leader has been waited for.
        self._send(signal.SIGKILL)
        self._process.wait()

    @contextmanager
    def _watched(self) -> Iterator[selectors.DefaultSelector]:
        descriptor = os.pidfd_open(self._process.pid)
        try:
            with selectors.DefaultSelector() as selector:
                selector.register(descriptor, selectors.EVENT_READ)
                yield selector
        finally:
            os.close(descriptor)

    def _send(self, number: int) -> None:
        with suppress(ProcessLookupError):
            os.killpg(self._process.pid, number)


def bytes_below(folder: Path) -> int:
    """How much the files in a folder take at the moment; it may change meanwhile."""
    total = 0
    for where, _, names in os.walk(folder):
        for name in names:
            with suppress(OSError):
                total += os.lstat(os.path.join(where, name)).st_size
    return total
