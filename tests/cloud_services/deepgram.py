"""A strict stand-in of Deepgram's live streaming; what it does is in README.md.

/usr/bin/python3 -m tests.cloud_services.deepgram [--key KEY] [--fault NAME ...] [--help]
"""

import functools
import uuid
from typing import Any

from tests.cloud_services._control import common, parser, run
from tests.cloud_services._deepgram_query import Refusal, no_such_model, read
from tests.cloud_services._deepgram_session import Listen
from tests.cloud_services._faults import COMMON, Fault, Moment
from tests.cloud_services._peer import Peer
from tests.cloud_services._session import Session
from tests.cloud_services._websocket import Answer, Handshake, Link

PATH = '/v1/listen'


def answer(refusal: Refusal) -> Answer:
    """How the service refuses a handshake."""
    request = str(uuid.uuid4())
    return Answer(
        refusal.status,
        {'err_code': refusal.code, 'err_msg': refusal.message, 'request_id': request},
        (('dg-request-id', request), ('dg-error', refusal.message)),
    )


WRONG_KEY = Refusal(401, 'INVALID_AUTH', 'Invalid credentials.')
TOO_MANY = Refusal(429, 'TOO_MANY_REQUESTS', 'Too many requests. Please try again later')
NO_PERMISSION = 'Project does not have access to the requested model.'


def _refused(status: int, code: str, message: str) -> Fault:
    return Fault(Moment.HANDSHAKE, lambda peer: answer(Refusal(status, code, message)))


def _closed(moment: Moment, code: int, reason: str) -> Fault:
    return Fault(moment, lambda session: session.close(code, reason))


SILENT_TOO_LONG = 'NET-0000: the service did not transmit a text message in time'
FAULTS = COMMON | {
    'key': Fault(Moment.HANDSHAKE, lambda peer: answer(WRONG_KEY)),
    'permission': _refused(403, 'INSUFFICIENT_PERMISSIONS', NO_PERMISSION),
    'permission-401': _refused(401, 'INSUFFICIENT_PERMISSIONS', NO_PERMISSION),
    'model': Fault(Moment.HANDSHAKE, lambda peer: answer(no_such_model())),
    'credit': _refused(402, 'ASR_PAYMENT_REQUIRED', 'Project does not have enough credits.'),
    'too-many': Fault(Moment.HANDSHAKE, lambda peer: answer(TOO_MANY)),
    'unavailable': _refused(503, 'SERVICE_UNAVAILABLE', 'Service unavailable.'),
    'internal': _closed(Moment.OPEN, 1011, SILENT_TOO_LONG),
    'close-mid': _closed(Moment.UTTERANCE, 1011, SILENT_TOO_LONG),
    'undecodable': Fault(Moment.AUDIO, lambda session: session.undecodable()),
    'too-fast': Fault(Moment.ALWAYS),
    'idle-code': Fault(Moment.ALWAYS),
    'finalize-open': Fault(Moment.ALWAYS),
    'finalize-unanswered': Fault(Moment.ALWAYS),
    'no-speech-final': Fault(Moment.ALWAYS),
}


class Deepgram(Peer):
    """Takes streams at /v1/listen.

    `key` goes with `Token`, the short-lived `token` with `Bearer`; without a key any of them does.
    `patience` is how many seconds it waits for sound or text.
    """

    FAULTS = FAULTS
    RATE = 1.25

    def __init__(self, *, token: str | None = None, patience: float = 10.0, **others: Any) -> None:
        super().__init__(**others)
        self.token = token
        self.patience = patience

    def admit(self, link: Link, handshake: Handshake, faults: list[str]) -> Session | Answer:
        try:
            self._check(handshake)
            stream = read(handshake)
        except Refusal as refusal:
            return answer(refusal)
        return Listen(self, link, faults, stream, str(uuid.uuid4()), self.patience)

    def _check(self, handshake: Handshake) -> None:
        if handshake.path != PATH:
            raise Refusal(404, 'NOT_FOUND', 'Not found.')
        if not self._is_authorised(handshake):
            raise WRONG_KEY
        if self.full():
            raise TOO_MANY

    def _is_authorised(self, handshake: Handshake) -> bool:
        header = handshake.headers.get('authorization')
        if header is not None:
            scheme, _, secret = header.partition(' ')
        elif len(handshake.subprotocols) == 2:
            scheme, secret = handshake.subprotocols
            scheme = {'token': 'Token'}.get(scheme, '')
        else:
            return False
        wanted = {'Token': self.key, 'Bearer': self.token}
        if scheme not in wanted or not secret:
            return False
        return self.key is None or secret == wanted[scheme]

    def extra_headers(self, session: Session) -> tuple[tuple[str, str], ...]:
        assert isinstance(session, Listen)
        return (('dg-request-id', session.request),)

    def subprotocol(self, handshake: Handshake) -> str | None:
        return 'token' if handshake.subprotocols[:1] == ['token'] else None


def main() -> None:
    arguments = parser('deepgram', FAULTS)
    arguments.add_argument('--token', help='the only short-lived token that is accepted')
    arguments.add_argument('--patience', type=float, default=10.0, help='seconds without a word')
    options = arguments.parse_args()
    own = {'token': options.token, 'patience': options.patience}
    run(functools.partial(Deepgram, **common(options), **own))


if __name__ == '__main__':
    main()
