"""Whisper, through the package `openai-whisper`, with the model the client asks for."""

from importlib import import_module
from typing import Any

from ..audio import Samples
from ..languages import AUTO, short
from . import Recogniser, RecogniserError, Recognition

# Above both the engine invents sentences for noise; the limits are its own defaults.
_NO_SPEECH = 0.6
_POOR_LOG_PROBABILITY = -1.0


class WhisperRecogniser(Recogniser):
    """Any language, and detection of it. The model is fetched by the package when it is missing."""

    def __init__(self, model: str) -> None:
        self._model_name = model
        self.name = f"Whisper ({model})"

    def load(self) -> None:
        try:
            whisper = import_module("whisper")
        except ImportError:
            raise RecogniserError("Whisper ist nicht installiert") from None
        if self._model_name not in whisper.available_models():
            raise RecogniserError(f"Whisper kennt kein Modell „{self._model_name}“")
        try:
            self._model = whisper.load_model(self._model_name)
        except Exception as error:  # the package lets everything through, from disk to network
            raise RecogniserError(f"Whisper-Modell nicht geladen: {error}") from error

    def recognise(self, samples: Samples, language: str) -> Recognition:
        wanted = None if short(language) == AUTO else short(language)
        try:
            result = self._model.transcribe(
                samples,
                language=wanted,
                task="transcribe",
                condition_on_previous_text=False,
                fp16=self._model.device.type == "cuda",
            )
        except Exception as error:
            raise RecogniserError(f"Whisper: {error}") from error
        text = "".join(part["text"] for part in result["segments"] if _is_speech(part))
        return Recognition(text.strip(), wanted or result["language"])


def _is_speech(segment: dict[str, Any]) -> bool:
    return not (
        segment["no_speech_prob"] > _NO_SPEECH and segment["avg_logprob"] < _POOR_LOG_PROBABILITY
    )
