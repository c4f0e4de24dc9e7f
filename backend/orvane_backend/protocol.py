"""The messages of the link, both directions, as functions from values to values.

Every message is one JSON object with a string "type". Upstream: "config", "audio", "flush",
"stop". Downstream: "status", "translation", "processed", "flushed".
"""

import base64
import binascii
import json
from dataclasses import dataclass, field, fields
from typing import Any, Union

from . import BACKEND_VERSION
from .notices import Notice

# The largest message a client may send, in bytes of UTF-8.
MAX_MESSAGE_BYTES = 16 * 1024 * 1024

DEFAULT_SAMPLE_RATE = 48000
SAMPLE_RATES = range(8000, 192001)


class BadMessage(ValueError):
    """A message that cannot be used. The text says why, for the person at the client."""


@dataclass(frozen=True)
class Config:
    """A client's wishes. The names are the keys of the message; what is missing has the default."""

    sourceLang: str = "auto"
    targetLang: str = "de"
    saveTranscript: bool = False
    saveSRT: bool = False
    showOriginal: bool = True
    whisperModel: str = "base"
    sttEngine: str = "whisper"
    engineApiKey: str = field(default="", repr=False)
    skipTranslation: bool = False
    engineRegion: str = ""
    engineServiceAccountPath: str = ""
    engineProjectId: str = ""
    engineLocation: str = ""
    engineHost: str = "localhost"
    enginePort: int = 2700


@dataclass(frozen=True)
class ConfigMessage:
    """A configuration; `problems` names the keys that were not usable and kept their default."""

    config: Config
    problems: tuple[str, ...] = ()


@dataclass(frozen=True)
class AudioMessage:
    """One chunk: signed 16-bit little-endian PCM, one channel, at `sample_rate`."""

    pcm: bytes
    sample_rate: int

    @property
    def seconds(self) -> float:
        """The chunk's length."""
        return len(self.pcm) / 2 / self.sample_rate


@dataclass(frozen=True)
class FlushMessage:
    """Asks for a "flushed" once everything sent before is answered."""


@dataclass(frozen=True)
class StopMessage:
    """Ends a run."""


@dataclass(frozen=True)
class UnknownMessage:
    """A message of a type this version does not know."""

    type: str


Message = Union[ConfigMessage, AudioMessage, FlushMessage, StopMessage, UnknownMessage]


def parse(frame: Union[str, bytes]) -> Message:
    """Reads one text frame, or binary frame holding UTF-8. Raises BadMessage with the reason."""
    if _byte_count(frame) > MAX_MESSAGE_BYTES:
        raise BadMessage(f"Nachricht zu groß (mehr als {MAX_MESSAGE_BYTES // 2**20} MB)")
    record = _json_object(frame)
    kind = record.get("type")
    if not isinstance(kind, str):
        raise BadMessage('"type" fehlt oder ist kein Text')
    if kind == "config":
        return _config(record)
    if kind == "audio":
        return _audio(record)
    if kind == "flush":
        return FlushMessage()
    if kind == "stop":
        return StopMessage()
    return UnknownMessage(kind)


def _byte_count(frame: Union[str, bytes]) -> int:
    if isinstance(frame, bytes) or frame.isascii():
        return len(frame)
    return len(frame.encode("utf-8", "surrogatepass"))


def _json_object(frame: Union[str, bytes]) -> dict[str, Any]:
    try:
        record = json.loads(frame if isinstance(frame, str) else frame.decode("utf-8"))
    except (ValueError, RecursionError):
        raise BadMessage("Nachricht ist kein gültiges JSON") from None
    if not isinstance(record, dict):
        raise BadMessage("Nachricht ist kein JSON-Objekt")
    return record


def _config(record: dict[str, Any]) -> ConfigMessage:
    values: dict[str, Any] = {}
    problems: list[str] = []
    for item in fields(Config):
        if item.name not in record:
            continue
        value = record[item.name]
        # Exactly the type: JSON's true must not pass for a port.
        if type(value) is not item.type or not _in_range(item.name, value):
            problems.append(item.name)
        elif value != "":
            values[item.name] = value
    return ConfigMessage(Config(**values), tuple(problems))


def _in_range(name: str, value: Any) -> bool:
    return name != "enginePort" or 1 <= value <= 65535


def _audio(record: dict[str, Any]) -> AudioMessage:
    rate = record.get("sample_rate", DEFAULT_SAMPLE_RATE)
    if type(rate) is not int or rate not in SAMPLE_RATES:
        raise BadMessage('Audio: "sample_rate" ist keine brauchbare Abtastrate')
    if record.get("format", "int16") != "int16":
        raise BadMessage('Audio: nur das Format "int16" wird verstanden')
    data = record.get("data")
    if not isinstance(data, str):
        raise BadMessage('Audio: "data" fehlt oder ist kein Text')
    try:
        pcm = base64.b64decode(data, validate=True)
    except (binascii.Error, ValueError):
        raise BadMessage('Audio: "data" ist kein gültiges Base64') from None
    if len(pcm) % 2 != 0:
        raise BadMessage("Audio: ungerade Anzahl Bytes")
    return AudioMessage(pcm, rate)


def status(value: str, told: Notice) -> str:
    """A status message. The values are those of the `STATUS_` names below.

    That nobody recognises comes with the reason of each who does not.
    """
    message = f"{_SIGNS.get(value, '')} {told.german}".strip()
    record: dict[str, Any] = {"type": "status", "status": value, "message": message}
    record.update(told.record())
    if told.because:
        record["recognition"] = [reason.record() for reason in told.because]
    return _text(record)


@dataclass(frozen=True)
class Serving:
    """Who recognises and who translates, each with what is to be told about it.

    The names are as a person reads them; `translator` is empty when nobody translates here.
    """

    recogniser: str
    translator: str = ""
    on_recognition: tuple[Notice, ...] = ()
    on_translation: tuple[Notice, ...] = ()


def serving(who: Serving) -> str:
    """The status "engine"."""
    return _text(
        {
            "type": "status",
            "status": STATUS_ENGINE,
            "message": german(who),
            "code": "engine.serving",
            "parameters": {"recogniser": who.recogniser, "translator": who.translator},
            "recognition": [told.record() for told in who.on_recognition],
            "translation": [told.record() for told in who.on_translation],
        }
    )


def german(who: Serving) -> str:
    """What the status "engine" says to a client that does not know its code."""
    message = f"🎙 Erkennung: {_with_notes(who.recogniser, who.on_recognition)}"
    if who.translator or who.on_translation:
        message += f" · 🌐 Übersetzung: {_with_notes(who.translator, who.on_translation)}"
    return message


def _with_notes(name: str, notes: tuple[Notice, ...]) -> str:
    told = "; ".join(note.german for note in notes)
    return f"{name} ({told})" if name and told else name or told


# What the client does on them: "model_loading" shows a model being loaded, "error" raises its
# engine error, "engine_loading", "engine" and "model_loaded" clear it; any other value is only
# shown.
STATUS_MODEL_LOADING = "model_loading"
STATUS_MODEL_LOADED = "model_loaded"
STATUS_ENGINE_LOADING = "engine_loading"
STATUS_ENGINE = "engine"
STATUS_ERROR = "error"
STATUS_WARNING = "warning"
STATUS_OVERLOADED = "overloaded"

# These say that something is wrong; when it is over, who serves is told anew.
DISTURBING = (STATUS_ERROR, STATUS_WARNING, STATUS_OVERLOADED)

_SIGNS = {
    STATUS_MODEL_LOADING: "⏳",
    STATUS_ENGINE_LOADING: "⏳",
    STATUS_MODEL_LOADED: "✓",
    STATUS_ERROR: "❌",
    STATUS_WARNING: "⚠️",
    STATUS_OVERLOADED: "⚠️",
}


def backend_version() -> str:
    """The first message on every connection."""
    return _text(
        {
            "type": "status",
            "status": "backend_version",
            "message": f"Backend v{BACKEND_VERSION}",
            "version": BACKEND_VERSION,
        }
    )


def translation(original: str, translated: str) -> str:
    """A result. An empty translation leaves translating to the client."""
    return _text({"type": "translation", "original": original, "translation": translated})


def processed() -> str:
    """One more chunk is done with, whether it brought a result or not."""
    return _text({"type": "processed"})


def flushed() -> str:
    """Everything before the flush request is answered."""
    return _text({"type": "flushed"})


def _text(record: dict[str, Any]) -> str:
    # Escaped to ASCII: a lone surrogate that a client sent in a language code would not survive
    # UTF-8 otherwise.
    return json.dumps(record)
