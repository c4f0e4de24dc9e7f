"""In what chat servers with OpenAI's interface differ, and how each words its answers."""

from dataclasses import dataclass
from typing import Any, Mapping, Optional, Sequence

from ._http import Reply, json_reply, text_reply

_OPENAI_FIELDS = {
    "model", "messages", "temperature", "top_p", "max_tokens", "max_completion_tokens", "stop",
    "stream", "stream_options", "seed", "n", "frequency_penalty", "presence_penalty", "user",
    "response_format", "logprobs", "top_logprobs", "logit_bias", "tools", "tool_choice",
    "reasoning_effort",
}  # fmt: skip
_OWN_FIELDS = {
    "ollama": {"reasoning"},
    "llama_cpp": {
        "top_k", "min_p", "repeat_penalty", "chat_template_kwargs", "cache_prompt", "n_predict",
        "reasoning_format",
    },
    "lmstudio": {"top_k", "repeat_penalty", "ttl"},
    "vllm": {
        "top_k", "min_p", "repetition_penalty", "chat_template_kwargs", "include_reasoning",
        "add_generation_prompt", "ignore_eos", "min_tokens",
    },
}  # fmt: skip
_MODELS: Mapping[str, Sequence[str]] = {
    "ollama": ("nomic-embed-text:latest", "mistral:latest", "qwen3:4b"),
    "llama_cpp": ("/srv/models/Mistral-Nemo-Instruct-2407-Q4_K_M.gguf",),
    "lmstudio": ("text-embedding-nomic-embed-text-v1.5", "mistral-nemo-instruct-2407"),
    "vllm": ("mistralai/Mistral-Nemo-Instruct-2407",),
}
_TYPES = {
    400: "invalid_request_error", 401: "authentication_error", 404: "not_found_error",
    503: "unavailable_error",
}  # fmt: skip


class Refused(Exception):
    """Carries the answer."""

    def __init__(self, reply: Reply) -> None:
        super().__init__(reply.status)
        self.reply = reply


@dataclass(frozen=True)
class Flavour:
    name: str
    reasoning_field: str
    checks_model: bool = True
    refuses_unknown: bool = False

    def default_models(self) -> Sequence[str]:
        return _MODELS[self.name]

    def unknown_fields(self, body: Mapping[str, Any]) -> list[str]:
        return sorted(set(body) - _OPENAI_FIELDS - _OWN_FIELDS[self.name])

    def error(self, status: int, text: str) -> Reply:
        error: dict[str, Any] = {"message": text, "type": _TYPES.get(status, "api_error")}
        if self.name == "lmstudio":
            return json_reply({"error": text}, status)
        if self.name == "llama_cpp":
            return json_reply({"error": {"code": status, **error}}, status)
        if self.name == "ollama":
            return json_reply({"error": {**error, "param": None, "code": None}}, status)
        if status == 401:
            return json_reply({"error": "Unauthorized"}, status)
        named = {400: "BadRequestError", 404: "NotFoundError"}.get(status, "InternalServerError")
        error = {"message": text, "type": named, "param": None, "code": status}
        return json_reply({"error": error}, status)

    def missing_model(self, model: str) -> Reply:
        texts = {
            "ollama": f"model '{model}' not found",
            "vllm": f"The model `{model}` does not exist.",
        }
        return self.error(404, texts.get(self.name, f'Model "{model}" is not there'))

    def unknown_path(self, path: str) -> Reply:
        if self.name == "ollama":
            return text_reply("404 page not found", 404)
        if self.name == "vllm":
            return json_reply({"detail": "Not Found"}, 404)
        return self.error(404, f"File Not Found: {path}")

    def full(self) -> Reply:
        if self.name == "ollama":
            text = "server busy, please try again.  maximum pending requests exceeded"
            return self.error(503, text)
        return self.error(503, "too many requests wait")

    def model(self, name: str, context: int, loading: bool) -> Mapping[str, object]:
        """One of `/v1/models`."""
        own = {"ollama": "library", "llama_cpp": "llamacpp", "vllm": "vllm"}
        shown: dict[str, object] = {
            "id": name,
            "object": "model",
            "created": 1_760_000_000,
            "owned_by": own.get(self.name, "organization_owner"),
        }
        if self.name == "llama_cpp":
            shown["meta"] = (
                None if loading else {"n_ctx_train": context, "n_params": 12_000_000_000}
            )
        if self.name == "vllm":
            shown.update(root=name, parent=None, max_model_len=context, permission=[])
        return shown

    def thinks_about(self, body: Mapping[str, Any]) -> bool:
        """Whether a model that thinks is not told to leave it."""
        if self.name == "ollama":
            effort = _part(body, "reasoning").get("effort", body.get("reasoning_effort"))
            return bool(effort != "none")
        if self.name == "lmstudio":
            return True
        if self.name == "llama_cpp" and body.get("reasoning_effort") == "none":
            return False
        return _part(body, "chat_template_kwargs").get("enable_thinking") is not False

    def check(self, body: Mapping[str, Any]) -> None:
        """Whether every field is of its type."""
        for wrong in _wrong_fields(body):
            raise Refused(self.error(400, f"{wrong} cannot be used"))
        if self.refuses_unknown and self.unknown_fields(body):
            text = f"Extra inputs are not permitted: {', '.join(self.unknown_fields(body))}"
            raise Refused(self.error(400, text))


def is_embedding(name: str) -> bool:
    return "embed" in name


def _part(body: Mapping[str, Any], name: str) -> Mapping[str, Any]:
    part = body.get(name)
    return part if isinstance(part, dict) else {}


def _wrong_fields(body: Mapping[str, Any]) -> list[str]:
    stop = body.get("stop")
    checks = {
        "messages": _are_messages(body.get("messages")),
        "model": isinstance(body.get("model", ""), str),
        "temperature": _is_number(body.get("temperature"), 0, 2),
        "top_p": _is_number(body.get("top_p"), 0, 1),
        "max_tokens": _is_count(body.get("max_tokens")),
        "max_completion_tokens": _is_count(body.get("max_completion_tokens")),
        "stream": isinstance(body.get("stream", False), bool),
        "stop": stop is None or isinstance(stop, str) or _are_texts(stop),
    }
    return [name for name, right in checks.items() if not right]


def _are_messages(value: object) -> bool:
    return isinstance(value, list) and bool(value) and all(_is_message(one) for one in value)


def _is_message(value: object) -> bool:
    if not isinstance(value, dict) or value.get("role") not in ("system", "user", "assistant"):
        return False
    content = value.get("content")
    if isinstance(content, list):
        return all(isinstance(one, dict) and one.get("type") == "text" for one in content)
    return isinstance(content, str)


def _are_texts(value: object) -> bool:
    return isinstance(value, list) and all(isinstance(one, str) for one in value)


def _is_number(value: Optional[object], least: float, most: float) -> bool:
    if value is None:
        return True
    number = isinstance(value, (int, float)) and not isinstance(value, bool)
    return number and least <= float(str(value)) <= most


def _is_count(value: Optional[object]) -> bool:
    return value is None or (type(value) is int and value > 0)


_ALL = (
    Flavour("ollama", "reasoning"),
    Flavour("llama_cpp", "reasoning_content", checks_model=False),
    Flavour("lmstudio", "reasoning_content"),
    Flavour("vllm", "reasoning", refuses_unknown=True),
)
FLAVOURS = {flavour.name: flavour for flavour in _ALL}
