"""Google's places, the model that each is asked for, and the codes of languages there.

The service spells some languages in its own way, and refuses a model in a place that lacks it.
"""

from typing import Optional

from ..languages import canonical, short

_GLOBAL = "global"
_CONVENTIONAL = "long"

# The places whose newest model that streams is this one. Others have the conventional ones alone.
_MODELS = {
    "chirp_2": ("us-central1", "europe-west4", "asia-southeast1"),
    "chirp_3": (
        "us", "eu", "asia-northeast1", "asia-south1", "europe-west2", "europe-west3",
        "northamerica-northeast1",
    ),
}  # fmt: skip
# It knows many more languages, but streams these alone.
_CHIRP_2_STREAMS = frozenset(
    "cmn-Hans-CN cmn-Hant-TW yue-Hant-HK en-AU en-IN en-GB en-US fr-CA fr-FR de-DE it-IT ja-JP "
    "ko-KR pt-BR es-ES es-US".split()
)

# What the service calls the languages of the program, in the usual region.
_LOCALES = {
    short(code): code
    for code in (
        "af-ZA am-ET ar-SA az-AZ bg-BG bn-IN bs-BA ca-ES cs-CZ da-DK de-DE el-GR en-US es-ES et-EE "
        "eu-ES fa-IR fi-FI fr-FR gl-ES gu-IN hi-IN hr-HR hu-HU hy-AM id-ID is-IS it-IT ja-JP ka-GE "
        "kk-KZ km-KH kn-IN ko-KR lo-LA lt-LT lv-LV mk-MK ml-IN mn-MN mr-IN ms-MY my-MM ne-NP nl-NL "
        "no-NO pa-Guru-IN pl-PL pt-BR ro-RO ru-RU si-LK sk-SK sl-SI sq-AL sr-RS su-ID sv-SE sw-KE "
        "ta-IN te-IN th-TH tr-TR uk-UA ur-PK uz-UZ vi-VN yue-Hant-HK"
    ).split()
} | {"he": "iw-IL", "jw": "jv-ID", "tl": "fil-PH", "zh": "cmn-Hans-CN"}

# Chinese is written in two ways, and Hong Kong's is another language to the service.
_CHINESE = {
    "cn": "cmn-Hans-CN", "sg": "cmn-Hans-CN", "hans": "cmn-Hans-CN",
    "tw": "cmn-Hant-TW", "hant": "cmn-Hant-TW", "hk": "yue-Hant-HK", "mo": "yue-Hant-HK",
}  # fmt: skip
# These are known in one spelling alone, whatever region is asked for.
_FIXED = ("he", "jw", "no", "pa", "tl", "yue")


def normal_location(location: str) -> str:
    """A place as the service's addresses have it; the global one when none is given."""
    return location.strip().lower() or _GLOBAL


def endpoint(location: str) -> Optional[str]:
    """The host of a place; none for the global one, which is the package's own."""
    return None if location == _GLOBAL else f"{location}-speech.googleapis.com"


def locale(language: str) -> Optional[str]:
    """The service's code of a language; a region that was asked for stays. None where it lacks it."""
    code = canonical(language)
    usual = _LOCALES.get(code)
    parts = [part for part in language.strip().replace("_", "-").split("-")[1:] if part]
    if usual is None or not parts or code in _FIXED:
        return usual
    if code == "zh":
        return next((_CHINESE[part.lower()] for part in reversed(parts) if part.lower() in _CHINESE),
                    usual)  # fmt: skip
    return "-".join([short(usual), *(_cased(part) for part in parts)])


def model_for(location: str, code: Optional[str]) -> Optional[str]:
    """The model that hears a locale in a place, or any language where it is none.

    None where no model does that.
    """
    model = next((name for name, places in _MODELS.items() if location in places), None)
    if code is None:
        return model
    if model is None or (model == "chirp_2" and code not in _CHIRP_2_STREAMS):
        return _CONVENTIONAL
    return model


def _cased(part: str) -> str:
    return part.title() if len(part) == 4 else part.upper()
