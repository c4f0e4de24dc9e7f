"""What the stand-ins understand: one line after the other, each of them said to a client once."""

from __future__ import annotations

import heapq

UNITS = (
    'zero one two three four five six seven eight nine ten eleven twelve thirteen fourteen fifteen '
    'sixteen seventeen eighteen nineteen'
).split()
TENS = 'twenty thirty forty fifty sixty seventy eighty ninety'.split()


def in_words(number: int) -> str:
    if number < 20:
        return UNITS[number]
    if number < 100:
        tens, units = divmod(number, 10)
        return TENS[tens - 2] + (f'-{UNITS[units]}' if units else '')
    hundreds, rest = divmod(number, 100)
    if hundreds > 9:
        return str(number)
    return f'{UNITS[hundreds]} hundred' + (f' and {in_words(rest)}' if rest else '')


class Lines:
    """Without lines of its own: "sentence number one.", and so on for ever.

    A line that no client received comes back, and the next to ask gets it before any later one: the
    same sound, sent again, is understood as the same words.
    """

    def __init__(self, lines: list[str] | None = None) -> None:
        self._lines = lines
        self._next = 0
        self._returned: list[int] = []

    def _text(self, index: int) -> str:
        if self._lines is None:
            return f'sentence number {in_words(index + 1)}.'
        return self._lines[index]

    def take(self, count: int) -> list[tuple[int, str]]:
        """Fewer than asked for when there are no more."""
        taken = []
        while len(taken) < count:
            if self._returned:
                index = heapq.heappop(self._returned)
            elif self._lines is None or self._next < len(self._lines):
                index, self._next = self._next, self._next + 1
            else:
                break
            taken.append((index, self._text(index)))
        return taken

    def give_back(self, indices: list[int]) -> None:
        for index in indices:
            heapq.heappush(self._returned, index)
