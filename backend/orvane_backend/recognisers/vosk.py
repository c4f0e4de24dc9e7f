"""A self-hosted Vosk server, through its WebSocket interface.

One connection per utterance: a text message with the sample rate, then blocks of PCM, each answered
by one JSON object ({"partial": …} while it goes on, {"text": …} when a sentence ended), then
{"eof": 1}, answered by the last {"text": …}.
"""

import asyncio
import json
from typing import Any

from ..audio import RECOGNITION_RATE, Samples, encode_pcm
from ..languages import AUTO, short
from ..websocket import WebSocketException, connect
from . import Recogniser, RecogniserError, Recognition

_BLOCK_BYTES = RECOGNITION_RATE // 2
_CONNECT_SECONDS = 2.0
_ANSWER_SECONDS = 30.0


class VoskRecogniser(Recogniser):
    """The server's model decides the language; the configured one is taken for it."""

    parallel = 4

    def __init__(self, host: str, port: int) -> None:
        self._address = f"ws://{f'[{host}]' if ':' in host else host}:{port}"
        self.name = f"Vosk ({host}:{port})"

    def load(self) -> None:
        self._run(self._greet())

    def recognise(self, samples: Samples, language: str) -> Recognition:
        text: str = self._run(self._transcribe(encode_pcm(samples)))
        # Without a configured language English is the best guess: most servers' models are.
        return Recognition(text, "en" if short(language) == AUTO else short(language))

    def _run(self, work: Any) -> Any:
        try:
            return asyncio.run(work)
        except (OSError, asyncio.TimeoutError, WebSocketException) as error:
            reason = str(error) or "keine Antwort"
            raise RecogniserError(f"Vosk-Server {self._address}: {reason}") from error
        except (ValueError, AttributeError) as error:
            raise RecogniserError(f"Vosk-Server {self._address}: unlesbare Antwort") from error

    def _connect(self) -> Any:
        return connect(self._address, open_timeout=_CONNECT_SECONDS, close_timeout=1)

    async def _greet(self) -> None:
        async with self._connect():
            pass

    async def _transcribe(self, pcm: bytes) -> str:
        sentences = []
        async with self._connect() as server:
            await server.send(json.dumps({"config": {"sample_rate": RECOGNITION_RATE}}))
            for start in range(0, len(pcm), _BLOCK_BYTES):
                await server.send(pcm[start : start + _BLOCK_BYTES])
                sentences.append(await _answer(server))
            await server.send(json.dumps({"eof": 1}))
            sentences.append(await _answer(server))
        return " ".join(filter(None, sentences))


async def _answer(server: Any) -> str:
    message = await asyncio.wait_for(server.recv(), _ANSWER_SECONDS)
    return str(json.loads(message).get("text", "")).strip()
