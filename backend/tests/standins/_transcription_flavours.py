"""In what the servers behind `/v1/audio/transcriptions` differ, and how each words its answers."""

import json
from dataclasses import dataclass
from typing import Any, Callable, Optional, Sequence

from ._http import Reply, json_reply, text_reply

OPENAI_PATH = "/v1/audio/transcriptions"
_ENGLISH_NAMES = {
    "ar": "arabic", "cs": "czech", "da": "danish", "de": "german", "en": "english",
    "es": "spanish", "fr": "french", "it": "italian", "ja": "japanese", "ko": "korean",
    "nl": "dutch", "pl": "polish", "pt": "portuguese", "ru": "russian", "sv": "swedish",
    "tr": "turkish", "uk": "ukrainian", "zh": "chinese",
}  # fmt: skip


@dataclass(frozen=True)
class Flavour:
    name: str
    error: Callable[[int, str], Reply]
    path: str = OPENAI_PATH
    key_refusal: Optional[int] = 401  # None: knows no key.
    has_models: bool = True
    needs_model: Optional[int] = None  # The status when none is named.
    checks_model: bool = False
    unloaded_health: Optional[int] = None  # /health while loading.
    bad_sound: int = 400
    bad_field: int = 400
    raw_types: Sequence[str] = ()  # Content types of samples without a header.
    one_at_a_time: bool = False
    verbose_by_default: bool = False
    ends_stream: bool = False  # With "data: [DONE]".

    def health(self, loading: bool) -> Optional[Reply]:
        """None where there is no such page."""
        if self.name == "speaches":
            return json_reply({"message": "OK"})
        if self.name == "whisperlivekit":
            return json_reply({"status": "ok", "backend": "faster-whisper", "ready": not loading})
        if self.unloaded_health is None:
            return None
        if loading:
            return json_reply({"status": "loading model"}, self.unloaded_health)
        return json_reply({"status": "ok"})

    def loading(self) -> Reply:
        if self.name == "whisper_cpp":
            return json_reply({"status": "loading model"}, 503)
        return self.error(503, "the model is being loaded")

    def models(self, installed: Sequence[str]) -> Reply:
        shown = installed[:1] if self.name == "whisperlivekit" else installed
        data = [{"id": name, "object": "model", "created": 0, "owned_by": ""} for name in shown]
        return json_reply({"object": "list", "data": data})

    def missing_model(self, name: str) -> str:
        if self.name == "speaches":
            return (
                f"Model '{name}' is not installed locally. You can download the model using "
                f"`POST /v1/models/{name}`"
            )
        return f"model '{name}' not found"

    def missing_file(self) -> str:
        if self.name == "whisper_cpp":
            return "no 'file' field in the request"
        return "file: Field required"

    def unreadable(self, why: str) -> str:
        return "failed to read audio data" if self.name == "whisper_cpp" else f"no audio: {why}"

    def text(self, segments: Sequence[str]) -> str:
        """The whole text, with what this server leaves around it."""
        if self.name == "whisper_cpp":
            return "".join(f" {segment}\n" for segment in segments)
        return " ".join(segments)

    def reply(self, form: str, segments: Sequence[str], seconds: float, language: str) -> Reply:
        """The answer in this `response_format`, one of FORMATS."""
        if form == "text":
            return text_reply(self.text(segments))
        if form in ("srt", "vtt"):
            return text_reply(_subtitles(form, segments, seconds))
        value: dict[str, Any] = {"text": self.text(segments)}
        if form == "verbose_json" or self.verbose_by_default:
            value = self._verbose(segments, seconds, language or "en")
        kind = "text/html" if self.name == "whisper_cpp" else "application/json"
        return json_reply(value, content_type=kind)

    def stream(self, segments: Sequence[str]) -> Reply:
        """The answer as events."""
        events: list[dict[str, str]] = [
            {"type": "transcript.text.delta", "delta": segment} for segment in segments
        ]
        events.append({"type": "transcript.text.done", "text": self.text(segments)})
        lines = [f"data: {json.dumps(event)}\n\n" for event in events]
        body = "".join(lines + ["data: [DONE]\n\n"] * self.ends_stream)
        return text_reply(body, content_type="text/event-stream", streamed=True)

    def _verbose(self, segments: Sequence[str], seconds: float, language: str) -> dict[str, Any]:
        if self.name == "whisper_cpp":
            language = _ENGLISH_NAMES.get(language, language)
        return {
            "task": "transcribe",
            "language": language,
            "duration": seconds,
            "text": self.text(segments),
            "segments": [
                {
                    "id": number, "text": self.text([segment]).rstrip("\n"),
                    "start": seconds * number / len(segments),
                    "end": seconds * (number + 1) / len(segments),
                    "tokens": [], "words": [], "temperature": 0.0, "avg_logprob": -0.3,
                    "no_speech_prob": 0.0,
                }
                for number, segment in enumerate(segments)
            ],
        }  # fmt: skip


FORMATS = ("json", "text", "verbose_json", "srt", "vtt")


def _detail(status: int, text: str) -> Reply:
    if status == 422:
        where, _, what = text.rpartition(": ")
        fault = {"type": "missing", "loc": ["body", where], "msg": what, "input": None}
        return json_reply({"detail": [fault]}, status)
    return json_reply({"detail": text}, status)


def _bare(status: int, text: str) -> Reply:
    return json_reply({"error": text}, status)


def _coded(status: int, text: str) -> Reply:
    error = {"code": status, "message": text, "type": "invalid_request_error"}
    return json_reply({"error": error}, status)


def _full(status: int, text: str) -> Reply:
    error = {"message": text, "type": "invalid_request_error", "param": None, "code": None}
    return json_reply({"error": error}, status)


def _subtitles(form: str, segments: Sequence[str], seconds: float) -> str:
    point = "," if form == "srt" else "."
    blocks = ["WEBVTT\n\n"] * (form == "vtt")
    for number, segment in enumerate(segments):
        times = [seconds * (number + more) / len(segments) for more in (0, 1)]
        first, last = (f"00:00:{time:06.3f}".replace(".", point) for time in times)
        head = f"{number + 1}\n" if form == "srt" else ""
        blocks.append(f"{head}{first} --> {last}\n{segment}\n\n")
    return "".join(blocks)


_ALL = (
    Flavour(
        "speaches", _detail, key_refusal=403, needs_model=422, checks_model=True, bad_sound=415,
        bad_field=422, raw_types=("audio/pcm", "audio/raw"),
    ),
    Flavour(
        "whisper_cpp", _bare, path="/inference", key_refusal=None, has_models=False,
        unloaded_health=503, one_at_a_time=True,
    ),
    Flavour(
        "localai", _coded, needs_model=400, checks_model=True, verbose_by_default=True,
        ends_stream=True,
    ),
    Flavour("whisperlivekit", _detail),
    Flavour("nemo", _full, needs_model=400, checks_model=True, unloaded_health=503),
)  # fmt: skip
FLAVOURS = {flavour.name: flavour for flavour in _ALL}
