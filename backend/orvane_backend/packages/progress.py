"""What an installation says while it works, in the form that `scripts/install-backend` has."""

import sys

from .children import bytes_below
from .pip import Item, Pip


def say(line: str) -> None:
    """A line for the log."""
    print(f"==> {line}", flush=True)


def fail(reason: str) -> None:
    """The last line of a failure."""
    print(f"error: {reason}", file=sys.stderr, flush=True)


class Amount:
    """How much of a download is there: "==> 37 % ..." for each new percentage, never a smaller one.

    100 is said once, by `complete`. Totals are partly rough, so that what comes can be more.
    """

    def __init__(self, total: int) -> None:
        self.total = total
        self.there = 0
        self._percent = -1
        self._what = "of what is needed"

    def look(self, pip: Pip) -> None:
        """Counts what pip has in its hands."""
        self._tell(self.there + bytes_below(pip.scratch))

    def begin(self, total: int) -> None:
        """From now on the total is known better; the percentage does not fall."""
        self.total = total

    def has(self, item: Item) -> None:
        """One distribution is there."""
        self.there += item.size
        self._what = f"{item} is there"
        self._tell(self.there)
        self._what = "of what is needed"

    def complete(self) -> None:
        """Everything is there."""
        say("100 % Everything is there")

    def _tell(self, bytes_there: int) -> None:
        percent = min(99, bytes_there * 100 // max(1, self.total))
        if percent > self._percent:
            self._percent = percent
            say(f"{percent} % {self._what}")
