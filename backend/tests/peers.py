"""The server as a process, and a client that talks to it."""

import asyncio
import base64
import json
import os
import re
import subprocess
import sys
import threading
from pathlib import Path
from typing import Any, Optional

from orvane_backend.websocket import connect

_SERVER = Path(__file__).resolve().parent.parent / "server.py"
# The longest recognition among the tests takes seconds, and a busy machine many times as long.
_SECONDS = 120.0


class ServerProcess:
    """`server.py` on a free port with a home of its own; a context manager that ends it."""

    def __init__(self, home: Path, **environment: str) -> None:
        variables = {
            **os.environ, "HOME": str(home), "ORV_PORT": "0",
            "ORV_CHAT_URL": "http://127.0.0.1:9/v1",
            **environment,
        }  # fmt: skip
        # From the root folder: the server is started with no working directory in mind.
        self.process = subprocess.Popen(
            [sys.executable, str(_SERVER)], env=variables, cwd="/", stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
        )  # fmt: skip
        assert self.process.stdout is not None
        self.first_line = self.process.stdout.readline()
        self.lines: list[str] = []
        self._reader = threading.Thread(target=self._read, daemon=True)
        found = re.search(r"127\.0\.0\.1:(\d+)|0\.0\.0\.0:(\d+)", self.first_line)
        self.port = int(found.group(1) or found.group(2)) if found else 0

    def read_log(self) -> None:
        """Goes on reading the server's lines into `lines`, so that its output never fills up."""
        self._reader.start()

    def _read(self) -> None:
        assert self.process.stdout is not None
        for line in self.process.stdout:
            self.lines.append(line.rstrip("\n"))

    def __enter__(self) -> "ServerProcess":
        return self

    def __exit__(self, *_: object) -> None:
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        if self._reader.is_alive():
            self._reader.join()
        assert self.process.stdout is not None
        self.process.stdout.close()


class Client:
    """One connection. Every wait has an end: a server that keeps silent fails the test."""

    def __init__(self, connection: Any) -> None:
        self._connection = connection
        self.processed = 0

    @classmethod
    async def connect(cls, port: int, host: str = "127.0.0.1", **options: Any) -> "Client":
        return cls(await connect(f"ws://{host}:{port}", max_size=None, **options))

    async def __aenter__(self) -> "Client":
        return self

    async def __aexit__(self, *_: object) -> None:
        await self.close()

    async def close(self) -> None:
        await self._connection.close(1001)

    def stop_reading(self) -> None:
        """Takes nothing more out of the socket."""
        self._connection.transport.pause_reading()

    async def vanish(self) -> None:
        """Cuts the connection without a word."""
        self._connection.transport.abort()
        await self._connection.wait_closed()

    async def send(self, message: Any) -> None:
        """Sends text or bytes as they are, anything else as JSON."""
        await self._connection.send(
            message if isinstance(message, (str, bytes)) else json.dumps(message)
        )

    async def config(self, **keys: Any) -> None:
        await self.send({"type": "config", "sourceLang": "en", "targetLang": "en", **keys})

    async def audio(self, pcm: bytes, rate: int = 48000) -> None:
        data = base64.b64encode(pcm).decode()
        await self.send({"type": "audio", "sample_rate": rate, "format": "int16", "data": data})

    async def next(self) -> dict[str, Any]:
        return json.loads(await asyncio.wait_for(self._connection.recv(), _SECONDS))

    async def until(self, kind: str, status: Optional[str] = None) -> list[dict[str, Any]]:
        """All messages up to the next of this type (and status), with it."""
        messages = []
        while True:
            messages.append(await self.next())
            if messages[-1]["type"] == kind and status in (None, messages[-1].get("status")):
                return messages

    async def flush(self) -> list[dict[str, Any]]:
        """Asks for a flush; all messages before the confirmation but for "processed", which are
        counted in `processed`."""
        await self.send({"type": "flush"})
        messages = (await self.until("flushed"))[:-1]
        others = [message for message in messages if message["type"] != "processed"]
        self.processed += len(messages) - len(others)
        return others


def results(messages: list[dict[str, Any]]) -> list[tuple[str, str]]:
    """The result pairs among messages."""
    return [(m["original"], m["translation"]) for m in messages if m["type"] == "translation"]
