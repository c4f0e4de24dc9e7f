"""What Google's service says when it fails, told apart: what passes, what a person has to change.

Errors are known by the names of their status, so that nothing of the package is imported here.
"""

import re

from ..notices import Notice, notice
from . import RecogniserError

# Class names of the package and of its authentication; elsewhere the status itself is told.
_CLASSES = {
    "OutOfRange": "OUT_OF_RANGE", "Aborted": "ABORTED", "InvalidArgument": "INVALID_ARGUMENT",
    "FailedPrecondition": "FAILED_PRECONDITION", "NotFound": "NOT_FOUND",
    "Unauthenticated": "UNAUTHENTICATED", "Unauthorized": "UNAUTHENTICATED",
    "PermissionDenied": "PERMISSION_DENIED", "Forbidden": "PERMISSION_DENIED",
    "ResourceExhausted": "RESOURCE_EXHAUSTED", "TooManyRequests": "RESOURCE_EXHAUSTED",
    "ServiceUnavailable": "UNAVAILABLE", "DeadlineExceeded": "DEADLINE_EXCEEDED",
    "InternalServerError": "INTERNAL", "Unknown": "UNKNOWN", "Cancelled": "CANCELLED",
    "RefreshError": "UNAUTHENTICATED", "DefaultCredentialsError": "UNAUTHENTICATED",
    "TransportError": "UNAVAILABLE",
}  # fmt: skip
_CODES = {
    "UNAUTHENTICATED": "recognition.account_refused",
    "PERMISSION_DENIED": "recognition.not_permitted",
    "INVALID_ARGUMENT": "recognition.refused",
    "FAILED_PRECONDITION": "recognition.refused",
    "NOT_FOUND": "recognition.refused",
    "RESOURCE_EXHAUSTED": "recognition.too_many",
    "UNAVAILABLE": "recognition.unavailable",
    "DEADLINE_EXCEEDED": "recognition.unavailable",
    "INTERNAL": "recognition.unavailable",
    "UNKNOWN": "recognition.unavailable",
    "CANCELLED": "recognition.unavailable",
    "ABORTED": "recognition.unavailable",
    "OUT_OF_RANGE": "recognition.unavailable",
}
_PASSING = ("recognition.too_many", "recognition.unavailable")
# A stream that was too old, or silent for too long: there is nothing wrong with a new one.
_OVER = ("ABORTED", "OUT_OF_RANGE")

_NO_MODEL = re.compile(r"model .* does not exist in the location|no longer generally available")
# A key that was withdrawn shows when the transport asks for a token, as a service that is not there.
_NO_TOKEN = re.compile(r"invalid_grant|invalid_client|unauthorized_client")
_LONGEST = 160


def is_over(error: BaseException) -> bool:
    """Whether a stream came to its end, so that the same sound belongs into a new one."""
    return status_of(error) in _OVER


def recogniser_error(error: BaseException, engine: str, location: str) -> RecogniserError:
    """The same for a person, with the service's own reason."""
    told = _told(error, status_of(error), engine, location)
    return RecogniserError(told, is_passing=told.code in _PASSING)


def status_of(error: BaseException) -> str:
    """The name of its status, such as "UNAVAILABLE"; empty for an error of another kind."""
    status = getattr(error, "grpc_status_code", None)
    if status is None and callable(code := getattr(error, "code", None)):
        status = code()  # what the transport itself raises
    name = str(getattr(status, "name", ""))
    if not name:
        kinds = (kind.__name__ for kind in type(error).__mro__)
        name = next((_CLASSES[kind] for kind in kinds if kind in _CLASSES), "")
    if name == "UNAVAILABLE" and _NO_TOKEN.search(_text(error)):
        return "UNAUTHENTICATED"
    return name


def reason_of(error: BaseException) -> str:
    """The first line of what the service says, with its short reason where it gives one."""
    text = _text(error)
    line = text.splitlines()[0].strip() if text else type(error).__name__
    line = line if len(line) <= _LONGEST else f"{line[: _LONGEST - 1].rstrip()}…"
    reason = getattr(error, "reason", None)
    return f"{reason}: {line}" if isinstance(reason, str) and reason else line


def _text(error: BaseException) -> str:
    # Errors of authentication carry a whole answer behind their sentence.
    first = error.args[0] if error.args else ""
    text = getattr(error, "message", None) or (first if isinstance(first, str) else str(error))
    return str(text).strip()


def _told(error: BaseException, status: str, engine: str, location: str) -> Notice:
    reason = reason_of(error)
    if _NO_MODEL.search(reason):
        return notice("recognition.no_model_there", engine=engine, location=location, reason=reason)
    code = _CODES.get(status, "recognition.failed")
    if getattr(error, "reason", None) == "SERVICE_DISABLED":
        code = "recognition.service_disabled"
    return notice(code, engine=engine, reason=reason)
