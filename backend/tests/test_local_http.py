"""Calls of near servers that send nothing, too much, or a byte now and then."""

import socket
import threading
import unittest
from typing import Callable

from orvane_backend.translators.local_http import Refusal, Unreachable, call, said_error

SECONDS = 60.0


class Raw:
    """Takes one connection and does with it as told, after its request. A context manager."""

    def __init__(self, serve: Callable[[socket.socket], None]) -> None:
        self._listener = socket.create_server(("127.0.0.1", 0))
        self._serve = serve
        self.address = f"http://127.0.0.1:{self._listener.getsockname()[1]}"
        self.ended = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)

    def __enter__(self) -> "Raw":
        self._thread.start()
        return self

    def __exit__(self, *_: object) -> None:
        self._listener.close()
        self._thread.join(SECONDS)

    def _run(self) -> None:
        connection, _ = self._listener.accept()
        with connection:
            connection.settimeout(SECONDS)
            try:
                connection.recv(65536)
                self._serve(connection)
                self.ended.set()
            except OSError:
                self.ended.set()


def silent(connection: socket.socket) -> None:
    while connection.recv(100):
        pass


def dripping(prefix: bytes) -> Callable[[socket.socket], None]:
    def serve(connection: socket.socket) -> None:
        connection.sendall(prefix)
        waiting = threading.Event()
        while True:
            connection.sendall(b"a")
            waiting.wait(0.01)

    return serve


def sending(content: bytes) -> Callable[[socket.socket], None]:
    return lambda connection: connection.sendall(content)


class CallTest(unittest.TestCase):
    def test_one_limit_holds_over_everything(self) -> None:
        for serve in (
            silent,
            dripping(b""),
            dripping(b"HTTP/1.1 200 OK\r\nX: "),
            dripping(b"HTTP/1.1 200 OK\r\n\r\n"),
            dripping(b"HTTP/1.1 200 OK\r\nContent-Length: 9999999\r\n\r\n"),
        ):
            with Raw(serve) as server:
                with self.assertRaises(Unreachable) as caught:
                    call(server.address, seconds=0.3)
                self.assertTrue(caught.exception.timed_out)
                # The server learns of it: a model does not go on for nobody.
                self.assertTrue(server.ended.wait(SECONDS))

    def test_answers_that_are_none(self) -> None:
        for content in (
            b"",
            b"SSH-2.0-x\r\n",
            b"HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\n{}",
            b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n",
            b"HTTP/1.1 200 OK\r\n\r\n" + b"[" + b" " * (5 << 20) + b"]",
        ):
            with Raw(sending(content)) as server:
                with self.assertRaises(Unreachable) as caught:
                    call(server.address, seconds=SECONDS)
                self.assertFalse(caught.exception.timed_out)

    def test_content_that_is_no_json_is_a_refusal(self) -> None:
        for content in (b"\xff\xfe", b"[" * 100_000, b"", b"null"):
            with Raw(sending(b"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + content)) as server:
                with self.assertRaises(Refusal) as caught:
                    call(server.address, seconds=SECONDS)
                self.assertEqual(caught.exception.status, 200)

    def test_addresses_that_are_none(self) -> None:
        for address in ("", "x", "http://", "http://[", "http://127.0.0.1:99999", "file:///etc"):
            with self.assertRaises(Unreachable):
                call(address, seconds=SECONDS)

    def test_a_limit_that_is_over_calls_nobody(self) -> None:
        with self.assertRaises(Unreachable) as caught:
            call("http://127.0.0.1:9", seconds=0.0)
        self.assertTrue(caught.exception.timed_out)

    def test_errors_of_every_shape(self) -> None:
        for record, expected in (
            ({"error": {"message": "a", "type": "b"}}, "a"),
            ({"error": "a"}, "a"),
            ({"error": {"code": 1}}, '{"code": 1}'),
            ({"detail": "a"}, "a"),
            ({"detail": ["a"]}, '["a"]'),
            ({"message": "a"}, "a"),
            ({}, ""), ([], ""), (None, ""), ("a", ""),
        ):  # fmt: skip
            self.assertEqual(said_error(record), expected)


if __name__ == "__main__":
    unittest.main()
