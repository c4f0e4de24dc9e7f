"""Whisper through the package `openai-whisper`."""

from importlib import import_module
from typing import Any, Optional

import numpy as np

from ..audio import Samples
from ..languages import canonical
from . import Recognition, Utterance
from . import whisper_text as common
from .whisper_engine import WhisperEngine
from .whisper_models import OPENAI, Installed


class WhisperRecogniser(WhisperEngine):
    """Whisper as its makers publish it.

    To place the words it would do the larger part of its work, the encoder's, a second time.
    """

    package = OPENAI
    title = "Whisper"

    def __init__(self, model: str, *, words: bool = False) -> None:
        super().__init__(model, words=words)

    def _open(self, package: Any, installed: Installed) -> Any:
        import_module("torch").set_num_threads(common.thread_count())
        self._package = package
        # By its path: by its name the package would fetch what it does not take for whole.
        model = package.load_model(str(installed.path))
        # A model from a path does not know which of its parts tell the places of words.
        heads = getattr(package, "_ALIGNMENT_HEADS", {}).get(installed.model)
        if heads is not None and hasattr(model, "set_alignment_heads"):
            model.set_alignment_heads(heads)
        return model

    def _transcribe(self, utterance: Utterance, language: Optional[str]) -> Recognition:
        samples = np.ascontiguousarray(utterance.samples, np.float32)
        certainty = None
        if language is None:
            language, certainty = self._detected(samples)
        result = self._model.transcribe(
            samples,
            language=language,
            task="transcribe",
            temperature=0.0,
            condition_on_previous_text=False,
            no_speech_threshold=common.NO_SPEECH_THRESHOLD,
            logprob_threshold=common.FLUENCY_THRESHOLD,
            initial_prompt=common.prompt(utterance.context),
            word_timestamps=self._words,
            without_timestamps=not self._words and common.fits_one_window(samples),
            fp16=self._model.device.type == "cuda",
        )
        segments = [
            common.segment(part.__getitem__, [word.__getitem__ for word in part.get("words", [])])
            for part in result["segments"]
        ]
        return common.recognition(segments, canonical(language), certainty)

    def _detected(self, samples: Samples) -> tuple[str, float]:
        """The likeliest language of the first 30 s and its probability.

        `transcribe` would do the same, but tells the language alone.
        """
        package, model = self._package, self._model
        spectrum = package.log_mel_spectrogram(package.pad_or_trim(samples), model.dims.n_mels)
        _, probabilities = model.detect_language(spectrum.to(model.device))
        best = max(probabilities, key=lambda code: float(probabilities[code]))
        return best, float(probabilities[best])
