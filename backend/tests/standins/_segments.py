"""Where somebody speaks in sound that comes bit by bit: decided by its level alone, never by time."""

from dataclasses import dataclass, field
from typing import Iterator

import numpy as np

from ._wav import RATE, Samples, is_silent

_BLOCK = RATE // 100


@dataclass(frozen=True)
class Heard:
    """What is known at a point of the sound."""

    samples: Samples  # Since the last end of a segment.
    start: float  # Where they begin, in seconds.
    spoken: bool  # Whether anybody spoke in them.
    quiet: float  # Seconds of silence at their end.
    ends: bool  # Whether the segment ends here.


@dataclass
class Segments:
    """Says `Heard` every `step` seconds, and where a segment ends.

    It ends after `after` seconds of silence behind speech, after `before` without any speech, and
    after `longest`.
    """

    step: float
    after: float
    before: float
    longest: float
    start: float = 0.0
    _rest: Samples = field(default_factory=lambda: np.zeros(0, np.int16))
    _blocks: list[Samples] = field(default_factory=list)
    _quiet: int = 0
    _spoken: bool = False
    _told: int = 0

    def take(self, samples: Samples) -> Iterator[Heard]:
        """What there is to say after these."""
        joined = np.concatenate([self._rest, samples])
        whole = len(joined) // _BLOCK * _BLOCK
        self._rest = joined[whole:]
        for at in range(0, whole, _BLOCK):
            yield from self._take_block(joined[at : at + _BLOCK])

    def finish(self) -> Heard:
        """What is left, the last block of any length included."""
        self._blocks.append(self._rest)
        self._rest = self._rest[:0]
        return self._heard(ends=True)

    def _take_block(self, block: Samples) -> Iterator[Heard]:
        self._blocks.append(block)
        silent = is_silent(block)
        self._quiet = self._quiet + 1 if silent else 0
        self._spoken = self._spoken or not silent
        self._told += 1
        most = self.after if self._spoken else self.before
        if self._quiet * 0.01 >= most or len(self._blocks) * 0.01 >= self.longest:
            yield self._heard(ends=True)
        elif self._told * 0.01 >= self.step:
            self._told = 0
            yield self._heard(ends=False)

    def _heard(self, ends: bool) -> Heard:
        samples = np.concatenate(self._blocks) if self._blocks else self._rest
        heard = Heard(samples, self.start, self._spoken, self._quiet * 0.01, ends)
        if ends:
            self.start += len(samples) / RATE
            self._blocks, self._quiet, self._spoken, self._told = [], 0, False, 0
        return heard
