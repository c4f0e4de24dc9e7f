"""The second version of AssemblyAI's interface, as it was and as it is refused."""

import base64
import binascii
import datetime
import json
import uuid
from typing import Any

from tests.cloud_services._assemblyai_session import STEP, Dismissed
from tests.cloud_services._peer import Peer
from tests.cloud_services._session import Session
from tests.cloud_services._speech import LINEAR16, Ear, Window, plain
from tests.cloud_services._websocket import Link

DEPRECATED = (
    'Model deprecated. See docs for new model information:'
    ' https://www.assemblyai.com/docs/speech-to-text/universal-streaming'
)


class OldDismissed(Dismissed):
    """Closed with the older form of the error."""

    def refuse(self, code: int, text: str) -> None:
        self.send({'error': text})
        Session.refuse(self, code, text)


class OldSilent(Session):
    """Takes everything and says nothing."""

    def take_text(self, text: str) -> None:
        """Nothing comes of it."""

    def take_binary(self, data: bytes) -> None:
        self.misuse('binary frame')


class OldSession(Session):
    """Sound comes as base64 in JSON, and each message says its kind in `message_type`."""

    WRONG_SHAPES = (
        {'message_type': 'FinalTranscript'},
        {'message_type': 'PartialTranscript', 'text': 7},
        {'message_type': None},
        {},
        [],
        None,
    )

    def __init__(self, peer: Peer, link: Link, faults: list[str], rate: int) -> None:
        super().__init__(peer, link, faults, Ear(LINEAR16, rate))
        self.utterances.pause = 0.4
        self.next_step = 0.0
        self.terminated = False

    def begin(self) -> None:
        expires = datetime.datetime.now() + datetime.timedelta(hours=3)
        begins = {'session_id': str(uuid.uuid4()), 'expires_at': expires.isoformat()}
        self.send({'message_type': 'SessionBegins'} | begins)

    def refuse(self, code: int, text: str) -> None:
        self.send({'error': text})
        Session.refuse(self, code, text)

    # What comes.

    def take_binary(self, data: bytes) -> None:
        self.refuse(4101, 'Endpoint received a message with an invalid schema')

    def take_text(self, text: str) -> None:
        try:
            message = json.loads(text)
        except ValueError:
            self.refuse(4100, 'Endpoint received invalid JSON')
            return
        if self.terminated:
            self.misuse('a message behind the end')
        elif isinstance(message, dict) and isinstance(message.get('audio_data'), str):
            self._take_sound(message['audio_data'])
        elif isinstance(message, dict) and message.get('terminate_session') is True:
            self._terminate()
        else:
            self.refuse(4101, 'Endpoint received a message with an invalid schema')

    def _take_sound(self, text: str) -> None:
        try:
            data = base64.b64decode(text, validate=True)
        except binascii.Error:
            self.refuse(4101, 'audio_data is no base64')
            return
        if data:
            self.listen(data)
        else:
            self.refuse(4034, 'Audio too small')

    def too_fast(self) -> None:
        self.refuse(4029, 'Client sent audio too fast')

    # Speech.

    def utterance_begun(self, window: Window) -> None:
        self.next_step = window.start + STEP

    def step(self, window: Window) -> None:
        if self.utterances.is_over(window):
            self._say_final('pause')
        elif self.utterances.current and self.now >= self.next_step - 1e-9:
            self.next_step += STEP
            self.interim()

    def interim(self) -> None:
        current = self.utterances.current
        if current:
            current.reveal()
            text = plain(' '.join(current.words[: current.revealed]))
            self.send({'message_type': 'PartialTranscript'} | self._times() | {'text': text})

    def _times(self) -> dict[str, Any]:
        current = self.utterances.current
        assert current
        start, end = round(current.start * 1000), round(current.voice_end * 1000)
        return {'audio_start': start, 'audio_end': end, 'confidence': 0.97}

    def _say_final(self, how: str) -> None:
        current = self.utterances.current
        if current:
            message = {'message_type': 'FinalTranscript'} | self._times()
            self.send(message | {'text': current.text, 'punctuated': True, 'text_formatted': True})
            self.utterances.take()
            self.said(current, how)

    def _terminate(self) -> None:
        self.terminated = True
        self._say_final('end')
        self.send({'message_type': 'SessionTerminated'})
        self.close(1000, '')
