"""The processes that a program has started, and what becomes of them when it has ended."""

import contextlib
import os
import pathlib
import signal

from harness.processes import Timeout, wait_until

# The watcher over the speech server has an environment of its own, so that it is known by its name.
_WATCHER = b"orvane-lifeline"


def _network(pid):
    return os.readlink(f"/proc/{pid}/ns/net")


def watchers():
    """Those in this process's network, which it has for itself: {pid: command line}."""
    own, found = _network("self"), {}
    for entry in pathlib.Path("/proc").iterdir():
        with contextlib.suppress(OSError):
            if entry.name.isdigit() and _WATCHER in (entry / "cmdline").read_bytes().split(b"\0") and (
                    _network(entry.name) == own):
                found[int(entry.name)] = _WATCHER.decode()
    return found


def remains(program):
    """Of a program that has ended: {pid: command line}."""
    return {**program.processes(), **watchers()}


def end_remains(program, limit):
    """Waits until nothing is left; returns what had to be ended by force, {pid: command line}."""
    with contextlib.suppress(Timeout):
        wait_until(lambda: not remains(program), "the end of everything", limit)
    left = remains(program)
    for pid in left:
        with contextlib.suppress(ProcessLookupError):
            os.kill(pid, signal.SIGKILL)
    wait_until(lambda: not remains(program), "the end of everything that was killed", limit)
    return left
