"""What the stand-ins take for the time: the machine's clock, or one that a test moves on by itself."""

import time


class Clock:
    """The machine's clock."""

    manual = False

    def now(self) -> float:
        return time.monotonic()


class ManualClock(Clock):
    """Stands still until it is moved on."""

    manual = True

    def __init__(self) -> None:
        self._now = 0.0

    def now(self) -> float:
        return self._now

    def move(self, seconds: float) -> None:
        if seconds < 0:
            raise ValueError('a clock does not go back')
        self._now += seconds


class Pace:
    """Whether sound comes faster than it may.

    A sender may be `burst` seconds of sound ahead, and gets them back `rate` times as fast as the
    clock goes. What was not sent in time is no credit beyond that: a backlog sent in one go is too
    fast, as it is for the services.
    """

    def __init__(self, clock: Clock, rate: float, burst: float) -> None:
        self._clock = clock
        self._rate = rate
        self._burst = burst
        self._left = burst
        self._at = clock.now()
        self._since = self._at
        self._received = 0.0

    def take(self, seconds: float) -> bool:
        """Counts sound that has come; false when it was too fast."""
        now = self._clock.now()
        self._left = min(self._burst, self._left + (now - self._at) * self._rate)
        self._at = now
        if self._left >= self._burst - 1e-6:
            self._since = now
            self._received = 0.0
        self._received += seconds
        self._left -= seconds
        return self._left > -1e-6

    @property
    def received(self) -> float:
        """The seconds of sound that came since the sender was last not ahead."""
        return self._received

    @property
    def elapsed(self) -> float:
        """The seconds that have gone by meanwhile."""
        return self._at - self._since
