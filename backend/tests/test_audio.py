"""Decoding, resampling, folding and cutting of chunks."""

import unittest

import numpy as np

from orvane_backend import audio
from tests.recordings import at_48_khz, planar, recordings


def tone(frequency: float, seconds: float, rate: int, level: float = 0.5) -> audio.Samples:
    time = np.arange(int(seconds * rate)) / rate
    return (level * np.sin(2 * np.pi * frequency * time)).astype(np.float32)


class PcmTest(unittest.TestCase):
    def test_pcm_is_little_endian_and_signed(self) -> None:
        samples = audio.decode_pcm(b"\x00\x80\xff\x7f\x01\x00")
        np.testing.assert_array_equal(samples * 32768, [-32768, 32767, 1])

    def test_encoding_gives_the_same_bytes_back_and_clamps(self) -> None:
        pcm = bytes(range(256))
        self.assertEqual(audio.encode_pcm(audio.decode_pcm(pcm)), pcm)
        self.assertEqual(audio.encode_pcm(np.array([2, -2], np.float32)), b"\xff\x7f\x00\x80")


class ResampleTest(unittest.TestCase):
    def test_tones_keep_pitch_level_and_position(self) -> None:
        for rate in (8000, 22050, 44100, 48000, 96000):
            result = audio.resample(tone(1000, 1, rate), rate)
            self.assertEqual(len(result), 16000)
            inner = slice(400, -400)
            difference = np.abs(result - tone(1000, 1, 16000))[inner].max()
            self.assertLess(difference, 1e-3, f"at {rate} Hz")

    def test_what_would_alias_is_80_db_down(self) -> None:
        for frequency in (8200, 9000, 12000, 15000, 17000, 23000):
            result = audio.resample(tone(frequency, 1, 48000, 1.0), 48000)[400:-400]
            self.assertLess(20 * np.log10(np.abs(result).max()), -79, f"{frequency} Hz")

    def test_the_speech_band_is_flat(self) -> None:
        for frequency in (100, 3000, 6800):
            result = audio.resample(tone(frequency, 1, 48000), 48000)[400:-400]
            level = np.sqrt(2 * np.mean(result**2))
            self.assertAlmostEqual(20 * np.log10(level / 0.5), 0, delta=0.01)

    def test_any_length_gives_the_third_of_it_rounded_up(self) -> None:
        for length in (0, 1, 2, 3, 4, 100, 20001):
            self.assertEqual(
                len(audio.resample(np.zeros(length, np.float32), 48000)), -(-length // 3)
            )

    def test_odd_rates_are_taken_for_the_nearest_even_one(self) -> None:
        pcm = audio.encode_pcm(tone(1000, 0.5, 48000))
        expected = audio.to_recognition(pcm, 48000)
        for rate in (47990, 48001, 48012):
            np.testing.assert_array_equal(audio.to_recognition(pcm, rate), expected)

    def test_every_rate_works_with_few_samples(self) -> None:
        for rate in (8000, 8013, 11025, 44056, 191999, 192000):
            length = len(audio.to_recognition(bytes(2 * 48), rate))
            self.assertAlmostEqual(length, 48 * 16000 / rate, delta=1)

    def test_the_right_rate_is_left_alone(self) -> None:
        samples = tone(440, 0.1, 16000)
        self.assertIs(audio.resample(samples, 16000), samples)


class PlanarTest(unittest.TestCase):
    def setUp(self) -> None:
        self.speech = [audio.decode_pcm(at_48_khz(one.pcm)) for one in recordings()]

    def test_recorded_mono_is_never_taken_for_planar_in_any_cut(self) -> None:
        for samples in self.speech:
            self.assertFalse(audio.is_planar_stereo(samples, 48000))
            for start in range(0, len(samples) - 20001, 1000):
                cut = samples[start : start + 20001]
                self.assertFalse(audio.is_planar_stereo(cut, 48000))

    def test_planar_stereo_is_found_whatever_the_channels_hold(self) -> None:
        for samples in self.speech:
            late = np.roll(samples, 300) * np.float32(0.3)
            for right in (samples, late, -samples, np.zeros_like(samples)):
                self.assertTrue(audio.is_planar_stereo(planar(samples, right), 48000))

    def test_the_shortest_chunk_of_planar_speech_is_found(self) -> None:
        middle = planar(self.speech[0], self.speech[0])[96000 : 96000 + 20001]
        self.assertTrue(audio.is_planar_stereo(middle, 48000))

    def test_folding_gives_the_mean_of_both_channels_back(self) -> None:
        left, right = self.speech[0], self.speech[0] * np.float32(0.5)
        folded = audio.fold_planar_stereo(planar(left, right), 48000)
        np.testing.assert_allclose(folded, (left * 0.75)[: len(folded)], atol=1e-6)
        self.assertEqual(len(folded), len(left) // 960 * 960)

    def test_silence_hum_and_noise_count_as_mono(self) -> None:
        noise = np.random.default_rng(1).normal(0, 0.1, 96000).astype(np.float32)
        for samples in (
            np.zeros(96000, np.float32),
            tone(50, 2, 48000),
            tone(100, 2, 48000),
            noise,
        ):
            self.assertFalse(audio.is_planar_stereo(samples, 48000))

    def test_too_little_to_judge_counts_as_mono(self) -> None:
        for length in (0, 1, 959, 960, 5000):
            self.assertFalse(audio.is_planar_stereo(self.speech[0][:length], 48000))

    def test_a_planar_chunk_is_recognised_as_its_mean(self) -> None:
        mono = self.speech[1]
        mixed = audio.to_recognition(audio.encode_pcm(planar(mono, mono)), 48000)
        plain = audio.to_recognition(audio.encode_pcm(mono), 48000)
        np.testing.assert_allclose(mixed[:-200], plain[: len(mixed) - 200], atol=1e-4)


class SilenceTest(unittest.TestCase):
    def test_silence_and_faint_noise_are_silent(self) -> None:
        faint = np.random.default_rng(1).normal(0, 0.0003, 16000).astype(np.float32)
        for samples in (np.zeros(0, np.float32), np.zeros(16000, np.float32), faint):
            self.assertTrue(audio.is_silent(samples))

    def test_a_short_word_in_silence_is_not(self) -> None:
        samples = np.zeros(16000, np.float32)
        samples[8000:9000] = tone(200, 1000 / 16000, 16000, 0.01)
        self.assertFalse(audio.is_silent(samples))


class SplitTest(unittest.TestCase):
    def test_nothing_is_lost_and_no_piece_is_too_long(self) -> None:
        samples = np.random.default_rng(2).normal(0, 0.1, 16000 * 47 + 5).astype(np.float32)
        pieces = audio.split_at_quiet(samples, 20)
        self.assertLessEqual(max(map(len, pieces)), 20 * 16000)
        np.testing.assert_array_equal(np.concatenate(pieces), samples)

    def test_the_cut_is_in_the_pause(self) -> None:
        samples = tone(200, 30, 16000)
        samples[15 * 16000 : 15 * 16000 + 4800] = 0
        first = audio.split_at_quiet(samples, 20)[0]
        self.assertTrue(15 <= len(first) / 16000 <= 15.3)

    def test_what_is_short_stays_whole(self) -> None:
        samples = tone(200, 20, 16000)
        self.assertEqual(len(audio.split_at_quiet(samples, 20)), 1)


if __name__ == "__main__":
    unittest.main()
