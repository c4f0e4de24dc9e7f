"""How an answer goes out, and what can happen to it between the service and the client.

None of it depends on the service or on whether the request was a good one.
"""

from __future__ import annotations

import os
import socket
import struct
from dataclasses import dataclass, replace
from typing import Callable

from .messages import JSON, Answer

HTML = 'text/html; charset=utf-8'
BAD_GATEWAY = (
    b'<html>\r\n<head><title>502 Bad Gateway</title></head>\r\n<body>\r\n'
    b'<center><h1>502 Bad Gateway</h1></center>\r\n</body>\r\n</html>\r\n'
)
PORTAL = (
    b'<!DOCTYPE html>\n<html><head><title>Welcome to our network</title></head>\n'
    b'<body><form method="post" action="/login">Please accept the terms.</form></body></html>\n'
)
ELSEWHERE = '/elsewhere'
BLOCK = 65536


class Cut(Exception):
    """The connection ends here, without the rest of the answer."""


def write_head(handler, answer: Answer) -> None:
    handler.send_response(answer.status)
    if answer.content_type:
        handler.send_header('Content-Type', answer.content_type)
    for name, value in answer.headers:
        handler.send_header(name, value)
    handler.send_header('Content-Length', str(len(answer.body)))
    handler.end_headers()


def write_half(handler, answer: Answer) -> None:
    write_head(handler, answer)
    handler.wfile.write(answer.body[: len(answer.body) // 2])


def reset(connection: socket.socket) -> None:
    """Ends a connection as a machine does that knows nothing of it any more."""
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack('ii', 1, 0))
    os.close(connection.detach())


def is_gone(connection: socket.socket) -> bool:
    """Whether the client has closed its end; what it still had to say does not matter."""
    try:
        return connection.getsockopt(socket.IPPROTO_TCP, socket.TCP_INFO, 1)[0] != 1  # ESTABLISHED
    except OSError:
        return True


def _whole(service, handler, answer: Answer) -> None:
    write_head(handler, answer)
    if handler.command != 'HEAD':
        handler.wfile.write(answer.body)


def _cut(service, handler, answer: Answer) -> None:
    write_half(handler, answer)
    raise Cut


def _reset(service, handler, answer: Answer) -> None:
    write_half(handler, answer)
    reset(handler.connection)
    raise Cut


def _closed(service, handler, answer: Answer) -> None:
    raise Cut


def _stall(service, handler, answer: Answer) -> None:
    write_half(handler, answer)
    handler.connection.recv(1)  # The client's end, or the stand-in's own.
    raise Cut


def _large(service, handler, answer: Answer) -> None:
    """Sound JSON behind a great many spaces, which JSON allows."""
    handler.send_response(answer.status)
    handler.send_header('Content-Type', JSON)
    handler.send_header('Content-Length', str(service.settings.large + len(answer.body)))
    handler.end_headers()
    for start in range(0, service.settings.large, BLOCK):
        handler.wfile.write(b' ' * min(BLOCK, service.settings.large - start))
    handler.wfile.write(answer.body)


def _instead(status: int, content_type: str, body: bytes) -> Callable:
    return lambda service, answer: Answer(status, body, content_type)


def _broken_json(service, answer: Answer) -> Answer:
    return replace(answer, status=200, body=answer.body[: len(answer.body) // 2])


def _redirect(status: int) -> Callable:
    def change(service, answer: Answer) -> Answer:
        place = f'http://127.0.0.1:{service.port}{ELSEWHERE}'
        return Answer(status, headers=(('Location', place),))

    return change


@dataclass(frozen=True)
class Fault:
    write: Callable[..., None] = _whole
    change: Callable[..., Answer] = lambda service, answer: answer
    keeps_text: bool = False  # The client is given what was said all the same.


FAULTS = {
    'slow': Fault(keeps_text=True),  # The service waits before it comes here.
    'stall': Fault(_stall),
    'cut': Fault(_cut),
    'reset': Fault(_reset),
    'closed': Fault(_closed),
    'html-200': Fault(change=_instead(200, HTML, PORTAL)),
    'html-502': Fault(change=_instead(502, HTML, BAD_GATEWAY)),
    'empty': Fault(change=_instead(200, JSON, b'')),
    'broken-json': Fault(change=_broken_json),
    'other-json': Fault(change=_instead(200, JSON, b'[null]')),
    'redirect': Fault(change=_redirect(302)),
    'redirect-307': Fault(change=_redirect(307)),
    'large': Fault(_large, keeps_text=True),
}
SOUND = Fault(keeps_text=True)


def deliver(service, handler, answer: Answer, fault: str | None) -> bool:
    """Whether all that was to be sent has been sent."""
    try:
        FAULTS.get(fault, SOUND).write(service, handler, answer)
    except (OSError, Cut):
        handler.close_connection = True
        return False
    return True
