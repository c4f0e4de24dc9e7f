"""The HTTP side of a stand-in, on Python's own server: one thread for each connection."""

from __future__ import annotations

import http.server

from .helpers import QuietServer

LARGEST_REQUEST = 64 * 1024 * 1024


class Unreadable(Exception):
    """What came is no request whose end can be found."""


def read_body(headers, stream) -> tuple[bytes, bool]:
    """The body, and whether it came in chunks."""
    if (headers.get('Transfer-Encoding') or '').lower() == 'chunked':
        return _read_chunks(stream), True
    length = headers.get('Content-Length') or '0'
    if not length.isdigit() or int(length) > LARGEST_REQUEST:
        raise Unreadable
    body = stream.read(int(length))
    if len(body) < int(length):
        raise Unreadable
    return body, False


def _read_chunks(stream) -> bytes:
    chunks: list[bytes] = []
    total = 0
    while True:
        try:
            size = int(stream.readline(100).split(b';')[0], 16)
        except ValueError:
            raise Unreadable from None
        total += size
        if size < 0 or total > LARGEST_REQUEST:
            raise Unreadable
        chunk = stream.read(size + 2)
        if len(chunk) != size + 2 or chunk[-2:] != b'\r\n':
            raise Unreadable
        if size == 0:
            return b''.join(chunks)
        chunks.append(chunk[:-2])


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = 'HTTP/1.1'
    disable_nagle_algorithm = True

    def setup(self) -> None:
        super().setup()
        self.connection_number = self.server.service.connected(self.connection)

    def finish(self) -> None:
        super().finish()
        self.server.service.disconnected(self.connection_number)
        if self.server.context:
            self.connection.close()  # The server closes what it accepted, not what speaks TLS on it.

    def serve(self) -> None:
        try:
            body, streamed = read_body(self.headers, self.rfile)
        except (Unreadable, OSError):
            self.close_connection = True
            return
        self.server.service.serve(self, body, streamed)

    do_GET = do_POST = do_PUT = do_PATCH = do_DELETE = do_HEAD = do_OPTIONS = serve

    def log_message(self, format, *args) -> None:
        pass


class Server(QuietServer, http.server.ThreadingHTTPServer):
    request_queue_size = 128

    def __init__(self, address, service) -> None:
        self.service = service
        super().__init__(address, Handler)
