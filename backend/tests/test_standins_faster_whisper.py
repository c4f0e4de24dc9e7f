"""The stand-in of faster-whisper refuses what the real one refuses."""

import json
import os
import subprocess
import sys
import unittest
from typing import Any

import numpy as np

from tests import standins
from tests.standins.case import StandInCase

import standin_notes
import standin_voice as voice

SPEECH = voice.speak("hello world")


class FasterWhisperTest(StandInCase):
    folder = "faster_whisper"

    def setUp(self) -> None:
        super().setUp()
        import faster_whisper
        import huggingface_hub

        self.package: Any = faster_whisper
        self.absent = huggingface_hub.errors.LocalEntryNotFoundError

    def load(self, size: str = "tiny", **options: Any) -> Any:
        try:
            self.package.download_model(size, local_files_only=True)
        except self.absent:
            self.package.standin_install(size)
        given = {"device": "cpu", "compute_type": "int8", "local_files_only": True, **options}
        return self.package.WhisperModel(size, **given)

    def hear(self, sound: Any, size: str = "tiny", **options: Any) -> list[Any]:
        return list(self.load(size).transcribe(sound, **options)[0])

    def test_nothing_happens_before_the_generator_is_read(self) -> None:
        segments, info = self.load().transcribe(voice.speak("guten tag"))
        self.assertEqual(info.language, "de")
        self.assertEqual(dict(info.all_language_probs)["de"], info.language_probability)
        self.assertAlmostEqual(info.duration, 0.8, places=3)
        self.assertEqual(standin_notes.noted("faster_whisper.segment"), [])
        self.assertEqual([segment.text for segment in segments], [" Guten tag."])
        self.assertEqual(len(standin_notes.noted("faster_whisper.segment")), 1)
        self.assertEqual(list(segments), [])

    def test_segments_have_attributes_and_no_items(self) -> None:
        segment = self.hear(SPEECH, word_timestamps=True)[0]
        self.assertEqual([word.word for word in segment.words], [" hello", " world"])
        self.assertRaises(TypeError, lambda: segment["text"])
        _, info = self.load().transcribe(SPEECH, language="en")
        self.assertEqual((info.language_probability, info.all_language_probs), (1, None))

    def test_unknown_arguments_are_refused(self) -> None:
        for name in ("logprob_threshold", "fp16", "verbose"):
            self.refuses(TypeError, name, lambda: self.hear(SPEECH, **{name: 1}))
        self.refuses(TypeError, "threads", lambda: self.load(threads=2))
        parameters = {"min_silence_ms": 500}
        self.refuses(
            TypeError, "min_silence_ms", lambda: self.hear(SPEECH, vad_parameters=parameters)
        )

    def test_devices_and_types_are_checked(self) -> None:
        for kind in ("int4", "float16", "int8_float16"):
            self.refuses(ValueError, kind, lambda: self.load(compute_type=kind))
        self.refuses(RuntimeError, "CUDA", lambda: self.load(device="cuda"))
        self.refuses(ValueError, "device", lambda: self.load(device="gpu"))
        self.load(device="auto", compute_type="default", cpu_threads=2, num_workers=2)
        noted = standin_notes.noted("faster_whisper.load")[-1]
        self.assertEqual((noted["threads"], noted["workers"]), (2, 2))

        import ctranslate2

        self.assertEqual(ctranslate2.get_cuda_device_count(), 0)
        self.assertIn("int8", ctranslate2.get_supported_compute_types("cpu"))

    def test_only_float32_of_one_channel_is_taken(self) -> None:
        for sound in (SPEECH.astype(np.float64), (SPEECH * 32767).astype(np.int16)):
            self.refuses(TypeError, "float32", lambda: self.hear(sound))
        self.refuses(ValueError, "one channel", lambda: self.hear(SPEECH.reshape(-1, 2)))

    def test_languages_are_codes_alone(self) -> None:
        for code in ("ga", "auto", "jv", "german", "DE"):
            self.refuses(ValueError, code, lambda: self.hear(SPEECH, language=code))
        self.assertEqual(self.hear(SPEECH, language="jw")[0].text, " Hello world.")
        with self.assertLogs("faster_whisper", "WARNING"):
            segments, info = self.load("tiny.en").transcribe(SPEECH, language="de")
        self.assertEqual(info.language, "en")

    def test_cantonese_is_poor_without_a_word_on_older_models(self) -> None:
        poor = self.hear(SPEECH, language="yue")[0]
        self.assertNotIn("Hello", poor.text)
        self.assertLess(poor.avg_logprob, -0.9)
        self.assertEqual(self.hear(SPEECH, "turbo", language="yue")[0].text, " Hello world.")

    def test_it_invents_fluently_unless_the_filter_finds_nobody(self) -> None:
        for sound in (voice.silence(3), voice.noise(3), voice.tone(3)):
            self.assertEqual(len(self.hear(sound, language="en")), 1)
            self.assertEqual(self.hear(sound, language="en", vad_filter=True), [])
        self.assertEqual(self.hear(voice.silence(3), language="en", log_prob_threshold=None), [])
        self.assertGreater(self.hear(voice.tone(3), language="en")[0].compression_ratio, 2.4)

    def test_the_filter_keeps_the_times(self) -> None:
        sound = np.concatenate([voice.silence(5), SPEECH, voice.silence(5), SPEECH])
        first, second = self.hear(sound, vad_filter=True)
        self.assertAlmostEqual(first.start, 5.0, places=1)
        self.assertAlmostEqual(second.start, 10.8, places=1)
        _, info = self.load().transcribe(sound, vad_filter=True)
        self.assertLess(info.duration_after_vad, 4)

    def test_voice_activity_alone(self) -> None:
        from faster_whisper.vad import VadOptions, get_speech_timestamps

        sound = np.concatenate([voice.silence(1), SPEECH, voice.silence(1), SPEECH])
        self.assertEqual(len(get_speech_timestamps(sound)), 1)
        found = get_speech_timestamps(sound, min_silence_duration_ms=500, speech_pad_ms=100)
        self.assertEqual(len(found), 2)
        self.assertEqual(found[0], {"start": 14400, "end": 28800})
        options = VadOptions(min_silence_duration_ms=500)
        self.assertEqual(len(get_speech_timestamps(sound, options)), 2)
        self.assertEqual(get_speech_timestamps(voice.noise(3)), [])
        self.refuses(AttributeError, "threshold", lambda: get_speech_timestamps(sound, {}))
        self.refuses(AssertionError, "1D", lambda: get_speech_timestamps(sound.reshape(-1, 2)))
        self.refuses(TypeError, "int16", lambda: get_speech_timestamps(sound.astype(np.int16)))

    def test_a_model_that_is_not_there_is_not_looked_for_elsewhere(self) -> None:
        load = self.package.WhisperModel
        self.refuses(self.absent, "disabled", lambda: load("tiny", local_files_only=True))
        self.assertEqual(standin_notes.noted("network"), [])
        self.refuses(self.absent, "internet connection", lambda: load("tiny"))
        self.assertEqual(len(standin_notes.noted("network")), 1)
        self.refuses(ValueError, "expected one of", lambda: load("enormous"))
        self.assertIn("turbo", self.package.available_models())

    def test_an_incomplete_model_is_refused(self) -> None:
        load = self.package.WhisperModel
        for left_out, kind in (
            ("model.bin", RuntimeError), ("vocabulary", RuntimeError), ("tokenizer", self.absent),
        ):  # fmt: skip
            root = self.cache / left_out
            self.package.standin_install("base", root, leave_out=left_out)
            options = {"download_root": str(root), "local_files_only": True}
            self.refuses(kind, "", lambda: load("base", **options))
        folder = self.package.standin_install("small")
        self.assertEqual(load(str(folder)).model.name, "small")
        (folder / "model.bin").write_bytes(b"")
        self.refuses(RuntimeError, "incomplete", lambda: load("small", local_files_only=True))

    def test_the_cache_is_where_the_environment_says(self) -> None:
        os.environ["HF_HOME"] = str(self.cache / "elsewhere")
        folder = self.package.standin_install("tiny")
        self.assertIn("elsewhere/hub/models--Systran--faster-whisper-tiny/snapshots", str(folder))
        self.assertEqual(self.package.download_model("tiny", local_files_only=True), str(folder))
        self.assertEqual(standin_notes.noted("network"), [])

    def test_a_process_finds_it_and_writes_its_notes(self) -> None:
        log = self.cache / "notes"
        self.package.standin_install("tiny")
        environment = {
            **os.environ, "PYTHONPATH": standins.python_path(self.folder),
            "STANDIN_NOTES": str(log),
        }  # fmt: skip
        code = "import faster_whisper as f; f.WhisperModel('tiny', local_files_only=True)"
        subprocess.run([sys.executable, "-c", code], env=environment, check=True, cwd="/")
        self.assertEqual(json.loads(log.read_text())["event"], "faster_whisper.load")


if __name__ == "__main__":
    unittest.main()
