"""What Whisper's segments become."""

import unittest

import numpy as np

from orvane_backend.recognisers import Evidence, Recognition, Word
from orvane_backend.recognisers import whisper_text as text
from orvane_backend.recognisers.whisper_text import Segment


class RecognitionTest(unittest.TestCase):
    def test_evidence_is_put_together_from_all_segments(self) -> None:
        heard = text.recognition(
            [Segment(" abc", 0.5, -0.2, 1.1), Segment(" abcdefg", 0.1, -0.8, 1.9)], "de", 0.7
        )
        self.assertEqual((heard.text, heard.language, heard.certainty), ("abc abcdefg", "de", 0.7))
        self.assertEqual((heard.evidence.no_speech, heard.evidence.compression), (0.1, 1.9))
        # Longer texts count for more.
        self.assertAlmostEqual(heard.evidence.log_probability or 0, (-0.2 * 4 - 0.8 * 8) / 12)
        self.assertIsNone(heard.evidence.confidence)

    def test_words_bring_their_mean_probability(self) -> None:
        segment = Segment(
            " a b", 0, 0, 1, (Word("a", 0, 1), Word("", 1, 1), Word("b", 1, 2)), (0.5, 0.6, 1.0)
        )
        heard = text.recognition([segment], "de", None)
        self.assertEqual([word.text for word in heard.words], ["a", "b"])
        self.assertAlmostEqual(heard.evidence.confidence or 0, 0.7)

    def test_nothing_said_has_no_evidence(self) -> None:
        for segments in ([], [Segment("  ", 0.9, -0.2, 1.0, (Word("", 0, 1),), (0.5,))]):
            self.assertEqual(
                text.recognition(segments, "de", 0.3), Recognition("", "de", 0.3, Evidence())
            )

    def test_texts_without_spaces_give_a_prompt_of_their_end(self) -> None:
        self.assertEqual(text.prompt("字" * 500), "字" * 200)
        self.assertIsNone(text.prompt(""))

    def test_a_window_is_thirty_seconds(self) -> None:
        self.assertTrue(text.fits_one_window(np.zeros(480000, np.float32)))
        self.assertFalse(text.fits_one_window(np.zeros(480001, np.float32)))


if __name__ == "__main__":
    unittest.main()
