"""Language codes: short ones as clients send them, and their other forms."""

# The client's wish that the recogniser finds the language out.
AUTO = "auto"

# ISO 639-1 to 639-3, the form in which translation pairs are mostly installed.
_LONG_CODES = {
    "af": "afr", "an": "arg", "ar": "ara", "be": "bel", "bg": "bul", "br": "bre", "ca": "cat",
    "cy": "cym", "da": "dan", "de": "deu", "en": "eng", "eo": "epo", "es": "spa", "eu": "eus",
    "fi": "fin", "fr": "fra", "gl": "glg", "hi": "hin", "hr": "hrv", "id": "ind", "is": "isl",
    "it": "ita", "kk": "kaz", "mk": "mkd", "ms": "msa", "mt": "mlt", "nb": "nob", "nl": "nld",
    "nn": "nno", "no": "nob", "oc": "oci", "pl": "pol", "pt": "por", "ro": "ron", "ru": "rus",
    "sc": "srd", "sk": "slk", "sl": "slv", "sr": "srp", "sv": "swe", "tr": "tur", "tt": "tat",
    "uk": "ukr", "ur": "urd",
}  # fmt: skip

_NAMES = {
    "ar": "Arabic", "cs": "Czech", "da": "Danish", "de": "German", "el": "Greek", "en": "English",
    "es": "Spanish", "fi": "Finnish", "fr": "French", "hi": "Hindi", "hu": "Hungarian",
    "it": "Italian", "ja": "Japanese", "ko": "Korean", "nl": "Dutch", "no": "Norwegian",
    "pl": "Polish", "pt": "Portuguese", "ro": "Romanian", "ru": "Russian", "sv": "Swedish",
    "tr": "Turkish", "uk": "Ukrainian", "vi": "Vietnamese", "zh": "Chinese",
}  # fmt: skip

_LOCALES = {
    "ar": "ar-SA", "da": "da-DK", "de": "de-DE", "en": "en-US", "es": "es-ES", "fr": "fr-FR",
    "hi": "hi-IN", "it": "it-IT", "ja": "ja-JP", "ko": "ko-KR", "nl": "nl-NL", "pl": "pl-PL",
    "pt": "pt-PT", "ru": "ru-RU", "sv": "sv-SE", "tr": "tr-TR", "uk": "uk-UA",
    "zh": "cmn-Hans-CN",
}  # fmt: skip


def short(code: str) -> str:
    """The language of a code without region: "en-US" and "EN" give "en"."""
    return code.strip().lower().replace("_", "-").split("-")[0]


def long(code: str) -> str:
    """The three-letter code; the code itself where none is known."""
    return _LONG_CODES.get(short(code), short(code))


def english_name(code: str) -> str:
    """The language's English name; the code itself where none is known."""
    return _NAMES.get(short(code), short(code))


def locale(code: str) -> str:
    """Language and region as speech services name them: "en" gives "en-US"."""
    return _LOCALES.get(short(code), f"{short(code)}-{short(code).upper()}")
