"""A server of model files on loopback, honest unless a test has it answer otherwise."""

import hashlib
import threading
from contextlib import suppress
from dataclasses import dataclass
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from typing import Any, Optional

from orvane_backend.downloads.catalogue import ModelFile

# Of no round length, and no piece like another.
CONTENT = b"".join(hashlib.sha256(b"%d" % number).digest() for number in range(40_000)) + b"end"


@dataclass(frozen=True)
class Answer:
    """How one request is answered. What is not named is as an honest server does it."""

    refusal: int = 0  # Answers with this status and nothing else.
    sends: Optional[int] = None  # Bytes, then no more.
    holds: bool = False  # Instead of closing then, waits until `release`.
    ranges: bool = True  # Knows `Range`.
    heeds_if_range: bool = True
    etag: str = '"one"'
    content: bytes = CONTENT
    length: Optional[str] = None  # What Content-Length says.
    tells_length: bool = True
    partial: int = 206
    content_range: Optional[str] = None


class ModelServer:
    """Gives each request the next of `answers`, and the honest one when there is none. `requests`
    holds the headers of each. A context manager."""

    def __init__(self, *answers: Answer) -> None:
        self.answers = list(answers)
        self.requests: list[Any] = []
        self.release = threading.Event()
        self._http = ThreadingHTTPServer(("127.0.0.1", 0), self._handler())
        self._http.daemon_threads = True
        self._thread = threading.Thread(target=self._http.serve_forever, args=(0.01,), daemon=True)

    def __enter__(self) -> "ModelServer":
        self._thread.start()
        return self

    def __exit__(self, *_: object) -> None:
        self.release.set()
        self._http.shutdown()
        self._thread.join()
        self._http.server_close()

    def address(self, name: str = "tiny.pt", digest: str = "") -> str:
        wanted = digest or hashlib.sha256(CONTENT).hexdigest()
        return f"http://127.0.0.1:{self._http.server_port}/models/{wanted}/{name}"

    def file(self, name: str = "tiny.pt", digest: str = "") -> ModelFile:
        address = self.address(name, digest)
        return ModelFile(address, name, address.split("/")[-2])

    def ranges(self) -> list[Optional[str]]:
        """What each request asked for; None is the whole."""
        return [headers.get("Range") for headers in self.requests]

    def _handler(self) -> type[BaseHTTPRequestHandler]:
        server = self

        class Handler(BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self) -> None:
                server.requests.append(self.headers)
                answer = server.answers.pop(0) if server.answers else Answer()
                self.close_connection = True
                with suppress(ConnectionError):
                    server._answer(self, answer)

            def log_message(self, *_: object) -> None:
                pass

        return Handler

    def _answer(self, request: BaseHTTPRequestHandler, answer: Answer) -> None:
        if answer.refusal:
            request.send_error(answer.refusal)
            return
        total = len(answer.content)
        first = _first_byte(request, answer)
        if first is not None and first >= total:
            request.send_response(416)
            request.send_header("Content-Range", f"bytes */{total}")
            request.send_header("Content-Length", "0")
            request.end_headers()
            return
        body = answer.content[first or 0 :]
        request.send_response(200 if first is None else answer.partial)
        if answer.etag:
            request.send_header("ETag", answer.etag)
        if first is not None:
            honest = f"bytes {first}-{total - 1}/{total}"
            request.send_header("Content-Range", answer.content_range or honest)
        if answer.tells_length:
            request.send_header("Content-Length", answer.length or str(len(body)))
        request.end_headers()
        request.wfile.write(body if answer.sends is None else body[: answer.sends])
        if answer.holds:
            self.release.wait()


def _first_byte(request: BaseHTTPRequestHandler, answer: Answer) -> Optional[int]:
    """None when the whole is to be sent."""
    wanted = request.headers.get("Range")
    if_range = request.headers.get("If-Range")
    if wanted is None or not answer.ranges:
        return None
    if if_range is not None and answer.heeds_if_range and if_range != answer.etag:
        return None
    return int(wanted.removeprefix("bytes=").removesuffix("-"))
