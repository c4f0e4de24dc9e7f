"""One accepted connection: what all services have in common of it."""

import json
from typing import TYPE_CHECKING, Any

from tests.cloud_services._clock import Pace
from tests.cloud_services._faults import Moment
from tests.cloud_services._speech import Ear, Utterance, Utterances, Window
from tests.cloud_services._websocket import Link

if TYPE_CHECKING:
    from tests.cloud_services._peer import Peer

MIDDLE = 0.4  # Seconds into an utterance, where the faults in its middle strike.


class Session:
    """Belongs to the thread of the peer's loop."""

    WRONG_SHAPES: tuple[Any, ...] = ()

    def __init__(self, peer: 'Peer', link: Link, faults: list[str], ear: Ear | None) -> None:
        self.peer = peer
        self.link = link
        self.ear = ear
        self.faults = faults
        self.utterances = Utterances(peer.lines, 0.3)
        self.pace = Pace(peer.clock, peer.rate, peer.burst)
        self.opened_at = self.heard_at = peer.clock.now()
        self.now = 0.0  # Seconds of sound that were judged.
        self.frames = 0
        self._behind = False
        self._struck: set[str] = set()

    # What a service fills in.

    def begin(self) -> None:
        """The handshake is through."""

    def take_text(self, text: str) -> None:
        raise NotImplementedError

    def take_binary(self, data: bytes) -> None:
        raise NotImplementedError

    def utterance_begun(self, window: Window) -> None:
        pass

    def interim(self) -> None:
        """Shows what there is of the current utterance."""

    def step(self, window: Window) -> None:
        """Sound was judged; the current utterance, if any, is in `utterances`."""

    def too_fast(self) -> None:
        """Sound came faster than it may."""

    def deadline(self) -> float | None:
        """When it is overdue, in the clock's time."""
        return None

    def overdue(self) -> None:
        pass

    def gone(self) -> None:
        """The connection is no more."""

    # What comes.

    def on_text(self, text: str) -> None:
        self.note('text', data=text)
        self.take_text(text)
        self.peer.watch(self)

    def on_binary(self, data: bytes) -> None:
        self.take_binary(data)
        self.peer.watch(self)

    def on_gone(self) -> None:
        if lost := self.utterances.take():
            self._lose(lost)
        code, reason, by = self.link.ended()
        self.note('closed', code=code, reason=reason, by=by)
        self.gone()
        self.peer.forget(self)

    def listen(self, data: bytes) -> None:
        """Sound, as the service's encoding has it."""
        ear = self.ear
        assert ear
        self.frames += 1
        seconds = ear.seconds(len(data))
        if ear.cuts_samples(data):
            self.misuse('half a sample at the end of a frame')
        self._count(data, seconds)
        fast = not self.pace.take(seconds)
        self.strike(Moment.AUDIO)
        if fast and not self._behind:
            received, elapsed = round(self.pace.received, 3), round(self.pace.elapsed, 3)
            self.note('too_fast', received=received, seconds=elapsed)
            self.too_fast()
        self._behind = fast
        for window in ear.hear(data):
            if self.link.closing:
                return
            self._judge(window)

    def _count(self, data: bytes, seconds: float) -> None:
        assert self.ear
        total = self.ear.heard_bytes + len(data)
        self.note(
            'audio',
            frame_bytes=len(data),
            frame_ms=round(seconds * 1000, 3),
            bytes=total,
            ms=round(self.ear.seconds(total) * 1000, 3),
            frames=self.frames,
        )

    def _judge(self, window: Window) -> None:
        self.now = window.end
        if self.utterances.begins(window):
            current = self.utterances.current
            assert current
            self.note('begun', number=current.number, start_ms=round(window.start * 1000))
            self.utterance_begun(window)
        current = self.utterances.current
        if current and not current.interrupted and self.now - current.start >= MIDDLE - 1e-9:
            current.interrupted = True
            if self._waits(Moment.UTTERANCE):
                self.interim()
                self.strike(Moment.UTTERANCE)
        if not self.link.closing:
            self.step(window)

    # What goes.

    def send(self, message: dict[str, Any]) -> None:
        if 'silent' in self.faults:
            return
        if 'unknown-type' in self.faults:
            self.link.send_text(json.dumps({'type': 'Weather', 'channel': {}, 'words': 'rain'}))
        self.link.send_text(json.dumps(message))

    def close(self, code: int, reason: str) -> None:
        if 'silent' not in self.faults:
            self.link.close(code, reason)

    def refuse(self, code: int, text: str) -> None:
        """Closes, and notes why; services that say why in a message do that before."""
        self.note('refused', code=code, reason=text)
        self.close(code, text)

    def said(self, utterance: Utterance, how: str) -> None:
        """Notes that all of an utterance's text has been sent, and what made it final."""
        if 'silent' in self.faults:
            self._lose(utterance)
            return
        start, end = round(utterance.start * 1000), round(utterance.voice_end * 1000)
        text = utterance.text
        self.note('line', number=utterance.number, text=text, start_ms=start, end_ms=end, how=how)

    def _lose(self, utterance: Utterance) -> None:
        self.note('lost', number=utterance.number, text=utterance.text)

    def note(self, event: str, **facts: Any) -> None:
        self.peer.note(event, connection=self.link.number, **facts)

    def misuse(self, what: str) -> None:
        """What a client should not do, though the service may put up with it."""
        self.note('misuse', what=what)

    # Faults.

    def arm(self, name: str) -> None:
        """A fault for a connection that is open already."""
        if name not in self.faults:
            self.faults.append(name)
        self._struck.discard(name)
        self.strike(Moment.DISMISS)
        self.strike(Moment.OPEN)
        if self.frames:
            self.strike(Moment.AUDIO)
        current = self.utterances.current
        if current and current.interrupted:
            self.strike(Moment.UTTERANCE)
        self.peer.watch(self)

    def _waits(self, moment: Moment) -> list[str]:
        known = self.peer.FAULTS
        waiting = (name for name in self.faults if known[name].moment is moment)
        return [name for name in waiting if name not in self._struck]

    def strike(self, moment: Moment) -> None:
        for name in self._waits(moment):
            if not self.link.closing:
                self._struck.add(name)
                self.note('fault', name=name)
                self.peer.FAULTS[name].act(self)
