"""A recogniser behind `ws /v1/listen` in Deepgram's shape, as WhisperLiveKit has it.

One connection per utterance: `Metadata`, then sound in binary messages, `CloseStream`, and what is
left, `Metadata` and the end. That server closes on `Finalize` and on an empty binary message, so
neither is ever sent.
"""

import asyncio
import json
from typing import Any, Optional
from urllib.parse import urlencode

from ...audio import RECOGNITION_RATE, encode_pcm
from ...languages import AUTO, canonical, short
from .. import Recognition, Utterance, Word
from . import failure
from .answers import language_code, one_line, read_json, words_of
from .sockets import Conversing, while_sending

_PATH = "/v1/listen"
_BLOCK_BYTES = RECOGNITION_RATE // 10 * 2


class ListenRecogniser(Conversing):
    """Its answers of an utterance are those that the server calls final, joined."""

    def load(self) -> None:
        self.converse(self._greet())
        self.greeted("WhisperLiveKit")

    def recognise(self, utterance: Utterance) -> Recognition:
        if not len(utterance.samples):
            return Recognition("", self.language_of(utterance.language, None))
        finals = self.converse(self._heard(encode_pcm(utterance.samples), utterance.language))
        text = one_line(" ".join(final.text for final in finals))
        told = next((final.language for final in finals if final.language), None)
        words = tuple(word for final in finals for word in final.words)
        # All of them or none, so that the words are the text's.
        if not all(final.words for final in finals if final.text):
            words = ()
        return Recognition(text, self.language_of(utterance.language, told), words=words)

    async def _greet(self) -> None:
        async with self._listening(AUTO) as server:
            await self._metadata(server)
            await server.send(_CLOSE_STREAM)

    async def _heard(self, pcm: bytes, language: str) -> "list[_Final]":
        async with self._listening(language) as server:
            await self._metadata(server)
            try:
                async with asyncio.timeout(self.timings.answer):
                    return await while_sending(
                        lambda: _send(server, pcm), lambda: self._finals(server, len(pcm))
                    )
            except TimeoutError:
                raise failure("late", self.name, seconds=round(self.timings.answer)) from None

    def _listening(self, language: str) -> Any:
        query = {
            "encoding": "linear16",
            "sample_rate": str(RECOGNITION_RATE),
            "channels": "1",
            "interim_results": "true",
            "endpointing": "300",
        }
        if short(language) != AUTO:
            query["language"] = canonical(language)
        if self.named.model:
            query["model"] = self.named.model
        headers = {"Authorization": f"Token {self.named.key}"} if self.named.key else {}
        return self.connected(f"{_PATH}?{urlencode(query)}", headers)

    async def _metadata(self, server: Any) -> None:
        """Waits for the server's first word, which a refusal is instead."""
        message = await asyncio.wait_for(server.recv(), self.timings.greet)
        if (await self._read(server, message))["type"] != "Metadata":
            raise failure("unreadable", self.name)

    async def _finals(self, server: Any, length: int) -> "list[_Final]":
        """What the server has for final until it says that it is over: with the `Metadata` behind
        the last results. A connection that ends before has lost some of it."""
        finals: list[_Final] = []
        seconds = length / 2 / RECOGNITION_RATE
        while True:
            told = await self._read(server, await server.recv())
            if told["type"] == "Metadata":
                return finals
            if told["type"] == "Results" and told.get("is_final") is True:
                finals.append(_Final(told, seconds))

    async def _read(self, server: Any, message: Any) -> dict[str, Any]:
        told = read_json(message)
        if not isinstance(told, dict) or not isinstance(told.get("type"), str):
            raise failure("unreadable", self.name)
        if told["type"] == "Error":
            reason = told.get("description")
            raise await self.refused(server, reason if isinstance(reason, str) else "?")
        return told


_CLOSE_STREAM = json.dumps({"type": "CloseStream"})


class _Final:
    """One piece of the text that will not change any more."""

    def __init__(self, results: dict[str, Any], seconds: float) -> None:
        channel = results.get("channel")
        channel = channel if isinstance(channel, dict) else {}
        alternatives = channel.get("alternatives")
        first = alternatives[0] if isinstance(alternatives, list) and alternatives else {}
        first = first if isinstance(first, dict) else {}
        text = first.get("transcript")
        self.text = one_line(text) if isinstance(text, str) else ""
        self.language = _language(channel, first)
        self.words = _words(first.get("words"), self.text, seconds)


def _language(channel: dict[str, Any], alternative: dict[str, Any]) -> Optional[str]:
    languages = alternative.get("languages")
    first = languages[0] if isinstance(languages, list) and languages else None
    return language_code(channel.get("detected_language")) or language_code(first)


def _words(pieces: Any, text: str, seconds: float) -> tuple[Word, ...]:
    if not isinstance(pieces, list) or not all(isinstance(piece, dict) for piece in pieces):
        return ()
    return words_of([{**piece, "word": _spelt(piece)} for piece in pieces], text, seconds)


def _spelt(piece: dict[str, Any]) -> Any:
    return piece.get("punctuated_word") or piece.get("word")


async def _send(server: Any, pcm: bytes) -> None:
    for start in range(0, len(pcm), _BLOCK_BYTES):
        await server.send(pcm[start : start + _BLOCK_BYTES])
    await server.send(_CLOSE_STREAM)
