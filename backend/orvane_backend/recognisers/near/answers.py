"""What servers of `/v1/audio/transcriptions` answer, as functions from bytes to values.

Bodies are read whatever their content type says: some servers call JSON a web page.
"""

import json
import math
import re
from dataclasses import dataclass
from typing import Any, Optional, Sequence, Union

from ...languages import canonical, code_of_name, english_name
from .. import Evidence, Word

_TAG = re.compile(r"<[^>]*>")
_INVISIBLE = re.compile(r"<(script|style|head)\b.*?</\1\s*>", re.DOTALL | re.IGNORECASE)

# Words may end this much behind the sound, which the models fill up; beyond it their places are not
# seconds.
_BEHIND = 1.0

# Above this probability of silence a segment is none; Whisper's own limit.
_SILENCE = 0.6


class Unreadable(ValueError):
    """A body that is no answer of this interface."""


@dataclass(frozen=True)
class Transcription:
    """What a server heard; `language` is a short code, none where it does not tell."""

    text: str
    language: Optional[str]
    evidence: Evidence
    words: tuple[Word, ...]


def read_json(body: Union[bytes, str]) -> Any:
    """The value; none when it is no JSON."""
    try:
        return json.loads(body)
    except (ValueError, RecursionError):
        return None


def transcription(body: bytes, seconds: float) -> Transcription:
    """Reads the answer about an utterance of so many seconds. Raises Unreadable."""
    answer = read_json(body)
    if not isinstance(answer, dict) or not isinstance(answer.get("text"), str):
        raise Unreadable("no text")
    text, segments = _spoken(one_line(answer["text"]), _objects(answer.get("segments")))
    pieces = _objects(answer.get("words")) or [
        word for segment in segments for word in _objects(segment.get("words"))
    ]
    return Transcription(
        text, language_code(answer.get("language")), _evidence(segments),
        words_of(pieces, text, seconds),
    )  # fmt: skip


def one_line(text: str) -> str:
    """The text without the blanks around it and the line breaks in it."""
    return " ".join(text.split())


def language_code(told: object) -> Optional[str]:
    """The short code of a language that is told by code or English name; none for anything else."""
    if not isinstance(told, str):
        return None
    code = code_of_name(told) or canonical(told)
    return code if english_name(code) != code else None


def words_of(pieces: Sequence[Any], text: str, seconds: float) -> tuple[Word, ...]:
    """The words with their places; none unless they spell the text and lie within the sound.

    Some servers list pieces of words, and then only those that begin a word begin with a blank.
    """
    words: list[Word] = []
    marked = any(_piece(piece)[:1].isspace() for piece in pieces[1:])
    for piece in pieces:
        spelt, begin, end = _piece(piece), number(piece.get("start")), number(piece.get("end"))
        if begin is None or end is None or not 0 <= begin <= end <= seconds + _BEHIND:
            return ()
        if words and marked and not spelt[:1].isspace():
            words[-1] = Word(words[-1].text + spelt.rstrip(), words[-1].begin, end)
        elif spelt.strip():
            words.append(Word(spelt.strip(), begin, end))
    return tuple(words) if _letters("".join(w.text for w in words)) == _letters(text) else ()


def error_text(body: bytes, kind: str) -> str:
    """What a server says about its refusal, whichever way it says it; empty when it says nothing."""
    answer = read_json(body)
    if isinstance(answer, dict):
        return one_line(_told(answer))
    if isinstance(answer, str):
        return one_line(answer)
    text = body.decode("utf-8", "replace")
    if kind == "text/html" or text.lstrip()[:1] == "<":
        text = _TAG.sub(" ", _INVISIBLE.sub(" ", text))
    return one_line(text)


def number(value: object) -> Optional[float]:
    """A finite number; none for anything else."""
    if isinstance(value, bool) or not isinstance(value, (int, float)) or abs(value) > 1e12:
        return None
    return float(value) if math.isfinite(value) else None


def _told(answer: dict[str, Any]) -> str:
    detail = answer.get("detail")
    if isinstance(detail, list):
        return "; ".join(filter(None, map(_fault, detail)))
    error = answer.get("error")
    if isinstance(error, dict):
        error = error.get("message")
    texts = (detail, error, answer.get("message"))
    return next((told for told in texts if isinstance(told, str) and told.strip()), "")


def _fault(fault: object) -> str:
    """One of a list of details, with the field that it is about."""
    if not isinstance(fault, dict):
        return fault if isinstance(fault, str) else ""
    place = fault.get("loc")
    field = str(place[-1]) if isinstance(place, list) and place else ""
    said = fault.get("msg")
    return ": ".join(filter(None, (field, said if isinstance(said, str) else "")))


def _spoken(text: str, segments: list[dict[str, Any]]) -> tuple[str, list[dict[str, Any]]]:
    """The text without the segments that the model takes for silence, and the segments in it.

    What it makes up for a pause behind a sentence would else hide in the sentence's evidence. Where
    nothing else was heard the evidence tells by itself.
    """
    spoken = [one for one in segments if (number(one.get("no_speech_prob")) or 0) <= _SILENCE]
    if not spoken or len(spoken) == len(segments):
        return text, segments
    if _letters(_joined(segments)) != _letters(text):
        return text, segments
    return one_line(_joined(spoken)), spoken


def _joined(segments: Sequence[dict[str, Any]]) -> str:
    return " ".join(str(segment.get("text", "")) for segment in segments)


def _evidence(segments: Sequence[dict[str, Any]]) -> Evidence:
    silences = _all(segments, "no_speech_prob")
    probabilities = _all(segments, "avg_logprob")
    # The length of a text stands for the number of its tokens.
    lengths = [max(1, len(str(segment.get("text", "")))) for segment in segments]
    total = sum(value * length for value, length in zip(probabilities, lengths))
    compressions = [number(segment.get("compression_ratio")) for segment in segments]
    return Evidence(
        # In several nothing was said only if in none was.
        no_speech=min(silences, default=None),
        log_probability=total / sum(lengths) if probabilities else None,
        compression=max((one for one in compressions if one is not None), default=None),
    )


def _all(segments: Sequence[dict[str, Any]], key: str) -> list[float]:
    """The numbers of all segments; none unless every one of them tells."""
    told = [value for one in segments if (value := number(one.get(key))) is not None]
    return told if len(told) == len(segments) else []


def _piece(piece: Any) -> str:
    word = piece.get("word", "")
    return word if isinstance(word, str) else ""


def _letters(text: str) -> str:
    return "".join(c for c in text.casefold() if c.isalnum())


def _objects(value: object) -> list[dict[str, Any]]:
    return [part for part in value if isinstance(part, dict)] if isinstance(value, list) else []
