"""Child processes that end with their owner."""

import ctypes
import os
import signal
import subprocess
import time

_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None)


def _die_with_parent():
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGTERM, 0, 0, 0)


class Children:
    """Processes that are ended, the last one first, when the context is left."""

    def __init__(self):
        self._processes = []

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop_all()

    def start(self, command, **options):
        """Starts `command` (a list). It dies with this process, even if that is killed, but not
        by a Ctrl-C at the terminal: the order in which things end is ours."""
        options.setdefault("stdin", subprocess.DEVNULL)
        process = subprocess.Popen(command, preexec_fn=_die_with_parent, start_new_session=True,
                                   **options)
        self._processes.append(process)
        return process

    def stop(self, process, patience=5.0):
        """Ends one process: politely, and after `patience` seconds for good."""
        if process.poll() is None:
            process.terminate()
            try:
                process.wait(patience)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        if process in self._processes:
            self._processes.remove(process)

    def stop_all(self):
        while self._processes:
            self.stop(self._processes[-1])


def end_on_signals():
    """Lets SIGTERM and SIGHUP unwind the program like Ctrl-C does, so that everything is ended."""

    def unwind(number, _frame):
        raise SystemExit(128 + number)

    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, unwind)


# Seconds that anything is waited for. Only a broken program makes a test wait so long; a machine that
# several suites share makes it wait for a while.
PATIENCE = 120.0


class Timeout(Exception):
    """A condition did not come true in time."""


def wait_until(condition, what, limit=PATIENCE, interval=0.02):
    """Returns the first true value of `condition`; raises `Timeout` after `limit` seconds."""
    deadline = time.monotonic() + limit
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise Timeout(f"waited {limit:g} s in vain for: {what}")
        time.sleep(interval)


def processes_with(variable, value):
    """The processes that have `variable` in their environment, which children inherit: {pid:
    command line}. Those that have ended and wait for their parent are left out."""
    wanted = f"{variable}={value}".encode()
    found = {}
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            with open(f"/proc/{entry}/environ", "rb") as file:
                if wanted not in file.read().split(b"\0"):
                    continue
            with open(f"/proc/{entry}/cmdline", "rb") as file:
                command = file.read().replace(b"\0", b" ").decode(errors="replace").strip()
        except OSError:
            continue
        found[int(entry)] = command
    return found
