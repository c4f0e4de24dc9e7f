"""What goes in and out of a stand-in, and the ledger of what was checked on the way."""

from __future__ import annotations

import json
from dataclasses import dataclass, field, replace

JSON = 'application/json; charset=utf-8'
PLAIN = 'text/plain; charset=utf-8'

# What a test may want to know of a request's headers; the rest is the client's own business.
RELEVANT = (
    'accept',
    'authorization',
    'connection',
    'content-length',
    'content-type',
    'expect',
    'host',
    'ocp-apim-subscription-key',
    'ocp-apim-subscription-region',
    'transfer-encoding',
    'user-agent',
    'x-goog-api-key',
)


@dataclass(frozen=True)
class Request:
    number: int
    connection: int
    method: str
    path: str
    query: dict[str, list[str]]
    headers: dict[str, str]
    body: bytes
    streamed: bool = False  # It came in chunks, its length was not known beforehand.

    def one(self, name: str) -> str | None:
        """The query's only value of that name; none if it is absent or stands there twice."""
        values = self.query.get(name, [])
        return values[0] if len(values) == 1 else None

    def header(self, name: str) -> str | None:
        return self.headers.get(name.lower())

    def relevant_headers(self) -> dict[str, str]:
        return {name: value for name, value in self.headers.items() if name in RELEVANT}

    def content_type(self) -> tuple[str, dict[str, str]]:
        """The media type and its parameters, in small letters."""
        first, *rest = (self.header('content-type') or '').lower().split(';')
        pairs = (part.strip().partition('=') for part in rest if part.strip())
        return first.strip(), {name.strip(): value.strip().strip('"') for name, _, value in pairs}

    def json(self):
        """The body as JSON; nothing if it is none."""
        try:
            return json.loads(self.body.decode('utf-8'))
        except (ValueError, RecursionError):
            return None


@dataclass(frozen=True)
class Answer:
    status: int
    body: bytes = b''
    content_type: str | None = None
    headers: tuple[tuple[str, str], ...] = ()
    text: tuple[str, ...] = ()

    def with_header(self, name: str, value: str) -> Answer:
        return replace(self, headers=(*self.headers, (name, value)))


def json_answer(status: int, content, text: tuple[str, ...] = ()) -> Answer:
    # Letters stand as they are, as the services send them, and not as \u escapes.
    body = json.dumps(content, ensure_ascii=False).encode()
    return Answer(status, body, JSON, text=text)


def plain_answer(status: int, text: str) -> Answer:
    return Answer(status, text.encode(), PLAIN)


class Refused(Exception):
    def __init__(self, answer: Answer) -> None:
        super().__init__(answer.status)
        self.answer = answer


@dataclass
class Checks:
    """What was looked at, in this order, and what was found wrong; facts go into the event."""

    passed: list[str] = field(default_factory=list)
    failed: str | None = None
    facts: dict[str, object] = field(default_factory=dict)
    taken: list[int] = field(default_factory=list)  # Lines that this request was understood as.

    def require(self, name: str, holds: object, refusal: Answer) -> None:
        if not holds:
            self.failed = name
            raise Refused(refusal)
        self.passed.append(name)
