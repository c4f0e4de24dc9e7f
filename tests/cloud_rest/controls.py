"""What a stand-in can be told while it runs: faults, delays, and to hold its answers back."""

from __future__ import annotations

import threading
from typing import Callable

from . import transport


class Controls:
    """Every method may be called from any thread, at any time; a request keeps what was in force when
    it came."""

    def __init__(self, known_faults, fault, wait: Callable[[float], object] | None) -> None:
        self.ended = threading.Event()
        self._known = (*transport.FAULTS, *known_faults, 'none')
        self._wait = wait or self.ended.wait
        self._condition = threading.Condition()
        self._faults: list[str] = []
        self._delay = 0.0
        self._hold_new = False
        self._held: set[int] = set()
        self.fault(fault)

    def fault(self, names: str | list[str] | None) -> None:
        """One fault for every request from now on, or several, one for each request, of which the
        last stays; "none" is no fault."""
        wanted = [names] if isinstance(names, str) else list(names or [])
        for name in wanted:
            if name not in self._known:
                raise ValueError(f'no fault of the name {name!r}')
        with self._condition:
            self._faults = wanted

    def next_fault(self) -> str | None:
        with self._condition:
            if not self._faults:
                return None
            name = self._faults.pop(0) if len(self._faults) > 1 else self._faults[0]
            return None if name == 'none' else name

    def slow(self, seconds: float) -> None:
        with self._condition:
            self._delay = seconds

    def delay(self) -> float:
        with self._condition:
            return self._delay

    def pause(self, seconds: float) -> None:
        if seconds > 0:
            self._wait(seconds)

    def hold(self) -> None:
        """Requests that come from now on are answered only when they are released."""
        with self._condition:
            self._hold_new = True

    def release(self, number: int | None = None) -> None:
        """One request, or all and those to come."""
        with self._condition:
            if number is None:
                self._hold_new = False
                self._held.clear()
            else:
                self._held.discard(number)
            self._condition.notify_all()

    def arrived(self, number: int) -> None:
        with self._condition:
            if self._hold_new:
                self._held.add(number)

    def wait_for_release(self, number: int) -> None:
        with self._condition:
            self._condition.wait_for(lambda: number not in self._held)

    def end(self) -> None:
        self.ended.set()
        self.release()
