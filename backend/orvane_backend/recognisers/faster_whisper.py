"""Whisper through the package `faster-whisper`, which does the same work in a quarter of the time."""

from ctypes import CDLL
from importlib import import_module
from typing import Any, Optional

import numpy as np

from ..audio import Samples
from ..languages import canonical
from . import Recognition, Utterance
from . import whisper_text as common
from .whisper_engine import WhisperEngine
from .whisper_models import FASTER, Installed

# Without these the calculation on a graphics processor ends the whole process at its first use.
_GRAPHICS_LIBRARIES = ("libcublas.so.12", "libcudnn.so.9")

# Pauses of this length are cut out; what is shorter belongs to the way people speak.
_PAUSE_MILLISECONDS = 500


class FasterWhisperRecogniser(WhisperEngine):
    """Whisper on CTranslate2: weights of 8 bits on a processor, of 16 on a graphics processor.

    To place the words it passes once more over the text, with what the encoder made already.
    """

    package = FASTER
    title = "faster-whisper"

    def __init__(self, model: str, *, words: bool = True) -> None:
        super().__init__(model, words=words)

    def _open(self, package: Any, installed: Installed) -> Any:
        self._voice = import_module("faster_whisper.vad")

        def opened(device: str, compute_type: str) -> Any:
            return package.WhisperModel(
                str(installed.path),
                device=device,
                compute_type=compute_type,
                cpu_threads=common.thread_count(),
                num_workers=1,
                local_files_only=True,
            )

        if _has_graphics():
            try:
                return opened("cuda", "float16")
            except (RuntimeError, ValueError):  # too little memory, too old: the processor can
                pass
        return opened("cpu", "int8")

    def _transcribe(self, utterance: Utterance, language: Optional[str]) -> Recognition:
        samples = np.ascontiguousarray(utterance.samples, np.float32)
        if not self._has_voice(samples):
            # To detect the language of nothing, which is left without the pauses, fails.
            return Recognition("", canonical(language or utterance.language))
        segments, told = self._model.transcribe(
            samples,
            language=language,
            task="transcribe",
            beam_size=1,
            temperature=0.0,
            condition_on_previous_text=False,
            no_speech_threshold=common.NO_SPEECH_THRESHOLD,
            log_prob_threshold=common.FLUENCY_THRESHOLD,
            initial_prompt=common.prompt(utterance.context),
            word_timestamps=self._words,
            without_timestamps=not self._words and common.fits_one_window(samples),
            vad_filter=True,
            vad_parameters={"min_silence_duration_ms": _PAUSE_MILLISECONDS},
        )
        # The work is done while the segments are taken.
        heard = [
            common.segment(_attributes(part), [_attributes(word) for word in part.words or ()])
            for part in segments
        ]
        certainty = None if language is not None else float(told.language_probability)
        return common.recognition(heard, canonical(language or told.language), certainty)

    def _has_voice(self, samples: Samples) -> bool:
        options = self._voice.VadOptions(min_silence_duration_ms=_PAUSE_MILLISECONDS)
        found = self._voice.get_speech_timestamps(samples, options)
        return len(found) > 0


def _attributes(thing: Any) -> Any:
    return lambda name: getattr(thing, name)


def _has_graphics() -> bool:
    try:
        if import_module("ctranslate2").get_cuda_device_count() < 1:
            return False
        for name in _GRAPHICS_LIBRARIES:
            CDLL(name)
    except Exception:  # whatever is missing: the processor can do it, too
        return False
    return True
