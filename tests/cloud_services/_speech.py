"""What the stand-ins hear: where a voice is in the sound, and which text they make of it.

Time here is time in the sound, never the clock's: the same sound gives the same utterances however
fast it comes and however it is cut into messages.
"""

import dataclasses
import threading
from collections.abc import Callable, Sequence

import numpy as np
import numpy.typing as npt

WINDOW = 0.02  # Seconds.
LOUDEST_SILENCE = 10 ** (-45 / 20)  # RMS of a window, of full scale.
LEAST_PAUSE = 0.3  # Seconds; shorter ones are gaps between words.

Samples = npt.NDArray[np.float64]  # From -1 to 1.

_UNITS = (
    'zero one two three four five six seven eight nine ten eleven twelve thirteen fourteen'
    ' fifteen sixteen seventeen eighteen nineteen'
).split()
_TENS = 'twenty thirty forty fifty sixty seventy eighty ninety'.split()


def in_words(number: int) -> str:
    """A number up to 9999 as it is said."""
    if number < 20:
        return _UNITS[number]
    if number < 100:
        rest = '-' + _UNITS[number % 10] if number % 10 else ''
        return _TENS[number // 10 - 2] + rest
    size, name = (100, 'hundred') if number < 1000 else (1000, 'thousand')
    rest = ' ' + in_words(number % size) if number % size else ''
    return in_words(number // size) + ' ' + name + rest


def plain(text: str) -> str:
    """A text as services write it that were not asked for punctuation."""
    words = (word.strip('.,;:!?…¿¡"').lower() for word in text.split())
    return ' '.join(word for word in words if word)


class Lines:
    """The texts to be recognised, one after the other, whoever hears them.

    Numbers begin with 1. Behind the last text that was given come numbered sentences.
    """

    def __init__(self, texts: Sequence[str] = ()) -> None:
        self._texts = [text.strip() for text in texts if text.strip()]
        self._given = 0
        self._lock = threading.Lock()

    def next(self) -> tuple[int, str]:
        with self._lock:
            self._given += 1
            number = self._given
        if number <= len(self._texts):
            return number, self._texts[number - 1]
        return number, f'sentence number {in_words(number)}.'


def linear16(data: bytes) -> Samples:
    return np.frombuffer(data, '<i2').astype(np.float64) / 32768


def mulaw(data: bytes) -> Samples:
    code = ~np.frombuffer(data, np.uint8)
    magnitude = (((code & 0x0F).astype(np.int32) << 3) + 0x84) << ((code & 0x70) >> 4)
    return np.where(code & 0x80, 0x84 - magnitude, magnitude - 0x84) / 32768


@dataclasses.dataclass(frozen=True)
class Coding:
    """How samples are written."""

    width: int  # Bytes of a sample.
    decode: Callable[[bytes], Samples]


LINEAR16 = Coding(2, linear16)
MULAW = Coding(1, mulaw)


@dataclasses.dataclass(frozen=True)
class Window:
    """The least piece of sound that is judged."""

    start: float
    end: float
    voiced: bool


class Ear:
    """Cuts sound into windows. Samples that were cut in half by a message are put together."""

    def __init__(self, coding: Coding, rate: int, channels: int = 1) -> None:
        self._coding = coding
        self._rate = rate
        self._channels = channels
        self._size = max(1, round(rate * WINDOW))
        self._rest = b''
        self._windows = 0
        self.heard_bytes = 0

    def seconds(self, size: int) -> float:
        """How long so many bytes sound."""
        return size / (self._coding.width * self._channels * self._rate)

    def cuts_samples(self, data: bytes) -> bool:
        return len(data) % (self._coding.width * self._channels) != 0

    def hear(self, data: bytes) -> list[Window]:
        self.heard_bytes += len(data)
        data = self._rest + data
        step = self._size * self._coding.width * self._channels
        whole = len(data) - len(data) % step
        self._rest = data[whole:]
        if not whole:
            return []
        samples = self._coding.decode(data[:whole]).reshape(-1, self._channels).mean(axis=1)
        levels = np.sqrt(np.mean(samples.reshape(-1, self._size) ** 2, axis=1))
        return [self._window(level > LOUDEST_SILENCE) for level in levels]

    def _window(self, voiced: bool) -> Window:
        start = self._windows * self._size / self._rate
        self._windows += 1
        return Window(start, self._windows * self._size / self._rate, bool(voiced))


@dataclasses.dataclass
class Utterance:
    """What is said between two pauses."""

    number: int
    text: str
    start: float
    voice_end: float
    committed: int = 0  # Words that were final already.
    interrupted: bool = False  # What befalls the middle of an utterance has befallen it.
    ends: list[float] = dataclasses.field(default_factory=list)  # Of the words shown so far.

    @property
    def words(self) -> list[str]:
        return self.text.split()

    @property
    def revealed(self) -> int:
        """How many words have been shown."""
        return len(self.ends)

    def reveal(self) -> None:
        """One word more, if there is one: it is what was heard last."""
        if self.revealed < len(self.words):
            self.ends.append(self.voice_end)

    def times(self, first: int, behind: int) -> list[tuple[float, float]]:
        """Where these words are in the sound; those not shown yet evenly over what is left of it."""
        begin = self.ends[-1] if self.ends else self.start
        hidden = len(self.words) - self.revealed
        each = (self.voice_end - begin) / max(1, hidden)
        ends = self.ends + [begin + (n + 1) * each for n in range(hidden)]
        return list(zip([self.start, *ends][first:behind], ends[first:behind], strict=True))


class Utterances:
    """Tells utterances apart by the pauses between them."""

    def __init__(self, lines: Lines, pause: float) -> None:
        self._lines = lines
        self.pause = pause
        self.current: Utterance | None = None

    def begins(self, window: Window) -> bool:
        """Takes a window; true when an utterance begins with it."""
        if not window.voiced:
            return False
        if self.current:
            self.current.voice_end = window.end
            return False
        number, text = self._lines.next()
        self.current = Utterance(number, text, window.start, window.end)
        return True

    def is_over(self, window: Window) -> bool:
        """Whether the pause behind the current utterance is long enough."""
        current = self.current
        return current is not None and window.end - current.voice_end >= self.pause - 1e-9

    def take(self) -> Utterance | None:
        current, self.current = self.current, None
        return current
