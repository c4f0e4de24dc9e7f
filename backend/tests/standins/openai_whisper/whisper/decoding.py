"""The options of decoding, and which of them exclude each other."""

from dataclasses import dataclass
from typing import Any, Optional, Union


@dataclass(frozen=True)
class DecodingOptions:
    """Exactly these; another name is a TypeError."""

    task: str = "transcribe"
    language: Optional[str] = None
    temperature: float = 0.0
    sample_len: Optional[int] = None
    best_of: Optional[int] = None
    beam_size: Optional[int] = None
    patience: Optional[float] = None
    length_penalty: Optional[float] = None
    prompt: Optional[Union[str, list[int]]] = None
    prefix: Optional[Union[str, list[int]]] = None
    suppress_tokens: Optional[Union[str, Any]] = "-1"
    suppress_blank: bool = True
    without_timestamps: bool = False
    max_initial_timestamp: Optional[float] = 1.0
    fp16: bool = True

    def verify(self) -> None:
        """Refuses what does not go together."""
        if self.beam_size is not None and self.best_of is not None:
            raise ValueError("beam_size and best_of can't be given together")
        if self.temperature == 0 and self.best_of is not None:
            raise ValueError("best_of with greedy sampling (T=0) is not compatible")
        if self.patience is not None and self.beam_size is None:
            raise ValueError("patience requires beam_size to be given")
        if self.length_penalty is not None and not 0 <= self.length_penalty <= 1:
            raise ValueError("length_penalty (alpha) should be a value between 0 and 1")


def options_at(temperature: float, options: dict[str, Any]) -> DecodingOptions:
    """What is decoded with at one temperature: beams at 0, samples above."""
    dropped = ("beam_size", "patience") if temperature > 0 else ("best_of",)
    kept = {name: value for name, value in options.items() if name not in dropped}
    made = DecodingOptions(**kept, temperature=temperature)
    made.verify()
    return made
