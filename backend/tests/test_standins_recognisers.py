"""The stand-ins of both Whisper packages refuse what the real ones refuse."""

import json
import os
import subprocess
import sys
import threading
import unittest
import urllib.error
import warnings
from typing import Any

import numpy as np

from tests import standins
from tests.standins.case import StandInCase

import standin_notes
import standin_voice as voice

SPEECH = voice.speak("hello world")


class VoiceTest(unittest.TestCase):
    def test_what_is_said_is_heard_at_every_rate(self) -> None:
        everything = " ".join(voice.VOCABULARY)
        for rate in (8000, 16000, 44100, 48000):
            heard = voice.hear(voice.speak(everything, rate), rate)
            self.assertEqual([word.text for word in heard], voice.VOCABULARY)
            self.assertAlmostEqual(heard[1].start, 0.4, places=1)

    def test_pcm_brings_it_across(self) -> None:
        heard = voice.hear(voice.from_pcm(voice.as_pcm(SPEECH)))
        self.assertEqual([word.text for word in heard], ["hello", "world"])

    def test_at_the_wrong_rate_it_is_something_else(self) -> None:
        for told in (8000, 14700, 48000):
            heard = voice.hear(SPEECH, told)
            self.assertNotEqual([word.text for word in heard], ["hello", "world"])

    def test_other_sounds_are_no_words(self) -> None:
        for sound, kind in (
            (voice.silence(3), "silence"), (voice.noise(3), "noise"), (voice.tone(3), "tone"),
            (voice.tone(0.3), "tone"), (voice.noise(0.3), "noise"),
            (voice.tone(3) + 0.5 * voice.tone(3, hertz=880), "tone"),
        ):  # fmt: skip
            self.assertEqual(voice.kind_of(sound), kind)
        self.assertRaises(KeyError, voice.speak, "unheard")


class OpenAIWhisperTest(StandInCase):
    folder = "openai_whisper"

    def setUp(self) -> None:
        super().setUp()
        import whisper

        self.whisper: Any = whisper
        (self.cache / "whisper").mkdir()
        warnings.simplefilter("error")
        self.addCleanup(warnings.resetwarnings)

    def load(self, name: str = "tiny") -> Any:
        address = self.whisper._MODELS[name]
        file = self.cache / "whisper" / address.split("/")[-1]
        file.write_bytes(self.whisper.model_file(name))
        return self.whisper.load_model(name, device="cpu")

    def hear(self, sound: Any, model: str = "tiny", **options: Any) -> Any:
        return self.load(model).transcribe(sound, **{"fp16": False, **options})

    def test_it_hears_and_answers_as_the_real_one(self) -> None:
        sound = np.concatenate([SPEECH, voice.silence(1), voice.speak("good morning")])
        result = self.hear(sound, word_timestamps=True)
        self.assertEqual(set(result), {"text", "segments", "language"})
        self.assertEqual(result["text"], " Hello world. Good morning.")
        self.assertEqual(result["language"], "en")
        self.assertEqual(
            set(result["segments"][1]),
            {
                "id", "seek", "start", "end", "text", "tokens", "temperature", "avg_logprob",
                "compression_ratio", "no_speech_prob", "words",
            },
        )  # fmt: skip
        self.assertLess(result["segments"][0]["no_speech_prob"], 0.02)
        self.assertEqual(self.hear(voice.speak("guten tag"))["language"], "de")

    def test_unknown_arguments_are_refused(self) -> None:
        for name in ("log_prob_threshold", "vad_filter", "hotwords"):
            self.refuses(TypeError, name, lambda: self.hear(SPEECH, **{name: 1}))
        both = {"beam_size": 2, "patience": 1.0, "best_of": 2}
        self.hear(SPEECH, temperature=0.0, **both)
        self.refuses(ValueError, "patience", lambda: self.hear(SPEECH, temperature=0.0, patience=1))

    def test_only_float32_of_one_channel_is_taken(self) -> None:
        double, whole = SPEECH.astype(np.float64), (SPEECH * 32767).astype(np.int16)
        self.refuses(RuntimeError, "Double", lambda: self.hear(double))
        self.refuses(RuntimeError, "floating point", lambda: self.hear(whole))
        self.refuses(RuntimeError, "one channel", lambda: self.hear(SPEECH.reshape(-1, 2)))
        self.refuses(FileNotFoundError, "ffmpeg", lambda: self.hear("sound.wav"))
        self.refuses(TypeError, "list", lambda: self.hear(list(SPEECH[:10])))

    def test_half_precision_is_warned_about(self) -> None:
        self.refuses(UserWarning, "FP16", lambda: self.hear(SPEECH, fp16=True))
        self.refuses(UserWarning, "FP16", lambda: self.load().transcribe(SPEECH))

    def test_languages_are_those_of_the_tokenizer(self) -> None:
        for code in ("ga", "auto", "jv", "de-DE", ""):
            message = f"Unsupported language: {code.lower()}"
            self.refuses(ValueError, message, lambda: self.hear(SPEECH, language=code))
        absent = "tuple.index(x): x not in tuple"
        self.refuses(ValueError, absent, lambda: self.hear(SPEECH, language="yue"))
        for code in ("jw", "he", "DE", "german", "Castilian"):
            self.hear(SPEECH, language=code)
        for model in ("large-v3", "large", "turbo"):
            self.hear(SPEECH, model, language="yue")
        self.assertEqual(self.hear(voice.speak("guten tag"), "tiny.en")["language"], "en")

    def test_it_invents_fluently_where_nobody_speaks(self) -> None:
        silent = self.hear(voice.silence(3), language="de")["segments"][0]
        self.assertGreater(silent["no_speech_prob"], 0.6)
        self.assertGreater(silent["avg_logprob"], -1.0)
        dropped = self.hear(voice.silence(3), language="de", logprob_threshold=None)
        self.assertEqual(dropped, {"text": "", "segments": [], "language": "de"})
        noisy = self.hear(voice.noise(3), language="de", logprob_threshold=None)
        self.assertIn("ZDF", noisy["text"])
        looped = self.hear(voice.tone(3), language="en")["segments"][0]
        self.assertGreater(looped["compression_ratio"], 2.4)
        self.assertEqual(looped["temperature"], 1.0)
        self.assertEqual(self.hear(voice.noise(3))["language"], "nn")

    def test_what_was_said_is_said_again_into_silence(self) -> None:
        sound = np.concatenate([SPEECH, voice.silence(40)])
        self.assertEqual(self.hear(sound)["text"].count("Hello world"), 2)
        alone = self.hear(sound, condition_on_previous_text=False)["text"]
        self.assertEqual(alone.count("Hello world"), 1)

    def test_models_are_read_only_when_they_are_right(self) -> None:
        file = self.cache / "whisper" / "tiny.pt"
        load = self.whisper.load_model
        self.refuses(urllib.error.URLError, "name resolution", lambda: load("tiny"))
        self.assertEqual(len(standin_notes.noted("network")), 1)
        file.write_bytes(b"half of it")
        self.refuses(UserWarning, "SHA256", lambda: load("tiny"))
        warnings.simplefilter("ignore")
        self.refuses(urllib.error.URLError, "name resolution", lambda: load("tiny"))
        file.unlink()
        file.mkdir()
        self.refuses(RuntimeError, "not a regular file", lambda: load("tiny"))
        self.refuses(RuntimeError, "available models", lambda: load("enormous"))
        self.load("base")
        self.refuses(RuntimeError, "cuda device", lambda: load("base", device="cuda"))
        self.assertIn("turbo", self.whisper.available_models())

    def test_two_threads_at_once_are_refused(self) -> None:
        model = self.load()
        inside, leave = threading.Event(), threading.Event()

        def wait() -> None:
            inside.set()
            leave.wait(60)

        standin_notes.hooks["transcribe"] = wait
        first = threading.Thread(target=model.transcribe, args=(SPEECH,), kwargs={"fp16": False})
        first.start()
        self.assertTrue(inside.wait(60))
        try:
            self.refuses(RuntimeError, "two threads", lambda: model.transcribe(SPEECH, fp16=False))
        finally:
            leave.set()
            first.join()
        standin_notes.hooks.clear()
        self.assertEqual(len(standin_notes.noted("overlap")), 1)
        model.transcribe(SPEECH, fp16=False)

    def test_detection_wants_the_models_own_spectrogram(self) -> None:
        audio = self.whisper.audio
        sound = audio.pad_or_trim(voice.speak("guten tag"))
        small, large = self.load(), self.load("large-v3")
        _, found = small.detect_language(audio.log_mel_spectrogram(sound, small.dims.n_mels))
        self.assertEqual((max(found, key=found.get), len(found)), ("de", 99))
        self.assertAlmostEqual(sum(found.values()), 1.0)
        narrow = audio.log_mel_spectrogram(sound)
        self.refuses(RuntimeError, "128", lambda: large.detect_language(narrow))
        short = audio.log_mel_spectrogram(SPEECH)
        self.refuses(AssertionError, "shape", lambda: small.detect_language(short))
        english = self.load("tiny.en")
        self.refuses(ValueError, "lang id", lambda: english.detect_language(narrow))

    def test_threads_of_torch_are_noted_and_checked(self) -> None:
        import torch

        torch.set_num_threads(3)
        self.assertEqual(torch.get_num_threads(), 3)
        self.assertEqual(standin_notes.noted("torch.set_num_threads")[0]["threads"], 3)
        self.refuses(RuntimeError, "positive", lambda: torch.set_num_threads(0))
        self.refuses(TypeError, "int", lambda: torch.set_num_threads("2"))
        self.assertFalse(torch.cuda.is_available())

    def test_a_process_finds_it_and_writes_its_notes(self) -> None:
        log = self.cache / "notes"
        environment = {
            **os.environ, "PYTHONPATH": standins.python_path(self.folder),
            "STANDIN_NOTES": str(log), "STANDIN_MODEL_BASE": "http://127.0.0.1:9/models",
        }  # fmt: skip
        code = "import torch, whisper; torch.set_num_threads(2); print(whisper._MODELS['tiny'])"
        output = subprocess.run(
            [sys.executable, "-c", code], env=environment, stdout=subprocess.PIPE,
            encoding="utf-8", check=True, cwd="/",
        ).stdout  # fmt: skip
        self.assertRegex(output, r"^http://127.0.0.1:9/models/[0-9a-f]{64}/tiny\.pt$")
        self.assertEqual(json.loads(log.read_text())["threads"], 2)


class ForgettingTest(unittest.TestCase):
    def test_packages_are_forgotten_afterwards(self) -> None:
        with standins.added("openai_whisper", "google_cloud"):
            import google.cloud.speech_v2
            import whisper

            self.assertTrue(whisper.__file__ and google.cloud.speech_v2.__file__)
        for name in ("whisper", "whisper.audio", "torch", "google.cloud.speech_v2", "grpc"):
            self.assertNotIn(name, sys.modules)
        with self.assertRaises(ImportError):
            import faster_whisper  # noqa: F401
        self.assertRaises(ValueError, standins.folder, "nothing")


if __name__ == "__main__":
    unittest.main()
