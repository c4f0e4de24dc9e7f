"""Sentences that were cut in the middle: what of them is sure, and what is heard again.

The client cuts speech without pauses every few seconds, wherever that falls. Words near such a cut
are not shown. They are heard again together with what comes next, and with a few words before them,
so that the second pass knows how the sentence began; those words were shown, and are left away.
"""

from dataclasses import dataclass
from typing import Optional, Sequence

import numpy as np

from .audio import RECOGNITION_RATE, Samples
from .recognisers import Word

# Words that end this close to the cut may be parts of words.
_UNSURE_SECONDS = 0.4
# More than this is never held back: a long word, or silence that was taken for one.
_LONGEST_SECONDS = 3.0
# As many words are heard twice, as long as they are not longer than this in all.
_REPEATED_WORDS = 2
_REPEATED_SECONDS = 1.2

_FRAME = RECOGNITION_RATE // 100


@dataclass(frozen=True)
class Cut:
    """Where a stretch is parted: `sure` words are shown, the sound from `again` on is heard again,
    and what is then heard before `fresh` was shown already (both in seconds of the stretch)."""

    sure: int
    again: float
    fresh: float


def cut(words: Sequence[Word], seconds: float) -> Optional[Cut]:
    """How to part a stretch that ends in the middle of speech; none when all of it is sure."""
    sure = len(words)
    while sure and words[sure - 1].end > seconds - _UNSURE_SECONDS:
        sure -= 1
    if sure == len(words):
        # Speech goes on that the engine has not heard as a word yet.
        fresh = words[-1].end if words else seconds
    else:
        fresh = words[sure].begin
    if seconds - fresh > _LONGEST_SECONDS:
        return None
    again = fresh
    for word in reversed(words[max(sure - _REPEATED_WORDS, 0) : sure]):
        if fresh - word.begin > _REPEATED_SECONDS:
            break
        again = word.begin
    return Cut(sure, again, fresh)


def fresh_words(words: Sequence[Word], fresh: float, last: str) -> list[Word]:
    """The words of a second pass without those that the first has shown.

    `fresh` is where the new ones begin, in seconds of what was heard again, `last` the last word
    that was shown.
    """
    new = [word for word in words if (word.begin + word.end) / 2 >= fresh]
    if new and new[0].begin < fresh and _bare(new[0].text) == _bare(last):
        new = new[1:]
    return new


def quietest(samples: Samples, seconds: float) -> float:
    """The middle of the quietest 100 ms in the last `seconds`, in seconds of the samples."""
    frames = samples[: len(samples) // _FRAME * _FRAME].reshape(-1, _FRAME)
    levels = np.convolve(np.mean(frames * frames, axis=1), np.ones(10), "valid")
    first = max(len(levels) - int(seconds * 100), 0)
    return (first + int(np.argmin(levels[first:])) + 5) / 100


def _bare(word: str) -> str:
    return "".join(letter for letter in word.lower() if letter.isalnum())
