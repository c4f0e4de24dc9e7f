"""Which translator serves a pair of languages."""

import os
from dataclasses import dataclass
from typing import AbstractSet, Iterator, Optional

from ..languages import AUTO, canonical, same, short
from ..notices import Notice, notice
from ..settings_file import Settings, settings
from . import Translator, TranslatorError, apertium, chat_server, libretranslate
from .chat import ChatTranslator, chat_key
from .debian_pairs import packages_for
from .identity import IdentityTranslator
from .local_http import full_address

# Names another chat server than the settings file does.
VARIABLE = "ORV_CHAT_URL"
_CHAT_ADDRESS = "http://127.0.0.1:11434/v1"
_LIBRETRANSLATE_ADDRESS = "http://127.0.0.1:5000"

Key = tuple[object, ...]


@dataclass(frozen=True)
class Choice:
    """What translates, and what there is to tell about why it is this: what a person has named and
    cannot be had, what is still loading, what is missing. Without a translator the text stays as it
    is, and the notices say how to get one."""

    translator: Optional[Translator]
    notices: tuple[Notice, ...] = ()


@dataclass(frozen=True)
class _Attempt:
    """One way to a translator: a chat server, else a LibreTranslate server. `named` says that a
    person wants it and is to hear when it does not serve."""

    chat: Optional[chat_server.Place] = None
    libre: libretranslate.Place = libretranslate.Place("")
    named: bool = False

    @property
    def key(self) -> Key:
        if self.chat is not None:
            return chat_key(self.chat.address)
        return libretranslate.libretranslate_key(self.libre.address)

    def matters(self, failure: Notice) -> bool:
        """Whether a person is to hear why this one does not serve: who has named none misses none,
        but whoever runs a chat server at the usual address means it to be used."""
        return self.named or (self.chat is not None and failure.code != "translation.silent")


def choose(source: str, target: str, without: AbstractSet[Key] = frozenset()) -> Choice:
    """The best translator there is from one language to another. Blocks for seconds.

    First what a person has named, then the chat server and LibreTranslate at their usual addresses,
    then Apertium. `without` holds the keys of translators that have just failed. Of a source "auto"
    only those that find the language out themselves; ask again with the language that was detected.
    """
    if short(target) == AUTO:
        return Choice(IdentityTranslator(), (notice("translation.no_target"),))
    if same(source, target):
        return Choice(IdentityTranslator(), (notice("translation.same"),))
    found = settings()
    told = list(found.notices)
    for attempt in _attempts(found):
        if attempt.key in without:
            continue
        try:
            translator, more = _tried(attempt, source, target)
        except TranslatorError as error:
            if attempt.matters(error.notice):
                told.append(error.notice)
        else:
            return Choice(translator, (*told, *more))
    if short(source) == AUTO:
        return Choice(None, (*told, notice("translation.awaits_language")))
    pair = None if apertium.KEY in without else apertium.find(source, target)
    if pair is not None:
        return Choice(pair, tuple(told))
    return Choice(None, (*told, *_missing(source, target, found)))


def chat_address() -> str:
    """Where the chat server is looked for."""
    return _chat_place(settings()).address


def _chat_place(found: Settings) -> chat_server.Place:
    named = os.environ.get(VARIABLE) or found.text("translation", "chat") or _CHAT_ADDRESS
    return chat_server.Place(
        full_address(named, "/v1"),
        found.text("translation", "key"),
        found.text("translation", "model"),
    )


def _attempts(found: Settings) -> Iterator[_Attempt]:
    """In the order in which they are tried."""
    wanted = bool(os.environ.get(VARIABLE)) or any(
        found.text("translation", key) for key in ("chat", "model")
    )
    chat = _Attempt(chat=_chat_place(found), named=wanted)
    address = found.text("translation", "libretranslate")
    libre = _Attempt(
        libre=libretranslate.Place(
            full_address(address or _LIBRETRANSLATE_ADDRESS),
            found.text("translation", "libretranslate_key"),
        ),
        named=bool(address),
    )
    # What is named comes first; of two that are alike the chat server.
    yield from sorted((chat, libre), key=lambda one: not one.named)


def _tried(attempt: _Attempt, source: str, target: str) -> tuple[Translator, list[Notice]]:
    """A translator that answers, and what is to be told beside. Raises TranslatorError."""
    if attempt.chat is None:
        return libretranslate.find(attempt.libre, source, target), []
    server = chat_server.server_at(attempt.chat)
    translator = ChatTranslator(server, source, target)
    told: list[Notice] = []
    try:
        server.find_model()
        # Goes on in the background: what is said meanwhile is translated by whoever is next.
        server.await_ready()
    except TranslatorError as error:
        told.append(_only_loading(error))
        server.prepare()
    if missing := server.missing_wish:
        told.append(
            notice(
                "translation.model_missing",
                model=missing, address=attempt.chat.address, instead=server.shown,
            )  # fmt: skip
        )
    return translator, told


def _only_loading(error: TranslatorError) -> Notice:
    """What is told of a server that will be ready soon. Raises the error of any other."""
    if error.notice.code != "translation.loading":
        raise error
    return error.notice


def _missing(source: str, target: str, found: Settings) -> Iterator[Notice]:
    """That nothing translates, and how to get something that does."""
    pair = {"source": canonical(source), "target": canonical(target)}
    yield notice("translation.none", **pair, address=_chat_place(found).address)
    packages = packages_for(source, target, apertium.installed())
    if packages:
        yield notice("translation.package", **pair, packages=" ".join(packages))
