"""What is sure of a sentence that was cut, and what is new when its end is heard again."""

import unittest

import numpy as np

from orvane_backend.cuts import cut, fresh_words, quietest
from orvane_backend.recognisers import Word


def words(*ends: float) -> list[Word]:
    """Words without gaps that end there."""
    begins = [0.0, *ends]
    return [Word(f"w{number}", begins[number], end) for number, end in enumerate(ends)]


class CutTest(unittest.TestCase):
    def test_words_near_the_cut_are_held_back_and_two_before_them_heard_again(self) -> None:
        parted = cut(words(1.0, 2.0, 6.5, 7.0, 7.5, 7.9), 8.0)
        assert parted is not None
        self.assertEqual((parted.sure, parted.fresh), (5, 7.5))
        self.assertEqual(parted.again, 6.5)

    def test_a_long_word_before_the_cut_is_not_heard_again(self) -> None:
        parted = cut(words(5.0, 7.5, 7.9), 8.0)
        assert parted is not None
        self.assertEqual((parted.sure, parted.again, parted.fresh), (2, 7.5, 7.5))

    def test_speech_after_the_last_word_is_heard_again(self) -> None:
        parted = cut(words(6.0, 6.6), 8.0)
        assert parted is not None
        self.assertEqual((parted.sure, parted.fresh), (2, 6.6))
        self.assertEqual(parted.again, 6.0)

    def test_several_short_words_may_be_unsure(self) -> None:
        parted = cut(words(7.0, 7.5, 7.65, 7.8, 8.0), 8.0)
        assert parted is not None
        self.assertEqual((parted.sure, parted.fresh), (2, 7.5))

    def test_nothing_longer_than_three_seconds_is_held_back(self) -> None:
        self.assertIsNone(cut(words(1.0, 4.0, 7.9), 8.0))
        self.assertIsNone(cut(words(1.0, 4.9), 8.0))

    def test_a_short_stretch_may_be_held_back_whole(self) -> None:
        parted = cut(words(2.4), 2.5)
        assert parted is not None
        self.assertEqual((parted.sure, parted.again, parted.fresh), (0, 0.0, 0.0))


class FreshWordsTest(unittest.TestCase):
    def test_words_before_the_new_ones_are_left_away(self) -> None:
        heard = words(0.5, 1.0, 1.5)
        self.assertEqual(fresh_words(heard, 1.0, "w1"), heard[2:])

    def test_a_word_that_reaches_over_is_judged_by_its_middle(self) -> None:
        heard = [Word("a", 0.0, 0.9), Word("b", 0.9, 1.5)]
        self.assertEqual(fresh_words(heard, 1.0, "a"), heard[1:])
        self.assertEqual(fresh_words(heard, 1.3, "a"), [])

    def test_the_last_word_that_was_shown_is_not_shown_again(self) -> None:
        heard = [Word("Upon", 0.8, 1.3), Word("a", 1.3, 1.5)]
        self.assertEqual(fresh_words(heard, 1.0, "upon,"), heard[1:])

    def test_a_word_that_was_said_twice_is_shown_twice(self) -> None:
        heard = [Word("no", 0.5, 1.0), Word("no", 1.0, 1.5)]
        self.assertEqual(fresh_words(heard, 1.0, "no"), heard[1:])


class QuietestTest(unittest.TestCase):
    def test_the_quietest_place_near_the_end(self) -> None:
        samples = np.full(8 * 16000, 0.2, np.float32)
        for second in (1.0, 6.4):
            samples[int(second * 16000) : int((second + 0.15) * 16000)] = 0.001
        self.assertAlmostEqual(quietest(samples, 2.5), 6.475, delta=0.03)

    def test_sound_shorter_than_the_end(self) -> None:
        samples = np.full(16000, 0.2, np.float32)
        self.assertTrue(0 < quietest(samples, 2.5) < 1)


if __name__ == "__main__":
    unittest.main()
