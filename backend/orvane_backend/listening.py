"""The server's sockets: which addresses it listens on, and who may come in."""

import socket
from ipaddress import ip_address
from typing import Optional
from urllib.parse import urlsplit

_LOOPBACK_NAMES = ("localhost", "127.0.0.1", "::1")


def addresses(bind_host: str) -> list[tuple[socket.AddressFamily, str]]:
    """The addresses for a value of `ORV_BIND_HOST`; the first is the one that must be had."""
    loopback6 = (socket.AF_INET6, "::1")
    if bind_host in ("", "localhost"):
        return [(socket.AF_INET, "127.0.0.1"), loopback6]
    if bind_host == "0.0.0.0":
        # A client on this machine may try "localhost" as ::1 first.
        return [(socket.AF_INET, "0.0.0.0"), loopback6]
    return [(socket.AF_INET6 if ":" in bind_host else socket.AF_INET, bind_host)]


def listen(bind_host: str, port: int) -> list[socket.socket]:
    """Bound sockets, all on one port (0 takes a free one). Raises OSError for the first address."""
    sockets: list[socket.socket] = []
    for family, host in addresses(bind_host):
        try:
            sockets.append(_bound(family, host, port))
        except OSError:
            if not sockets:
                raise
            continue
        port = sockets[0].getsockname()[1]
    return sockets


def _bound(family: socket.AddressFamily, host: str, port: int) -> socket.socket:
    listener = socket.socket(family, socket.SOCK_STREAM)
    try:
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        if family == socket.AF_INET6:
            listener.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
        listener.bind((host, port))
    except OSError:
        listener.close()
        raise
    return listener


def describe(listener: socket.socket) -> str:
    """Address and port, as in a URL."""
    host, port = listener.getsockname()[:2]
    return f"[{host}]:{port}" if ":" in host else f"{host}:{port}"


def keep_alive(connection: Optional[socket.socket]) -> None:
    """Lets the system find out within a minute that a client over the network is gone.

    WebSocket pings would not do: while the server reads slowly on purpose it sees no answers.
    """
    if connection is not None:
        connection.setsockopt(socket.SOL_SOCKET, socket.SO_KEEPALIVE, 1)
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_KEEPIDLE, 30)
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_KEEPINTVL, 10)
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_KEEPCNT, 3)


def is_welcome(origin: Optional[str], host: Optional[str]) -> bool:
    """Whether a client with these headers may connect.

    Programs send none, or a name of their own. A web page always sends one, and none may listen
    in through the browser of the person in front of it: neither one from the internet, nor one
    without a name ("null": a file, a frame), nor one whose own name was made to lead here. So a name
    counts only if it can mean nothing but this machine: localhost, or the very address asked for.
    """
    if not origin or ("//" not in origin and origin != "null"):
        return True  # No browser says that.
    try:
        address = urlsplit(origin)
        name, asked_for = address.hostname, urlsplit(f"//{host}").hostname
    except ValueError:
        return False
    if address.scheme not in ("http", "https") or name is None:
        return False
    return name in _LOOPBACK_NAMES or (_is_address(name) and name == asked_for)


def _is_address(name: str) -> bool:
    try:
        ip_address(name)
    except ValueError:
        return False
    return True
