"""What is common to the recognisers near by: what the person named, and how it is shown."""

import threading
from dataclasses import dataclass, field
from typing import Optional
from weakref import WeakValueDictionary

from ...languages import AUTO, same, short
from ...notices import Notice, notice
from .. import Recogniser
from . import TRANSCRIPTIONS, detected_language
from .address import Address

_UNKNOWN_PRODUCT = "Erkenner"


@dataclass(frozen=True)
class Named:
    """One table of `recognisers.toml`. What is empty was not given."""

    kind: str
    address: Address
    name: str = ""
    model: str = ""
    key: str = field(default="", repr=False)
    languages: tuple[str, ...] = ()

    def shown(self, product: str = "") -> str:
        """The name as a person reads it: the given one, or the product's with its address."""
        return self.name or f"{product or _UNKNOWN_PRODUCT} ({self.address.authority})"


def written(kind: str, address: Address) -> str:
    """The address as it is written down for a kind of recogniser."""
    return address.web() if kind == TRANSCRIPTIONS else address.socket()


@dataclass(frozen=True)
class Timings:
    """Seconds: to connect, to greet, for an answer; how long a server may load its model while an
    utterance waits; the pause before it is asked again when it names none, and the longest."""

    connect: float = 10.0
    greet: float = 10.0
    answer: float = 60.0
    loading: float = 20.0
    pause: float = 1.0
    longest_pause: float = 5.0


class Turn:
    """One server's turns: a request is sent when the one before it has been answered."""

    def __init__(self) -> None:
        self._lock = threading.Lock()

    def __enter__(self) -> None:
        self._lock.acquire()

    def __exit__(self, *_: object) -> None:
        self._lock.release()


_turns: "WeakValueDictionary[tuple[bool, str, int], Turn]" = WeakValueDictionary()
_turns_lock = threading.Lock()


def turn_of(address: Address) -> Turn:
    """The turns of the server at an address, the same for all that ask it."""
    with _turns_lock:
        return _turns.setdefault(address.origin, Turn())


class NearRecogniser(Recogniser):
    """A recogniser that a person has named."""

    parallel = 1

    def __init__(self, named: Named, timings: Timings = Timings()) -> None:
        self.named = named
        self.timings = timings
        self.name = named.shown()
        self.product = ""
        self.remarks: tuple[Notice, ...] = ()

    def refusal(self, language: str) -> Optional[Notice]:
        known = self.named.languages
        # To find a language out is a model's own affair.
        if not known or short(language) == AUTO or any(same(language, one) for one in known):
            return None
        return notice("recognition.language_unknown", engine=self.name, language=short(language))

    def greeted(self, product: str) -> None:
        """Takes the product's name, and tells who serves and why."""
        self.product = product
        self.name = self.named.shown(product)
        address = self.named.address.authority
        told = notice("recognition.near_serves", engine=self.name, address=address)
        self.remarks = (told,)

    def language_of(self, asked: str, told: Optional[str]) -> str:
        """The language of what was heard."""
        return detected_language(asked, told, self.named.languages)
