"""What Whisper makes up where nobody speaks, with the certainty of true text."""

import zlib
from dataclasses import dataclass
from typing import Any

from standin_voice import hear, kind_of, sentences

PHRASES = {
    "en": [
        "Thank you.", "Thanks for watching!", "Thank you for watching.", "you", "Bye.",
        "Please subscribe", "Subtitles by the Amara.org community", "[Music]", "[BLANK_AUDIO]",
    ],
    "de": [
        "Untertitelung des ZDF, 2020", "Untertitel im Auftrag des ZDF, 2017",
        "Untertitel der Amara.org-Community", "Vielen Dank fürs Zuschauen", "Copyright WDR 2021",
    ],
    "fr": [
        "Sous-titres réalisés par la communauté d'Amara.org", "Sous-titrage ST' 501",
        "Merci d'avoir regardé cette vidéo",
    ],
    "es": ["Subtítulos realizados por la comunidad de Amara.org", "Gracias por ver el video"],
    "it": ["Sottotitoli creati dalla comunità Amara.org"],
    "pt": ["Legendas pela comunidade Amara.org"],
    "nl": ["Ondertitels ingediend door de Amara.org gemeenschap"],
    "pl": ["Napisy stworzone przez społeczność Amara.org"],
    "tr": ["Altyazı M.K.", "Abone olmayı unutmayın"],
    "ru": ["Продолжение следует", "Спасибо за просмотр"],
    "ja": ["ご視聴ありがとうございました", "チャンネル登録お願いします"],
    "ko": ["시청해주셔서 감사합니다"],
    "zh": ["请不吝点赞 订阅 转发 打赏支持明镜与点点栏目", "優優獨播劇場"],
}  # fmt: skip
# The language that it believes to hear, and how much, where there is none.
_BELIEVED = {"silence": ("en", 0.33), "noise": ("nn", 0.21), "tone": ("cy", 0.19)}
_NO_SPEECH = {"silence": 0.72, "noise": 0.35, "tone": 0.12}


@dataclass(frozen=True)
class Guess:
    """A segment as a model gives it; times in seconds from the start of the window."""

    text: str
    start: float
    end: float
    avg_logprob: float
    no_speech_prob: float
    words: tuple[Any, ...] = ()

    @property
    def compression_ratio(self) -> float:
        """How well the text can be packed: high where it repeats itself."""
        data = self.text.encode()
        return len(data) / len(zlib.compress(data))


def language_of(samples: Any) -> tuple[str, float]:
    """The language a model detects. Where nobody speaks it finds one as well, and is unsure."""
    words = hear(samples)
    if not words:
        return _BELIEVED[kind_of(samples)]
    codes = [word.language for word in words]
    best = max(sorted(set(codes)), key=codes.count)
    return best, 0.5 + 0.48 * codes.count(best) / len(codes)


def guesses(samples: Any, language: str, previous: str = "", poor: bool = False) -> list[Guess]:
    """The segments of one window.

    Silence and noise give a phrase that depends on the length of the sound, or `previous` again
    where there is such text; a tone gives one phrase in a loop. `poor`: text as of a model that
    lacks the language.
    """
    words = hear(samples)
    if not words:
        return [_invented(samples, language, previous)]
    found = []
    for sentence in sentences(words):
        text = " ".join(word.text for word in sentence)
        text = text[::-1] if poor else f"{text[0].upper()}{text[1:]}."
        certainty = -0.92 if poor else -0.18
        start, end = sentence[0].start, sentence[-1].end
        found.append(Guess(" " + text, start, end, certainty, 0.01, tuple(sentence)))
    return found


def _invented(samples: Any, language: str, previous: str) -> Guess:
    kind = kind_of(samples)
    seconds = len(samples) / 16000
    phrases = PHRASES.get(language, PHRASES["en"])
    text = phrases[int(seconds * 10) % len(phrases)]
    if kind == "tone":
        text = " ".join([text] * 20)
    elif previous:
        text = previous.strip()
    return Guess(" " + text, 0.0, max(seconds, 2.0), -0.25, _NO_SPEECH[kind])
