"""What of a chat model's answer is the translation: without thoughts, labels, fences and notes.

A sign that the source has itself stays: what may be an addition is taken off only where the answer
has more of it than the source.
"""

import re
from dataclasses import dataclass
from typing import Any, Optional

from . import one_line

_THOUGHT = re.compile(
    r"\s*(?:<(think|thinking|thought)>.*?(?:</\1>|\Z)|\[THINK\].*?(?:\[/THINK\]|\Z))", re.S | re.I
)
_THOUGHT_END = re.compile(r"</(?:think|thinking|thought)>|\[/THINK\]", re.I)
_FENCE = re.compile(r"\s*(`{3,}|~{3,})[^\n`]*\n(.*?)\n?\s*\1\s*", re.S)
_TICKS = re.compile(r"`{1,3}([^`]+)`{1,3}")
_STARS = re.compile(r"(\*{1,3}|_{1,2})(?=\S)(.+?)(?<=\S)\1", re.S)

_NOTE = (
    r"(?:translator['’]s note|note|notes|anmerkung|anmerkungen|hinweis|erläuterung|explanation|"
    r"remarque|nota|notas|opmerking|uwaga|примечание|注|注意|備考)"
)
# A paragraph of its own, in brackets or not; and one in brackets at the end of the line.
_NOTE_PARAGRAPH = re.compile(rf"(?<=\S)\s*\n\s*[*_(\[（]*{_NOTE}[*_]*\s*[:：].*\Z", re.S | re.I)
_NOTE_IN_BRACKETS = re.compile(
    rf"(?<=\S)\s*[(\[（][*_]*{_NOTE}[*_]*\s*[:：].*[)\]）]\s*\Z", re.S | re.I
)

_LABEL = re.compile(
    r"\s*[*_#]*\s*(?:(?:sure|certainly|of course|gerne|natürlich)[!,.]?\s*)?"
    r"(?:here(?:['’]s| is| are)\b[^:：\n]{0,60}|hier ist\b[^:：\n]{0,60}|"
    r"(?:the )?(?:[\w-]+ )?translation\b[^:：\n]{0,40}|(?:die )?(?:[\w-]+ )?übersetzung\b[^:：\n]{0,40}|"
    r"traduction|traducción|traduzione|tradução|vertaling|tłumaczenie|перевод|翻译|翻譯|翻訳|번역)"
    r"\s*[*_]*\s*[:：][*_]*\s*",
    re.I,
)

_QUOTES = {
    '"': '"', "“": "”", "„": "“”", "”": "”", "«": "»", "»": "«", "‹": "›", "›": "‹", "'": "'",
    "‘": "’", "‚": "‘’", "「": "」", "『": "』", "《": "》",
}  # fmt: skip
_OPENING = "".join(_QUOTES)
_CLOSING = "".join(_QUOTES.values())


@dataclass(frozen=True)
class Said:
    """An answer's text as it came, whether it was cut off, and whether there were thoughts."""

    content: str
    cut: bool
    thought: bool


def said(record: Any) -> Optional[Said]:
    """From a chat server's answer; none when it is not one."""
    try:
        choice = record["choices"][0]
        message = choice["message"]
        content = message.get("content")
        reasoning = message.get("reasoning_content") or message.get("reasoning")
        finish = choice.get("finish_reason")
    except (KeyError, IndexError, TypeError, AttributeError):
        return None
    if isinstance(content, list):
        content = "".join(str(part.get("text") or "") for part in content if isinstance(part, dict))
    if content is not None and not isinstance(content, str):
        return None
    content = content or ""
    thought = bool(reasoning) or bool(_THOUGHT.match(content) or _THOUGHT_END.search(content))
    return Said(content, finish == "length", thought)


def without_thoughts(content: str, source: str) -> str:
    """What follows the thoughts; empty when there is nothing else."""
    if _THOUGHT.match(source) or _THOUGHT_END.search(source):
        return content
    while found := _THOUGHT.match(content):
        content = content[found.end() :]
    ends = list(_THOUGHT_END.finditer(content))
    return content[ends[-1].end() :] if ends else content


def cleaned(content: str, source: str) -> str:
    """The translation alone, in one line; empty when nothing is left."""
    text = without_thoughts(content, source).strip()
    before = None
    while text != before:
        before = text
        for step in (
            _without_fence,
            _without_note,
            _without_label,
            _without_marks,
            _without_quotes,
        ):
            text = step(text, source).strip()
    return one_line(text)


def _without_fence(text: str, source: str) -> str:
    found = None if "```" in source or "~~~" in source else _FENCE.match(text)
    # What follows a fence is an explanation of it.
    return found.group(2) if found else text


def _without_note(text: str, source: str) -> str:
    if not _more_colons(text, source):
        return text
    shorter = _NOTE_PARAGRAPH.sub("", text)
    if shorter == text and _count("([（", text) > _count("([（", source):
        shorter = _NOTE_IN_BRACKETS.sub("", text)
    return shorter


def _without_label(text: str, source: str) -> str:
    found = _LABEL.match(text)
    if found is None or not _more_colons(text, source) or not text[found.end() :].strip():
        return text
    return text[found.end() :]


def _without_marks(text: str, source: str) -> str:
    for pattern, group, sign in ((_TICKS, 1, "`"), (_STARS, 2, "*"), (_STARS, 2, "_")):
        found = None if sign in source else pattern.fullmatch(text)
        if found is not None and text.startswith(sign):
            return found.group(group)
    return text


def _without_quotes(text: str, source: str) -> str:
    """Without the pair around all of it; with it when the source is in quotation marks, too."""
    bare = source.strip()
    if len(text) < 3 or (bare[:1] in _OPENING and bare[-1:] in _CLOSING):
        return text
    inside = text[1:-1]
    if text[-1] not in _QUOTES.get(text[0], ""):
        return text
    # Two quotations beside one another are not one around all.
    if text[0] in inside.replace("'", "") or text[-1] in inside.replace("'", "").replace("’", ""):
        return text
    return inside


def _more_colons(text: str, source: str) -> bool:
    return _count(":：", text) > _count(":：", source)


def _count(signs: str, text: str) -> int:
    return sum(text.count(sign) for sign in signs)
