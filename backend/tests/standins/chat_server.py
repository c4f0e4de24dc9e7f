"""Chat servers with OpenAI's interface: ollama, llama.cpp, LM Studio and vLLM."""

import json
import re
import threading
from contextlib import nullcontext
from typing import Any, Callable, Mapping, Optional, Sequence, Union

from . import _http
from ._chat_answers import STYLES, Answer, Messages, capitals, tokens
from ._chat_flavours import FLAVOURS, Refused, is_embedding
from ._http import HttpStandIn, Reply, Request, json_reply, text_reply
from ._ollama import USUAL, OllamaRoutes, not_for_chat


class ChatServer(HttpStandIn):
    """`chats` holds the body of each chat that was understood, `loads` the models in the order they
    were loaded, `faults` what the real server puts up with though no client should do it.

    `translate` says the right answer, or the whole Answer; `style` how it comes, and can be changed
    between calls. With `slow_load` a model is loaded only when the test calls `release`.
    """

    def __init__(
        self,
        flavour: str = "ollama",
        *,
        translate: Callable[[Messages], Union[str, Answer]] = capitals,
        style: str = "plain",
        models: Optional[Sequence[str]] = None,
        key: Optional[str] = None,
        loading: int = 0,
        slow_load: bool = False,
        context: int = 4096,
        thinking: bool = False,
        always_thinks: bool = False,
        separate: bool = True,
        refuses_keep_alive: bool = False,
        has_show: bool = True,
        **options: Any,
    ) -> None:
        super().__init__(**options)
        self.flavour = FLAVOURS[flavour]
        self.models = list(models or self.flavour.default_models())
        self.style = style
        self.chats: list[Mapping[str, Any]] = []
        self.loads: list[str] = []
        self.loaded: dict[str, float] = {}
        self.loading = loading
        self._translate = translate
        self._key = key
        self._slow_load = slow_load
        self._context = context
        self._thinking = thinking or always_thinks
        self._always_thinks = always_thinks
        self._separate = separate
        self._refuses_keep_alive = refuses_keep_alive
        self._has_show = has_show
        self._load_lock = threading.Lock()
        self._one = threading.Lock() if flavour == "ollama" else nullcontext()
        self._native = OllamaRoutes(
            self._installed, self.models, self._load, self.loaded, self._thinking
        )

    def answer(self, request: Request) -> Reply:
        try:
            return self._route(request)
        except Refused as refused:
            return refused.reply

    def unload(self) -> None:
        """Forgets what is loaded, as after some time without a call."""
        self.loaded.clear()

    def _route(self, request: Request) -> Reply:
        route = (request.method, request.path)
        if route == ("GET", "/health") and self.flavour.name in ("llama_cpp", "vllm"):
            return self._health()
        if self._key is not None and request.bearer() != self._key:
            raise Refused(self.flavour.error(401, "Invalid API Key"))
        if route == ("GET", "/v1/models"):
            return self._listed()
        if route == ("POST", "/v1/chat/completions"):
            if self.flavour.name == "llama_cpp" and self._is_loading():
                raise Refused(self.flavour.error(503, "Loading model"))
            return self.planned(lambda: self._chat(request), self._one)
        if route == ("GET", "/api/v0/models") and self.flavour.name == "lmstudio":
            return json_reply({"object": "list", "data": [self._state(n) for n in self.models]})
        known = self.flavour.name == "ollama" and (self._has_show or request.path != "/api/show")
        native = self._native.answer(request) if known else None
        return native or self.flavour.unknown_path(request.path)

    def _health(self) -> Reply:
        if self.flavour.name == "vllm":
            return text_reply("")
        if self._is_loading():
            raise Refused(self.flavour.error(503, "Loading model"))
        return json_reply({"status": "ok"})

    def _listed(self) -> Reply:
        loading = self.loading > 0
        data = [self.flavour.model(name, self._context, loading) for name in self.models]
        return json_reply({"object": "list", "data": data})

    def _state(self, name: str) -> Mapping[str, object]:
        state = "loaded" if name in self.loaded else "not-loaded"
        kind = "embeddings" if is_embedding(name) else "llm"
        return {"id": name, "object": "model", "type": kind, "state": state}

    def _chat(self, request: Request) -> Reply:
        body = self._understood(request)
        model = self._chosen(body)
        self._note_faults(body)
        self._check_length(body)
        self._load(model)
        with self._changed:
            self.chats.append(body)
            self._changed.notify_all()
        answer = self._said(body)
        if answer.status == 404:
            return self.flavour.missing_model(model)
        if answer.status:
            full = answer.status == 503
            return self.flavour.full() if full else self.flavour.error(answer.status, "it failed")
        if answer.reply:
            return answer.reply
        return (
            self._streamed(model, answer)
            if body.get("stream")
            else self._whole(model, body, answer)
        )

    def _understood(self, request: Request) -> Mapping[str, Any]:
        if request.media_type() != "application/json":
            self.fault("a body that is not labelled JSON")
            if self.flavour.name == "vllm":
                raise Refused(self.flavour.error(415, "only application/json is allowed"))
        try:
            body = request.json()
        except ValueError:
            body = None
        if not isinstance(body, dict):
            raise Refused(self.flavour.error(400, "the body is no JSON object"))
        if self._refuses_keep_alive and "keep_alive" in body:
            raise Refused(self.flavour.error(400, "unknown field keep_alive"))
        self.flavour.check(body)
        return body

    def _chosen(self, body: Mapping[str, Any]) -> str:
        if not self.flavour.checks_model:
            return self.models[0]
        if not body.get("model"):
            raise Refused(self.flavour.error(400, "model is required"))
        name = self._installed(body["model"])
        if name is None:
            raise Refused(self.flavour.missing_model(body["model"]))
        if is_embedding(name):
            raise Refused(self.flavour.error(400, not_for_chat(name)))
        return name

    def _installed(self, name: object) -> Optional[str]:
        names = [name]
        if self.flavour.name == "ollama":
            names.append(f"{name}:latest")
        return next((model for model in self.models if model in names), None)

    def _note_faults(self, body: Mapping[str, Any]) -> None:
        for name in self.flavour.unknown_fields(body):
            self.fault(f"{name} is no field here")
        if _most(body) is None:
            self.fault("no max_tokens: it may go on for ever")
        if "temperature" not in body:
            self.fault("no temperature: it is high here")

    def _check_length(self, body: Mapping[str, Any]) -> None:
        needed = sum(4 + _tokens_in(m["content"]) for m in body["messages"])
        whole = needed + (_most(body) or 0)
        if self.flavour.name == "vllm" and whole > self._context:
            text = f"This model's maximum context length is {self._context} tokens, not {whole}."
            raise Refused(self.flavour.error(400, text))
        if needed > self._context:
            self.fault("a prompt of which the beginning is lost")

    def _load(self, model: str) -> None:
        with self._load_lock:
            if model in self.loaded:
                return
            if self._slow_load:
                self.hold()
            self.loaded[model] = USUAL
            self.loads.append(model)

    def _said(self, body: Mapping[str, Any]) -> Answer:
        said = self._translate(body["messages"])
        answer = said if isinstance(said, Answer) else STYLES[self.style](said)
        if self._always_thinks or (self._thinking and self.flavour.thinks_about(body)):
            answer = answer.thinking()
        most = _most(body)
        answer = answer if most is None else answer.within(most)
        return answer if self._separate else answer.joined()

    def _whole(self, model: str, body: Mapping[str, Any], answer: Answer) -> Reply:
        message: dict[str, object] = {"role": "assistant", "content": answer.content}
        if answer.reasoning:
            message[self.flavour.reasoning_field] = answer.reasoning
        asked = sum(4 + _tokens_in(m["content"]) for m in body["messages"])
        used = tokens(answer.reasoning + (answer.content or ""))
        return json_reply({
            "id": "chatcmpl-1",
            "object": "chat.completion",
            "created": 1_760_000_000,
            "model": model,
            "choices": [{"index": 0, "message": message, "finish_reason": answer.finish}],
            "usage": {
                "prompt_tokens": asked, "completion_tokens": used, "total_tokens": asked + used,
            },
        })  # fmt: skip

    def _streamed(self, model: str, answer: Answer) -> Reply:
        parts: list[Mapping[str, str]] = [{"role": "assistant"}]
        parts += [{self.flavour.reasoning_field: answer.reasoning}] * bool(answer.reasoning)
        words = re.findall(r"\s*\S+|\s+", answer.content or "")
        parts += [{"content": word} for word in words]
        events = []
        for number, part in enumerate([*parts, {}]):
            finish = answer.finish if number == len(parts) else None
            choice = {"index": 0, "delta": part, "finish_reason": finish}
            chunk = {"id": "chatcmpl-1", "object": "chat.completion.chunk", "model": model}
            events.append(json.dumps({**chunk, "choices": [choice]}))
        text = "".join(f"data: {event}\n\n" for event in [*events, "[DONE]"])
        return text_reply(text, content_type="text/event-stream", streamed=True)

    def _is_loading(self) -> bool:
        with self._changed:
            self.loading -= 1
            return self.loading >= 0


def _tokens_in(content: object) -> int:
    return tokens(content if isinstance(content, str) else json.dumps(content, ensure_ascii=False))


def _most(body: Mapping[str, Any]) -> Optional[int]:
    most: Optional[int] = body.get("max_tokens") or body.get("max_completion_tokens")
    return most


def main() -> None:
    parser = _http.options(str(__doc__))
    parser.add_argument("--flavour", choices=sorted(FLAVOURS), default="ollama")
    parser.add_argument("--model", action="append", help="an installed model; more than once")
    parser.add_argument("--style", choices=sorted(STYLES), default="plain")
    parser.add_argument("--text", help="what is answered, whatever comes")
    parser.add_argument("--loading", type=int, default=0, help="calls that get 503 at first")
    parser.add_argument("--slow-load", action="store_true", help="load only after `release`")
    parser.add_argument("--thinking", action="store_true")
    given = parser.parse_args()
    stand_in = ChatServer(
        given.flavour, key=given.key, style=given.style, models=given.model, port=given.port,
        loading=given.loading, slow_load=given.slow_load, thinking=given.thinking,
        translate=capitals if given.text is None else lambda messages: str(given.text),
    )  # fmt: skip
    _http.run(stand_in, given.log)


if __name__ == "__main__":
    main()
