"""A Vosk server on loopback, of the Python kind or of the C++ kind.

In a test `with VoskServer() as server:` and `server.port`; as a process, in the folder backend,
`python3 -m tests.standins.vosk_server`, whose first line is "listening on PORT".
"""

import argparse
import asyncio
import json
import threading
from dataclasses import dataclass
from typing import Any, Optional

from orvane_backend.websocket import ConnectionClosed, serve

from .vosk_recogniser import Options, Recogniser

EOF = '{"eof" : 1}'
RESET = '{"reset" : 1}'


@dataclass(frozen=True)
class Behaviour:
    """How the server is, and what goes wrong with it."""

    kind: str = "python"  # Or "cpp": knows no config, everything else is sound.
    sample_rate: float = 8000  # Unless a config says another.
    words: bool = True
    max_alternatives: int = 0
    models: tuple[str, ...] = ()  # Paths that a config may name.
    dies_after: Optional[int] = None  # Drops the connection in place of the answer after so many.
    silent_after: Optional[int] = None  # Reads on, but answers no more after so many.
    holds_after: Optional[int] = None  # Waits for `go_on` after so many answers.
    delay: float = 0.0  # Seconds before each answer.


class _Broken(Exception):
    """What kills a connection: the library closes it with 1011."""


class VoskServer:
    """Runs in a thread of its own. `log` has what came, as pairs: ("config", {...}), ("audio",
    bytes), ("eof", text), ("reset", text), ("text", what is no message), ("closed", None)."""

    def __init__(self, port: int = 0, **behaviour: Any) -> None:
        self.behaviour = Behaviour(**behaviour)
        if self.behaviour.kind not in ("python", "cpp"):
            raise ValueError(self.behaviour.kind)
        self.port = port
        self.log: list[tuple[str, Any]] = []
        self.connections = 0
        self.answers: list[str] = []
        self._changed = threading.Condition()
        self._loop = asyncio.new_event_loop()
        self._ready = threading.Event()
        self._failure: Optional[BaseException] = None
        self._thread = threading.Thread(target=self._run, daemon=True)

    def __enter__(self) -> "VoskServer":
        self._thread.start()
        self._ready.wait()
        if self._failure is not None:
            self._thread.join()
            raise self._failure
        return self

    def __exit__(self, *_: object) -> None:
        self._loop.call_soon_threadsafe(self._stop.set)
        self._thread.join()

    def go_on(self) -> None:
        """Ends `holds_after`."""
        self._loop.call_soon_threadsafe(self._released.set)

    def events(self, kind: str) -> list[Any]:
        """What came of this kind."""
        with self._changed:
            return [value for name, value in self.log if name == kind]

    def sound(self) -> bytes:
        """All sound of all connections."""
        return b"".join(self.events("audio"))

    def wait_for(self, kind: str, count: int = 1, seconds: float = 60.0) -> bool:
        """Whether so many of this kind come."""
        with self._changed:
            return self._changed.wait_for(
                lambda: sum(name == kind for name, _ in self.log) >= count, seconds
            )

    def _note(self, kind: str, value: Any) -> None:
        with self._changed:
            self.log.append((kind, value))
            self._changed.notify_all()

    def _run(self) -> None:
        asyncio.set_event_loop(self._loop)
        try:
            self._loop.run_until_complete(self._serve())
        except BaseException as failure:
            self._failure = failure
        finally:
            self._ready.set()
            self._loop.close()

    async def _serve(self) -> None:
        self._stop, self._released = asyncio.Event(), asyncio.Event()
        async with serve(self._handle, host="127.0.0.1", port=self.port) as listening:
            self.port = next(iter(listening.sockets)).getsockname()[1]
            self._ready.set()
            await self._stop.wait()

    async def _handle(self, connection: Any) -> None:
        self.connections += 1
        handler = _Python if self.behaviour.kind == "python" else _Cpp
        try:
            await handler(self, connection).run()
        except ConnectionClosed:
            pass
        finally:
            self._note("closed", None)

    async def _answer(self, connection: Any, count: int, text: str) -> None:
        behaviour = self.behaviour
        if behaviour.delay:
            await asyncio.sleep(behaviour.delay)
        if behaviour.holds_after is not None and count >= behaviour.holds_after:
            await self._released.wait()
        if behaviour.dies_after is not None and count >= behaviour.dies_after:
            connection.transport.abort()
            await connection.wait_closed()
            return
        if behaviour.silent_after is not None and count >= behaviour.silent_after:
            return
        self.answers.append(text)
        await connection.send(text)


class _Conversation:
    """One client. Its recogniser is made when the first message comes that is no config."""

    def __init__(self, server: VoskServer, connection: Any) -> None:
        behaviour = server.behaviour
        self.server = server
        self.connection = connection
        self.options = Options(behaviour.sample_rate, behaviour.words, behaviour.max_alternatives)
        self.recogniser: Optional[Recogniser] = None
        self.count = 0

    async def run(self) -> None:
        """Until the end of the conversation."""
        while await self.take(await self.connection.recv()):
            pass

    async def take(self, message: Any) -> bool:
        """Whether the conversation goes on."""
        raise NotImplementedError

    async def answer(self, text: str) -> None:
        """The one answer to a message."""
        await self.server._answer(self.connection, self.count, text)
        self.count += 1

    async def settled(self, message: Any) -> Optional[bool]:
        """Deals with the messages that both kinds know; None for others."""
        if self.recogniser is None:
            self.recogniser = Recogniser(self.options)
        if message == EOF or message == RESET:
            self.server._note("eof" if message == EOF else "reset", message)
            await self.answer(self.recogniser.result())
            return message == RESET
        if isinstance(message, bytes):
            self.server._note("audio", message)
            await self.answer(self.recogniser.accept(message))
            return True
        self.server._note("text", message)
        return None


class _Python(_Conversation):
    async def take(self, message: Any) -> bool:
        if isinstance(message, str) and "config" in message:
            self._configure(json.loads(message)["config"])
            return True
        going_on = await self.settled(message)
        if going_on is None:
            raise _Broken("text was fed to the recogniser")
        return going_on

    def _configure(self, config: dict[str, Any]) -> None:
        """Without an answer; what comes after the first audio changes nothing."""
        self.server._note("config", config)
        if "model" in config:
            if config["model"] not in self.server.behaviour.models:
                raise _Broken("Failed to create a model")
            self.recogniser = None
        if "phrase_list" in config and not isinstance(config["phrase_list"], list):
            raise _Broken("phrase_list is no list")
        known = self.options
        self.options = Options(
            float(config.get("sample_rate", known.sample_rate)),
            bool(config.get("words", known.words)),
            int(config.get("max_alternatives", known.max_alternatives)),
            tuple(config.get("phrase_list", known.phrase_list)),
        )


class _Cpp(_Conversation):
    async def take(self, message: Any) -> bool:
        going_on = await self.settled(message)
        if going_on is None:
            # Whatever it says, it is sound, and gets its answer.
            assert self.recogniser is not None
            await self.answer(self.recogniser.accept(message.encode()))
            return True
        if not going_on:
            # It reads once more before it closes.
            await self.connection.recv()
        return going_on


def main() -> None:
    """A server of its own process, until it is ended."""
    parser = argparse.ArgumentParser(description="A stand-in of a Vosk server.")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--kind", choices=("python", "cpp"), default="python")
    parser.add_argument("--sample-rate", type=float, default=8000)
    parser.add_argument("--max-alternatives", type=int, default=0)
    parser.add_argument("--no-words", dest="words", action="store_false")
    parser.add_argument("--dies-after", type=int)
    parser.add_argument("--silent-after", type=int)
    parser.add_argument("--delay", type=float, default=0.0)
    with VoskServer(**vars(parser.parse_args())) as server:
        print(f"listening on {server.port}", flush=True)
        threading.Event().wait()


if __name__ == "__main__":
    main()
