"""A speech server that says what it is told to say: it takes the place of the real one, so that the
moment of each result is known."""

import asyncio
import json
import threading
import time

import websockets


class SpeechServer:
    """A context: listens on `port` and takes everything the program sends."""

    def __init__(self, port):
        self._port = port
        self._loop = asyncio.new_event_loop()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._listening = threading.Event()
        self._clients = set()

    def __enter__(self):
        self._thread.start()
        if not self._listening.wait(10):
            raise RuntimeError("the speech server's stand-in does not listen")
        return self

    def __exit__(self, *_):
        self._loop.call_soon_threadsafe(self._finished.set_result, None)
        self._thread.join()

    def publish(self, original, translation):
        """Sends a result to the program; returns time.monotonic() of just before."""
        message = json.dumps({"type": "translation", "original": original,
                              "translation": translation})

        async def send():
            moment = time.monotonic()
            for client in self._clients:
                await client.send(message)
            return moment

        return asyncio.run_coroutine_threadsafe(send(), self._loop).result(5)

    def has_client(self):
        return bool(self._clients)

    def _run(self):
        asyncio.set_event_loop(self._loop)
        self._loop.run_until_complete(self._serve())

    async def _serve(self):
        self._finished = self._loop.create_future()
        async with websockets.serve(self._client, "127.0.0.1", self._port, max_size=None):
            self._listening.set()
            await self._finished

    async def _client(self, client, *_):
        self._clients.add(client)
        try:
            async for message in client:
                kind = json.loads(message).get("type")
                if kind == "flush":
                    await client.send(json.dumps({"type": "flushed"}))
        except websockets.ConnectionClosed:
            pass
        finally:
            self._clients.discard(client)
