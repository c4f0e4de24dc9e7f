"""Language codes: short ones as clients send them, and their other forms."""

from typing import Optional

# The client's wish that the recogniser finds the language out.
AUTO = "auto"

# Short code: English name, and ISO 639-3, the form in which translation pairs are mostly installed.
# The first 101 are those that the program offers, the rest only translators know.
_LANGUAGES = {
    "de": ("German", "deu"), "en": ("English", "eng"), "es": ("Spanish", "spa"),
    "fr": ("French", "fra"), "it": ("Italian", "ita"), "pt": ("Portuguese", "por"),
    "nl": ("Dutch", "nld"), "pl": ("Polish", "pol"), "ru": ("Russian", "rus"),
    "uk": ("Ukrainian", "ukr"), "tr": ("Turkish", "tur"), "el": ("Greek", "ell"),
    "zh": ("Chinese", "zho"), "ja": ("Japanese", "jpn"), "ko": ("Korean", "kor"),
    "ar": ("Arabic", "ara"), "hi": ("Hindi", "hin"), "he": ("Hebrew", "heb"),
    "th": ("Thai", "tha"), "vi": ("Vietnamese", "vie"), "id": ("Indonesian", "ind"),
    "ms": ("Malay", "msa"), "sv": ("Swedish", "swe"), "da": ("Danish", "dan"),
    "no": ("Norwegian", "nob"), "fi": ("Finnish", "fin"), "cs": ("Czech", "ces"),
    "sk": ("Slovak", "slk"), "hu": ("Hungarian", "hun"), "ro": ("Romanian", "ron"),
    "bg": ("Bulgarian", "bul"), "hr": ("Croatian", "hrv"), "sr": ("Serbian", "srp"),
    "sl": ("Slovenian", "slv"), "lt": ("Lithuanian", "lit"), "lv": ("Latvian", "lav"),
    "et": ("Estonian", "est"), "ca": ("Catalan", "cat"), "eu": ("Basque", "eus"),
    "gl": ("Galician", "glg"), "is": ("Icelandic", "isl"), "mt": ("Maltese", "mlt"),
    "lb": ("Luxembourgish", "ltz"), "cy": ("Welsh", "cym"), "ga": ("Irish", "gle"),
    "sq": ("Albanian", "sqi"), "mk": ("Macedonian", "mkd"), "bs": ("Bosnian", "bos"),
    "be": ("Belarusian", "bel"), "bn": ("Bengali", "ben"), "ta": ("Tamil", "tam"),
    "te": ("Telugu", "tel"), "ml": ("Malayalam", "mal"), "kn": ("Kannada", "kan"),
    "gu": ("Gujarati", "guj"), "mr": ("Marathi", "mar"), "pa": ("Punjabi", "pan"),
    "ur": ("Urdu", "urd"), "fa": ("Persian", "pes"), "ne": ("Nepali", "nep"),
    "si": ("Sinhala", "sin"), "km": ("Khmer", "khm"), "lo": ("Lao", "lao"),
    "my": ("Burmese", "mya"), "mn": ("Mongolian", "mon"), "bo": ("Tibetan", "bod"),
    "tl": ("Tagalog", "tgl"), "jw": ("Javanese", "jav"), "su": ("Sundanese", "sun"),
    "ka": ("Georgian", "kat"), "hy": ("Armenian", "hye"), "az": ("Azerbaijani", "aze"),
    "kk": ("Kazakh", "kaz"), "uz": ("Uzbek", "uzb"), "tg": ("Tajik", "tgk"),
    "tk": ("Turkmen", "tuk"), "af": ("Afrikaans", "afr"), "sw": ("Swahili", "swa"),
    "am": ("Amharic", "amh"), "yo": ("Yoruba", "yor"), "ha": ("Hausa", "hau"),
    "sn": ("Shona", "sna"), "so": ("Somali", "som"), "mg": ("Malagasy", "mlg"),
    "ht": ("Haitian Creole", "hat"), "la": ("Latin", "lat"), "haw": ("Hawaiian", "haw"),
    "mi": ("Maori", "mri"), "yi": ("Yiddish", "yid"), "fo": ("Faroese", "fao"),
    "br": ("Breton", "bre"), "oc": ("Occitan", "oci"), "sa": ("Sanskrit", "san"),
    "nn": ("Norwegian Nynorsk", "nno"), "tt": ("Tatar", "tat"), "ba": ("Bashkir", "bak"),
    "sd": ("Sindhi", "snd"), "ps": ("Pashto", "pus"), "as": ("Assamese", "asm"),
    "ln": ("Lingala", "lin"), "yue": ("Cantonese", "yue"),
    "an": ("Aragonese", "arg"), "eo": ("Esperanto", "epo"), "nb": ("Norwegian Bokmål", "nob"),
    "sc": ("Sardinian", "srd"), "se": ("Northern Sami", "sme"), "ast": ("Asturian", "ast"),
    "ky": ("Kyrgyz", "kir"),
}  # fmt: skip

# Codes that mean the same language.
_ALIASES = {"jv": "jw", "iw": "he", "in": "id", "ji": "yi", "fil": "tl", "cmn": "zh", "nb": "no"}

_NAMES = {name.lower(): code for code, (name, _) in _LANGUAGES.items()}


def short(code: str) -> str:
    """The language of a code without region: "en-US" and "EN" give "en"."""
    return code.strip().lower().replace("_", "-").split("-")[0]


def same(one: str, other: str) -> bool:
    """Whether two codes mean one language, whatever their regions: "jv" and "jw", "nb" and "no"."""
    return canonical(one) == canonical(other)


def canonical(code: str) -> str:
    """The short code as the program has it: "jv-ID" gives "jw"."""
    return _ALIASES.get(short(code), short(code))


def long(code: str) -> str:
    """The three-letter code; the short code itself where none is known."""
    known = _LANGUAGES.get(short(code)) or _LANGUAGES.get(canonical(code))
    return known[1] if known else short(code)


def english_name(code: str) -> str:
    """The language's English name; the short code itself where none is known."""
    known = _LANGUAGES.get(short(code)) or _LANGUAGES.get(canonical(code))
    return known[0] if known else short(code)


def code_of_name(name: str) -> Optional[str]:
    """The short code of an English name in any case, as some engines name what they detected."""
    return _NAMES.get(name.strip().lower())
