"""What `transcribe` gives."""

from dataclasses import dataclass
from typing import Any, Optional

from .vad import VadOptions


@dataclass
class Word:
    """A word with its time."""

    start: float
    end: float
    word: str
    probability: float


@dataclass
class Segment:
    """A piece of text. Its parts are attributes, not items."""

    id: int
    seek: int
    start: float
    end: float
    text: str
    tokens: list[int]
    avg_logprob: float
    compression_ratio: float
    no_speech_prob: float
    words: Optional[list[Word]]
    temperature: Optional[float]


@dataclass
class TranscriptionInfo:
    """What is known before the first segment is."""

    language: str
    language_probability: float
    duration: float
    duration_after_vad: float
    all_language_probs: Optional[list[tuple[str, float]]]
    transcription_options: dict[str, Any]
    vad_options: Optional[VadOptions]
