"""What a server tells about itself before it hears anything."""

import re
from dataclasses import dataclass
from typing import Any, Optional

from .answers import read_json
from .transport import Answer

# One list for all: a server that lists nothing but recognisers knows the query, others pass it over.
MODELS_PATH = "/v1/models?task=automatic-speech-recognition"
HEALTH_PATH = "/health"

_SPEECH_TASK = "automatic-speech-recognition"
_MOST_MODELS = 1000
_LONGEST_NAME = 200

# Families of recognisers. A chat server's models are called otherwise.
_SPEECH_MODEL = re.compile(
    r"whisper|parakeet|canary|moonshine|sensevoice|paraformer|zipformer|conformer|wav2vec"
    r"|voxtral|(^|[^a-z])(asr|stt)([^a-z]|$)|transcri|speech-streaming|nemo-speech"
)


@dataclass(frozen=True)
class Model:
    """One that a server lists. `is_speech` when it recognises, as far as one can tell."""

    name: str
    is_speech: bool


@dataclass(frozen=True)
class Health:
    """What a server says of its health. `is_live` is one that recognises while sound comes in."""

    is_loading: bool = False
    is_plain: bool = False
    is_live: bool = False


def listed_models(answer: Optional[Answer]) -> Optional[list[Model]]:
    """The models of a list; none when the server has no such list."""
    value = read_json(answer.body) if answer is not None and answer.status == 200 else None
    data = value.get("data") if isinstance(value, dict) else None
    if not isinstance(data, list):
        return None
    models = (_model(entry) for entry in data[:_MOST_MODELS])
    return [model for model in models if model is not None]


def health(answer: Optional[Answer]) -> Health:
    """Reads a health page; a server without one is in good health."""
    if answer is None:
        return Health()
    value = read_json(answer.body)
    told = value if isinstance(value, dict) else {}
    live = isinstance(told.get("ready"), bool) and isinstance(told.get("backend"), str)
    return Health(
        is_loading=answer.status == 503 or (live and not told["ready"]),
        is_plain=told in ({"status": "ok"}, {"status": "loading model"}),
        is_live=live,
    )


def is_whisper_cpp(models: Optional[Answer], told: Health) -> bool:
    """Whether the answers are those of whisper.cpp's server, as far as they tell: it has no list of
    models, says so in plain text, and its health in one word."""
    return (
        models is not None
        and models.status == 404
        and read_json(models.body) is None
        and told.is_plain
    )


def product(models: Optional[Answer], health_page: Optional[Answer]) -> str:
    """The server's name where it can be told; empty where it cannot."""
    told = health(health_page)
    if told.is_live:
        return "WhisperLiveKit"
    if is_whisper_cpp(models, told):
        return "whisper.cpp"
    if health_page is not None and read_json(health_page.body) == {"message": "OK"}:
        return "Speaches"
    return ""


def only_speech_model(models: Optional[list[Model]]) -> str:
    """The model to name where the person named none: the one recogniser listed, or none."""
    speech = [model.name for model in models or [] if model.is_speech]
    return speech[0] if len(speech) == 1 else ""


def _model(entry: Any) -> Optional[Model]:
    name = entry.get("id") if isinstance(entry, dict) else None
    if not isinstance(name, str) or not 0 < len(name) <= _LONGEST_NAME or not name.isprintable():
        return None
    task = entry.get("task")
    if isinstance(task, str):
        return Model(name, task == _SPEECH_TASK)
    return Model(name, bool(_SPEECH_MODEL.search(name.lower())))
