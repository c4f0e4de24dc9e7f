"""Recognisers that a person runs on this machine or near it, with this server as their client.

Nothing here sends sound to an address that the person has not written down in `recognisers.toml`:
no redirect is followed, no proxy of the environment is used, and what is found by looking at the
usual local ports is only told.
"""

from typing import Optional, Union

from ...languages import AUTO, short
from ...notices import notice
from .. import RecogniserError

TRANSCRIPTIONS, LISTEN, SHERPA = "transcriptions", "listen", "sherpa"
KINDS = (TRANSCRIPTIONS, LISTEN, SHERPA)

# What is shown of an explanation that a server gives.
_LONGEST_REASON = 200


def failure(code: str, engine: str, *, is_passing: bool = False, **more: object) -> RecogniserError:
    """The error of one of the codes "recognition.near_…", about this engine."""
    parameters: dict[str, Union[str, int]] = {
        key: value if isinstance(value, int) else brief(str(value)) for key, value in more.items()
    }
    told = notice(f"recognition.near_{code}", engine=engine, **parameters)
    return RecogniserError(told, is_passing=is_passing)


def brief(text: str) -> str:
    """One line of what may be anything: without control characters, and not long."""
    line = " ".join("".join(c if c.isprintable() else " " for c in text).split())
    return line if len(line) <= _LONGEST_REASON else line[: _LONGEST_REASON - 1] + "…"


def detected_language(asked: str, told: Optional[str], languages: tuple[str, ...]) -> str:
    """The language of a text: what was asked for, else what the server tells, else the one language
    that it is named for. Where nobody knows, English is the best guess: most models are."""
    if short(asked) != AUTO:
        return short(asked)
    if told:
        return told
    return short(languages[0]) if len(languages) == 1 else "en"
