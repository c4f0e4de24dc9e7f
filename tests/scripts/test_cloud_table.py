"""The table of what cloud services refuse: its tests are there, and its texts are the panel's."""

import pathlib
import re
import unittest

_ROOT = pathlib.Path(__file__).resolve().parents[2]
_TABLE = _ROOT / "docs" / "cloud.md"
_ROW = re.compile(r"^\| (.+?) \| (.+?) \| `(\w+)\.(\w+)` \|$", re.M)
_TEXT = re.compile(r'u"service\.(\w+)",\s*((?:u"(?:[^"\\]|\\.)*"\s*)+)')


def english():
    """The first line of each text, by its code."""
    source = (_ROOT / "src/localization/TableEnService.cpp").read_text(encoding="utf-8")
    return {code: "".join(re.findall(r'u"((?:[^"\\]|\\.)*)"', parts)).split("\\n")[0]
            for code, parts in _TEXT.findall(source)}


class CloudTable(unittest.TestCase):
    def setUp(self):
        self.text = _TABLE.read_text(encoding="utf-8")
        self.rows = _ROW.findall(self.text)

    def test_every_row_is_read(self):
        lines = [line for line in self.text.splitlines() if line.startswith("| ")]
        headers = sum(line.startswith("| what happens |") for line in lines)
        self.assertEqual(headers, 6)
        self.assertEqual(len(self.rows), len(lines) - headers)

    def test_the_tests_are_there(self):
        sources = "\n".join(file.read_text(encoding="utf-8")
                            for file in (_ROOT / "tests").rglob("*Test.cpp"))
        desktop = "\n".join(file.read_text(encoding="utf-8")
                            for file in (_ROOT / "tests" / "desktop").glob("test_*.py"))
        for _, _, suite, name in self.rows:
            if f"class {suite}(" in desktop:
                self.assertIn(f"def test_{name}(", desktop)
            else:
                self.assertRegex(sources, rf"TEST(_F)?\({suite}, {name}\)")

    def test_every_text_stands_in_it_and_no_other(self):
        texts = set(english().values())
        self.assertGreater(len(texts), 10)
        shown = {text for _, cell, _, _ in self.rows for text in re.findall("`([^`]+)`", cell)}
        self.assertEqual(shown, texts)


if __name__ == "__main__":
    unittest.main()
