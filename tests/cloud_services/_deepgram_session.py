"""One live stream of the stand-in of Deepgram."""

import datetime
import hashlib
import json
import uuid
from typing import Any

from tests.cloud_services._deepgram_query import Stream
from tests.cloud_services._peer import Peer
from tests.cloud_services._session import Session
from tests.cloud_services._speech import LEAST_PAUSE, LINEAR16, Ear, Utterance, Window, plain
from tests.cloud_services._websocket import Link

IDLE = (
    'Deepgram did not receive audio data or a text message within the timeout window.'
    ' See https://dpgr.am/net0001'
)
IDLE_CODE = 'NET-0001: no audio data or text message within the timeout window'

TICK = 1.0  # Seconds of sound between interims.
PIECE = 3  # Ticks after which what is known of a longer utterance becomes final.


class Listen(Session):
    """One stream."""

    WRONG_SHAPES = (
        {'type': 'Results'},
        {'type': 'Results', 'is_final': 'yes', 'channel': 7},
        {'type': 'Results', 'is_final': True, 'channel': {'alternatives': []}},
        {'type': 'Results', 'channel': {'alternatives': [{'transcript': None, 'words': 3}]}},
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
        stream: Stream,
        request: str,
        patience: float,
    ) -> None:
        coding = stream.coding
        ear = Ear(coding, stream.rate, stream.channels) if coding else None
        super().__init__(peer, link, faults, ear)
        self.patience = patience
        self.stream = stream
        self.request = request
        self.utterances.pause = max(LEAST_PAUSE, stream.endpointing or 0)
        self.digest = hashlib.sha256()
        self.piece_start = 0.0  # What lies before it is final.
        self.ticks = 0
        self.last_word_end: float | None = None  # While an UtteranceEnd may follow.
        self.ended = False

    def begin(self) -> None:
        for what in self.stream.misuses:
            self.misuse(what)

    # What comes.

    def take_text(self, text: str) -> None:
        self.heard_at = self.peer.clock.now()
        try:
            kind = json.loads(text).get('type')
        except (ValueError, AttributeError):
            kind = None
        if self.ended:
            self.misuse('text behind the end of the stream')
        elif kind == 'Finalize':
            self._finalize()
        elif kind == 'CloseStream':
            self._end()
        elif kind == 'Configure':
            self.send({'type': 'ConfigureFailure', 'request_id': self.request})
        elif kind != 'KeepAlive':
            self.misuse(f'unknown message {text[:80]}')
            self.send({'type': 'Error', 'description': 'unknown message', 'message': text[:80]})

    def take_binary(self, data: bytes) -> None:
        self.heard_at = self.peer.clock.now()
        if self.ended:
            self.misuse('sound behind the end of the stream')
        elif not data:
            self.misuse('empty binary frame')
            self._end()
        else:
            if data.startswith(b'{"type"'):
                self.misuse('a text message in a binary frame')
            data = data if self.ear else self._open_container(data)
            if self.ear and data:
                self.digest.update(data)
                self.listen(data)

    def _open_container(self, data: bytes) -> bytes:
        """The sound behind the head of a WAV file of 16 bits, which the first frame has to hold."""
        at = data.find(b'data')
        if not data.startswith(b'RIFF') or at < 36 or data[34] != 16:
            self.undecodable()
            return b''
        self.ear = Ear(LINEAR16, int.from_bytes(data[24:28], 'little'), data[22])
        return data[at + 8 :]

    def undecodable(self) -> None:
        self.close(1008, 'DATA-0000: the audio could not be decoded')

    def too_fast(self) -> None:
        if 'too-fast' in self.faults:
            self.close(1008, 'audio faster than 1.25 times real time')

    # Speech.

    def utterance_begun(self, window: Window) -> None:
        self.last_word_end = None
        if 'vad_events' in self.stream.flags:
            start = round(window.start, 3)
            self.send({'type': 'SpeechStarted', 'channel': [0], 'timestamp': start})

    def step(self, window: Window) -> None:
        if self.utterances.is_over(window):
            self._say_last('pause', self.stream.endpointing is not None)
        elif self.now - self.piece_start >= (self.ticks + 1) * TICK - 1e-9:
            self.ticks += 1
            self._tick()
        self._end_of_utterance()

    def _tick(self) -> None:
        current = self.utterances.current
        if not current:
            if self.ticks >= PIECE:
                self._results([], final=True)
            elif 'interim_results' in self.stream.flags:
                self._results([])
            return
        self.interim()
        known = min(current.revealed, len(current.words) - 1)
        if self.ticks >= PIECE and known > current.committed:
            self._results(self._words(current, known), final=True)
            current.committed = known

    def interim(self) -> None:
        current = self.utterances.current
        if current:
            current.reveal()
            if 'interim_results' in self.stream.flags:
                self._results(self._words(current, current.revealed))

    def _say_last(self, how: str, speech_final: bool, from_finalize: bool = False) -> None:
        current = self.utterances.take()
        if current:
            final = speech_final and 'no-speech-final' not in self.faults
            words = self._words(current, len(current.words))
            self.last_word_end = current.voice_end
            self._results(words, True, final, from_finalize)
            self.said(current, how)

    def _end_of_utterance(self) -> None:
        wanted, end = self.stream.utterance_end, self.last_word_end
        current = self.utterances.current
        if wanted is not None and current:
            end = current.voice_end
        if wanted is None or end is None or self.now - end < wanted - 1e-9:
            return
        self._say_last('utterance end', False)
        self.last_word_end = None
        end = round(end, 3)
        self.send({'type': 'UtteranceEnd', 'channel': [0, 1], 'last_word_end': end})

    def _finalize(self) -> None:
        if self.utterances.current:
            self._say_last('finalize', 'finalize-open' not in self.faults, True)
        elif 'finalize-unanswered' not in self.faults:
            self._results([], final=True, from_finalize=True)

    def _end(self) -> None:
        self.ended = True
        if self.utterances.current:
            self._say_last('end', True)
        elif self.now > self.piece_start:
            self._results([], final=True)
        self.send(self._metadata())
        self.close(1000, '')

    # Messages.

    def _words(self, utterance: Utterance, behind: int) -> list[dict[str, Any]]:
        first = utterance.committed
        times = utterance.times(first, behind)
        return [
            self._word(text, start, end)
            for text, (start, end) in zip(utterance.words[first:behind], times, strict=True)
        ]

    def _word(self, text: str, start: float, end: float) -> dict[str, Any]:
        word = {'word': plain(text), 'start': round(start, 3), 'end': round(end, 3)}
        word['confidence'] = 0.98
        if self.stream.punctuated:
            word['punctuated_word'] = text
        if self.stream.language == 'multi':
            word['language'] = self._heard_language()
        return word

    def _heard_language(self) -> str:
        return self.stream.hints[0] if self.stream.hints else 'en'

    def _results(
        self,
        words: list[dict[str, Any]],
        final: bool = False,
        speech_final: bool = False,
        from_finalize: bool = False,
    ) -> None:
        said = 'punctuated_word' if self.stream.punctuated else 'word'
        heard: dict[str, Any] = {
            'transcript': ' '.join(word[said] for word in words if word[said]),
            'confidence': 0.98 if words else 0.0,
            'words': words,
        }
        if self.stream.language == 'multi' and words:
            heard['languages'] = [self._heard_language()]
        name = self.stream.model
        about = {'name': f'general-{name}', 'version': '2026-01-01.0', 'arch': name}
        message = {
            'type': 'Results',
            'channel_index': [0, 1],
            'duration': round(self.now - self.piece_start, 3),
            'start': round(self.piece_start, 3),
            'is_final': final,
            'speech_final': speech_final,
            'channel': {'alternatives': [heard]},
            'metadata': {
                'request_id': self.request,
                'model_info': about,
                'model_uuid': str(uuid.uuid5(uuid.NAMESPACE_DNS, name)),
            },
            'from_finalize': from_finalize,
        }
        self.send(message)
        if final:
            self.piece_start, self.ticks = self.now, 0

    def _metadata(self) -> dict[str, Any]:
        created = datetime.datetime.now(datetime.timezone.utc)
        size = self.ear.heard_bytes if self.ear else 0
        return {
            'type': 'Metadata',
            'transaction_key': 'deprecated',
            'request_id': self.request,
            'sha256': self.digest.hexdigest(),
            'created': created.isoformat(timespec='milliseconds').replace('+00:00', 'Z'),
            'duration': round(self.ear.seconds(size), 3) if self.ear else 0.0,
            'channels': self.stream.channels,
        }

    # Time-outs.

    def deadline(self) -> float:
        """Text alone does not keep a stream that has had no sound yet."""
        since = self.heard_at if self.frames else self.opened_at
        return since + self.patience

    def overdue(self) -> None:
        self.close(1011, IDLE_CODE if 'idle-code' in self.faults else IDLE)
