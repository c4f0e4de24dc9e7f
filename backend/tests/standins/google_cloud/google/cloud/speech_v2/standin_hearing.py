"""What a stream answers: nothing in silence, interim results each second, finals after pauses."""

from datetime import timedelta
from typing import Any, Optional

from google.api_core.exceptions import InvalidArgument
from standin_voice import Word, from_pcm, hear

from .standin_rules import LANGUAGES
from .types import cloud_speech

_PAUSE_SECONDS = 0.5
_INTERIM_SECONDS = 1.0
_Events = cloud_speech.StreamingRecognizeResponse.SpeechEventType


class Hearing:
    """One stream's sound."""

    def __init__(self, config: Any) -> None:
        self._config = config.config
        self._features = config.streaming_features
        explicit = self._config.standin_which("decoding_config") == "explicit_decoding_config"
        decoding = self._config.explicit_decoding_config
        self._rate: Optional[int] = decoding.sample_rate_hertz if explicit else None
        self._channels = (decoding.audio_channel_count or 1) if explicit else 1
        self._pcm = b""
        self._begin = 0.0
        self._next_interim = _INTERIM_SECONDS
        self._speaking = False
        self._finals = 0

    @property
    def seconds(self) -> float:
        """How much sound there was."""
        return self._begin + len(self._samples()) / (self._rate or 16000)

    def take(self, sound: bytes) -> list[Any]:
        """The answers to a piece of sound."""
        self._pcm += self._without_header(sound) if self._rate is None else sound
        words = hear(self._samples(), self._rate or 16000)
        answers = []
        if words and not self._speaking:
            answers += self._event(_Events.SPEECH_ACTIVITY_BEGIN, words[0].start)
            self._speaking = True
        length = len(self._samples()) / (self._rate or 16000)
        if words and length - words[-1].end >= _PAUSE_SECONDS:
            return answers + self._final(words)
        if self.seconds >= self._next_interim:
            self._next_interim = self.seconds + _INTERIM_SECONDS
            if words and self._features.interim_results:
                answers.append(self._interim(words))
        return answers

    def end(self) -> list[Any]:
        """The answers when no more sound comes."""
        words = hear(self._samples(), self._rate or 16000)
        return self._final(words) if words else []

    def _samples(self) -> Any:
        samples = from_pcm(self._pcm)
        return samples[:: self._channels] if self._channels > 1 else samples

    def _without_header(self, sound: bytes) -> bytes:
        if sound[:4] != b"RIFF" or len(sound) < 44:
            raise InvalidArgument("Audio data does not appear to be in a supported encoding.")
        self._rate = int.from_bytes(sound[24:28], "little")
        self._channels = int.from_bytes(sound[22:24], "little")
        return sound[44:]

    def _event(self, kind: Any, seconds: float) -> list[Any]:
        if not self._features.enable_voice_activity_events:
            return []
        offset = timedelta(seconds=self._begin + seconds)
        return [
            cloud_speech.StreamingRecognizeResponse(
                speech_event_type=kind, speech_event_offset=offset
            )
        ]

    def _final(self, words: list[Word]) -> list[Any]:
        text = " ".join(word.text for word in words)
        if self._config.features.enable_automatic_punctuation:
            text = f"{text[0].upper()}{text[1:]}."
        # What follows within a stream may begin with a space.
        text = " " + text if self._finals else text
        self._finals += 1
        result = self._result(text, words, True, 0.0)
        answers = self._event(_Events.SPEECH_ACTIVITY_END, words[-1].end)
        self._begin = self.seconds
        self._pcm, self._speaking = b"", False
        return [*answers, cloud_speech.StreamingRecognizeResponse(results=[result])]

    def _interim(self, words: list[Word]) -> Any:
        """Two results where there are words enough: what will stay, and what may not."""
        kept = words[:-1] if len(words) > 2 else words
        texts = " ".join(word.text for word in kept), " ".join(w.text for w in words[len(kept) :])
        results = [self._result(texts[0], kept, False, 0.9)]
        if texts[1]:
            results.append(self._result(" " + texts[1], words, False, 0.01))
        return cloud_speech.StreamingRecognizeResponse(results=results)

    def _result(self, text: str, words: list[Word], final: bool, stability: float) -> Any:
        alternative = cloud_speech.SpeechRecognitionAlternative(
            transcript=text, confidence=0.93 if final else 0.0
        )
        if final and self._config.features.enable_word_time_offsets:
            alternative.words = [
                {
                    "word": word.text,
                    "start_offset": timedelta(seconds=self._begin + word.start),
                    "end_offset": timedelta(seconds=self._begin + word.end),
                }
                for word in words
            ]
        return cloud_speech.StreamingRecognitionResult(
            alternatives=[alternative],
            is_final=final,
            stability=stability,
            result_end_offset=timedelta(seconds=self._begin + words[-1].end),
            language_code=self._language(words),
        )

    def _language(self, words: list[Word]) -> str:
        """In lower case, whatever was asked for."""
        codes = list(self._config.language_codes)
        heard = [word.language for word in words]
        best = max(sorted(set(heard)), key=heard.count)
        allowed = LANGUAGES if codes == ["auto"] else codes
        fitting = [code for code in allowed if code.split("-")[0] == best]
        return (fitting or allowed)[0].lower()
