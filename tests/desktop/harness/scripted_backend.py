"""A speech server that says what the test wants, whatever it hears."""

import json
import pathlib
import subprocess
import sys

from .program import BACKEND_PORT


class ScriptedBackend:
    """Listens on the speech server's port, where the program takes it for one that somebody else
    has started. Whoever configures a run is sent every message of `script`."""

    def __init__(self, desktop, script=()):
        self._process = desktop.children.start(
            [sys.executable, "-m", "harness.scripted_backend"],
            env={**desktop.environment, "PYTHONDONTWRITEBYTECODE": "1"},
            cwd=pathlib.Path(__file__).resolve().parents[1],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._desktop = desktop
        self._wait_for_answer()
        self.set_script(script)

    def set_script(self, script, finishes=True):
        """What runs are sent from now on: dictionaries, as the speech server would write them.
        One that does not finish leaves the end of a run waiting for its last words."""
        order = {"script": list(script), "finishes": finishes}
        self._process.stdin.write(json.dumps(order) + "\n")
        self._process.stdin.flush()
        self._wait_for_answer()

    def stop(self):
        self._desktop.children.stop(self._process)

    def _wait_for_answer(self):
        if not self._process.stdout.readline():
            raise RuntimeError("the scripted speech server ended")


def result(original, translation):
    return {"type": "translation", "original": original, "translation": translation}


def status(kind, message):
    return {"type": "status", "status": kind, "message": message}


async def _serve():
    import asyncio

    import websockets

    order = {}

    async def talk(client, _path=None):
        async for message in client:
            kind = json.loads(message).get("type")
            if kind == "config":
                for answer in order["script"]:
                    await client.send(json.dumps(answer))
            elif kind == "flush" and order["finishes"]:
                await client.send(json.dumps({"type": "flushed"}))

    async with websockets.serve(talk, "127.0.0.1", BACKEND_PORT, max_size=None):
        print("ready", flush=True)
        loop = asyncio.get_running_loop()
        while line := await loop.run_in_executor(None, sys.stdin.readline):
            order.update(json.loads(line))
            print("changed", flush=True)


if __name__ == "__main__":
    import asyncio

    asyncio.run(_serve())
