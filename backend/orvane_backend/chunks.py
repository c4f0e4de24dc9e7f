"""What a session hears: chunks as they came, and stretches of them that are recognised in one go.

Times are those of the event loop, in seconds, of the moment when the sound was there.
"""

from dataclasses import dataclass, replace
from typing import Callable, Optional, Sequence

import numpy as np

from .audio import RECOGNITION_RATE, Samples, to_recognition
from .speech_gate import Finding, find_speech_best

# What stays of a chunk around its speech: the gate may take soft beginnings and ends for silence.
_BEFORE_SECONDS = 0.25
_AFTER_SECONDS = 0.35

# Speech that is heard up to here before a chunk's end goes on in the next one.
_CUT_SECONDS = 0.15


@dataclass(frozen=True, eq=False)
class Chunk:
    """One chunk at 16 kHz, what the gate found in it, and when its first sample was there."""

    samples: Samples
    finding: Finding
    begin: float

    @property
    def seconds(self) -> float:
        """The chunk's length."""
        return len(self.samples) / RECOGNITION_RATE

    @property
    def is_unfinished(self) -> bool:
        """Whether somebody still speaks at its end."""
        return self.finding.is_speech and self.finding.end > self.seconds - _CUT_SECONDS


FindSpeech = Callable[[Samples], Finding]


def received(pcm: bytes, rate: int, arrived: float, find: FindSpeech = find_speech_best) -> Chunk:
    """The chunk of a message that came at `arrived`, when its last sample was just there."""
    samples = to_recognition(pcm, rate)
    return Chunk(samples, find(samples), arrived - len(samples) / RECOGNITION_RATE)


@dataclass(frozen=True, eq=False)
class Stretch:
    """Sound that is recognised in one go.

    `finding` is what the gate found in all of it. Its last sample was there at `end`; somebody
    began to speak in it at `speech_begin` and ended at `speech_end`, and was quiet from then on
    until `quiet_until` at least.
    """

    samples: Samples
    finding: Finding
    end: float
    speech_begin: float
    speech_end: float
    quiet_until: float

    @property
    def seconds(self) -> float:
        """The stretch's length, without what was left away between its chunks."""
        return len(self.samples) / RECOGNITION_RATE

    def head(self, seconds: float) -> "Stretch":
        """The first `seconds`; speech goes on at their end."""
        samples = self.samples[: int(seconds * RECOGNITION_RATE)]
        end = self.end - (len(self.samples) - len(samples)) / RECOGNITION_RATE
        end = max(end, self.speech_begin)
        return Stretch(samples, _part(self.finding, samples), end, self.speech_begin, end, end)

    def tail(self, seconds: float) -> "Stretch":
        """What comes after the first `seconds`; somebody speaks at its beginning."""
        samples = self.samples[int(seconds * RECOGNITION_RATE) :]
        begin = max(self.end - len(samples) / RECOGNITION_RATE, self.speech_begin)
        finding = _part(self.finding, samples)
        return Stretch(samples, finding, self.end, begin, self.speech_end, self.quiet_until)


def stretch(held: Optional[Stretch], chunks: Sequence[Chunk]) -> Stretch:
    """What was held back before, and the spoken parts of chunks, each with speech, at least one."""
    parts = [held] if held is not None else []
    for chunk in chunks:
        parts.append(_spoken(chunk, from_its_beginning=len(parts) == 1 and held is not None))
    samples = np.concatenate([part.samples for part in parts])
    longest = max((part.finding for part in parts), key=lambda one: one.speech_seconds)
    spoken = sum(part.finding.speech_seconds for part in parts)
    finding = _part(replace(longest, speech_seconds=spoken), samples)
    first, last = parts[0], parts[-1]
    return Stretch(
        samples, finding, last.end, first.speech_begin, last.speech_end, last.quiet_until
    )  # fmt: skip


def _spoken(chunk: Chunk, *, from_its_beginning: bool) -> Stretch:
    found = chunk.finding
    first = 0.0 if from_its_beginning else max(found.begin - _BEFORE_SECONDS, 0.0)
    last = chunk.seconds if chunk.is_unfinished else min(found.end + _AFTER_SECONDS, chunk.seconds)
    samples = chunk.samples[int(first * RECOGNITION_RATE) : int(last * RECOGNITION_RATE)]
    begin, end = chunk.begin + found.begin, chunk.begin + found.end
    quiet_until = chunk.begin + chunk.seconds
    return Stretch(samples, found, chunk.begin + last, begin, end, quiet_until)


def _part(finding: Finding, samples: Samples) -> Finding:
    """The finding of a part of what it was found in."""
    seconds = len(samples) / RECOGNITION_RATE
    spoken = min(finding.speech_seconds, seconds)
    return replace(finding, speech_seconds=spoken, begin=0.0, end=seconds)
