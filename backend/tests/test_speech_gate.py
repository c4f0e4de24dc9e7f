"""The gate before the recognisers: what it must let pass, what it must not, and where speech is."""

import sys
import unittest
from types import ModuleType
from typing import Any
from unittest import mock

import numpy as np

from orvane_backend.speech_features import NAMES, frames, windows
from orvane_backend.speech_gate import FasterWhisperDetector, Finding, SpeechGate, best_gate
from orvane_backend.speech_gate import find_speech
from tests.gate_sounds import judging_voices, other_chunks, speech_chunks
from tests.music import MUSIC
from tests.noises import NOISES
from tests.sounds import RATE, at_level, people, said, within

SECOND = np.full(RATE, 0.25, np.float32)


class SpeechTest(unittest.TestCase):
    def test_nothing_that_is_said_is_lost(self) -> None:
        under_music = []
        for chunk in speech_chunks(judging_voices(), 5):
            found = find_speech(chunk.samples).is_speech
            if chunk.kind.endswith("over music 0 dB"):
                under_music.append(found)
                continue
            with self.subTest(chunk.kind, source=chunk.source, length=len(chunk.samples)):
                self.assertTrue(found)
        # Half a second of speech under strings that are as loud may go unheard.
        self.assertGreater(sum(under_music), 0.93 * len(under_music))

    def test_speech_is_found_where_it_is(self) -> None:
        word = at_level(said("en+m3", "yes"), -26)
        for begin in (0.5, 3.0, 6.5):
            found = find_speech(within(word, 8, begin))
            self.assertLessEqual(found.begin, begin)
            self.assertGreater(found.begin, begin - 0.5)
            self.assertGreaterEqual(found.end, begin + len(word) / RATE)
            self.assertLess(found.end, begin + len(word) / RATE + 0.5)
            self.assertGreater(found.speech_seconds, 0.15)
            self.assertLess(found.speech_seconds, 0.9)

    def test_a_whole_sentence_is_speech_from_end_to_end(self) -> None:
        for name, sentence in people().items():
            found, seconds = find_speech(sentence), len(sentence) / RATE
            self.assertLess(found.begin, 0.3, name)
            self.assertGreater(found.end, seconds - 0.3, name)
            self.assertGreater(found.speech_seconds, 0.5 * seconds, name)
            self.assertGreater(found.strength, 0.95, name)

    def test_the_level_makes_no_difference(self) -> None:
        sentence = people()["0890"]
        strengths = [find_speech(at_level(sentence, level)).strength for level in (-45, -30, -15)]
        self.assertLess(max(strengths) - min(strengths), 0.05)


class OthersTest(unittest.TestCase):
    def passed(self, kind: str, seed: int) -> dict[str, float]:
        """The share of chunks of each sound that passes."""
        by_source: dict[str, list[bool]] = {}
        for chunk in other_chunks(seed, 6, 40):
            if chunk.kind == kind:
                found = find_speech(chunk.samples)
                by_source.setdefault(chunk.source, []).append(found.is_speech)
        return {source: sum(all_) / len(all_) for source, all_ in by_source.items()}

    def test_noise_and_hum_do_not_pass(self) -> None:
        passed = self.passed("noise", 5)
        self.assertEqual(set(passed), set(NOISES))
        struck = {source: passed.pop(source) for source in ("keyboard", "knocks", "beeps")}
        self.assertEqual({source: share for source, share in passed.items() if share}, {})
        self.assertLess(sum(struck.values()) / len(struck), 0.2, struck)

    def test_hardly_any_music_passes(self) -> None:
        passed = self.passed("music", 5)
        self.assertEqual(set(passed), set(MUSIC))
        self.assertLess(sum(passed.values()) / len(passed), 0.12, passed)

    def test_next_to_nothing_is_no_speech(self) -> None:
        for samples in (
            np.zeros(0), np.zeros(1), np.full(1, 0.5), np.full(700, 0.5), np.zeros(128000),
            np.full(16000, np.nan), np.full(16000, np.inf), np.full(16000, 0.99),
        ):  # fmt: skip
            found = find_speech(samples.astype(np.float32))
            self.assertEqual((found.is_speech, found.speech_seconds), (False, 0.0))
            self.assertLess(found.strength, 0.5)


class FiguresTest(unittest.TestCase):
    def test_every_figure_is_a_number_at_any_length(self) -> None:
        noise = np.random.default_rng(1).normal(0, 0.1, 20000).astype(np.float32)
        for length in (0, 1, 500, 2240, 2241, 6400, 8640, 8840, 20000):
            for samples in (noise[:length], np.zeros(length, np.float32)):
                figures = windows(frames(samples)).figures
                self.assertEqual(figures.shape[1], len(NAMES))
                self.assertTrue(np.isfinite(figures).all(), length)

    def test_the_last_half_second_ends_with_the_chunk(self) -> None:
        heard = frames(np.zeros(20000, np.float32))
        found = windows(heard)
        self.assertEqual(found.begins[-1] + found.length, len(heard.level))

    def test_a_gliding_pitch_is_told_from_a_constant_one(self) -> None:
        t = np.arange(RATE) / RATE
        for glide, more, less in ((0.0, "constant", "gliding"), (0.4, "gliding", "constant")):
            phase = 2 * np.pi * 150 / np.log(2) * (2 ** (glide * t) - 1) / max(glide, 1e-6)
            phase = 2 * np.pi * 150 * t if glide == 0 else phase
            sound = sum(np.sin(number * phase) / number for number in range(1, 15))
            figures = windows(frames(np.asarray(sound, np.float32))).figures.mean(axis=0)
            self.assertGreater(figures[NAMES.index(more)], 0.8)
            self.assertLess(figures[NAMES.index(less)], 0.1)


class ChoiceTest(unittest.TestCase):
    def test_a_detector_that_fails_is_replaced_for_good(self) -> None:
        detector = mock.Mock(side_effect=RuntimeError("model"))
        gate = SpeechGate(detector)
        sentence = people()["0880"]
        self.assertEqual(gate.find_speech(sentence), find_speech(sentence))
        gate.find_speech(sentence)
        detector.assert_called_once()

    def test_a_detector_that_works_decides(self) -> None:
        found = Finding(True, 0.5, 0.1, 0.9, 1.0)
        self.assertEqual(SpeechGate(lambda samples: found).find_speech(SECOND), found)

    def test_without_the_package_the_built_in_one_serves(self) -> None:
        with mock.patch.dict(sys.modules, {"faster_whisper": None}):
            with self.assertRaises(ImportError):
                FasterWhisperDetector()
            self.assertFalse(best_gate().find_speech(SECOND).is_speech)

    def test_the_packages_answer_becomes_a_finding(self) -> None:
        stamps = mock.Mock(
            return_value=[{"start": 4000, "end": 8000}, {"start": 12000, "end": 15000}]
        )
        with self.package(stamps):
            gate = best_gate()
        found = gate.find_speech(SECOND)
        self.assertAlmostEqual(found.begin, 0.05)
        self.assertAlmostEqual(found.end, 1.0)
        self.assertAlmostEqual(found.speech_seconds, 7000 / RATE)
        self.assertTrue(found.is_speech)
        stamps.return_value = []
        self.assertEqual(gate.find_speech(people()["0880"]), Finding(False))

    def package(self, stamps: Any) -> Any:
        """The package with these functions, for as long as the context lasts."""
        detector = ModuleType("faster_whisper.vad")
        detector.__dict__.update(VadOptions=mock.Mock(), get_speech_timestamps=stamps)
        modules = {"faster_whisper": ModuleType("faster_whisper"), "faster_whisper.vad": detector}
        return mock.patch.dict(sys.modules, modules)


if __name__ == "__main__":
    unittest.main()
