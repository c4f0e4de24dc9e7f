"""A speech server that says what it is told to say, whatever it hears."""

import asyncio
import contextlib
import json
import pathlib
import subprocess
import sys
import time

from .processes import wait_until
from .program import BACKEND_PORT, port_is_open


class ScriptedBackend:
    """Listens on the speech server's port, where the program takes it for one that somebody else
    has started. Whoever configures a run is sent every message of `script`."""

    def __init__(self, desktop, script=()):
        wait_until(lambda: not port_is_open(BACKEND_PORT), "the speech server's port to be free", 60)
        self._process = desktop.children.start(
            [sys.executable, "-m", "harness.scripted_backend"],
            env={**desktop.environment, "PYTHONDONTWRITEBYTECODE": "1"},
            cwd=pathlib.Path(__file__).resolve().parents[1],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._desktop = desktop
        self._answer()
        self.set_script(script)

    def set_script(self, script, finishes=True):
        """What runs are sent from now on: dictionaries, as the speech server would write them.
        One that does not finish leaves the end of a run waiting for its last words."""
        self._ask(script=list(script), finishes=finishes)

    def publish(self, message):
        """Sends `message` to every program that is connected, now; returns time.monotonic() of just
        before."""
        return self._ask(publish=message)["moment"]

    def hang_up(self):
        """On every program that is connected."""
        self._ask(hangs_up=True)

    def has_client(self):
        return self._ask()["clients"] > 0

    def configurations(self):
        """The configurations of all runs so far, oldest first, as they came."""
        return self._ask()["configurations"]

    def audio_messages(self):
        """How many messages with sound have come so far."""
        return self._ask()["audio_messages"]

    def stop(self):
        self._desktop.children.stop(self._process)

    def _ask(self, **order):
        self._process.stdin.write(json.dumps(order) + "\n")
        self._process.stdin.flush()
        return self._answer()

    def _answer(self):
        line = self._process.stdout.readline()
        if not line:
            raise RuntimeError("the scripted speech server ended")
        return json.loads(line)


def result(original, translation):
    return {"type": "translation", "original": original, "translation": translation}


def status(kind, message, told=None, **lists):
    """A status whose code and parameters are those of `told`, a `notice`; what there is to tell
    about "recognition" and "translation" in lists of them."""
    return {"type": "status", "status": kind, "message": message, **(told or {}), **lists}


def notice(code, **parameters):
    return {"code": code, "parameters": parameters}


def serve(script):
    """Is such a server in this very process, for good: what a program starts as its own."""
    asyncio.run(_Server(script).run_alone())


class _Server:
    def __init__(self, script=()):
        self._script = list(script)
        self._finishes = True
        self._clients = set()
        self._configurations = []
        self._audio_messages = 0

    def _listen(self):
        import websockets

        self._closed = websockets.ConnectionClosed
        return websockets.serve(self._talk, "127.0.0.1", BACKEND_PORT, max_size=None)

    async def run_alone(self):
        async with self._listen():
            await asyncio.get_running_loop().create_future()

    async def run(self):
        async with self._listen():
            print("{}", flush=True)
            loop = asyncio.get_running_loop()
            while line := await loop.run_in_executor(None, sys.stdin.readline):
                print(json.dumps(await self._obey(**json.loads(line))), flush=True)

    async def _obey(self, script=None, finishes=True, publish=None, hangs_up=False):
        if script is not None:
            self._script, self._finishes = script, finishes
        if hangs_up:
            for client in list(self._clients):
                await client.close()
        moment = None
        if publish is not None:
            message = json.dumps(publish)
            moment = time.monotonic()
            for client in list(self._clients):
                with contextlib.suppress(self._closed):
                    await client.send(message)
        return {"moment": moment, "clients": len(self._clients),
                "configurations": self._configurations, "audio_messages": self._audio_messages}

    async def _talk(self, client):
        self._clients.add(client)
        try:
            async for text in client:
                message = json.loads(text)
                kind = message.get("type")
                if kind == "config":
                    self._configurations.append(message)
                    for answer in self._script:
                        await client.send(json.dumps(answer))
                elif kind == "audio":
                    self._audio_messages += 1
                elif kind == "flush" and self._finishes:
                    await client.send(json.dumps({"type": "flushed"}))
        except self._closed:
            pass
        finally:
            self._clients.discard(client)


if __name__ == "__main__":
    asyncio.run(_Server().run())
