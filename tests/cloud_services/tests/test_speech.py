"""What counts as voice, where utterances end, and which text they get."""

import unittest

import numpy as np

from tests.cloud_services._clock import ManualClock, Pace
from tests.cloud_services._speech import LINEAR16, Ear, Lines, Utterances, in_words, mulaw, plain
from tests.cloud_services.tests import sounds


def heard(pieces: list[bytes], silence: float = 0.3) -> list[tuple[int, float, float]]:
    """Number, begin and end of each utterance that a pause has ended."""
    ear, utterances = Ear(LINEAR16, sounds.RATE), Utterances(Lines(), silence)
    found = []
    for piece in pieces:
        for window in ear.hear(piece):
            utterances.begins(window)
            if utterances.is_over(window):
                over = utterances.take()
                assert over
                found.append((over.number, round(over.start, 3), round(over.voice_end, 3)))
    return found


class Voice(unittest.TestCase):
    def test_utterances_are_where_the_voice_is(self) -> None:
        found = heard([sounds.spoken(3, seconds=1.0, silence=0.6)])
        self.assertEqual([number for number, _, _ in found], [1, 2, 3])
        for place, (_, start, end) in enumerate(found):
            self.assertAlmostEqual(start, 0.6 + 1.6 * place, delta=0.021)
            self.assertAlmostEqual(end, 1.6 + 1.6 * place, delta=0.021)

    def test_the_cut_into_messages_changes_nothing(self) -> None:
        data = sounds.spoken(4)
        whole = heard([data])
        for size in (1, 639, 641, 3333, 32000):
            self.assertEqual(heard([data[n : n + size] for n in range(0, len(data), size)]), whole)

    def test_45_decibels_below_full_scale_divide_voice_from_silence(self) -> None:
        quiet, loud = sounds.level(-46, 1), sounds.level(-44, 1)
        self.assertEqual(heard([sounds.pcm(quiet, sounds.pause(1))]), [])
        self.assertEqual(heard([sounds.pcm(loud, sounds.pause(1))]), [(1, 0.0, 1.0)])

    def test_a_pause_ends_an_utterance_and_a_gap_does_not(self) -> None:
        for silence, count in ((0.26, 1), (0.32, 2)):
            parts = sounds.level(-20, 0.5), sounds.pause(silence), sounds.level(-20, 0.5)
            self.assertEqual(len(heard([sounds.pcm(*parts, sounds.pause(0.5))])), count)

    def test_channels_are_heard_together(self) -> None:
        ear = Ear(LINEAR16, 8000, 2)
        data = np.repeat(np.array([8000, 0], '<i2')[None], 160, axis=0).tobytes()
        self.assertEqual([window.voiced for window in ear.hear(data)], [True])
        self.assertEqual(ear.seconds(len(data)), 0.02)

    def test_mulaw(self) -> None:
        values = mulaw(bytes([0xFF, 0x7F, 0x80, 0x00, 0xE8, 0x68])) * 32768
        self.assertEqual(values.tolist(), [0, 0, 32124, -32124, 244, -244])


class Texts(unittest.TestCase):
    def test_lines_come_in_order_and_numbered_sentences_behind_them(self) -> None:
        lines = Lines(['One.', ' ', 'Two.'])
        self.assertEqual([lines.next() for _ in range(2)], [(1, 'One.'), (2, 'Two.')])
        self.assertEqual(lines.next(), (3, 'sentence number three.'))

    def test_numbers_in_words(self) -> None:
        known = {7: 'seven', 13: 'thirteen', 40: 'forty', 99: 'ninety-nine', 100: 'one hundred'}
        known |= {342: 'three hundred forty-two', 1001: 'one thousand one'}
        self.assertEqual({number: in_words(number) for number in known}, known)
        self.assertEqual(len({in_words(number) for number in range(5000)}), 5000)

    def test_plain_text_has_no_punctuation(self) -> None:
        self.assertEqual(plain("Hello, World! Don't – stop..."), "hello world don't – stop")


class Rate(unittest.TestCase):
    def setUp(self) -> None:
        self.clock = ManualClock()

    def test_real_time_is_never_too_fast(self) -> None:
        pace = Pace(self.clock, 1.0, 0.5)
        for _ in range(1000):
            self.clock.move(0.1)
            self.assertTrue(pace.take(0.1))

    def test_the_burst_is_all_there_is(self) -> None:
        pace = Pace(self.clock, 1.0, 1.0)
        self.assertTrue(all(pace.take(0.1) for _ in range(10)))
        self.assertFalse(pace.take(0.1))
        self.assertAlmostEqual(pace.received, 1.1)
        self.clock.move(0.2)
        self.assertTrue(pace.take(0.1))
        self.assertAlmostEqual(pace.elapsed, 0.2)

    def test_silence_is_no_credit_for_a_backlog(self) -> None:
        pace = Pace(self.clock, 1.0, 1.0)
        self.clock.move(60)
        self.assertFalse(all(pace.take(0.5) for _ in range(3)))

    def test_a_rate_above_one(self) -> None:
        for speed, fits in ((1.2, True), (1.3, False)):
            pace = Pace(self.clock, 1.25, 1.0)
            sent = []
            for _ in range(600):
                self.clock.move(0.1)
                sent.append(pace.take(0.1 * speed))
            self.assertEqual(all(sent), fits)


if __name__ == '__main__':
    unittest.main()
