"""What the person has named: the tables `[[recogniser]]` of the server's own settings."""

from dataclasses import dataclass
from typing import Any, Mapping, Optional

from ...languages import code_of_name, english_name, short
from ...notices import Notice, notice
from ...settings_file import Settings
from . import KINDS
from .address import Address, BadAddress, parse_address
from .named import Named

TABLE = "recogniser"


@dataclass(frozen=True)
class Catalogue:
    """The recognisers that are named, in the file's order, and what is to be told about others."""

    named: tuple[Named, ...] = ()
    notices: tuple[Notice, ...] = ()


class _Unusable(Exception):
    """Carries what is to be told about a table."""

    def __init__(self, told: Notice) -> None:
        super().__init__(told.german)
        self.notice = told


def catalogue(settings: Settings) -> Catalogue:
    """Those tables that can be used. One that cannot is told and left out, and the others serve."""
    named: list[Named] = []
    notices: list[Notice] = []
    for number, table in enumerate(settings.repeated(TABLE), 1):
        entry = _text(table, "name") or f"Nr. {number}"
        try:
            one = _named(table, entry)
        except _Unusable as unusable:
            notices.append(unusable.notice)
            continue
        if any(one.shown() == other.shown() for other in named):
            notices.append(notice("recognition.near_entry_twice", entry=one.shown()))
            continue
        named.append(one)
        if len(one.languages) < len(table.get("languages", ())):
            notices.append(_bad_key(entry, "languages"))
    return Catalogue(tuple(named), tuple(notices))


def _named(table: Mapping[str, Any], entry: str) -> Named:
    kind, key = _text(table, "kind"), _text(table, "key")
    if kind not in KINDS:
        raise _Unusable(_bad_key(entry, "kind"))
    # It becomes part of a header.
    if not key.isascii() or not key.isprintable() or " " in key:
        raise _Unusable(_bad_key(entry, "key"))
    for shown in ("name", "model"):
        if not _text(table, shown).isprintable():
            raise _Unusable(_bad_key(entry, shown))
    languages = map(_code, table.get("languages", ()))
    return Named(
        kind, _address(table, entry), _text(table, "name"), _text(table, "model"), key,
        tuple(code for code in languages if code is not None),
    )  # fmt: skip


def _address(table: Mapping[str, Any], entry: str) -> Address:
    try:
        return parse_address(_text(table, "address"))
    except BadAddress as error:
        told = notice("recognition.near_address", entry=entry, reason=str(error))
        raise _Unusable(told) from None


def _bad_key(entry: str, key: str) -> Notice:
    return notice("recognition.near_entry_key", entry=entry, key=key)


def _text(table: Mapping[str, Any], key: str) -> str:
    return str(table.get(key, "")).strip()


def _code(language: object) -> Optional[str]:
    """A language by its code or its English name; none for anything else."""
    if not isinstance(language, str):
        return None
    code = code_of_name(language) or short(language)
    return code if english_name(code) != code else None
