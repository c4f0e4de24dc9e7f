"""What stand-ins write down for the test, and where a test can hold them up.

`notes` has every event of this process. With the environment variable STANDIN_NOTES each is also
appended, as a line of JSON, to the file of that name, for tests that start a process.
"""

import json
import os
import threading
from typing import Any, Callable

notes: list[dict[str, Any]] = []
# Called, if there, in the middle of what it is named after: "transcribe", "segment".
hooks: dict[str, Callable[[], None]] = {}
_lock = threading.Lock()


def note(event: str, **details: Any) -> None:
    """Writes an event down; what JSON cannot say is written as its `repr`."""
    entry = {"event": event, **details}
    with _lock:
        notes.append(entry)
        path = os.environ.get("STANDIN_NOTES")
        if path:
            with open(path, "a", encoding="utf-8") as file:
                file.write(json.dumps(entry, default=repr) + "\n")


def noted(event: str) -> list[dict[str, Any]]:
    """All events of this name, the oldest first."""
    with _lock:
        return [entry for entry in notes if entry["event"] == event]


def forget() -> None:
    """As if nothing had happened yet."""
    with _lock:
        notes.clear()
        hooks.clear()


def pass_hook(name: str) -> None:
    """Where a test can hold a stand-in up."""
    hook = hooks.get(name)
    if hook is not None:
        hook()
