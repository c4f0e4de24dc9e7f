"""Addresses of recognisers as a person writes them down."""

from dataclasses import dataclass
from urllib.parse import SplitResult, urlsplit

_PORTS = {"http": 80, "ws": 80, "https": 443, "wss": 443}

# What people copy along from a server's own documentation: the client adds its path itself.
_KNOWN_ENDS = ("/v1/audio/transcriptions", "/v1/listen", "/inference", "/v1")


class BadAddress(ValueError):
    """Why an address cannot be used, in German."""


@dataclass(frozen=True)
class Address:
    """Where a server is. `path` begins with a slash or is empty, and has none at its end."""

    is_secure: bool
    host: str
    port: int
    path: str = ""

    @property
    def authority(self) -> str:
        """Host and port, as in a URL."""
        return f"[{self.host}]:{self.port}" if ":" in self.host else f"{self.host}:{self.port}"

    @property
    def origin(self) -> tuple[bool, str, int]:
        """What two addresses of one server have in common."""
        return self.is_secure, self.host, self.port

    def web(self) -> str:
        """The address for HTTP."""
        return f"{'https' if self.is_secure else 'http'}://{self.authority}{self.path}"

    def socket(self) -> str:
        """The address for WebSockets."""
        return f"{'wss' if self.is_secure else 'ws'}://{self.authority}{self.path}"


def parse_address(text: str) -> Address:
    """Takes http, https, ws and wss alike: which of them a kind of server speaks is known.

    Raises BadAddress. A key has its own place, so none is taken from an address.
    """
    if not text.isascii() or not text.isprintable() or " " in text:
        raise BadAddress("sie enthält Zeichen, die dort nicht stehen können")
    try:
        parts = urlsplit(text)
        host, port = parts.hostname, parts.port
    except ValueError:
        raise BadAddress("Rechner oder Port sind nicht lesbar") from None
    _check(parts)
    if not host or not _is_host(host):
        raise BadAddress("der Rechner fehlt")
    if port == 0:
        raise BadAddress("den Port 0 gibt es nicht")
    secure = parts.scheme in ("https", "wss")
    return Address(secure, host, port or _PORTS[parts.scheme], _base(parts.path))


def _check(parts: SplitResult) -> None:
    if parts.scheme not in _PORTS:
        raise BadAddress("sie beginnt nicht mit http://, https://, ws:// oder wss://")
    if "@" in parts.netloc:
        raise BadAddress("Zugangsdaten gehören nicht hinein, ein Schlüssel steht in „key“")
    if parts.query or parts.fragment:
        raise BadAddress("nach dem Pfad darf nichts folgen")


def _is_host(host: str) -> bool:
    return all(c.isalnum() or c in "-._:%" for c in host)


def _base(path: str) -> str:
    path = path.rstrip("/")
    for end in _KNOWN_ENDS:
        if path.endswith(end):
            return path[: -len(end)].rstrip("/")
    return path
