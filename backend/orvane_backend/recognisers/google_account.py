"""The key file of a Google service account: whether it can be used, before the package sees it."""

import json
from pathlib import Path
from typing import Any

from ..notices import notice
from . import RecogniserError

_NEEDED = ("client_email", "private_key", "token_uri")


def read_account(path: str, engine: str) -> dict[str, Any]:
    """What is in the file. Raises RecogniserError."""
    if not path:
        raise RecogniserError(notice("recognition.account_unset", engine=engine))
    try:
        content = json.loads(Path(path).read_text("utf-8"))
    except FileNotFoundError:
        told = notice("recognition.account_missing", engine=engine, path=path)
        raise RecogniserError(told) from None
    except OSError as error:
        raise unreadable(path, engine, error.strerror or str(error)) from error
    except (ValueError, RecursionError) as error:
        raise unreadable(path, engine, "kein JSON") from error
    if not isinstance(content, dict) or content.get("type") != "service_account":
        raise unreadable(path, engine, "kein Dienstkonto")
    missing = [name for name in _NEEDED if not isinstance(content.get(name), str)]
    if missing:
        raise unreadable(path, engine, f"{', '.join(missing)} fehlt")
    return content


def unreadable(path: str, engine: str, reason: str) -> RecogniserError:
    """What is to be told about a file of no use."""
    return RecogniserError(
        notice("recognition.account_unreadable", engine=engine, path=path, reason=reason)
    )
