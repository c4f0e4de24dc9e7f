"""Which recognisers run on this machine already: a look at the usual local ports.

It hears nothing of a person: no sound is sent to what is found here, and it serves only once the
person has said yes to it, by its table in `recognisers.toml`.
"""

import asyncio
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from typing import Any, Collection, Optional, Sequence

from ...websocket import ConnectionClosed, WebSocketException, connect
from . import LISTEN, SHERPA, TRANSCRIPTIONS
from .address import Address
from .answers import error_text, read_json
from .greeting import HEALTH_PATH, MODELS_PATH, health, is_whisper_cpp, listed_models, product
from .http import NATIVE_PATH, OPENAI_PATH
from .multipart import encode_form, form_type
from .named import Named
from .transport import Answer, Call, NoAnswer, ask

# Speaches, WhisperLiveKit and vLLM; whisper.cpp, LocalAI, NeMo-Speech.cpp and parakeet.cpp; others.
WEB_PORTS = (8000, 8080, 9931, 5092, 2700)
SHERPA_PORTS = (6006,)

_HOST = "127.0.0.1"
_LOOPBACK = ("localhost", _HOST, "::1")
_SECONDS = 1.0
_LONGEST = 1 << 18
# Of one server's recognisers.
_MOST_MODELS = 8


@dataclass(frozen=True)
class Found:
    """What answers like a recogniser. `name` is the product's, `model` empty where none is named."""

    kind: str
    address: Address
    name: str
    model: str = ""

    def shown(self) -> str:
        """The name as a person reads it."""
        return Named(self.kind, self.address).shown(self.name)


def look(
    web_ports: Collection[int] = WEB_PORTS,
    sherpa_ports: Collection[int] = SHERPA_PORTS,
    seconds: float = _SECONDS,
) -> list[Found]:
    """Looks at all ports at once, each answer of which may take so long. Blocks; never raises."""
    with ThreadPoolExecutor(max(1, len(web_ports) + len(sherpa_ports)), "look") as pool:
        looks = [pool.submit(_look_at_web, _local(port), seconds) for port in web_ports]
        looks += [pool.submit(_look_at_sherpa, _local(port), seconds) for port in sherpa_ports]
        return [found for one in looks for found in one.result()]


def unnamed(found: Sequence[Found], named: Sequence[Named]) -> list[Found]:
    """Those that are not in the person's file."""
    return [one for one in found if not any(_is_named(one, other) for other in named)]


def _is_named(found: Found, named: Named) -> bool:
    return (
        found.kind == named.kind
        and named.address.host in _LOOPBACK
        and found.address.port == named.address.port
        and named.model in ("", found.model)
    )


def _local(port: int) -> Address:
    return Address(False, _HOST, port)


def _look_at_web(address: Address, seconds: float) -> list[Found]:
    models = _asked(address, Call(MODELS_PATH, {}), seconds)
    if models is None:
        return []
    page = _asked(address, Call(HEALTH_PATH, {}), seconds)
    name = product(models, page)
    told = health(page)
    speech = [model.name for model in listed_models(models) or [] if model.is_speech]
    if told.is_live:
        return [Found(LISTEN, address, name)]
    if is_whisper_cpp(models, told):
        return [Found(TRANSCRIPTIONS, address, name)] if _wants_file(address, seconds) else []
    return [Found(TRANSCRIPTIONS, address, name, model) for model in speech[:_MOST_MODELS]]


def _wants_file(address: Address, seconds: float) -> bool:
    """Whether the server misses a file where recognisers take one.

    Many small servers have a health page in one word and no models; only this tells them apart. The
    form that is sent holds no sound.
    """
    boundary = "orvane-without-sound"
    body = encode_form({"response_format": "json"}, b"", boundary)
    headers = {"Content-Type": form_type(boundary)}
    for path in (NATIVE_PATH, OPENAI_PATH):
        answer = _asked(address, Call(path, headers, body), seconds)
        # Its older builds tell the error with the status of a success.
        if answer is not None and answer.status in (200, 400):
            text = error_text(answer.body, answer.kind)
            if "file" in text or (answer.status == 400 and read_json(answer.body) is None):
                return True
    return False


def _asked(address: Address, call: Call, seconds: float) -> Optional[Answer]:
    try:
        return ask(address, call, connect_seconds=seconds, seconds=seconds, longest=_LONGEST)
    except NoAnswer:
        return None


def _look_at_sherpa(address: Address, seconds: float) -> list[Found]:
    try:
        is_sherpa = asyncio.run(_ends_as_sherpa(address, seconds))
    except (OSError, EOFError, asyncio.TimeoutError, WebSocketException):
        return []
    return [Found(SHERPA, address, "sherpa-onnx")] if is_sherpa else []


async def _ends_as_sherpa(address: Address, seconds: float) -> bool:
    """Whether a server ends a conversation without any sound as a streaming one does.

    It takes a WebSocket at any path and says nothing of itself; the answer to `Done` is its mark.
    """
    async with asyncio.timeout(seconds):
        async with connect(address.socket(), open_timeout=seconds, close_timeout=0.1) as server:
            await server.send("Done")
            try:
                return _is_sherpas(await server.recv())
            except ConnectionClosed:
                return False


def _is_sherpas(message: Any) -> bool:
    if message == "Done!":
        return True
    told = read_json(message)
    return (
        isinstance(told, dict)
        and isinstance(told.get("text"), str)
        and isinstance(told.get("segment"), int)
    )
