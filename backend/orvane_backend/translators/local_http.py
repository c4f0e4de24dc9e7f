"""Calls of servers that are near, each with one time limit over all of it."""

import json
import socket
import threading
import time
from contextlib import suppress
from http.client import HTTPConnection, HTTPException, HTTPSConnection
from typing import Any, Mapping, Optional
from urllib.parse import SplitResult, urlsplit

# No translation and no list of models is anywhere near.
_LARGEST = 4 << 20
_LONGEST_REASON = 300


class Unreachable(Exception):
    """No answer: nobody is there, or it did not come in time or whole."""

    def __init__(self, reason: str, timed_out: bool = False) -> None:
        super().__init__(reason)
        self.timed_out = timed_out


class Refusal(Exception):
    """An answer that is an error; says what the server said."""

    def __init__(self, status: int, reason: str) -> None:
        super().__init__(reason)
        self.status = status


def full_address(named: str, path: str = "") -> str:
    """An address as a person writes it, made whole: "localhost:5000" gives "http://localhost:5000".

    `path` is added where none is named.
    """
    address = named.strip().rstrip("/")
    if "://" not in address:
        address = f"http://{address}"
    with suppress(ValueError):
        if not urlsplit(address).path:
            address += path
    return address


def call(
    address: str,
    body: Optional[Mapping[str, Any]] = None,
    *,
    seconds: float,
    key: str = "",
) -> Any:
    """The JSON answer to a GET, or to a POST of a body. Raises Unreachable and Refusal.

    No proxy comes between, and a redirection is an error: the text goes where it was to go.
    """
    headers = {"Accept": "application/json"}
    if key:
        headers["Authorization"] = f"Bearer {key}"
    data = None
    if body is not None:
        headers["Content-Type"] = "application/json"
        data = json.dumps(body).encode()
    try:
        status, content = _exchange(urlsplit(address), data, headers, seconds)
    except (OSError, HTTPException, ValueError) as error:
        raise Unreachable(_reason_of(error), isinstance(error, TimeoutError)) from error
    try:
        record = json.loads(content)
    except (ValueError, RecursionError):
        record = None
    if status != 200 or record is None:
        raise Refusal(status, _reason(status, record, content))
    return record


class _Limit:
    """Ends a connection at a time, whatever it is doing then: a server may send a byte now and then
    for ever. A context manager; what is left of the time is `seconds`."""

    def __init__(self, connection: HTTPConnection, seconds: float) -> None:
        self._connection = connection
        self._end = time.monotonic() + seconds
        self._timer = threading.Timer(max(seconds, 0.0), self._cut)
        self._timer.daemon = True
        self._socket: Optional[socket.socket] = None
        self.is_over = False

    def __enter__(self) -> "_Limit":
        self._timer.start()
        return self

    def __exit__(self, *_: object) -> None:
        self._timer.cancel()
        self._connection.close()

    def _cut(self) -> None:
        self.is_over = True
        if self._socket is not None:
            with suppress(OSError):
                self._socket.shutdown(socket.SHUT_RDWR)

    def connect(self) -> None:
        """Connects. The socket is kept: the connection forgets it while an answer still comes."""
        self._connection.connect()
        self._socket = self._connection.sock
        self.check()

    def check(self) -> None:
        if self.is_over or time.monotonic() >= self._end:
            raise TimeoutError


def _exchange(
    place: SplitResult, data: Optional[bytes], headers: Mapping[str, str], seconds: float
) -> tuple[int, bytes]:
    if place.scheme not in ("http", "https") or not place.hostname:
        raise ValueError("no address of a server")
    if seconds <= 0:
        raise TimeoutError
    kind = HTTPSConnection if place.scheme == "https" else HTTPConnection
    connection = kind(place.hostname, place.port, timeout=seconds)
    with _Limit(connection, seconds) as limit:
        try:
            limit.connect()
            connection.request("GET" if data is None else "POST", place.path, data, dict(headers))
            with connection.getresponse() as response:
                content = response.read(_LARGEST + 1)
                cut = response.length not in (None, 0) and len(content) <= _LARGEST
        except (OSError, HTTPException, ValueError):
            limit.check()
            raise
        limit.check()
    if cut:
        raise HTTPException("answer cut off")
    if len(content) > _LARGEST:
        raise HTTPException("answer without end")
    return response.status, content


def _reason_of(error: Exception) -> str:
    return getattr(error, "strerror", None) or str(error) or type(error).__name__


def _reason(status: int, record: Any, content: bytes) -> str:
    """What an error's answer says: OpenAI's object, a bare text, FastAPI's detail, plain text."""
    said = said_error(record)
    if not said and record is None:
        text = content[: 4 * _LONGEST_REASON].decode("utf-8", "replace").strip()
        said = "" if text.startswith("<") else text
    said = " ".join(said.split())[:_LONGEST_REASON]
    return said or f"HTTP {status}"


def said_error(record: Any) -> str:
    """The error that a JSON answer names, of whatever shape; empty when it names none."""
    if not isinstance(record, dict):
        return ""
    for said in (record.get("error"), record.get("detail"), record.get("message")):
        if isinstance(said, dict):
            said = said.get("message") or json.dumps(said, ensure_ascii=False)
        if said:
            return said if isinstance(said, str) else json.dumps(said, ensure_ascii=False)
    return ""
