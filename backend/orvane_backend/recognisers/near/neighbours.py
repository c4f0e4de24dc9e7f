"""The recognisers that run on this machine, as far as one look at the start has shown."""

import threading

from ...log import log
from ...notices import Notice, notice
from ...settings_file import settings
from .catalogue import catalogue
from .discovery import Found, look, unnamed


class Neighbours:
    """What was found, and what there is to tell of it and of what the person has named."""

    def __init__(self) -> None:
        self._found: tuple[Found, ...] = ()

    def look(self) -> threading.Thread:
        """Looks once, on a thread of its own, which ends with the process."""

        def work() -> None:
            self._found = tuple(look())
            for told in self.notices():
                log(f"🔎 {told.german}")

        thread = threading.Thread(target=work, name="discovery", daemon=True)
        thread.start()
        return thread

    def notices(self) -> tuple[Notice, ...]:
        """What is wrong in the person's file, and what runs here and does not stand in it."""
        named = catalogue(settings())
        found = unnamed(self._found, named.named)
        return named.notices + tuple(
            notice("recognition.near_found", engine=one.shown()) for one in found
        )
