"""A loaded model. It is not for two threads at once, and says so."""

import threading
from contextlib import contextmanager
from dataclasses import dataclass
from typing import Any, Iterator, Optional

import torch
from standin_inventions import language_of
from standin_languages import LANGUAGES
from standin_notes import note, pass_hook

from .audio import N_FRAMES, Mel
from .tokenizer import Tokenizer
from .transcribe import transcribe as _transcribe

_NEWEST = ("large-v3", "large-v3-turbo")


@dataclass(frozen=True)
class ModelDimensions:
    """The sizes that its users look at."""

    n_mels: int
    n_vocab: int
    n_audio_ctx: int = 1500


class Whisper:
    """What `load_model` gives."""

    def __init__(self, name: str, device: torch.device) -> None:
        newest, english = name in _NEWEST, name.endswith(".en")
        self.standin_name = name
        self.device = device
        self.dims = ModelDimensions(128 if newest else 80, 51864 + (not english) + newest)
        self._inside = threading.Lock()

    @property
    def is_multilingual(self) -> bool:
        """False for models that know English only."""
        return self.dims.n_vocab >= 51865

    @property
    def num_languages(self) -> int:
        """100 with Cantonese, else 99."""
        return self.dims.n_vocab - 51765 - int(self.is_multilingual)

    transcribe = _transcribe

    def detect_language(self, mel: Mel, tokenizer: Optional[Tokenizer] = None) -> Any:
        """The token of the likeliest language, and the probability of each."""
        return detect_language(self, mel, tokenizer)

    @contextmanager
    def standin_alone(self, what: str) -> Iterator[None]:
        """Raises for whoever enters while another one is inside."""
        if not self._inside.acquire(blocking=False):
            note("overlap", what=what, thread=threading.current_thread().name)
            raise RuntimeError("this model is used by two threads at once")
        try:
            pass_hook(what)
            yield
        finally:
            self._inside.release()


def detect_language(model: Whisper, mel: Mel, tokenizer: Optional[Tokenizer] = None) -> Any:
    """Wants 30 s of sound with as many bands as the model has."""
    if not model.is_multilingual:
        raise ValueError("This model doesn't have language tokens so it can't perform lang id")
    if mel.shape[0] != model.dims.n_mels:
        raise RuntimeError(
            f"expected input[1, {mel.shape[0]}, {mel.shape[1]}] to have {model.dims.n_mels}"
            f" channels, but got {mel.shape[0]} channels instead"
        )
    if mel.shape[1] != N_FRAMES:
        raise AssertionError("incorrect audio shape")
    with model.standin_alone("detect_language"):
        best, certainty = language_of(mel.samples)
    codes = list(LANGUAGES)[: model.num_languages]
    rest = (1 - certainty) / (len(codes) - 1)
    probabilities = {code: certainty if code == best else rest for code in codes}
    return 50259 + codes.index(best), probabilities
