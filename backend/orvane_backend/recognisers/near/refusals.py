"""What an answer that is no text means."""

import re
from http import HTTPStatus

from .. import RecogniserError
from . import failure
from .answers import error_text, read_json
from .named import Named
from .transport import Answer

_ABOUT_MODEL = re.compile(
    r"^model\b|\bmodel\b.*(\bnot\b|n't\b|unknown|missing|required|no such)|(no such|unknown) model",
    re.IGNORECASE | re.DOTALL,
)

# How some say that they have no such page; anything else about a page is about its model.
_NO_PAGE = ("", "Not Found")


def is_not_yet(answer: Answer) -> bool:
    """Whether the same may be answered if it is asked again: a model is loading, or all are busy."""
    return answer.status in (429, 503) or (answer.status >= 500 and answer.retry_after is not None)


def seconds_to_wait(answer: Answer, usual: float) -> float:
    """How long the server wants to be left alone."""
    told = (answer.retry_after or "").strip()
    return float(told) if told.isascii() and told.isdigit() and len(told) < 10 else usual


def is_about_model(text: str) -> bool:
    """Whether an explanation is about the model that was named or was not."""
    return bool(_ABOUT_MODEL.search(text))


def refusal_error(named: Named, engine: str, model: str, answer: Answer) -> RecogniserError:
    """The error of an answer without a text; `model` is the one that was asked for."""
    reason = error_text(answer.body, answer.kind) or _phrase(answer.status)
    if answer.is_redirect:
        return failure("redirect", engine)
    if answer.status == 429:
        return failure("busy", engine, is_passing=True)
    if is_not_yet(answer):
        return failure("loading", engine, is_passing=True)
    if answer.status in (401, 403):
        return failure("key" if named.key else "key_missing", engine)
    if answer.status == 404 and not _is_told(answer):
        return failure("path", engine, address=named.address.authority)
    if answer.status == 404 or (answer.status in (400, 422) and is_about_model(reason)):
        if model:
            return failure("model", engine, model=model, reason=reason)
        return failure("model_unset", engine, reason=reason)
    if answer.status in (400, 413, 415, 422):
        return failure("sound", engine, reason=reason, is_passing=True)
    return failure("failed", engine, status=answer.status, reason=reason)


def _is_told(answer: Answer) -> bool:
    if read_json(answer.body) is None:
        return False
    return error_text(answer.body, answer.kind) not in _NO_PAGE


def _phrase(status: int) -> str:
    try:
        return HTTPStatus(status).phrase
    except ValueError:
        return "?"
