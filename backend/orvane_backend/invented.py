"""Whether a recogniser's text was said, or invented where nobody spoke.

A text is dropped for what it is as a whole. Words that people do say are dropped only where what was
heard does not speak for them.
"""

import re
import unicodedata
from typing import NamedTuple, Optional

from . import invented_phrases as known
from .recognisers import Evidence
from .speech_gate import Finding

# Below this PocketSphinx found words in music or noise; `backend/measure_gate` prints what it costs.
LEAST_CONFIDENCE = 0.04
# Where the gate itself was in doubt, as it is of music and never of a clear voice, the words have to
# be good ones, and a single word, which hardly anything speaks against, the best.
DOUBTED_CONFIDENCE = 0.7
_DOUBTED_WORD_CONFIDENCE = 0.95
_CLEAR_STRENGTH = 0.9985

_CREDITS_LENGTH = 60

# Repeats of a word, and of a phrase, that people still make; more are a loop, and so many more that
# nothing else is left of the text have nobody behind them.
_WORDS_SAID, _PHRASES_SAID = 6, 4
_WORDS_LOOPED, _PHRASES_LOOPED = 12, 6
_LONGEST_PHRASE = 12
_LOOP_SHARE = 0.7

_MOST_COMPRESSION = 2.4
_COMPRESSIBLE = 120

# Characters a second that nobody reaches: fast speech has some 20, a third of that where a
# character is a syllable.
_FASTEST, _FASTEST_SYLLABLES = 30.0, 14.0
# A gate may miss this much of what was said, in seconds.
_UNHEARD = 0.6

_TAGS = re.compile(r"\[[^\]]*\]|【[^】]*】|\([^)]{1,40}\)|（[^）]{1,40}）|\*[^*]{1,40}\*|<[^>]{1,40}>")
_NOTES = re.compile("[♪♫♬♩🎵🎶]+")
_SYLLABLES = re.compile("[\u3040-\u30ff\u3400-\u4dbf\u4e00-\u9fff\uac00-\ud7af]")


class _Loop(NamedTuple):
    """Words that come again and again: where, how many they are, and how often they come."""

    begin: int
    words: int
    times: int


def reason_to_drop(
    text: str, language: str, evidence: Evidence, finding: Finding, seconds: float
) -> Optional[str]:
    """A short code of why the text of a chunk so long is none; nothing when it is to be shown.

    `language` is the one the engine tells; it decides nothing, as the wrong one is often told.
    """
    words = _plain(cleaned(text))
    if not words:
        return "tag" if text.strip() else "empty"
    if not finding.is_speech:
        return "silence"
    if words in _PHRASES:
        return "known_phrase"
    if _is_credits(words):
        return "credits"
    if _is_looped(text):
        return "repetition"
    if _is_impossible(words, finding, seconds):
        return "speed"
    if words in _POLITENESS and _is_weak(words, evidence, finding):
        return "known_phrase"
    return _doubt(text, words, evidence, finding)


def cleaned(text: str) -> str:
    """The text without tags of sounds and with what a loop repeats said twice."""
    text = " ".join(_NOTES.sub(" ", _TAGS.sub(" ", text)).split())
    words, joint = _pieces(text)
    loop = _loop(words)
    while loop is not None and loop.times > _said(loop):
        end = loop.begin + loop.words * loop.times
        words = words[: loop.begin + 2 * loop.words] + words[end:]
        loop = _loop(words)
        text = joint.join(words)
    return text


def _doubt(text: str, words: str, evidence: Evidence, finding: Finding) -> Optional[str]:
    """What the engine itself thinks of its text."""
    if evidence.confidence is not None:
        if evidence.confidence < _least_confidence(words, finding):
            return "confidence"
    unsure = evidence.log_probability is not None and evidence.log_probability < -1.0
    if evidence.no_speech is not None:
        if evidence.no_speech > 0.6 and (unsure or finding.strength < 0.8):
            return "silence"
    if evidence.log_probability is not None and evidence.log_probability < -2.0:
        return "confidence"
    long_enough = len(text.encode()) >= _COMPRESSIBLE
    if evidence.compression is not None and evidence.compression > _MOST_COMPRESSION:
        # A chorus repeats itself, too, but somebody sings it, and at the speed of speech.
        if long_enough and (unsure or not _fits(words, finding)):
            return "compression"
    return None


def _least_confidence(words: str, finding: Finding) -> float:
    """What the engine has to trust its words with."""
    if finding.strength >= _CLEAR_STRENGTH:
        return LEAST_CONFIDENCE
    return DOUBTED_CONFIDENCE if " " in words else _DOUBTED_WORD_CONFIDENCE


def _is_weak(words: str, evidence: Evidence, finding: Finding) -> bool:
    """Whether what is said often and invented often was invented."""
    if evidence.no_speech is not None and evidence.no_speech > 0.2:
        return True
    if evidence.log_probability is not None and evidence.log_probability < -1.0:
        return True
    if finding.strength < 0.8 or finding.speech_seconds < 0.1:
        return True
    sure = evidence.no_speech is not None and evidence.no_speech < 0.06
    return not sure and not _fits(words, finding)


def _fits(words: str, finding: Finding) -> bool:
    """Whether the speech heard is neither far too short nor far too long for the text."""
    usual = _least_seconds(words) * 2
    return finding.strength >= 0.8 and usual / 4 <= finding.speech_seconds <= 3 * usual + 2.5


def _is_impossible(words: str, finding: Finding, seconds: float) -> bool:
    """Whether nobody can say so much in the time in which somebody spoke."""
    heard = max(finding.speech_seconds, 0.6 * (finding.end - finding.begin))
    return _least_seconds(words) > min(heard + _UNHEARD, seconds + 0.2)


def _least_seconds(words: str) -> float:
    """What the fastest speaker needs."""
    syllables = len(_SYLLABLES.findall(unicodedata.normalize("NFC", words)))
    letters = len(unicodedata.normalize("NFC", words)) - syllables
    return syllables / _FASTEST_SYLLABLES + letters / _FASTEST


def _is_credits(words: str) -> bool:
    if len(words) >= _CREDITS_LENGTH:
        return False
    padded = f" {words} "
    if any(padded.startswith(f" {beginning} ") for beginning in _BEGINNINGS):
        return True
    return any((mark if _SYLLABLES.search(mark) else f" {mark} ") in padded for mark in _CREDITS)


def _is_looped(text: str) -> bool:
    """Whether hardly anything but a loop is in the text."""
    words, _ = _pieces(" ".join(_TAGS.sub(" ", text).split()))
    loop = _loop(words)
    if loop is None:
        return False
    limit = _WORDS_LOOPED if loop.words == 1 else _PHRASES_LOOPED
    return loop.times >= limit and loop.words * loop.times >= _LOOP_SHARE * len(words)


def _said(loop: _Loop) -> int:
    return _WORDS_SAID if loop.words == 1 else _PHRASES_SAID


def _loop(words: list[str]) -> Optional[_Loop]:
    """The longest stretch in which words come again at once, more often than people say them."""
    plain = [_plain(word) for word in words]
    best: Optional[_Loop] = None
    for length in range(1, min(_LONGEST_PHRASE, len(plain) // 2) + 1):
        run = 0
        for place in range(length, len(plain) + 1):
            if place < len(plain) and plain[place] and plain[place] == plain[place - length]:
                run += 1
                continue
            times = run // length + 1
            loop = _Loop(place - length - run, length, times)
            longer = best is None or times * length > best.times * best.words
            if times > _said(loop) and longer:
                best = loop
            run = 0
    return best


def _pieces(text: str) -> tuple[list[str], str]:
    """Words, or characters where a language puts no spaces between them; and what joins them."""
    syllables = len(_SYLLABLES.findall(text))
    if syllables > len(text) / 2 and text.count(" ") < len(text) / 8:
        return list(text), ""
    return text.split(), " "


def _plain(text: str) -> str:
    """Without case, accents and punctuation, one space between words."""
    letters = unicodedata.normalize("NFKD", text.casefold())
    kept = (
        letter if unicodedata.category(letter)[0] in "LN" else " "
        for letter in letters
        if unicodedata.category(letter) != "Mn"
    )  # fmt: skip
    return " ".join("".join(kept).split())


_PHRASES = frozenset(_plain(phrase) for phrases in known.PHRASES.values() for phrase in phrases)
_POLITENESS = frozenset(_plain(phrase) for phrase in known.POLITENESS)
_CREDITS = tuple(_plain(mark) for mark in known.CREDITS)
_BEGINNINGS = tuple(_plain(beginning) for beginning in known.CREDIT_BEGINNINGS)
