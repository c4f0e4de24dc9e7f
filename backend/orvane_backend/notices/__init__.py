"""What the server has to tell a person.

A notice is a code with parameters: a client that knows the code says it in its user's language, any
other shows the German sentence. The codes and sentences of each concern stand in a module beside
this one.
"""

from dataclasses import dataclass, field
from typing import Any, Mapping, Union

from . import recognition, session, settings, translation

Parameter = Union[str, int]

_GERMAN: Mapping[str, str] = {
    **recognition.TEXTS,
    **translation.TEXTS,
    **session.TEXTS,
    **settings.TEXTS,
}


@dataclass(frozen=True)
class Notice:
    """One thing to tell. Made by `notice`, which knows the codes.

    `because` are the notices that its parameter `reason` is put together of, where it is.
    """

    code: str
    parameters: Mapping[str, Parameter] = field(default_factory=dict)
    because: tuple["Notice", ...] = ()

    @property
    def german(self) -> str:
        """The sentence for whoever does not know the code: without a sign before it or a full stop."""
        return _GERMAN[self.code].format_map(self.parameters)

    def record(self) -> dict[str, Any]:
        """As it goes over the wire."""
        return {"code": self.code, "parameters": dict(self.parameters)}


def notice(code: str, **parameters: Parameter) -> Notice:
    """A notice with all that its sentence names. Raises KeyError for anything else."""
    made = Notice(code, parameters)
    _ = made.german
    return made


def codes() -> list[str]:
    """Every code there is."""
    return sorted(_GERMAN)


class Problem(Exception):
    """Something that did not work, with what is to be told about it.

    `is_passing` says that whoever raised it is well and may be asked the next time.
    """

    def __init__(self, told: Notice, *, is_passing: bool = False) -> None:
        super().__init__(told.german)
        self.notice = told
        self.is_passing = is_passing
