"""The program itself, running on a private desktop."""

import json
import os
import pathlib
import random
import socket
import subprocess
import threading
import urllib.request

from .processes import PATIENCE, Timeout, processes_with, wait_until

BACKEND_PORT = 8765


def free_port():
    """A port that nobody uses right now, below those that Linux gives out by itself."""
    while True:
        port = random.randrange(12000, 32000)
        try:
            for kind in (socket.SOCK_STREAM, socket.SOCK_DGRAM):
                with socket.socket(type=kind) as probe:
                    probe.bind(("127.0.0.1", port))
            return port
        except OSError:
            continue


def port_is_open(port):
    with socket.socket() as probe:
        probe.settimeout(1.0)
        return probe.connect_ex(("127.0.0.1", port)) == 0


def write_settings(desktop, settings):
    """Sets keys in the private home's store before the program starts."""
    file = settings_file(desktop)
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(json.dumps({**read_settings(desktop), **settings}), encoding="utf-8")


def read_settings(desktop):
    file = settings_file(desktop)
    return json.loads(file.read_text(encoding="utf-8")) if file.exists() else {}


def settings_file(desktop):
    return desktop.home / ".config" / "orvane" / "defaults.json"


class PausingReader:
    """Reads what a program prints, as a pager does that somebody may leave alone for a while, and
    copies it to the program's log file."""

    def __init__(self):
        self._output, self.input = os.pipe()
        self._reads = threading.Event()
        self._reads.set()
        self._thread = None

    def start(self, log_file):
        """Once the program has the pipe."""
        os.close(self.input)
        self._thread = threading.Thread(target=self._copy, args=(log_file,), daemon=True)
        self._thread.start()

    def wait_for_end(self):
        """Until everything that the program and its children have printed is in the file."""
        self._thread.join()

    def pause(self):
        self._reads.clear()

    def go_on(self):
        self._reads.set()

    def _copy(self, log_file):
        with open(self._output, "rb", buffering=0) as output, log_file.open("ab", buffering=0) as log:
            while self._reads.wait() and (piece := output.read(65536)):
                log.write(piece)


class Program:
    """`executable`, started on `desktop`. Everything it prints goes to a file, through `reader` if
    there is one.

    `started` holds all of this process's, oldest first."""

    started = []
    _MARK = "ORVANE_HARNESS_PROGRAM"

    def __init__(self, desktop, executable, arguments=(), environment=None, reader=None):
        self._desktop = desktop
        self.log_file = pathlib.Path(desktop.folder) / f"program-{len(Program.started) + 1}.log"
        self._mark = f"{desktop.folder.name}-{len(Program.started) + 1}"
        with self.log_file.open("wb") as log:
            self.process = desktop.children.start(
                [str(executable), *arguments],
                env={**desktop.environment, **(environment or {}), self._MARK: self._mark},
                stdout=reader.input if reader else log, stderr=subprocess.STDOUT)
        if reader:
            reader.start(self.log_file)
        self.pid = self.process.pid
        Program.started.append(self)

    def lines(self):
        return self.log_file.read_text(encoding="utf-8", errors="replace").splitlines()

    def wait_for_line(self, start, limit=PATIENCE):
        """Waits until a line that begins with `start` was printed; returns it."""

        def found():
            for line in self.lines():
                if line.startswith(start):
                    return line
            if self.process.poll() is not None:
                raise RuntimeError(f"the program ended ({self.process.returncode}):\n" + self.tail())
            return None

        try:
            return wait_until(found, f"the line {start!r} in the program's log", limit)
        except Timeout as error:
            raise Timeout(f"{error}; its end:\n{self.tail()}") from None

    def processes(self):
        """The program and everything it has started that still runs: {pid: command line}."""
        return processes_with(self._MARK, self._mark)

    def wait_until_nothing_is_left(self, limit=PATIENCE):
        wait_until(lambda: not self.processes(), "the end of everything the program started", limit)

    def tail(self, count=25):
        return "\n".join(self.lines()[-count:])

    def wait_for_end(self, limit=PATIENCE):
        """The exit status, once the program has ended by itself."""
        return self.process.wait(limit)

    def terminate(self, patience=PATIENCE):
        self._desktop.children.stop(self.process, patience)
        return self.process.returncode


class Overlay:
    """The program's browser overlay, read the way its page reads it."""

    def __init__(self, port):
        self.port = port
        self.url = f"http://127.0.0.1:{port}/overlay"

    def text(self):
        """The latest result, or None while the server does not answer."""
        try:
            with urllib.request.urlopen(f"http://127.0.0.1:{self.port}/text", timeout=5) as answer:
                return json.load(answer)
        except OSError:
            return None
