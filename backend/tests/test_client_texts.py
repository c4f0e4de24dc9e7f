"""The program beside this server has a text for every code, in each of its languages."""

import json
import re
import string
import unittest
from pathlib import Path

from orvane_backend import notices

_TABLES = Path(__file__).resolve().parents[2] / "src" / "localization"
_LANGUAGES = ("De", "En", "Es", "Fr", "It")
_LITERAL = r'u"((?:[^"\\]|\\.)*)"'
_ENTRY = re.compile(r'\{u"(backend\.[a-z0-9_.]+)",\s*((?:%s\s*)+)\}' % _LITERAL)

# Not of a notice: who serves.
_SERVING = "engine.serving"
# A variant that says how Whisper is installed.
_OF_WHISPER = ".whisper"
# Their reasons come one by one, in a list beside.
_WITHOUT_REASON = ("engine.none", "engine.none_for_language")


def texts(language: str) -> dict[str, str]:
    """The texts of one language by the codes."""
    found = {}
    for file in sorted(_TABLES.glob(f"Table{language}*.cpp")):
        for key, literals, _ in _ENTRY.findall(file.read_text(encoding="utf-8")):
            text = json.loads('"' + "".join(re.findall(_LITERAL, literals)) + '"')
            found[key.removeprefix("backend.")] = text
    return found


def placeholders(text: str) -> list[str]:
    """What stands in braces."""
    return sorted({name for _, name, _, _ in string.Formatter().parse(text) if name is not None})


def parameters(code: str) -> list[str]:
    """What a client may put into the text of a code."""
    if code == _SERVING:
        return ["recogniser", "translator"]
    names = placeholders(notices._GERMAN[code.removesuffix(_OF_WHISPER)])
    return [name for name in names if not (name == "reason" and code in _WITHOUT_REASON)]


class ClientTextsTest(unittest.TestCase):
    def test_every_code_has_a_text_in_each_language_and_no_other_has(self) -> None:
        wanted = {*notices.codes(), _SERVING}
        for language in _LANGUAGES:
            found = {code for code in texts(language) if not code.endswith(_OF_WHISPER)}
            self.assertEqual(found, wanted, language)

    def test_a_variant_belongs_to_a_code(self) -> None:
        for language in _LANGUAGES:
            found = texts(language)
            variants = [code for code in found if code.endswith(_OF_WHISPER)]
            self.assertTrue(variants, language)
            for code in variants:
                self.assertIn(code.removesuffix(_OF_WHISPER), found, language)

    def test_the_placeholders_are_the_codes_parameters(self) -> None:
        for language in _LANGUAGES:
            for code, text in texts(language).items():
                with self.subTest(language=language, code=code):
                    self.assertEqual(placeholders(text), parameters(code))


if __name__ == "__main__":
    unittest.main()
