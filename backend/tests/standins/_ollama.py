"""ollama's own routes: what a model can do, loading one, and which are loaded."""

import re
from datetime import datetime, timedelta, timezone
from typing import Any, Callable, Optional

from ._http import Reply, Request, json_reply
from ._chat_flavours import is_embedding

_UNITS = {"ms": 0.001, "s": 1, "m": 60, "h": 3600}
USUAL = 300.0  # Seconds a model stays when nobody says otherwise.


class OllamaRoutes:
    """`loaded` holds for how many seconds each model stays; infinite is for ever."""

    def __init__(
        self,
        installed: Callable[[object], Optional[str]],
        models: list[str],
        load: Callable[[str], None],
        loaded: dict[str, float],
        thinking: bool,
    ) -> None:
        self._installed = installed
        self._models = models
        self._load = load
        self._loaded = loaded
        self._thinking = thinking

    def answer(self, request: Request) -> Optional[Reply]:
        """None where it has no such route."""
        route = (request.method, request.path)
        if route == ("GET", "/api/tags"):
            return json_reply({"models": [{"name": n, "model": n} for n in self._models]})
        if route == ("GET", "/api/ps"):
            return json_reply({"models": [self._shown(name) for name in self._loaded]})
        if route not in (("POST", "/api/show"), ("POST", "/api/generate")):
            return None
        try:
            body = request.json()
            asked = body["model"]
        except (ValueError, KeyError, TypeError):
            return json_reply({"error": "model is required"}, 400)
        name = self._installed(asked)
        if name is None:
            return json_reply({"error": f"model '{asked}' not found"}, 404)
        return self._show(name) if request.path == "/api/show" else self._generate(name, body)

    def _show(self, name: str) -> Reply:
        able = ["embedding"] if is_embedding(name) else ["completion"]
        if self._thinking and not is_embedding(name):
            able.append("thinking")
        return json_reply({"details": {"family": "llama"}, "capabilities": able})

    def _generate(self, name: str, body: Any) -> Reply:
        """Loads or unloads; this stand-in takes no prompt here."""
        if is_embedding(name):
            return json_reply({"error": f'"{_short(name)}" does not support generate'}, 400)
        if body.get("prompt"):
            return json_reply({"error": "this stand-in only loads models here"}, 500)
        try:
            stays = _seconds(body.get("keep_alive", USUAL))
        except ValueError as error:
            return json_reply({"error": str(error)}, 400)
        reason = "load"
        if stays == 0:
            self._loaded.pop(name, None)
            reason = "unload"
        else:
            self._load(name)
            self._loaded[name] = stays
        said: dict[str, object] = {"model": name, "created_at": _time(0), "response": ""}
        return json_reply({**said, "done": True, "done_reason": reason})

    def _shown(self, name: str) -> dict[str, object]:
        stays = min(self._loaded[name], 86_400.0 * 365 * 100)
        return {"name": name, "model": name, "size": 4_000_000_000, "expires_at": _time(stays)}


def not_for_chat(name: str) -> str:
    return f'"{_short(name)}" does not support chat'


def _short(name: str) -> str:
    return name.removesuffix(":latest")


def _seconds(value: object) -> float:
    """Fails with ValueError for what is no duration."""
    if isinstance(value, (int, float)) and not isinstance(value, bool):
        return float("inf") if value < 0 else float(value)
    found = re.fullmatch(r"(-?\d+(?:\.\d+)?)(ms|s|m|h)", value) if isinstance(value, str) else None
    if not found:
        raise ValueError(f"time: invalid duration {value!r}")
    number = float(found[1]) * _UNITS[found[2]]
    return float("inf") if number < 0 else number


def _time(seconds: float) -> str:
    return (datetime.now(timezone.utc) + timedelta(seconds=seconds)).isoformat()
