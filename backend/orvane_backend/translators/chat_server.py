"""One chat server with OpenAI's interface: its model, whether that is loaded, and its errors."""

import threading
import time
from dataclasses import dataclass
from typing import Any, Callable, Mapping, Optional

from ..notices import notice
from . import TranslatorError
from .chat_models import Listing, can_chat, in_order, listing, named, shown_name
from .chat_refusals import is_loading, lacks_model, parts_to_leave
from .chat_request import Asked, shortest_request
from .local_http import Refusal, Unreachable, call

_LIST_SECONDS = 1.5
_SHOW_SECONDS = 1.0
# Cold models of some gigabytes come from slow disks.
_LOAD_SECONDS = 60.0
# Between two looks at a server that says it is loading.
_LOADING_PAUSE = 0.5
# A text waits so long for a model that is nearly there.
_READY_SECONDS = 1.0
_KEEP_ALIVE = "30m"

NAME = "Chat-Server"
_Request = Callable[[Asked], Mapping[str, Any]]


@dataclass(frozen=True)
class Place:
    """Where a chat server is, the key it wants, and the model a person has named; either may be
    empty."""

    address: str
    key: str = ""
    model: str = ""


class ChatServer:
    """What is known of one server. Its functions block and may be called from any thread."""

    def __init__(self, place: Place) -> None:
        self.place = place
        self._changed = threading.Condition()
        self._listed = Listing(())
        self._unsuited: set[str] = set()
        self._model = ""
        self._refused: frozenset[str] = frozenset()
        self._thinks = False
        self._loaded = ""  # The model that is; empty when none is known to be.
        self._loading = False
        self._failure: Optional[TranslatorError] = None

    @property
    def shown(self) -> str:
        """The model as a person reads it; the server while there is none yet."""
        return shown_name(self._model) or NAME

    @property
    def missing_wish(self) -> str:
        """The model that was named and that another one stands in for; else empty."""
        wish, model = self.place.model, self._model
        return wish if wish and model and named(wish, (model,)) is None else ""

    @property
    def is_ready(self) -> bool:
        """Whether a text is translated at once."""
        with self._changed:
            return bool(self._loaded) and self._loaded == self._model

    def find_model(self, seconds: float = _LIST_SECONDS) -> None:
        """Chooses the model anew. Raises TranslatorError; a passing one while the server loads."""
        record = self._call("/models", None, seconds)
        try:
            listed = listing(record)
        except ValueError:
            raise self._error("translation.unreadable") from None
        with self._changed:
            if listed.models != self._listed.models:
                self._unsuited.clear()
            self._listed = listed
        model = self._chosen(listed)
        if not model:
            raise self._error("translation.no_chat_model", address=self.place.address)
        with self._changed:
            self._model = model

    def prepare(self) -> None:
        """Has the model loaded in the background, unless it is or that is under way."""
        with self._changed:
            if self._loading or (self._loaded and self._loaded == self._model):
                return
            self._loading, self._failure = True, None
        threading.Thread(target=self._load, name="chat model", daemon=True).start()

    def await_ready(self, seconds: float = _READY_SECONDS) -> None:
        """Waits for the model, but no longer than told. Raises TranslatorError: why it cannot be
        used, or a passing one when it is still loading."""
        self.prepare()
        with self._changed:
            self._changed.wait_for(lambda: not self._loading, seconds)
            if self._loading:
                raise self._error("translation.loading", is_passing=True)
            if self._failure is not None:
                raise TranslatorError(self._failure.notice, self._failure.is_passing)

    def warm_up(self) -> None:
        """Waits until the model is loaded. Raises TranslatorError."""
        self.await_ready(_LOAD_SECONDS + _SHOW_SECONDS + _LIST_SECONDS)

    def ask(self, request: _Request, seconds: float) -> Any:
        """The answer to a request, which is made again as the server wants it. Raises
        TranslatorError."""
        end = time.monotonic() + seconds
        self.await_ready(min(_READY_SECONDS, seconds))
        leaving: frozenset[str] = frozenset()
        while True:
            body = request(self._asked(leaving))
            try:
                record = self._post("/chat/completions", body, end - time.monotonic())
            except Unreachable as error:
                self._forget_loaded()
                if error.timed_out:
                    self.prepare()
                raise self._silent() from error
            except Refusal as refusal:
                more = parts_to_leave(refusal, body) - leaving
                if more:
                    leaving |= more
                elif lacks_model(refusal) and self._can_replace(str(body["model"])):
                    leaving = frozenset()
                else:
                    if is_loading(refusal):
                        self._forget_loaded()
                        self.prepare()
                    raise self._refusal(refusal) from refusal
            else:
                with self._changed:
                    self._refused |= leaving
                return record

    def note_thoughts(self) -> bool:
        """The model thinks although it should not, so that its answers need room; whether that is
        new."""
        with self._changed:
            is_new, self._thinks = not self._thinks, True
        return is_new

    def _asked(self, leaving: frozenset[str]) -> Asked:
        with self._changed:
            return Asked(self._model, self._listed.kind, self._refused | leaving, self._thinks)

    def _chosen(self, listed: Listing) -> str:
        wish = self.place.model
        found = named(wish, listed.models) if wish else None
        if found and found not in self._unsuited:
            return found
        candidates = in_order(listed.models, self._unsuited)
        asks = listed.kind in ("", "ollama")
        for model in candidates:
            if not asks or self._can_chat(model):
                return model
        # Some servers load what they do not list.
        return "" if wish in self._unsuited else wish

    def _can_chat(self, model: str) -> bool:
        """What ollama says of a model; true when nobody does."""
        try:
            shown = call(
                f"{self._root()}/api/show", {"model": model},
                seconds=_SHOW_SECONDS, key=self.place.key,
            )  # fmt: skip
        except (Refusal, Unreachable):
            return True
        return can_chat(shown) is not False

    def _load(self) -> None:
        failure: Optional[TranslatorError] = None
        loaded = ""
        end = time.monotonic() + _LOAD_SECONDS
        try:
            loaded = self._loaded_until(end)
        except TranslatorError as error:
            failure = error
        finally:
            with self._changed:
                self._loading, self._failure, self._loaded = False, failure, loaded
                self._changed.notify_all()

    def _loaded_until(self, end: float) -> str:
        """The model that is loaded then. Raises TranslatorError."""
        while True:
            try:
                if not self._model:
                    self.find_model()
                model = self._model
                self._have_loaded(model, end - time.monotonic())
                return model
            except TranslatorError as error:
                waits = error.notice.code == "translation.loading"
                if not waits or time.monotonic() + _LOADING_PAUSE >= end:
                    raise
            except Refusal as refusal:
                if not is_loading(refusal) or time.monotonic() + _LOADING_PAUSE >= end:
                    if not lacks_model(refusal):
                        raise self._refusal(refusal) from refusal
                    self._replace(model)
                    continue
            except Unreachable as error:
                raise self._silent() from error
            threading.Event().wait(_LOADING_PAUSE)

    def _have_loaded(self, model: str, seconds: float) -> None:
        if self._listed.kind in ("", "ollama"):
            body = {"model": model, "keep_alive": _KEEP_ALIVE}
            try:
                done = call(
                    f"{self._root()}/api/generate", body, seconds=seconds, key=self.place.key
                )
                if isinstance(done, dict) and done.get("done"):
                    return
            except Refusal as refusal:
                if is_loading(refusal):
                    raise
        self._post("/chat/completions", shortest_request(model), seconds)

    def _can_replace(self, model: str) -> bool:
        """Whether another model is there for one that is not, and loaded soon enough."""
        self._replace(model)
        self.await_ready()
        return True

    def _replace(self, model: str) -> None:
        with self._changed:
            self._unsuited.add(model)
            if self._model == model:
                self._model = self._loaded = ""
        self.find_model()

    def _forget_loaded(self) -> None:
        with self._changed:
            self._loaded = ""

    def _root(self) -> str:
        return self.place.address.removesuffix("/v1")

    def _post(self, path: str, body: Mapping[str, Any], seconds: float) -> Any:
        return call(self.place.address + path, body, seconds=seconds, key=self.place.key)

    def _call(self, path: str, body: Optional[Mapping[str, Any]], seconds: float) -> Any:
        try:
            return call(self.place.address + path, body, seconds=seconds, key=self.place.key)
        except Unreachable as error:
            raise self._silent() from error
        except Refusal as refusal:
            raise self._refusal(refusal) from refusal

    def _silent(self) -> TranslatorError:
        return self._error("translation.silent", True, address=self.place.address)

    def _refusal(self, refusal: Refusal) -> TranslatorError:
        if refusal.status in (401, 403):
            return self._error("translation.key_refused", address=self.place.address)
        if is_loading(refusal):
            return self._error("translation.loading", True)
        reason = str(refusal)
        if self.place.key:
            reason = reason.replace(self.place.key, "…")
        is_passing = refusal.status in (429, 502, 503, 504)
        return self._error("translation.failed", is_passing, reason=reason)

    def _error(self, code: str, is_passing: bool = False, **parameters: str) -> TranslatorError:
        return TranslatorError(notice(code, translator=self.shown, **parameters), is_passing)


_servers: dict[Place, ChatServer] = {}
_servers_lock = threading.Lock()


def server_at(place: Place) -> ChatServer:
    """The one server at a place, whoever asks, so that what is known of it is known to all."""
    with _servers_lock:
        return _servers.setdefault(place, ChatServer(place))
