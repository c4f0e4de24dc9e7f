"""The table of faults in the documentation: its tests are there, and its texts are the program's."""

import re
import unittest
from pathlib import Path

from tests.test_client_texts import texts

_HERE = Path(__file__).resolve().parent
_TABLE = _HERE.parents[1] / "docs" / "faults.md"
_ROW = re.compile(r"^\| (?P<fault>.+?) \| (?P<shown>.+?) \| `(?P<test>[a-z_.]+)` \|$", re.M)

# Who serves, what is under way, and what is well as it is: no faults.
_NO_FAULTS = {
    "engine.serving", "engine.preparing", "engine.loading", "engine.loaded",
    "translation.by_client", "translation.same",
}  # fmt: skip


class FaultTableTest(unittest.TestCase):
    rows: list[tuple[str, str, str]]

    def setUp(self) -> None:
        self.rows = _ROW.findall(_TABLE.read_text(encoding="utf-8"))

    def test_every_row_is_read(self) -> None:
        lines = [line for line in _TABLE.read_text("utf-8").splitlines() if line.startswith("| ")]
        headers = sum(line.startswith("| what happens |") for line in lines)
        self.assertGreater(headers, 5)
        self.assertEqual(len(self.rows), len(lines) - headers)

    def test_the_tests_are_there(self) -> None:
        for fault, _, test in self.rows:
            module, name = test.split(".")
            source = (_HERE / f"{module}.py").read_text(encoding="utf-8")
            self.assertIn(f"def test_{name}(", source, fault)

    def test_every_text_stands_in_it_and_no_other(self) -> None:
        english = texts("En")
        wanted = {text.split("\n")[0] for code, text in english.items() if code not in _NO_FAULTS}
        found = {text for _, cell, _ in self.rows for text in re.findall("`([^`]+)`", cell)}
        self.assertEqual(found, wanted)


if __name__ == "__main__":
    unittest.main()
