"""A strict stand-in of AssemblyAI's streaming; what it does is in README.md.

/usr/bin/python3 -m tests.cloud_services.assemblyai [--key KEY] [--fault NAME ...] [--help]
"""

import functools
import uuid
from typing import Any

from tests.cloud_services._assemblyai_query import CODINGS, Invalid, Wishes
from tests.cloud_services._assemblyai_session import CANCELLED, EXPIRED, Dismissed, Turns
from tests.cloud_services._assemblyai_v2 import DEPRECATED, OldDismissed, OldSession, OldSilent
from tests.cloud_services._control import common, parser, run
from tests.cloud_services._faults import COMMON, Fault, Moment
from tests.cloud_services._peer import Peer
from tests.cloud_services._session import Session
from tests.cloud_services._websocket import Answer, Handshake, Link

PATH = '/v3/ws'
TOKEN_PATH = '/v3/token'
OLD_PATH = '/v2/realtime/ws'
OLD_TOKEN_PATH = '/v2/realtime/token'
OLD = ('dead', 'alive', 'silent', 'refused', 'missing')
THREE_HOURS = 10800.0

UNAUTHORISED = 'Unauthorized Connection: '
NO_HEADER = UNAUTHORISED + 'Missing Authorization header'
WRONG_KEY = UNAUTHORISED + 'Invalid API key'
TOO_MANY = UNAUTHORISED + 'Too many concurrent sessions'
LONG = CANCELLED + ': ' + 'much has to be said about it, ' * 8 + 'and this is the end'

# Codes of older days that clients still know, and whether they come before Begin.
OLD_CODES = {
    1013: ('Try again later', True),
    4000: ('Sample rate must be a positive integer', True),
    4001: ('Not Authorized', True),
    4002: ('Insufficient Funds', True),
    4003: ('This feature is paid-only', True),
    4004: ('Session not found', False),
    4008: ('Session Expired', False),
    4010: ('Session previously closed', False),
    4029: ('Client sent audio too fast', False),
    4030: ('Session is handled by another WebSocket', False),
    4031: ('Session idle for too long', False),
    4032: ('Audio duration is too short', False),
    4033: ('Audio duration is too long', False),
    4034: ('Audio too small to transcode', False),
    4100: ('Endpoint received invalid JSON', False),
    4101: ('Endpoint received a message with an invalid schema', False),
    4102: ('Too many streams', True),
    4103: ('Session has been reconnected', False),
}


def _closed(moment: Moment, code: int, text: str) -> Fault:
    return Fault(moment, lambda session: session.refuse(code, text))


def _refused(status: int, error: str) -> Fault:
    return Fault(Moment.HANDSHAKE, lambda peer: Answer(status, {'error': error}))


def _warn(session: Session) -> None:
    session.send({'type': 'Warning', 'warning_code': 1, 'warning': 'this is to be taken lightly'})


FAULTS = (
    COMMON
    | {
        'key': _closed(Moment.DISMISS, 1008, WRONG_KEY),
        'key-http': _refused(401, 'Unauthorized'),
        'key-http-403': _refused(403, 'Forbidden'),
        'credit': _closed(Moment.DISMISS, 1008, UNAUTHORISED + 'Insufficient account balance'),
        'model': _closed(Moment.DISMISS, 3006, 'Invalid Message: speech_model is not known'),
        'too-many': _closed(Moment.DISMISS, 3009, TOO_MANY),
        'unavailable': _refused(503, 'Service unavailable'),
        'internal': Fault(Moment.OPEN, lambda session: session.close(1011, 'Internal error')),
        'close-mid': _closed(Moment.UTTERANCE, 3005, CANCELLED),
        'expired': _closed(Moment.UTTERANCE, 3008, EXPIRED),
        'too-fast': Fault(Moment.AUDIO, lambda session: session.too_fast()),
        'long-reason': _closed(Moment.OPEN, 3005, LONG),
        'warning': Fault(Moment.OPEN, _warn),
        'slow-begin': Fault(Moment.ALWAYS),
        'old-error': Fault(Moment.ALWAYS),
        'formatted-flag': Fault(Moment.ALWAYS),
        'no-twin': Fault(Moment.ALWAYS),
        'tags': Fault(Moment.ALWAYS),
    }
    | {
        f'old-{code}': _closed(Moment.DISMISS if early else Moment.OPEN, code, text)
        for code, (text, early) in OLD_CODES.items()
    }
)


class AssemblyAI(Peer):
    """Takes sessions at /v3/ws, and deals with those at /v2/realtime/ws as `old` says.

    `longest` is how many seconds a session may last. Without a key any without a space in it does.
    """

    FAULTS = FAULTS

    def __init__(self, *, old: str = 'dead', longest: float = THREE_HOURS, **others: Any) -> None:
        super().__init__(**others)
        assert old in OLD
        self.old = old
        self.longest = longest
        self._tokens: dict[str, tuple[float, float]] = {}  # Until when, and for how long a session.

    def admit(self, link: Link, handshake: Handshake, faults: list[str]) -> Session | Answer:
        if handshake.path == OLD_TOKEN_PATH:
            return Answer(401, {'error': DEPRECATED})
        if handshake.path == TOKEN_PATH:
            return self._give_token(handshake)
        if handshake.path == OLD_PATH:
            return self._admit_old(link, handshake, faults)
        if handshake.path != PATH:
            return Answer(404, {'error': 'Not found'})
        return self._admit_new(link, handshake, faults)

    def _admit_new(self, link: Link, handshake: Handshake, faults: list[str]) -> Session | Answer:
        longest, why = self._authorise(handshake)
        if why:
            return Dismissed(self, link, faults, 1008, why)
        if self.full():
            return Dismissed(self, link, faults, 3009, TOO_MANY)
        try:
            wishes = Wishes({}).updated(dict(handshake.query))
            wishes.check()
        except Invalid as error:
            return Dismissed(self, link, faults, 3006, f'Invalid Message: {error}')
        encoding = wishes.given.get('encoding', 'pcm_s16le')
        if encoding not in CODINGS:
            return Answer(501, {'error': f'this stand-in has no decoder for {encoding}'})
        names = [name for name, _ in handshake.query]
        return Turns(self, link, faults, wishes, names, longest)

    # Keys.

    def _is_key(self, text: str) -> bool:
        return bool(text) and (' ' not in text if self.key is None else text == self.key)

    def _authorise(self, handshake: Handshake) -> tuple[float, str]:
        """How long a session may last, and why there shall be none."""
        header, token = handshake.headers.get('authorization'), handshake.value('token')
        if header is not None:
            return self.longest, '' if self._is_key(header) else WRONG_KEY
        if token is None:
            return 0.0, NO_HEADER
        until, longest = self._tokens.pop(token, (0.0, 0.0))
        if longest and self.clock.now() <= until:
            return longest, ''
        return 0.0, UNAUTHORISED + 'Invalid or used token'

    def _give_token(self, handshake: Handshake) -> Answer:
        if not self._is_key(handshake.headers.get('authorization', '')):
            return Answer(401, {'error': 'Unauthorized'})
        seconds = handshake.value('expires_in_seconds') or ''
        longest = handshake.value('max_session_duration_seconds') or '10800'
        if not (seconds.isdigit() and 1 <= int(seconds) <= 600):
            return Answer(400, {'error': 'expires_in_seconds is not from 1 to 600'})
        if not (longest.isdigit() and 60 <= int(longest) <= 10800):
            return Answer(400, {'error': 'max_session_duration_seconds is not from 60 to 10800'})
        token = uuid.uuid4().hex
        self._tokens[token] = (self.clock.now() + int(seconds), float(longest))
        return Answer(200, {'token': token, 'expires_in_seconds': int(seconds)})

    # The second version.

    def _admit_old(self, link: Link, handshake: Handshake, faults: list[str]) -> Session | Answer:
        if self.old == 'refused':
            return Answer(410, {'error': DEPRECATED})
        if self.old == 'missing':
            return Answer(404, {'error': 'Not found'})
        if self.old == 'silent':
            return OldSilent(self, link, faults, None)
        if self.old == 'dead':
            return OldDismissed(self, link, faults, 4105, DEPRECATED)
        if not self._is_key(handshake.headers.get('authorization', '')):
            return OldDismissed(self, link, faults, 4001, 'Not Authorized')
        rate = handshake.value('sample_rate') or ''
        if not (rate.isdigit() and int(rate) > 0):
            return OldDismissed(self, link, faults, 4000, OLD_CODES[4000][0])
        return OldSession(self, link, faults, int(rate))


def main() -> None:
    arguments = parser('assemblyai', FAULTS)
    arguments.add_argument('--old', choices=OLD, default='dead', help='what /v2/realtime/ws does')
    arguments.add_argument(
        '--longest', type=float, default=THREE_HOURS, help='seconds of a session'
    )
    options = arguments.parse_args()
    run(functools.partial(AssemblyAI, **common(options), old=options.old, longest=options.longest))


if __name__ == '__main__':
    main()
