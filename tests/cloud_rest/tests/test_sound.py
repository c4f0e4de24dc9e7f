import struct
import unittest

import numpy

from tests.cloud_rest.lines import Lines, in_words
from tests.cloud_rest.sound import NotSound, find_voice, read_wave, samples_of, voiced
from tests.cloud_rest.tests.support import pcm, silence, tone, wav

RATE = 16000


def stretches(*parts):
    return find_voice(samples_of(pcm(*parts)), RATE)


class Voice(unittest.TestCase):
    def test_silence_holds_no_voice(self):
        self.assertEqual(stretches(silence(2)), [])

    def test_no_sound_holds_no_voice(self):
        self.assertEqual(find_voice(numpy.zeros(0), RATE), [])

    def test_what_is_softer_than_the_threshold_is_no_voice(self):
        self.assertEqual(stretches(tone(1, level=-47)), [])

    def test_what_is_louder_than_the_threshold_is_voice(self):
        self.assertEqual(len(stretches(tone(1, level=-43))), 1)

    def test_one_stretch_begins_and_ends_where_its_tone_does(self):
        (found,) = stretches(silence(0.5), tone(1), silence(0.5))
        self.assertAlmostEqual(found.start, 0.5, delta=0.002)
        self.assertAlmostEqual(found.end, 1.5, delta=0.002)
        self.assertAlmostEqual(voiced([found]), 1.0, delta=0.004)

    def test_a_gap_of_300_ms_separates_wherever_it_falls(self):
        for before in (0.4, 0.407, 0.411, 0.419):
            with self.subTest(before=before):
                self.assertEqual(len(stretches(tone(before), silence(0.3), tone(0.4))), 2)

    def test_a_shorter_gap_does_not_separate(self):
        for before in (0.4, 0.407, 0.411, 0.419):
            with self.subTest(before=before):
                self.assertEqual(len(stretches(tone(before), silence(0.29), tone(0.4))), 1)

    def test_the_mean_of_channels_is_heard(self):
        left = (tone(0.5) * 32767).astype('<i2')
        both = numpy.stack([left, left], axis=1).tobytes()
        self.assertEqual(len(find_voice(samples_of(both, 2), RATE)), 1)


class WaveFiles(unittest.TestCase):
    def test_a_true_file_is_read(self):
        found = read_wave(wav(tone(0.5)))
        self.assertEqual((found.encoding, found.channels, found.rate, found.bits), (1, 1, RATE, 16))
        self.assertEqual(found.data, pcm(tone(0.5)))

    def test_a_chunk_that_is_not_known_is_passed_over(self):
        good = wav(tone(0.1))
        more = good[:12] + b'LIST' + struct.pack('<I', 3) + b'abc\0' + good[12:]
        more = more[:4] + struct.pack('<I', len(more) - 8) + more[8:]
        self.assertEqual(read_wave(more).data, pcm(tone(0.1)))

    def assert_no_sound(self, content, streamed=False):
        with self.assertRaises(NotSound):
            read_wave(content, streamed)

    def test_what_is_no_riff_is_refused(self):
        self.assert_no_sound(pcm(tone(0.1)))

    def test_nothing_is_refused(self):
        self.assert_no_sound(b'')

    def test_a_file_cut_off_is_refused(self):
        self.assert_no_sound(wav(tone(0.1))[:-100])

    def test_a_header_without_data_is_refused(self):
        self.assert_no_sound(b'RIFF' + struct.pack('<I', 4) + b'WAVE')

    def test_data_before_its_format_is_refused(self):
        self.assert_no_sound(b'RIFF\x0c\0\0\0WAVEdata\0\0\0\0')

    def test_a_byte_rate_that_contradicts_is_refused(self):
        content = bytearray(wav(tone(0.1)))
        struct.pack_into('<I', content, 28, RATE)
        self.assert_no_sound(bytes(content))

    def test_half_a_sample_is_refused(self):
        content = bytearray(wav(tone(0.1)) + b'\0')
        struct.pack_into('<I', content, 4, len(content) - 8)
        struct.pack_into('<I', content, 40, len(content) - 44)
        self.assert_no_sound(bytes(content))

    def test_sizes_may_be_unknown_only_in_a_stream(self):
        for unknown in (0, 0xFFFFFFFF, 0x7FFFFFFF):
            with self.subTest(unknown=unknown):
                content = bytearray(wav(tone(0.1)))
                struct.pack_into('<I', content, 4, unknown)
                struct.pack_into('<I', content, 40, unknown)
                self.assert_no_sound(bytes(content))
                self.assertEqual(read_wave(bytes(content), True).data, pcm(tone(0.1)))


class Sentences(unittest.TestCase):
    def test_they_are_counted_in_words(self):
        words = {1: 'one', 12: 'twelve', 20: 'twenty', 21: 'twenty-one', 100: 'one hundred'}
        words |= {342: 'three hundred and forty-two', 1000: '1000'}
        self.assertEqual({number: in_words(number) for number in words}, words)

    def test_without_lines_there_is_always_one_more(self):
        self.assertEqual(
            [text for _, text in Lines().take(2)], ['sentence number one.', 'sentence number two.']
        )

    def test_lines_end(self):
        lines = Lines(['a', 'b'])
        self.assertEqual([text for _, text in lines.take(3)], ['a', 'b'])
        self.assertEqual(lines.take(1), [])

    def test_a_line_given_back_comes_before_later_ones(self):
        lines = Lines(['a', 'b', 'c'])
        taken = lines.take(2)
        lines.give_back([taken[1][0]])
        lines.give_back([taken[0][0]])
        self.assertEqual([text for _, text in lines.take(3)], ['a', 'b', 'c'])


if __name__ == '__main__':
    unittest.main()
