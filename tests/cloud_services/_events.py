"""What happened, for whoever runs a stand-in."""

import threading
from collections.abc import Callable
from typing import Any

PATIENT = 60.0  # Seconds a test waits for what must come.


class Events:
    """Grows in one thread and is asked in others. `say` is told of each event as it happens."""

    def __init__(self, say: Callable[..., None] | None) -> None:
        self._say = say
        self._changed = threading.Condition()
        self._events: list[dict[str, Any]] = []

    def note(self, event: str, **facts: Any) -> None:
        with self._changed:
            self._events.append({'event': event, **facts})
            if self._say:
                try:
                    self._say(event=event, **facts)
                except OSError:
                    self._say = None  # Whoever listened has gone, and ends this.
            self._changed.notify_all()

    @property
    def events(self) -> list[dict[str, Any]]:
        """All that happened so far."""
        with self._changed:
            return list(self._events)

    def all(self, event: str, **facts: Any) -> list[dict[str, Any]]:
        """The events of that name with these facts."""
        wanted = {'event': event, **facts}.items()
        with self._changed:
            return [one for one in self._events if all(one.get(k) == v for k, v in wanted)]

    def wait_for(self, event: str, count: int = 1, **facts: Any) -> dict[str, Any]:
        """The event of that name and these facts that is number `count`, once it has happened."""
        with self._changed:
            if not self._changed.wait_for(lambda: len(self.all(event, **facts)) >= count, PATIENT):
                raise TimeoutError(f'no {event} {facts} among {self._events}')
            return self.all(event, **facts)[count - 1]
