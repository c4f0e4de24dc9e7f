"""Apertium's names of directions, and the way from one language to another over them.

A name is two languages in codes of two or three letters, each with variants after a low line:
"eng-spa", "cat-por_BR", "oci_gascon-fra". Other names among them are parts for developers.
"""

import re
from dataclasses import dataclass
from typing import AbstractSet, Iterable

from ..languages import canonical, long

# The names of the directions to go one after another.
Path = tuple[str, ...]

_NAME = re.compile(r"([a-z]{2,3})((?:_[A-Za-z0-9]+)*)-([a-z]{2,3})((?:_[A-Za-z0-9]+)*)")

# Codes that Apertium uses for what has another three-letter code here.
_SAME = {
    "arb": "ara", "azj": "aze", "ekk": "est", "fas": "pes", "khk": "mon", "lvs": "lav",
    "nor": "nob", "sh": "hbs", "swh": "swa", "uzn": "uzb", "zlm": "msa",
}  # fmt: skip

# Apertium has these in one, told apart as variants of what is written.
_IN_ONE = {"bos": "hbs", "hrv": "hbs", "srp": "hbs"}

# Of several languages to go over, the one whose pairs know the most words.
_BETWEEN = ("eng", "spa", "fra", "cat")


@dataclass(frozen=True)
class _Side:
    language: str
    variants: frozenset[str]


@dataclass(frozen=True)
class _Direction:
    name: str
    source: _Side
    target: _Side


def find_path(source: str, target: str, names: Iterable[str]) -> Path:
    """The fewest directions from one language to another, at most two; empty when there is no way.

    Of several ways the one whose variants are the regions asked for, else the one without.
    """
    directions = [found for found in map(_parsed, sorted(set(names))) if found is not None]
    origins, goals = _languages(source), _languages(target)
    spoken, wanted = _wishes(source), _wishes(target)

    def best(origins: AbstractSet[str], goals: AbstractSet[str]) -> Path:
        found = [
            (_strangeness(one.source, spoken), _strangeness(one.target, wanted), one.name)
            for one in directions
            if one.source.language in origins and one.target.language in goals
        ]
        return (min(found)[2],) if found else ()

    if origins & goals:
        return ()
    if direct := best(origins, goals):
        return direct
    for middle in _middles(directions, origins, goals):
        first, second = best(origins, {middle}), best({middle}, goals)
        if first and second:
            return first + second
    return ()


def _middles(
    directions: list[_Direction], origins: AbstractSet[str], goals: AbstractSet[str]
) -> list[str]:
    reached = {one.target.language for one in directions if one.source.language in origins}
    leading = {one.source.language for one in directions if one.target.language in goals}
    found = (reached & leading) - origins - goals

    def order(language: str) -> tuple[int, str]:
        return (
            _BETWEEN.index(language) if language in _BETWEEN else len(_BETWEEN),
            language,
        )

    return sorted(found, key=order)


def _parsed(name: str) -> "_Direction | None":
    found = _NAME.fullmatch(name)
    if found is None:
        return None
    source, spoken, target, written = found.groups()
    return _Direction(name, _side(source, spoken), _side(target, written))


def _side(code: str, variants: str) -> _Side:
    return _Side(_normal(code), frozenset(variants.lower().split("_")) - {""})


def _normal(code: str) -> str:
    return _SAME.get(long(code), long(code))


def _languages(code: str) -> frozenset[str]:
    language = _normal(canonical(code))
    return frozenset({language, _IN_ONE.get(language, language)})


def _wishes(code: str) -> frozenset[str]:
    """What variants may be called: the regions of a code, and the code for those that are in one."""
    parts = code.strip().lower().replace("_", "-").split("-")
    named = parts[:1] if _normal(canonical(code)) in _IN_ONE else []
    return frozenset(named + parts[1:]) - {""}


def _strangeness(side: _Side, wanted: frozenset[str]) -> tuple[int, int]:
    return (-len(side.variants & wanted), len(side.variants - wanted))
