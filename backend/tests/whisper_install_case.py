"""`scripts/install-backend` with packages of Whisper, which pip takes from a folder of a test."""

import contextlib
import os
import re
import select
import shutil
import signal
import socket
import subprocess
import tempfile
import unittest
from pathlib import Path
from typing import Callable, Iterator, Optional

from tests.child_case import ChildCase
from tests.wheels import make_faster_whisper

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "install-backend"
_LIMIT_SECONDS = 300.0
_FIRST: list[tempfile.TemporaryDirectory[str]] = []


def first_home() -> Path:
    """A home with a plain installation, made once, for tests to copy."""
    if not _FIRST:
        _FIRST.append(tempfile.TemporaryDirectory(prefix="first home "))
        unittest.addModuleCleanup(lambda: _FIRST.pop().cleanup())
        subprocess.run(
            [str(SCRIPT), "--home", _FIRST[0].name], stdout=subprocess.DEVNULL, check=True, cwd="/"
        )
    return Path(_FIRST[0].name)


class WhisperInstallCase(ChildCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="Jürgens häusliches Heim ")
        self.addCleanup(folder.cleanup)
        self.wheels = Path(folder.name) / "wheels"
        self.wheels.mkdir()
        self.more: dict[str, str] = {}
        self.use(Path(folder.name) / "home")
        make_faster_whisper(self.wheels)

    def use(self, home: Path) -> None:
        """Has the person live there; the server is installed already."""
        shutil.copytree(first_home(), home, symlinks=True)
        self.home = home
        self.folder = home / "Library" / "Application Support" / "Orvane"
        self.venv = self.folder / "venv"
        self.python = self.venv / "bin" / "python3"

    def environment(self) -> dict[str, str]:
        """As the person has configured pip, and nothing else of this machine's pip."""
        usual = {name: value for name, value in os.environ.items() if name[:4] != "PIP_"}
        return {
            **usual, "HOME": str(self.home), "LC_ALL": "C.UTF-8", "PIP_NO_INDEX": "1",
            "PIP_FIND_LINKS": self.wheels.as_uri(), "PIP_CONFIG_FILE": os.devnull,
            **self.more,
        }  # fmt: skip

    def start(
        self, *arguments: str, before: Optional[Callable[[], None]] = None
    ) -> "subprocess.Popen[str]":
        return self.spawn([str(SCRIPT), *arguments], self.environment(), before)

    def rest_of(self, process: "subprocess.Popen[str]") -> list[str]:
        assert process.stdout is not None
        return process.stdout.read().splitlines()

    def read_until(self, process: "subprocess.Popen[str]", part: str) -> None:
        assert process.stdout is not None
        lines = []
        for line in process.stdout:
            if part in line:
                return
            lines.append(line)
        self.fail(f"no line with {part!r} in {lines}")

    def install(
        self, *arguments: str, status: int = 0, before: Optional[Callable[[], None]] = None
    ) -> list[str]:
        process = self.start(*arguments, before=before)
        lines = self.rest_of(process)
        self.assertEqual(process.wait(), status, lines)
        return lines

    def imports(self, statement: str, python: Optional[Path] = None) -> bool:
        """Whether a statement runs in the environment that is in use."""
        ended = subprocess.run(
            [str(python or self.python), "-B", "-c", statement], cwd="/", env=self.environment(),
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
        )  # fmt: skip
        return ended.returncode == 0

    @contextlib.contextmanager
    def server(self) -> Iterator[int]:
        """The installed server at work; gives its port."""
        process = subprocess.Popen(
            [str(self.python), str(self.folder / "backend" / "server.py")], cwd="/",
            env={**self.environment(), "ORV_PORT": "0", "ORV_BIND_HOST": "127.0.0.1"},
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
        )  # fmt: skip
        with process:
            assert process.stdout is not None
            line = process.stdout.readline()
            found = re.search(r":(\d+)\s*$", line)
            try:
                assert found is not None, line
                yield int(found.group(1))
            finally:
                process.send_signal(signal.SIGTERM)

    def answers(self, port: int) -> bool:
        """Whether whoever listens there speaks HTTP, as a server of WebSockets does."""
        with socket.create_connection(("127.0.0.1", port), _LIMIT_SECONDS) as connection:
            connection.settimeout(_LIMIT_SECONDS)
            connection.sendall(b"GET / HTTP/1.1\r\nHost: localhost\r\n\r\n")
            return connection.recv(100).startswith(b"HTTP/1.1 ")

    def works(self) -> None:
        """The environment and the server are as good as ever."""
        self.assertTrue(self.imports("import websockets, numpy, pip"))
        with self.server() as port:
            self.assertTrue(self.answers(port))

    def assert_nothing_runs(self) -> None:
        """Nothing that was started for this home is left; it may need a moment for its end."""
        for number in self._running():
            with contextlib.suppress(ProcessLookupError):
                descriptor = os.pidfd_open(number)
                ended, _, _ = select.select([descriptor], [], [], _LIMIT_SECONDS)
                os.close(descriptor)
                self.assertTrue(ended, number)
        self.assertEqual(self._running(), [])

    def _running(self) -> list[int]:
        found = []
        for process in Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                if os.fsencode(self.home) in (process / "cmdline").read_bytes():
                    found.append(int(process.name))
        return found
