"""What can go wrong on purpose, whichever service it is. Each service adds its own."""

import dataclasses
import enum
import json
from collections.abc import Callable
from typing import Any

HUGE = 20 * 1024 * 1024  # Bytes of the huge message.


class Moment(enum.Enum):
    """When a fault strikes a connection, at most once."""

    HOLD = 'hold'  # The handshake waits for a release.
    HANDSHAKE = 'handshake'  # It is refused.
    DISMISS = 'dismiss'  # It is accepted and closed before the first message, or at once.
    OPEN = 'open'  # Once it is open, or at once.
    AUDIO = 'audio'  # With the first sound, or at once when some has come.
    UTTERANCE = 'utterance'  # In the middle of an utterance, behind a first interim.
    ALWAYS = 'always'  # It changes how the service behaves.


@dataclasses.dataclass(frozen=True)
class Fault:
    """`act` gets the session; for a refused handshake the peer, and gives the answer."""

    moment: Moment
    act: Callable[[Any], Any] = lambda session: None


def _reserved_opcode(session: Any) -> None:
    session.link.write(b'\x83\x05hello')


def _bad_utf8(session: Any) -> None:
    session.link.write(b'\x81\x04\xff\xfe\xfd\xfc')


def _huge(session: Any) -> None:
    session.link.send_text(json.dumps({'type': 'Padding', 'padding': 'x' * HUGE}))


def _huge_length(session: Any) -> None:
    """The head of a message of four exabytes, and nothing of it."""
    session.link.write(b'\x81\x7f' + (1 << 62).to_bytes(8, 'big'))


def _wrong_shapes(session: Any) -> None:
    for message in session.WRONG_SHAPES:
        session.link.send_text(json.dumps(message))


COMMON = {
    'slow-handshake': Fault(Moment.HOLD),
    'silent': Fault(Moment.ALWAYS),
    'drop': Fault(Moment.UTTERANCE, lambda session: session.link.drop()),
    'drop-open': Fault(Moment.OPEN, lambda session: session.link.drop()),
    'reset': Fault(Moment.UTTERANCE, lambda session: session.link.drop(reset=True)),
    'stall': Fault(Moment.UTTERANCE, lambda session: session.link.stall()),
    'garbage': Fault(Moment.OPEN, _reserved_opcode),
    'garbage-text': Fault(Moment.OPEN, lambda session: session.link.send_text('no {JSON')),
    'bad-utf8': Fault(Moment.OPEN, _bad_utf8),
    'wrong-shape': Fault(Moment.OPEN, _wrong_shapes),
    'unknown-type': Fault(Moment.ALWAYS),
    'binary-down': Fault(Moment.OPEN, lambda session: session.link.send_binary(b'\x00\x01\xff')),
    'huge': Fault(Moment.OPEN, _huge),
    'huge-length': Fault(Moment.OPEN, _huge_length),
}


class Armed:
    """The faults that wait for connections to come."""

    def __init__(self) -> None:
        self._left: dict[str, float] = {}

    def arm(self, name: str, times: float = float('inf')) -> None:
        """For so many connections."""
        self._left[name] = times

    def disarm(self, name: str | None) -> None:
        """One of them, or all."""
        if name is None:
            self._left.clear()
        else:
            self._left.pop(name, None)

    def draw(self) -> list[str]:
        """Those that strike the connection that has just come."""
        names = [name for name, left in self._left.items() if left >= 1]
        for name in names:
            self._left[name] -= 1
        return names
