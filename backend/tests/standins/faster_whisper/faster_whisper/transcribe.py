"""The model. Nothing is recognised before its generator is read."""

import os
from typing import Any, Iterable, Iterator, Optional, Union

import numpy as np
from ctranslate2.models import Whisper
from huggingface_hub import LocalEntryNotFoundError
from standin_inventions import Guess, guesses, language_of
from standin_languages import LANGUAGES
from standin_notes import note, pass_hook

from .results import Segment, TranscriptionInfo, Word
from .tokenizer import check_language
from .utils import download_model, get_logger
from .vad import VadOptions, get_speech_timestamps

_RATE = 16000
_WINDOW = 30 * _RATE


class WhisperModel:
    """A model by its size, its repository or its folder."""

    def __init__(
        self,
        model_size_or_path: str,
        device: str = "auto",
        device_index: Union[int, list[int]] = 0,
        compute_type: str = "default",
        cpu_threads: int = 0,
        num_workers: int = 1,
        download_root: Optional[str] = None,
        local_files_only: bool = False,
        files: Optional[dict[str, Any]] = None,
        revision: Optional[str] = None,
        use_auth_token: Any = None,
        **model_kwargs: Any,
    ) -> None:
        self.logger = get_logger()
        if os.path.isdir(model_size_or_path):
            folder = model_size_or_path
        else:
            folder = download_model(
                model_size_or_path, local_files_only=local_files_only, cache_dir=download_root,
                revision=revision, use_auth_token=use_auth_token,
            )  # fmt: skip
        self.model = Whisper(
            folder, device=device, device_index=device_index, compute_type=compute_type,
            intra_threads=cpu_threads, inter_threads=num_workers, files=files, **model_kwargs,
        )  # fmt: skip
        if not os.path.isfile(os.path.join(folder, "tokenizer.json")):
            note("network", repository="openai/whisper-tiny")
            raise LocalEntryNotFoundError("Cannot find the tokenizer of openai/whisper-tiny")
        note(
            "faster_whisper.load", name=self.model.name, device=device, threads=cpu_threads,
            compute_type=compute_type, workers=num_workers, local_files_only=local_files_only,
        )  # fmt: skip

    @property
    def supported_languages(self) -> list[str]:
        """The codes that the model has tokens for."""
        every = list(LANGUAGES)[: self.model.num_languages]
        return every if self.model.is_multilingual else ["en"]

    def transcribe(
        self,
        audio: Any,
        language: Optional[str] = None,
        task: str = "transcribe",
        log_progress: bool = False,
        beam_size: int = 5,
        best_of: int = 5,
        patience: float = 1,
        length_penalty: float = 1,
        repetition_penalty: float = 1,
        no_repeat_ngram_size: int = 0,
        temperature: Any = (0.0, 0.2, 0.4, 0.6, 0.8, 1.0),
        compression_ratio_threshold: Optional[float] = 2.4,
        log_prob_threshold: Optional[float] = -1.0,
        no_speech_threshold: Optional[float] = 0.6,
        condition_on_previous_text: bool = True,
        prompt_reset_on_temperature: float = 0.5,
        initial_prompt: Optional[Union[str, Iterable[int]]] = None,
        prefix: Optional[str] = None,
        suppress_blank: bool = True,
        suppress_tokens: Optional[list[int]] = None,
        without_timestamps: bool = False,
        max_initial_timestamp: float = 1.0,
        word_timestamps: bool = False,
        prepend_punctuations: str = "\"'“¿([{-",
        append_punctuations: str = "\"'.。,，!！?？:：”)]}、",
        multilingual: bool = False,
        vad_filter: bool = False,
        vad_parameters: Optional[Union[dict[str, Any], VadOptions]] = None,
        max_new_tokens: Optional[int] = None,
        chunk_length: Optional[int] = None,
        clip_timestamps: Union[str, list[float]] = "0",
        hallucination_silence_threshold: Optional[float] = None,
        hotwords: Optional[str] = None,
        language_detection_threshold: Optional[float] = 0.5,
        language_detection_segments: int = 1,
    ) -> tuple[Iterator[Segment], TranscriptionInfo]:
        """A generator of segments, and what is known already."""
        options = {name: value for name, value in locals().items() if name not in ("self", "audio")}
        samples = _checked(audio)
        duration = len(samples) / _RATE
        if isinstance(vad_parameters, dict):
            vad_parameters = VadOptions(**vad_parameters)
        runs = [{"start": 0, "end": len(samples)}]
        if vad_filter:
            vad_parameters = vad_parameters or VadOptions()
            runs = get_speech_timestamps(samples, vad_parameters)
            samples = np.concatenate([samples[:0], *(samples[r["start"] : r["end"]] for r in runs)])
        language, certainty, every = self._language(samples, language)
        check_language(self.model.is_multilingual, language, task)
        if beam_size < 1:
            raise ValueError("The beam size must be > 0")
        note("faster_whisper.transcribe", model=self.model.name, seconds=duration, **options)
        info = TranscriptionInfo(
            language, certainty, duration, len(samples) / _RATE, every, options,
            vad_parameters if vad_filter else None,
        )  # fmt: skip
        return self._segments(samples, language, options, runs), info

    def detect_language(
        self,
        audio: Any = None,
        features: Any = None,
        vad_filter: bool = False,
        vad_parameters: Optional[Union[dict[str, Any], VadOptions]] = None,
        language_detection_segments: int = 1,
        language_detection_threshold: float = 0.5,
    ) -> tuple[str, float, list[tuple[str, float]]]:
        """The likeliest language, how likely, and the rest."""
        if audio is None:
            raise AssertionError("Either `audio` or `features` must be provided.")
        best, certainty, every = self._language(_checked(audio), None)
        return best, certainty, every or []

    def _language(
        self, samples: Any, language: Optional[str]
    ) -> tuple[str, float, Optional[list[tuple[str, float]]]]:
        if not self.model.is_multilingual:
            if language not in (None, "en"):
                self.logger.warning(
                    "The current model is English-only but the language parameter is set to '%s';"
                    " using 'en' instead.", language,
                )  # fmt: skip
            return "en", 1, None
        if language is not None:
            return language, 1, None
        best, certainty = language_of(samples[:_WINDOW])
        codes = self.supported_languages
        rest = (1 - certainty) / (len(codes) - 1)
        others = [(code, rest) for code in codes if code != best]
        return best, certainty, [(best, certainty), *others]

    def _segments(
        self, samples: Any, language: str, options: dict[str, Any], runs: list[dict[str, int]]
    ) -> Iterator[Segment]:
        ladder = options["temperature"]
        ladder = [ladder] if isinstance(ladder, (int, float)) else list(ladder)
        poor = language == "yue" and self.model.num_languages < 100
        number, previous = 0, ""
        for begin in range(0, len(samples), _WINDOW):
            pass_hook("transcribe")
            for guess in guesses(samples[begin : begin + _WINDOW], language, previous, poor):
                if _is_silence(guess, options):
                    continue
                number += 1
                segment = _segment(number, guess, ladder, begin / _RATE, options)
                _put_back(segment, runs)
                note("faster_whisper.segment", text=segment.text)
                yield segment
                keeps = options["condition_on_previous_text"] and segment.temperature <= 0.5
                previous = guess.text if keeps else ""


def _checked(audio: Any) -> Any:
    if not isinstance(audio, np.ndarray):
        raise FileNotFoundError(2, f"No such file or directory: {audio!r}")
    if audio.dtype != np.float32:
        raise TypeError(f"audio has to be float32, not {audio.dtype}")
    if audio.ndim != 1:
        raise ValueError(f"audio has to be one channel, not of shape {audio.shape}")
    return audio


def _is_silence(guess: Guess, options: dict[str, Any]) -> bool:
    """Fluent text is no silence, however surely nobody speaks."""
    threshold, certainty = options["no_speech_threshold"], options["log_prob_threshold"]
    if threshold is None or guess.no_speech_prob <= threshold:
        return False
    return certainty is None or guess.avg_logprob <= certainty


def _segment(
    number: int, guess: Guess, ladder: list[float], shift: float, options: dict[str, Any]
) -> Segment:
    ratio, certainty = options["compression_ratio_threshold"], options["log_prob_threshold"]
    repeats = ratio is not None and guess.compression_ratio > ratio
    doubtful = certainty is not None and guess.avg_logprob < certainty
    words = None
    if options["word_timestamps"]:
        words = [
            Word(round(shift + word.start, 2), round(shift + word.end, 2), " " + word.text, 0.93)
            for word in guess.words
        ]
    return Segment(
        number, int(shift * 100), round(shift + guess.start, 2), round(shift + guess.end, 2),
        guess.text, list(range(50364, 50364 + len(guess.text.split()))), guess.avg_logprob,
        guess.compression_ratio, guess.no_speech_prob, words,
        ladder[-1] if repeats or doubtful else ladder[0],
    )  # fmt: skip


def _put_back(segment: Segment, runs: list[dict[str, int]]) -> None:
    """From the time in what the filter left to the time in the whole sound."""
    for part in (segment, *(segment.words or ())):
        part.start = _in_whole(part.start, runs)
        part.end = _in_whole(part.end, runs)


def _in_whole(seconds: float, runs: list[dict[str, int]]) -> float:
    passed = 0
    for run in runs:
        length = run["end"] - run["start"]
        if seconds * _RATE <= passed + length:
            return round(seconds + (run["start"] - passed) / _RATE, 2)
        passed += length
    return seconds
