"""The languages Whisper knows, by its own codes, and what a model of it can do with them."""

from typing import Optional

from ..languages import AUTO, canonical, short
from ..notices import Notice, notice

# The codes of all models that know more than English.
_CODES = frozenset(
    """
    af am ar as az ba be bg bn bo br bs ca cs cy da de el en es et eu fa fi fo fr gl gu ha haw he hi
    hr ht hu hy id is it ja jw ka kk km kn ko la lb ln lo lt lv mg mi mk ml mn mr ms mt my ne nl nn no
    oc pa pl ps pt ro ru sa sd si sk sl sn so sq sr su sv sw ta te tg th tk tl tr tt uk ur uz vi yi yo
    zh
    """.split()
)

# Cantonese came with the third large model. An older one has no token for it: one package raises
# ValueError then, the other transcribes something else.
_CANTONESE = "yue"
_CANTONESE_MODELS = ("large-v3", "large-v3-turbo")

ENGLISH = "en"


def is_english_only(model: str) -> bool:
    """Whether a model, by its full name, knows no other language."""
    return model.endswith(".en") or model.startswith("distil-")


def whisper_code(language: str, model: str) -> Optional[str]:
    """Whisper's code of a language for a model; none where the model lacks it.

    "auto" gives none as well: it is no language.
    """
    code = canonical(language)
    if is_english_only(model):
        known = code == ENGLISH
    elif code == _CANTONESE:
        known = model in _CANTONESE_MODELS
    else:
        known = code in _CODES
    return code if known else None


def language_refusal(language: str, model: str, engine: str) -> Optional[Notice]:
    """Why a model cannot serve a language; none when it can.

    A model that knows English only serves "auto" with it.
    """
    if short(language) == AUTO or whisper_code(language, model) is not None:
        return None
    return notice("recognition.language_unknown", engine=engine, language=canonical(language))
