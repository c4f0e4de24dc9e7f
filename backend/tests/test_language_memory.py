"""Which language is taken to be spoken."""

import unittest
from typing import Optional

from orvane_backend.language_memory import LanguageMemory


def settled(*heard: tuple[str, Optional[float]]) -> list[str]:
    memory = LanguageMemory()
    return [memory.settle(*one) for one in heard]


class LanguageMemoryTest(unittest.TestCase):
    def test_the_first_likely_language_is_taken(self) -> None:
        self.assertEqual(settled(("de", 0.6), ("en", 0.7)), ["de", "de"])

    def test_an_unlikely_first_one_is_not_remembered(self) -> None:
        self.assertEqual(settled(("cy", 0.3), ("en", 0.9), ("cy", 0.9)), ["cy", "en", "en"])

    def test_two_sure_utterances_in_a_row_change_it(self) -> None:
        self.assertEqual(settled(("en", 0.9), ("fr", 0.9), ("fr", 0.8)), ["en", "en", "fr"])

    def test_what_lies_between_them_starts_the_count_anew(self) -> None:
        for between in (("en", 0.9), ("fr", 0.5), ("es", 0.9)):
            heard = (("en", 0.9), ("fr", 0.9), between, ("fr", 0.9))
            self.assertEqual(settled(*heard)[-1], "en", between)

    def test_an_engine_that_tells_no_certainty_counts_as_sure(self) -> None:
        self.assertEqual(settled(("en", None), ("fr", None), ("fr", None)), ["en", "en", "fr"])

    def test_regions_and_other_names_are_the_same_language(self) -> None:
        self.assertEqual(settled(("pt-BR", 0.9), ("pt", 0.9)), ["pt", "pt"])
        self.assertEqual(settled(("jv", 0.9), ("jw", 0.9)), ["jw", "jw"])


if __name__ == "__main__":
    unittest.main()
