"""The work itself."""

import warnings
from typing import TYPE_CHECKING, Any, Optional, Sequence, Union

import numpy as np
from standin_inventions import Guess, guesses, language_of
from standin_notes import note

from .audio import N_SAMPLES, SAMPLE_RATE, checked
from .decoding import options_at
from .tokenizer import get_tokenizer

if TYPE_CHECKING:
    from .model import Whisper


def transcribe(
    model: "Whisper",
    audio: Any,
    *,
    verbose: Optional[bool] = None,
    temperature: Union[float, Sequence[float]] = (0.0, 0.2, 0.4, 0.6, 0.8, 1.0),
    compression_ratio_threshold: Optional[float] = 2.4,
    logprob_threshold: Optional[float] = -1.0,
    no_speech_threshold: Optional[float] = 0.6,
    condition_on_previous_text: bool = True,
    initial_prompt: Optional[str] = None,
    carry_initial_prompt: bool = False,
    word_timestamps: bool = False,
    prepend_punctuations: str = "\"'“¿([{-",
    append_punctuations: str = "\"'.。,，!！?？:：”)]}、",
    clip_timestamps: Union[str, list[float]] = "0",
    hallucination_silence_threshold: Optional[float] = None,
    **decode_options: Any,
) -> dict[str, Any]:
    """What is heard, with segments and language."""
    ladder = [temperature] if isinstance(temperature, (int, float)) else list(temperature)
    if decode_options.get("fp16", True):
        warnings.warn("FP16 is not supported on CPU; using FP32 instead")
        decode_options["fp16"] = False
    with model.standin_alone("transcribe"):
        samples = checked(audio)
        language = decode_options.get("language")
        if language is None:
            language = "en" if not model.is_multilingual else language_of(samples[:N_SAMPLES])[0]
            if verbose:
                print(f"Detected language: {language.title()}")
        decode_options["language"] = language
        tokenizer = get_tokenizer(
            model.is_multilingual, num_languages=model.num_languages, language=language,
            task=decode_options.get("task", "transcribe"),
        )  # fmt: skip
        for step in ladder:
            options_at(step, decode_options)
        note(
            "whisper.transcribe", model=model.standin_name, seconds=len(samples) / SAMPLE_RATE,
            temperature=ladder, logprob_threshold=logprob_threshold,
            no_speech_threshold=no_speech_threshold, initial_prompt=initial_prompt,
            condition_on_previous_text=condition_on_previous_text,
            word_timestamps=word_timestamps, **decode_options,
        )  # fmt: skip
        segments: list[dict[str, Any]] = []
        previous = ""
        for begin in range(0, len(samples), N_SAMPLES):
            window = samples[begin : begin + N_SAMPLES]
            for guess in guesses(window, tokenizer.language or "en", previous):
                used = _used(guess, ladder, compression_ratio_threshold, logprob_threshold)
                if _is_silence(guess, no_speech_threshold, logprob_threshold):
                    continue
                segments.append(_segment(len(segments), guess, used, begin, word_timestamps))
                previous = guess.text if condition_on_previous_text and used < 0.5 else ""
    text = "".join(segment["text"] for segment in segments)
    if verbose:
        print(text)
    return {"text": text, "segments": segments, "language": language}


def _used(
    guess: Guess,
    ladder: Sequence[float],
    ratio_threshold: Optional[float],
    logprob_threshold: Optional[float],
) -> float:
    """The temperature that the ladder ends at: what repeats itself does so at every one."""
    repeats = ratio_threshold is not None and guess.compression_ratio > ratio_threshold
    doubtful = logprob_threshold is not None and guess.avg_logprob < logprob_threshold
    return ladder[-1] if repeats or doubtful else ladder[0]


def _is_silence(
    guess: Guess, no_speech_threshold: Optional[float], logprob_threshold: Optional[float]
) -> bool:
    """Fluent text is no silence, however surely nobody speaks."""
    if no_speech_threshold is None or guess.no_speech_prob <= no_speech_threshold:
        return False
    return logprob_threshold is None or guess.avg_logprob <= logprob_threshold


def _segment(number: int, guess: Guess, used: float, begin: int, words: bool) -> dict[str, Any]:
    shift = begin / SAMPLE_RATE
    segment = {
        "id": number, "seek": begin // 160, "start": round(shift + guess.start, 2),
        "end": round(shift + guess.end, 2), "text": guess.text,
        "tokens": [50364 + position for position in range(len(guess.text.split()))],
        "temperature": used, "avg_logprob": guess.avg_logprob,
        "compression_ratio": guess.compression_ratio, "no_speech_prob": guess.no_speech_prob,
    }  # fmt: skip
    if words:
        segment["words"] = [
            {
                "word": " " + word.text, "start": np.float64(round(shift + word.start, 2)),
                "end": np.float64(round(shift + word.end, 2)), "probability": 0.93,
            }
            for word in guess.words
        ]  # fmt: skip
    return segment
