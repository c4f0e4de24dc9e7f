"""A LibreTranslate server, and whatever answers as it does."""

from dataclasses import dataclass
from typing import Any, Mapping, Optional

from ..languages import AUTO, canonical, short
from ..notices import notice
from . import Passage, Translator, TranslatorError, one_line
from .local_http import Refusal, Unreachable, call, said_error

NAME = "LibreTranslate"
_LIST_SECONDS = 1.5
_ANSWER_SECONDS = 10.0

# Other names of languages there, the better one first.
_CODES = {
    "zh": ("zh-hans", "zh", "zh-cn"),
    "zh-tw": ("zh-hant", "zt", "zh-tw"),
    "zh-hant": ("zh-hant", "zt", "zh-tw"),
    "zh-hk": ("zh-hant", "zt", "zh-tw"),
    "pt-br": ("pt-br", "pb", "pt"),
    "no": ("nb", "no"),
    "he": ("he", "iw"),
    "jw": ("jv", "jw"),
    "tl": ("tl", "fil"),
}


@dataclass(frozen=True)
class Place:
    """Where a server is, and the key it wants; none when it is empty."""

    address: str
    key: str = ""


class LibreTranslator(Translator):
    """One pair of languages."""

    name = NAME

    def __init__(self, place: Place, source: str, target: str) -> None:
        """The languages as the server calls them; the source may be "auto"."""
        self._place = place
        self._pair = {"source": source, "target": target}
        self.key = libretranslate_key(place.address)

    def translate(self, passage: Passage) -> str:
        text = one_line(passage.text)
        body = {"q": text, **self._pair, "format": "text"}
        if self._place.key:
            body["api_key"] = self._place.key
        record = _call(self._place, "/translate", body, _ANSWER_SECONDS)
        translated = record.get("translatedText") if isinstance(record, dict) else None
        if not isinstance(translated, str):
            reason = said_error(record)
            if reason:
                raise _error("translation.failed", reason=reason[:300])
            raise _error("translation.unreadable")
        if not one_line(translated):
            raise TranslatorError(notice("translation.empty", translator=NAME), is_of_text=True)
        return one_line(translated)


def libretranslate_key(address: str) -> tuple[object, ...]:
    """The key of every translator at an address."""
    return ("libretranslate", address)


def find(place: Place, source: str, target: str) -> LibreTranslator:
    """What translates between two languages; the source may be "auto". Raises TranslatorError: also
    when the server lacks one of them."""
    offer = _offer(_call(place, "/languages", None, _LIST_SECONDS))
    for origin in [AUTO] if short(source) == AUTO else _names(source):
        for goal in _names(target):
            if goal in offer.targets(origin):
                spelt = offer.spelling
                return LibreTranslator(place, spelt.get(origin, origin), spelt[goal])
    raise _error("translation.language_missing", source=canonical(source), target=canonical(target))


@dataclass(frozen=True)
class _Offer:
    """What a server translates: from the code of each source to those of its targets, all in small
    letters, and how the server spells them."""

    pairs: Mapping[str, frozenset[str]]
    spelling: Mapping[str, str]

    def targets(self, source: str) -> frozenset[str]:
        """Empty for a source that is not there."""
        if source == AUTO:
            return frozenset[str]().union(*self.pairs.values())
        return self.pairs.get(source, frozenset())


def _offer(record: Any) -> _Offer:
    """From the list of languages. Raises TranslatorError when it is none."""
    entries = [one for one in record if isinstance(one, dict)] if isinstance(record, list) else []
    known = [one for one in entries if isinstance(one.get("code"), str)]
    if not known:
        raise _error("translation.unreadable")
    spelling = {_plain(one["code"]): str(one["code"]) for one in known}
    pairs = {}
    for one in known:
        named = one.get("targets")
        # Older servers name no targets: each language goes into each.
        targets = frozenset(map(_plain, named)) if isinstance(named, list) else frozenset(spelling)
        pairs[_plain(one["code"])] = targets & spelling.keys()
    return _Offer(pairs, spelling)


def _plain(code: object) -> str:
    return str(code).lower().replace("_", "-")


def _names(language: str) -> list[str]:
    """What a language may be called there, with its region first."""
    whole = _plain(language.strip())
    code = canonical(language)
    return list(dict.fromkeys([*_CODES.get(whole, (whole,)), *_CODES.get(code, (code,))]))


def _call(place: Place, path: str, body: Optional[Mapping[str, str]], seconds: float) -> Any:
    try:
        return call(place.address + path, body, seconds=seconds)
    except Unreachable as error:
        raise _error("translation.silent", True, address=place.address) from error
    except Refusal as refusal:
        if refusal.status in (401, 403):
            raise _error("translation.key_refused", address=place.address) from refusal
        reason = str(refusal)
        if place.key:
            reason = reason.replace(place.key, "…")
        told = notice("translation.failed", translator=NAME, reason=reason)
        raise TranslatorError(
            told,
            is_passing=refusal.status in (429, 502, 503, 504),
            is_of_text=body is not None and refusal.status in (400, 413),
        ) from refusal


def _error(code: str, is_passing: bool = False, **parameters: str) -> TranslatorError:
    return TranslatorError(notice(code, translator=NAME, **parameters), is_passing)
