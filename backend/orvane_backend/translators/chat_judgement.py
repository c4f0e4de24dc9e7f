"""Whether what a chat model said can be the translation of a text: a refusal or an essay is none."""

import re
import unicodedata

from ..languages import canonical

# By language: an apology, and being unable or unwilling. A source that has either says so itself.
_WORDS = {
    "en": (r"sorry|apologi[sz]e|afraid|regret", r"can(?:no|['’])t|can not|unable|not able|won['’]t|must decline"),
    "de": (r"leid|entschuldig|verzeih|bedau[er]|leider", r"kann[^.]{0,60}nicht|kann[^.]{0,40}kein|nicht möglich|nicht in der lage"),
    "fr": (r"désolée?|excuse|pardon|regrette|malheureusement", r"ne (?:peux|puis|pourrai)|incapable|impossible"),
    "es": (r"lo siento|lamento|perd[oó]n|disculp|lamentablemente", r"no (?:puedo|podré)|incapaz|imposible"),
    "it": (r"mi dispiace|scus|spiacente|purtroppo", r"non (?:posso|potrò|sono in grado)|impossibile"),
    "pt": (r"desculp|lamento|sinto muito|infelizmente", r"não (?:posso|poderei|consigo)|incapaz"),
    "nl": (r"spijt|sorry|excuses|helaas", r"kan[^.]{0,40}niet|kan[^.]{0,30}geen"),
    "pl": (r"przykro|przepraszam|niestety", r"nie (?:mogę|jestem w stanie)"),
    "ru": (r"извин|простите|прошу прощения|жаль|сожалени", r"не мо(?:гу|жу)|невозможно"),
    "uk": (r"вибач|перепрошую|шкода|на жаль", r"не мож[уе]"),
    "sv": (r"ledsen|förlåt|ursäkta|tyvärr|beklagar", r"kan(?: \w+)? inte"),
    "tr": (r"üzgünüm|özür|maalesef", r"am(?:am|ıyorum|iyorum)|em(?:em|iyorum)"),
    "zh": (r"抱歉|对不起|對不起|很遗憾", r"不能|无法|無法"),
    "ja": (r"申し訳|すみません|ごめん|残念", r"できません|出来ません|いたしかねます"),
    "ko": (r"죄송|미안|유감", r"없습니다|못합니다|할 수 없"),
}  # fmt: skip

# Only a model says this of itself or of its task.
_OF_A_MODEL = re.compile(
    r"\bas an ai\b|\b(?:ai|language) model\b|\bals (?:eine )?ki\b|sprachmodell|"
    r"(?:can(?:no|['’])t|can not|unable to|not able to|won['’]t)\s+"
    r"(?:translate|comply with|assist (?:you )?with|fulfil+ (?:this|that|your))\b|"
    r"(?:against|violates?) my (?:guidelines|policy|policies)|"
    r"kann[^.]{0,60}nicht (?:übersetzen|nachkommen)|ne (?:peux|puis) pas[^.]{0,20}traduire|"
    r"no puedo traducir|non posso tradurre|não posso traduzir|kan[^.]{0,40}niet vertalen|"
    r"не могу перевести|无法翻译|無法翻譯|翻訳(?:することは|は)?できません|번역할 수 없",
    re.I,
)
_UNABLE_AT_ONCE = re.compile(
    r"\W*(?:i (?:can(?:no|['’])t|can not|won['’]t)|i(?: a|['’])m (?:unable|not able))\b"
)

# How far from the beginning an apology stands, and how far behind it what it is for.
_HEAD = 40
_REACH = 60


def is_refusal(answer: str, text: str, source: str, target: str) -> bool:
    """Whether the model speaks of itself instead of translating.

    Without a sign of it in the source, and only where it would have been seen there: a source in a
    language that is not known here may well say it.
    """
    if _speaks_so(text, source):
        return False
    if _OF_A_MODEL.search(answer):
        return True
    head = answer[: _HEAD + _REACH].lower()
    is_known = canonical(source) in _WORDS
    if _UNABLE_AT_ONCE.match(head):
        return canonical(target) != "en" or is_known
    for language, (sorry, unable) in _WORDS.items():
        found = re.search(sorry, head[:_HEAD])
        if found and re.search(unable, head[found.start() : found.start() + _REACH]):
            return language != canonical(target) or is_known
    return False


def _speaks_so(text: str, source: str) -> bool:
    if _OF_A_MODEL.search(text):
        return True
    known = _WORDS.get(canonical(source))
    judged = [known] if known else list(_WORDS.values())
    return any(re.search(words, text.lower()) for pair in judged for words in pair)


def is_too_long(answer: str, text: str) -> bool:
    """Whether an answer is many times longer than what it translates, whatever their scripts."""
    return _weight(answer) > 4 * _weight(text) + 40


def _weight(text: str) -> int:
    """Letters, where a sign that stands for a word or a syllable counts as three."""
    return sum(3 if unicodedata.east_asian_width(one) in "WF" else 1 for one in text)
