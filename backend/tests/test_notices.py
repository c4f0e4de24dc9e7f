"""What there is to tell: every code has its sentence and its parameters."""

import re
import string
import unittest
from pathlib import Path

from orvane_backend import notices
from orvane_backend.notices import Problem, notice

_PACKAGE = Path(notices.__file__).resolve().parent.parent


class NoticesTest(unittest.TestCase):
    def test_a_notice_says_its_sentence_and_its_code(self) -> None:
        told = notice("recognition.language_unknown", engine="Whisper", language="ga")
        self.assertEqual(told.german, "Whisper versteht „ga“ nicht")
        self.assertEqual(
            told.record(),
            {
                "code": "recognition.language_unknown",
                "parameters": {"engine": "Whisper", "language": "ga"},
            },
        )

    def test_an_unknown_code_or_a_missing_parameter_is_refused(self) -> None:
        for code in ("no.such", "engine.loading"):
            with self.assertRaises(KeyError):
                notice(code)

    def test_braces_in_what_a_service_said_are_left_alone(self) -> None:
        told = notice("recognition.failed", engine="X", reason='{"error": "{0}"}')
        self.assertEqual(told.german, 'X: {"error": "{0}"}')

    def test_a_problem_is_told_by_its_notice(self) -> None:
        told = notice("engine.none", reason="x")
        self.assertEqual(str(Problem(told)), told.german)

    def test_every_code_is_used(self) -> None:
        sources = [path for path in _PACKAGE.rglob("*.py") if path.parent.name != "notices"]
        text = "".join(path.read_text() for path in sources)
        # Some are put together of a prefix and the rest.
        used = set(re.findall(r'"([a-z_.]+)"', text))
        unused = [
            code
            for code in notices.codes()
            if not {code, code.split(".")[1].removeprefix("near_")} & used
        ]
        self.assertEqual(unused, [])

    def test_every_code_that_is_told_is_there(self) -> None:
        for path in _PACKAGE.rglob("*.py"):
            for code in re.findall(r'\bnotice\(\s*"([a-z_.]+)"', path.read_text()):
                self.assertIn(code, notices.codes(), path.name)

    def test_no_sentence_ends_like_one_or_begins_with_a_sign(self) -> None:
        for code in notices.codes():
            german = notices._GERMAN[code]
            self.assertFalse(german.endswith("."), code)
            self.assertTrue(german[0].isalpha() or german[0] in "{„", code)
            fields = {name for _, name, _, _ in string.Formatter().parse(german) if name}
            self.assertTrue(all(field.isidentifier() for field in fields), code)


if __name__ == "__main__":
    unittest.main()
