"""What a chat server means when it refuses a request."""

from typing import Any, Mapping

from .chat_request import OPTIONAL
from .local_http import Refusal


def is_loading(refusal: Refusal) -> bool:
    """Whether the server is there and will have its model soon."""
    return refusal.status == 503 and "loading" in str(refusal).lower()


def lacks_model(refusal: Refusal) -> bool:
    """Whether the model is not there, or is none for chats: another one may be."""
    said = str(refusal).lower()
    if refusal.status == 404:
        return "model" in said
    return refusal.status == 400 and "does not support" in said and "think" not in said


def parts_to_leave(refusal: Refusal, body: Mapping[str, Any]) -> frozenset[str]:
    """The optional parts of a request to leave out after a refusal: those it names, else all."""
    said = str(refusal).lower()
    if "system" in said and "role" in said or "roles must alternate" in said:
        return frozenset({"system"})
    if refusal.status not in (400, 422) or lacks_model(refusal):
        return frozenset()
    there = frozenset(OPTIONAL) & body.keys()
    named_there = frozenset(one for one in there if one in said)
    if "think" in said or "reasoning" in said:
        named_there |= there
    return named_there or there
