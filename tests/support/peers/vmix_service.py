"""Plays vMix's web API, well or badly, on Python's own HTTP server.

Says: listening {port}, request {path, query: [[name, value]...] decoded, headers, open} when one has
come, ended when its connection is closed; "open" is the number of connections that the client has
not closed at that moment.
Does with all requests from now on what it was told last, by {"mode": ...}:
  "answer" a plain answer; "error" one of status 500; "redirect" to "location"; "chunked", "bare" (no
  length, then closed), "interim" (100 Continue first): other whole answers;
  "hang" nothing; "reset" the connection; "close" it without an answer; "cut" it within the answer;
  "drip" one byte of the answer every 20 ms, for ever; "endless" content, "endlessHead" as fast as
  it goes; "garbage" in place of HTTP.
"""

import http.server
import json
import select
import socket
import struct
import sys
import threading
import urllib.parse

from service_peer import say

lock = threading.Lock()
told = {"mode": "answer"}
connections = set()  # Those that somebody here still deals with.

ANSWER = b"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 35\r\n\r\n"
BODY = b"Function SetText completed correctly"[:35]
PIECE = b"x" * 65536
TCP_ESTABLISHED = 1  # Of netinet/tcp.h: neither side has closed.


def is_open(connection) -> bool:
    """What the system knows; whoever deals with the connection may not have noticed yet.

    Not whether something can be read: a request that nobody has read stays when its client has gone.
    """
    try:
        return connection.getsockopt(socket.IPPROTO_TCP, socket.TCP_INFO, 1)[0] == TCP_ESTABLISHED
    except OSError:
        return False


class Handler(http.server.BaseHTTPRequestHandler):
    def setup(self) -> None:
        super().setup()
        with lock:
            connections.add(self.connection)

    def finish(self) -> None:
        try:
            super().finish()
        except OSError:
            pass  # The client has given up.
        with lock:
            connections.discard(self.connection)
        say(event="ended")

    def do_GET(self) -> None:
        with lock:
            command, now_open = told, sum(map(is_open, connections))
        parts = urllib.parse.urlsplit(self.path)
        query = urllib.parse.parse_qsl(parts.query, keep_blank_values=True, strict_parsing=True)
        say(event="request", path=parts.path, target=self.path, query=query, open=now_open,
            headers={name.lower(): value for name, value in self.headers.items()})
        self.close_connection = True
        try:
            getattr(self, command["mode"])(command)
        except OSError:
            pass  # The client has given up.

    def client_is_there(self, seconds: float) -> bool:
        readable, _, _ = select.select([self.connection], [], [], seconds)
        return not readable or self.connection.recv(1, socket.MSG_PEEK) != b""

    def answer(self, command) -> None:
        self.wfile.write(ANSWER + BODY)

    def error(self, command) -> None:
        self.wfile.write(b"HTTP/1.1 500 Internal Server Error\r\nContent-Length: 3\r\n\r\nbad")

    def redirect(self, command) -> None:
        self.wfile.write(b"HTTP/1.1 302 Found\r\nLocation: " + command["location"].encode() +
                         b"\r\nContent-Length: 0\r\n\r\n")

    def chunked(self, command) -> None:
        self.wfile.write(b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n")
        self.wfile.write(b"a\r\n0123456789\r\n3;x=y\r\nabc\r\n0\r\nTrailer: t\r\n\r\n")
        while self.client_is_there(1):
            pass

    def bare(self, command) -> None:
        self.wfile.write(b"HTTP/1.0 200 OK\r\n\r\nwhatever")

    def interim(self, command) -> None:
        self.wfile.write(b"HTTP/1.1 100 Continue\r\n\r\n" + ANSWER + BODY)

    def hang(self, command) -> None:
        while self.client_is_there(1):
            pass

    def reset(self, command) -> None:
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.connection.close()

    def close(self, command) -> None:
        pass

    def cut(self, command) -> None:
        self.wfile.write(ANSWER + BODY[:10])

    def drip(self, command) -> None:
        for byte in ANSWER:
            self.wfile.write(bytes([byte]))
            self.client_is_there(0.02)
        while self.client_is_there(0.02):
            pass

    def endless(self, command) -> None:
        self.wfile.write(b"HTTP/1.1 200 OK\r\n\r\n")
        while True:
            self.wfile.write(PIECE)

    def endlessHead(self, command) -> None:
        self.wfile.write(b"HTTP/1.1 200 OK\r\nX: ")
        while True:
            self.wfile.write(PIECE)

    def garbage(self, command) -> None:
        self.wfile.write(b"220 mail.example ESMTP\r\n")
        self.hang(command)

    def log_message(self, format, *args) -> None:
        pass


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True
    request_queue_size = 64

    def handle_error(self, request, client_address) -> None:
        pass  # Clients that break off are part of the tests.


server = Server(("127.0.0.1", 0), Handler)
threading.Thread(target=server.serve_forever, daemon=True).start()
say(event="listening", port=server.server_address[1])
for line in sys.stdin:
    command = json.loads(line)
    with lock:
        told = command
    say(event="told", mode=command["mode"])
