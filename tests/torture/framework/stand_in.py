"""A speech server that stands in for the real one in a private home: it is there at once, gives a result
for each chunk, and behaves as it is told.

How it behaves is read from a file at its start: words out of
  well    as it should
  crash   ends at once, with a last word
  deaf    neither SIGTERM nor SIGINT ends it
  talks   prints a numbered line again and again; the numbers go on from server to server
"""

import asyncio
import itertools
import json
import os
import pathlib
import re
import signal
import sys
import threading

from harness.program import BACKEND_PORT

from . import DESKTOP_TESTS

LAST_WORD = "the stand-in gives up"

_PACKAGES = pathlib.Path(__file__).resolve().parents[1]
_LINE_SECONDS = 0.05
_REST = 200 * "."  # Of a line: a disk without a free block may have room for a while in one that is in use.


class StandIn:
    """The one in the home of a stage; what the program starts is `serve`."""

    def __init__(self, stage):
        self._folder = stage.support / "backend"
        self._spoken = stage.temporary / "spoken"
        interpreter = stage.support / "venv" / "bin" / "python3"
        for folder in (self._folder, interpreter.parent):
            folder.mkdir(parents=True, exist_ok=True)
        interpreter.symlink_to(sys.executable)
        (self._folder / "server.py").write_text(
            "import sys\n"
            "sys.dont_write_bytecode = True\n"
            f"sys.path[:0] = [{str(_PACKAGES)!r}, {str(DESKTOP_TESTS)!r}]\n"
            "from framework.stand_in import serve\n"
            f"serve({str(self._folder)!r}, {str(self._spoken)!r})\n")
        self.behave("well")

    def behave(self, words):
        """From its next start on."""
        (self._folder / "behaviour").write_text(words)

    @staticmethod
    def pid(program):
        """The one that runs now, or None."""
        return next((pid for pid, command in program.processes().items() if "server.py" in command), None)

    def spoken(self):
        """How many lines it has printed so far."""
        return int(self._spoken.read_text()) if self._spoken.exists() else 0

    @staticmethod
    def lines_in(log):
        """The numbers of its lines in the program's log of it, in their order."""
        return [int(number) for number in re.findall(rf"^line (\d+) {re.escape(_REST)}$", log, re.MULTILINE)]


def result_of(text):
    """(pid of its server, number) of a result's source text, or None."""
    match = re.fullmatch(r"Chunk (\d+) of server (\d+)", text)
    return (int(match[2]), int(match[1])) if match else None


def serve(folder, spoken):
    words = (pathlib.Path(folder) / "behaviour").read_text().split()
    if "crash" in words:
        print(LAST_WORD, flush=True)
        sys.exit(3)
    if "deaf" in words:
        for ignored in (signal.SIGTERM, signal.SIGINT):
            signal.signal(ignored, signal.SIG_IGN)
    if "talks" in words:
        threading.Thread(target=_talk, args=(pathlib.Path(spoken),), daemon=True).start()
    asyncio.run(_listen())


def _talk(file):
    first = int(file.read_text()) if file.exists() else 0
    pause = threading.Event()
    for number in itertools.count(first + 1):
        print(f"line {number} {_REST}", flush=True)
        # Replaced: who reads it meanwhile must not find a half.
        (new := file.with_suffix(".new")).write_text(str(number))
        new.replace(file)
        pause.wait(_LINE_SECONDS)


async def _listen():
    import websockets
    numbers = itertools.count(1)

    async def answer(client):
        try:
            async for text in client:
                for message in _answers(json.loads(text).get("type"), numbers):
                    await client.send(json.dumps(message))
        except websockets.ConnectionClosed:
            pass

    async with websockets.serve(answer, "127.0.0.1", BACKEND_PORT, max_size=None):
        await asyncio.get_running_loop().create_future()


def _answers(kind, numbers):
    if kind == "audio":
        what = f"{next(numbers)} of server {os.getpid()}"
        return [{"type": "translation", "original": f"Chunk {what}", "translation": f"Trozo {what}"},
                {"type": "processed"}]
    return [{"type": "flushed"}] if kind == "flush" else []
