"""The voice activity model: finds words, and takes neither noise nor tones for them."""

from dataclasses import dataclass
from typing import Any, Optional

import numpy as np
from standin_notes import note
from standin_voice import hear


@dataclass
class VadOptions:
    """Exactly these; another name is a TypeError."""

    threshold: float = 0.5
    neg_threshold: Optional[float] = None
    min_speech_duration_ms: int = 0
    max_speech_duration_s: float = float("inf")
    min_silence_duration_ms: int = 2000
    speech_pad_ms: int = 400


def get_speech_timestamps(
    audio: Any,
    vad_options: Optional[VadOptions] = None,
    sampling_rate: int = 16000,
    **kwargs: Any,
) -> list[dict[str, int]]:
    """Where somebody speaks, in samples; parted by silence that is long enough, and padded."""
    options = VadOptions(**kwargs) if vad_options is None else vad_options
    if not isinstance(options, VadOptions):
        raise AttributeError(f"{type(options).__name__!r} object has no attribute 'threshold'")
    samples = np.asarray(audio)
    if samples.ndim != 1:
        raise AssertionError("Input should be a 1D array")
    if samples.dtype != np.float32:
        raise TypeError(f"the voice activity model takes float32, not {samples.dtype}")
    note("vad", seconds=len(samples) / sampling_rate, options=vars(options).copy())
    # The model knows 16 kHz alone, whatever rate it is told.
    words = hear(samples, 16000) if options.threshold < 0.95 else []
    runs: list[list[float]] = []
    for word in words:
        pause = word.start - runs[-1][1] if runs else float("inf")
        if pause * 1000 < options.min_silence_duration_ms:
            runs[-1][1] = word.end
        else:
            runs.append([word.start, word.end])
    runs = [run for run in runs if (run[1] - run[0]) * 1000 >= options.min_speech_duration_ms]
    return _padded(_cut(runs, options.max_speech_duration_s), len(samples), options.speech_pad_ms)


def _cut(runs: list[list[float]], longest: float) -> list[list[float]]:
    cut = []
    for start, end in runs:
        while end - start > longest:
            cut.append([start, start + longest])
            start += longest
        cut.append([start, end])
    return cut


def _padded(runs: list[list[float]], length: int, pad_ms: int) -> list[dict[str, int]]:
    """Where two would overlap they share the pause between them."""
    found = [{"start": int(16000 * start), "end": int(16000 * end)} for start, end in runs]
    pad = 16 * pad_ms
    edges = [(run["start"], run["end"]) for run in found]
    for number, run in enumerate(found):
        before = edges[number - 1][1] if number else -length
        after = edges[number + 1][0] if number + 1 < len(found) else 3 * length
        run["start"] = max(0, run["start"] - min(pad, (run["start"] - before) // 2))
        run["end"] = min(length, run["end"] + min(pad, (after - run["end"]) // 2))
    return found
