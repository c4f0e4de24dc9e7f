"""A server of `ws /v1/listen` in Deepgram's shape as WhisperLiveKit has it, which is not all of it."""

import asyncio
import json
import math
import re
from dataclasses import dataclass, field
from typing import Any, Mapping, Optional

from . import _http
from ._http import Reply
from ._segments import Heard, Segments
from ._wav import RATE, Hearing, describe, is_silent, raw_samples
from ._websocket import Upgrade, WebSocketStandIn, drop, say

_IDENTIFIER = "5d0e1f6a-0000-4000-8000-000000000001"
_KNOWN = {
    "encoding", "sample_rate", "channels", "interim_results", "endpointing", "language",
    "utterance_end_ms", "vad_events", "token",
}  # fmt: skip


class _Refused(Exception):
    """Closes the conversation after an Error that says this."""

    def __init__(self, description: str, code: int = 4400) -> None:
        super().__init__(description)
        self.code = code


@dataclass
class Conversation:
    """What one client said and sent."""

    upgrade: Upgrade
    ignored: tuple[str, ...] = ()  # Parameters this server does not know.
    messages: list[Mapping[str, Any]] = field(default_factory=list)
    seconds: float = 0.0
    speaking: bool = False


class ListenServer(WebSocketStandIn):
    """`conversations` holds what came. `hear` says what is heard; `on_silence` is heard instead
    where nobody speaks. After `idle` seconds without any message it closes. After `drops_after`
    seconds of sound the connection ends without a word. A wrong key is met by close 4401, or by
    `key_status` instead of the upgrade."""

    def __init__(
        self,
        *,
        hear: Hearing = describe,
        on_silence: Optional[str] = None,
        key: Optional[str] = None,
        key_status: Optional[int] = None,
        idle: float = 30.0,
        drops_after: float = math.inf,
        **options: Any,
    ) -> None:
        super().__init__(**options)
        self.conversations: list[Conversation] = []
        self._hear = hear
        self._on_silence = on_silence
        self._key = key
        self._key_status = key_status
        self._idle = idle
        self._drops_after = drops_after
        self._connections: set[Any] = set()

    def refuse(self, request: Upgrade) -> Optional[Reply]:
        if request.path != "/v1/listen":
            return Reply(403)
        return Reply(self._key_status) if self._key_status and not self._knows(request) else None

    def say(self, message: Mapping[str, object]) -> None:
        """Sends this to all that listen, besides what they get anyway."""

        async def to_all() -> None:
            for connection in list(self._connections):
                await say(connection, message)

        self.call(to_all())

    async def talk(self, connection: Any, request: Upgrade) -> None:
        unknown = tuple(name for name in request.query if name not in _KNOWN)
        conversation = Conversation(request, unknown)
        self.conversations.append(conversation)
        self._connections.add(connection)
        try:
            if not self._knows(request):
                raise _Refused("the key is wrong", 4401)
            _check_query(request.query)
            await say(connection, _metadata(conversation))
            await self._listen(connection, conversation)
        except _Refused as refused:
            error = {"type": "Error", "description": str(refused), "request_id": _IDENTIFIER}
            await say(connection, error)
            await connection.close(refused.code, str(refused)[:60])
        finally:
            self._connections.discard(connection)

    async def _listen(self, connection: Any, conversation: Conversation) -> None:
        query = conversation.upgrade.query
        pause = query.get("endpointing", "300")
        after = math.inf if pause == "false" else max(int(pause) / 1000, 0.01)
        segments = Segments(step=1.0, after=after, before=5.0, longest=math.inf)
        while True:
            message = await self._received(connection)
            if isinstance(message, str):
                if not self._control(conversation, message):
                    break
                continue
            await self._take(connection, conversation, segments, message)
        await say(connection, self._results(segments.finish(), query))
        await say(connection, _metadata(conversation))
        await connection.close(1000)

    async def _received(self, connection: Any) -> Any:
        try:
            return await asyncio.wait_for(connection.recv(), self._idle)
        except asyncio.TimeoutError:
            raise _Refused("no message for too long", 1011) from None

    def _control(self, conversation: Conversation, message: str) -> bool:
        """False when it is the last."""
        try:
            value = json.loads(message)
            kind = value["type"]
        except (ValueError, TypeError, KeyError):
            raise _Refused("a text message that is no control message") from None
        with self._changed:
            conversation.messages.append(value)
            self._changed.notify_all()
        if kind not in ("KeepAlive", "CloseStream"):
            raise _Refused(f"{kind} is not supported")
        return bool(kind == "KeepAlive")

    async def _take(
        self, connection: Any, conversation: Conversation, segments: Segments, data: bytes
    ) -> None:
        if not data:
            raise _Refused("an empty binary frame")
        if len(data) % 2:
            self.fault("half a sample")
        samples = raw_samples(data[: len(data) // 2 * 2])
        with self._changed:
            conversation.seconds += len(samples) / RATE
            self._changed.notify_all()
        query = conversation.upgrade.query
        for heard in segments.take(samples):
            if heard.spoken and not conversation.speaking and query.get("vad_events") == "true":
                begin = {"type": "SpeechStarted", "channel": [0, 1], "timestamp": heard.start}
                await say(connection, begin)
            conversation.speaking = heard.spoken and not heard.ends
            if heard.ends or query.get("interim_results") == "true":
                await say(connection, self._results(heard, query))
            if heard.ends and "utterance_end_ms" in query:
                end = {"type": "UtteranceEnd", "channel": [0, 1], "last_word_end": segments.start}
                await say(connection, end)
        if conversation.seconds >= self._drops_after:
            drop(connection)

    def _results(self, heard: Heard, query: Mapping[str, str]) -> Mapping[str, object]:
        if self._on_silence is not None and is_silent(heard.samples):
            text = self._on_silence
        else:
            text = " ".join(self._hear(heard.samples).split("\n"))
        alternative = {"transcript": text, "confidence": 0.0, "words": []}
        return {
            "type": "Results",
            "channel_index": [0, 1],
            "start": heard.start,
            "duration": len(heard.samples) / RATE,
            "is_final": heard.ends,
            "speech_final": heard.ends and heard.spoken,
            "channel": {"alternatives": [alternative]},
            "metadata": {"request_id": _IDENTIFIER},
            "from_finalize": False,
        }

    def _knows(self, request: Upgrade) -> bool:
        """Whether the key is right, or none is asked for."""
        if self._key is None or request.query.get("token") == self._key:
            return True
        scheme, _, key = request.headers.get("authorization", "").partition(" ")
        return scheme.lower() in ("token", "bearer") and key == self._key


def _check_query(query: Mapping[str, str]) -> None:
    wanted = {
        "encoding": "linear16", "sample_rate": "16000", "channels": "1",
        "interim_results": "true|false", "endpointing": r"false|\d{1,5}", "vad_events": "true|false",
        "language": "auto|multi|[a-z]{2,3}(-[A-Za-z0-9]+)*", "utterance_end_ms": r"\d{4}",
    }  # fmt: skip
    for name in ("encoding", "sample_rate"):
        if name not in query:
            raise _Refused(f"{name} is needed")
    for name, pattern in wanted.items():
        if name in query and not re.fullmatch(pattern, query[name]):
            raise _Refused(f"{name} cannot be {query[name]}")
    if "utterance_end_ms" in query:
        if not 1000 <= int(query["utterance_end_ms"]) <= 5000:
            raise _Refused("utterance_end_ms has to be 1000 to 5000")
        if query.get("interim_results") != "true":
            raise _Refused("utterance_end_ms needs interim_results")


def _metadata(conversation: Conversation) -> Mapping[str, object]:
    return {
        "type": "Metadata",
        "request_id": _IDENTIFIER,
        "created": "2026-01-01T00:00:00.000Z",
        "duration": conversation.seconds,
        "channels": 1,
        "models": ["base"],
    }


def main() -> None:
    parser = _http.options(str(__doc__))
    parser.add_argument("--text", help="what is heard, whatever comes")
    parser.add_argument("--on-silence", help="what is heard in silence")
    parser.add_argument("--idle", type=float, default=30.0, help="seconds without a message")
    given = parser.parse_args()
    hear: Hearing = describe if given.text is None else lambda samples: str(given.text)
    stand_in = ListenServer(
        hear=hear, on_silence=given.on_silence, key=given.key, idle=given.idle, port=given.port
    )
    _http.run(stand_in, given.log)


if __name__ == "__main__":
    main()
