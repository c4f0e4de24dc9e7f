"""One session of the stand-in of AssemblyAI, third version of its interface."""

import json
import time
import uuid
from typing import Any

from tests.cloud_services._assemblyai_query import CODINGS, ENGLISH, WHISPER, Invalid, Wishes
from tests.cloud_services._peer import Peer
from tests.cloud_services._session import Session
from tests.cloud_services._speech import Ear, Utterance, Window, plain
from tests.cloud_services._websocket import Link

STEP = 0.3  # Seconds of sound between partial turns.
SHORTEST, LONGEST = 50, 1000  # Milliseconds of a frame.
REASON = 123  # Bytes of a close's reason.
CUT = ' See Error message for details'
CANCELLED = 'Session Cancelled: An error occurred'
EXPIRED = 'Session Expired: Maximum session duration exceeded'
LONG_AGO = 5.0  # Seconds of silence that Whisper gives a tag.


def cut(reason: str) -> str:
    """A reason as it fits into a close."""
    if len(reason.encode()) <= REASON:
        return reason
    return reason.encode()[: REASON - len(CUT)].decode(errors='ignore') + CUT


class Refusing(Session):
    """What says why, before it closes."""

    def refuse(self, code: int, text: str) -> None:
        """Says what is wrong, and closes with the same code."""
        error: dict[str, Any] = {'type': 'Error', 'error_code': code, 'error': text}
        self.send({'error': text} if 'old-error' in self.faults else error)
        super().refuse(code, cut(text))


class Dismissed(Refusing):
    """A connection that is accepted, told why not, and closed."""

    def __init__(self, peer: Peer, link: Link, faults: list[str], code: int, text: str) -> None:
        super().__init__(peer, link, faults, None)
        self.code = code
        self.text = text

    def begin(self) -> None:
        self.refuse(self.code, self.text)

    def take_text(self, text: str) -> None:
        """Only with the fault "silent" does it get here."""

    def take_binary(self, data: bytes) -> None:
        """Only with the fault "silent" does it get here."""


class Turns(Refusing):
    """Begin, turns, Termination."""

    WRONG_SHAPES = (
        {'type': 'Turn'},
        {'type': 'Turn', 'turn_order': 'first', 'end_of_turn': 'yes', 'transcript': 7},
        {'type': 'Turn', 'turn_order': 0, 'end_of_turn': True, 'transcript': None, 'words': 3},
        {'type': 7},
        {},
        [],
        None,
    )

    def __init__(
        self,
        peer: Peer,
        link: Link,
        faults: list[str],
        wishes: Wishes,
        names: list[str],
        longest: float,
    ) -> None:
        """`names` are the query's, `longest` the seconds a session may last."""
        coding = CODINGS[wishes.given.get('encoding', 'pcm_s16le')]
        super().__init__(peer, link, faults, Ear(coding, wishes.given['sample_rate']))
        self.wishes = wishes
        self.names = names
        self.longest = longest
        self.utterances.pause = wishes.pause
        self.order = 0
        self.begun = False
        self.terminated = False
        self.next_step = 0.0
        self.silent_since = 0.0

    def begin(self) -> None:
        for what in self.wishes.misuses(self.names):
            self.misuse(what)
        if 'slow-begin' in self.faults:
            self.peer.hold(self.link, 'begin', self._say_begin)
        else:
            self._say_begin()

    def _say_begin(self) -> None:
        self.begun = True
        expires = int(time.time() + self.longest)
        self.send({'type': 'Begin', 'id': str(uuid.uuid4()), 'expires_at': expires})

    # What comes.

    def take_text(self, text: str) -> None:
        self.heard_at = self.peer.clock.now()
        try:
            message = json.loads(text)
        except ValueError:
            self.refuse(3006, f'Invalid JSON: {text[:60]}')
            return
        if not isinstance(message, dict) or not isinstance(message.get('type'), str):
            self.refuse(3006, 'Invalid Message: type is missing')
        elif self.terminated:
            self.misuse('text behind Terminate')
        else:
            self._obey(message['type'], message)

    def _obey(self, kind: str, message: dict[str, Any]) -> None:
        if kind == 'Terminate':
            self._terminate()
        elif kind == 'ForceEndpoint':
            self._end_turn('force')
        elif kind == 'UpdateConfiguration':
            self._update(message)
        elif kind != 'KeepAlive':
            self.refuse(3006, f'Invalid Message Type: {kind[:60]}')

    def _update(self, message: dict[str, Any]) -> None:
        texts = {
            name: value if isinstance(value, str) else json.dumps(value)
            for name, value in message.items()
        }
        try:
            wishes = self.wishes.updated(texts)
            wishes.check()
        except Invalid as error:
            self.refuse(3006, f'Invalid Message: {error}')
            return
        self.wishes = wishes
        self.utterances.pause = wishes.pause

    def take_binary(self, data: bytes) -> None:
        self.heard_at = self.peer.clock.now()
        assert self.ear
        length = self.ear.seconds(len(data)) * 1000
        if self.terminated:
            self.misuse('sound behind Terminate')
        elif not SHORTEST <= round(length, 3) <= LONGEST:
            self._refuse_length(length)
        else:
            if not self.begun:
                self.misuse('sound before Begin')
            self.listen(data)

    def _refuse_length(self, length: float) -> None:
        text = f'{round(length, 2):g} ms. Expected between {SHORTEST} and {LONGEST} ms'
        self.refuse(3007, f'Input duration violation: {text}')

    def too_fast(self) -> None:
        received, elapsed = self.pace.received, self.pace.elapsed
        text = f'Received {received:.2f} sec. audio in {elapsed:.2f} sec'
        self.refuse(3007, f'Audio Transmission Rate Exceeded: {text}')

    # Speech.

    def utterance_begun(self, window: Window) -> None:
        self.next_step = window.start + STEP
        if self.wishes.is_u3:
            start = round(window.start * 1000)
            self.send({'type': 'SpeechStarted', 'timestamp': start, 'confidence': 0.97})

    def step(self, window: Window) -> None:
        current = self.utterances.current
        if not current:
            self._tag_silence()
        elif self.utterances.is_over(window):
            self._end_turn('pause')
        elif self.now >= self.next_step - 1e-9:
            self.next_step += STEP
            self.interim()

    def interim(self) -> None:
        current = self.utterances.current
        if current and self.wishes.given.get('include_partial_turns', True):
            current.reveal()
            self.send(self._turn(current, current.revealed, end=False, formatted=False))

    def _end_turn(self, how: str) -> None:
        current = self.utterances.take()
        if not current:
            return
        count = len(current.words)
        self.send(self._turn(current, count, end=True, formatted=self._ends_formatted()))
        if self.wishes.model == ENGLISH and self.wishes.flag('format_turns'):
            if 'no-twin' in self.faults:
                self.refuse(3005, CANCELLED)
            else:
                self.send(self._turn(current, count, end=True, formatted=True))
        self.said(current, how)
        self.order += 1
        self.silent_since = self.now

    def _ends_formatted(self) -> bool:
        if self.wishes.is_u3 or self.wishes.model == WHISPER:
            return True
        return self.wishes.model != ENGLISH and 'formatted-flag' in self.faults

    def _tag_silence(self) -> None:
        """Whisper's tags are turns of their own."""
        tagging = 'tags' in self.faults and self.wishes.model == WHISPER
        if tagging and self.now - self.silent_since >= LONG_AGO:
            start, self.silent_since = self.silent_since, self.now
            tag = Utterance(0, '[Silence]', start, self.now)
            self.send(self._turn(tag, 1, end=True, formatted=True))
            self.order += 1

    def _terminate(self) -> None:
        self.terminated = True
        self._end_turn('end')
        assert self.ear
        message = {
            'type': 'Termination',
            'audio_duration_seconds': round(self.ear.seconds(self.ear.heard_bytes)),
            'session_duration_seconds': round(self.peer.clock.now() - self.opened_at),
        }
        self.send(message)
        self.close(1000, '')

    # Messages.

    def _turn(
        self, utterance: Utterance, count: int, *, end: bool, formatted: bool
    ) -> dict[str, Any]:
        """The first so many words. Of a partial turn the last word may change yet."""
        as_said = self.wishes.model != ENGLISH or formatted
        texts = [text if as_said else plain(text) for text in utterance.words[:count]]
        final = count if end else count - 1
        words = [
            {
                'text': text,
                'start': round(start * 1000),
                'end': round(stop * 1000),
                'confidence': 0.97,
                'word_is_final': place < final,
            }
            for place, (text, (start, stop)) in enumerate(
                zip(texts, utterance.times(0, count), strict=True)
            )
        ]
        message: dict[str, Any] = {
            'type': 'Turn',
            'turn_order': self.order,
            'turn_is_formatted': formatted,
            'end_of_turn': end,
            'transcript': ' '.join(text for text in texts[:final] if text),
            'end_of_turn_confidence': 0.93 if end else 0.05,
            'words': words,
        }
        if end:
            message['utterance'] = message['transcript']
        if self.wishes.flag('language_detection'):
            message |= {'language_code': self.wishes.language, 'language_confidence': 0.98}
        return message

    # Time-outs and ends.

    def deadline(self) -> float:
        end = self.opened_at + self.longest
        idle = self.wishes.given.get('inactivity_timeout')
        return end if idle is None else min(end, self.heard_at + float(idle))

    def overdue(self) -> None:
        if self.peer.clock.now() >= self.opened_at + self.longest:
            self.refuse(3008, EXPIRED)
        else:
            self.refuse(3005, 'Session Cancelled: no activity within inactivity_timeout')

    def gone(self) -> None:
        if not self.terminated:
            self.note('abandoned')
