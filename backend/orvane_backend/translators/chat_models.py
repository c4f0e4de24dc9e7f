"""Which of a chat server's models translates."""

import re
from dataclasses import dataclass
from typing import AbstractSet, Any, Callable, Iterable, Optional

# Parts of the names of models that do not chat. The short ones count only as words of their own.
_OTHERS = re.compile(
    r"embed|nomic|minilm|rerank|whisper|tts|openclip|siglip"
    r"|(?<![a-z0-9])(?:bge-|e5-|gte-|clip(?![a-z]))"
)
_FIRST = ("mistral", "ministral")


@dataclass(frozen=True)
class Listing:
    """The models of a server in its order, and what server it seems to be: "ollama", "llama.cpp",
    "vllm", or empty when it does not show."""

    models: tuple[str, ...]
    kind: str = ""


def listing(record: Any) -> Listing:
    """From the answer to `/models`. Raises ValueError when it is none."""
    entries = record.get("data") if isinstance(record, dict) else None
    # A server without a model sends null.
    if entries is None and isinstance(record, dict) and record.get("object") == "list":
        entries = []
    if not isinstance(entries, list):
        raise ValueError("no list of models")
    known = [one for one in entries if isinstance(one, dict) and isinstance(one.get("id"), str)]
    models = tuple(one["id"] for one in known if one["id"])
    return Listing(models, next(filter(None, map(_kind, known)), ""))


def _kind(entry: dict[str, Any]) -> str:
    owner = entry.get("owned_by")
    if owner == "library":
        return "ollama"
    if owner == "llamacpp" or "meta" in entry:
        return "llama.cpp"
    if owner == "vllm" or "max_model_len" in entry:
        return "vllm"
    return ""


def in_order(models: Iterable[str], without: AbstractSet[str] = frozenset()) -> list[str]:
    """The models that may chat, the one to ask first at the beginning."""
    chatting = [one for one in models if one not in without and not is_other(one)]
    return sorted(chatting, key=lambda one: not any(name in short_name(one) for name in _FIRST))


def is_other(model: str) -> bool:
    """Whether a name is one of a model for something else than to chat."""
    return _OTHERS.search(short_name(model)) is not None


def named(wish: str, models: Iterable[str]) -> Optional[str]:
    """The listed model that a person means: its whole name, without a tag, or without a folder."""
    known = list(models)
    forms: tuple[Callable[[str], str], ...] = (str, _without_tag, short_name)
    for form in forms:
        for model in known:
            if form(model) == form(wish):
                return model
    return None


def _without_tag(model: str) -> str:
    return model.removesuffix(":latest")


def short_name(model: str) -> str:
    """The name in small letters without folders: some servers name a model by its file."""
    return re.split(r"[/\\]", model.lower())[-1]


def shown_name(model: str) -> str:
    """As a person reads it."""
    return re.split(r"[/\\]", model)[-1].removesuffix(":latest").removesuffix(".gguf")


def can_chat(shown: Any) -> Optional[bool]:
    """From ollama's answer about one model; none when it does not say."""
    able = shown.get("capabilities") if isinstance(shown, dict) else None
    if not isinstance(able, list) or not able:
        return None
    return "completion" in able
