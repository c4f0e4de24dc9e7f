"""What `recognisers.py` does, for the program's settings window: one line of JSON for each answer."""

import json
from concurrent.futures import ThreadPoolExecutor
from contextlib import suppress
from typing import Any, Callable, Optional, Sequence

from ...notices import Notice, Problem, notice
from ...settings_file import settings
from .. import RecogniserError
from . import KINDS
from .accepting import accept, forget
from .address import Address, BadAddress, parse_address
from .catalogue import catalogue
from .choice import recogniser_of
from .discovery import Found, look, unnamed
from .named import Named, Timings, written

# Somebody looks at a window meanwhile.
_TIMINGS = Timings(connect=2.0, greet=4.0, loading=0.0)


class _Usage(Exception):
    """Arguments that say nothing."""


def main(arguments: Sequence[str], find: Callable[[], list[Found]] = look) -> int:
    """The exit status: 0 when it is done, 1 when it cannot be, 2 for arguments that say nothing."""
    try:
        return _run(list(arguments), find)
    except _Usage:
        _say_notice(notice("recognition.near_usage"))
        return 2
    except Problem as problem:
        _say_notice(problem.notice)
        return 1


def _run(arguments: list[str], find: Callable[[], list[Found]]) -> int:
    match arguments:
        case ["list"]:
            _list(find)
        case ["accept", kind, address]:
            _accept(kind, address, "")
        case ["accept", kind, address, model]:
            _accept(kind, address, model)
        case ["forget", name]:
            forget(name)
            _say({"state": "forgotten", "name": name})
        case _:
            raise _Usage
    return 0


def _list(find: Callable[[], list[Found]]) -> None:
    read = settings()
    there = catalogue(read)
    with ThreadPoolExecutor(len(there.named) + 1) as pool:
        looked = pool.submit(find)
        problems = list(pool.map(_problem, there.named))
        found = looked.result()
    for told in (*read.notices, *there.notices):
        _say_notice(told)
    for named, problem in zip(there.named, problems):
        _say(
            {
                **_record("named", named.kind, named.address, named.shown(), named.model),
                "languages": list(named.languages),
                "answers": problem is None,
                "notice": problem.record() if problem else None,
                "text": problem.german if problem else "",
            }
        )
    for one in unnamed(found, there.named):
        _say({**_record("found", one.kind, one.address, one.shown(), one.model), "answers": True})


def _product(kind: str, address: Address, model: str) -> str:
    """What the server calls itself; empty where it does not answer, which is no reason against it."""
    if kind not in KINDS:
        return ""
    recogniser = recogniser_of(Named(kind, address, model=model), _TIMINGS)
    with suppress(RecogniserError):
        recogniser.load()
    recogniser.close()
    return recogniser.product


def _problem(named: Named) -> Optional[Notice]:
    """Why a recogniser would not serve right now; none when it would."""
    recogniser = recogniser_of(named, _TIMINGS)
    try:
        recogniser.load()
    except RecogniserError as error:
        return error.notice
    finally:
        recogniser.close()
    return None


def _accept(kind: str, address: str, model: str) -> None:
    try:
        where = parse_address(address)
    except BadAddress as error:
        told = notice("recognition.near_address_given", address=address, reason=str(error))
        raise Problem(told) from None
    name = accept(Found(kind, where, _product(kind, where, model), model))
    _say({"state": "accepted", "name": name})


def _record(state: str, kind: str, address: Address, name: str, model: str) -> dict[str, Any]:
    return {
        "state": state, "name": name, "kind": kind, "address": written(kind, address),
        "model": model,
    }  # fmt: skip


def _say_notice(told: Notice) -> None:
    _say({"state": "notice", "notice": told.record(), "text": told.german})


def _say(record: dict[str, Any]) -> None:
    print(json.dumps(record), flush=True)
