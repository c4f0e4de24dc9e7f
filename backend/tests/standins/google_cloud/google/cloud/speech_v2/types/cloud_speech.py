"""The messages of streaming recognition."""

import enum
from datetime import timedelta

from .messages import Field, Message

__all__ = (
    "AutoDetectDecodingConfig", "ExplicitDecodingConfig", "RecognitionConfig",
    "RecognitionFeatures", "SpeechAdaptation", "SpeechRecognitionAlternative",
    "StreamingRecognitionConfig", "StreamingRecognitionFeatures", "StreamingRecognitionResult",
    "StreamingRecognizeRequest", "StreamingRecognizeResponse", "TranscriptNormalization",
    "WordInfo",
)  # fmt: skip


class ExplicitDecodingConfig(Message):
    """How the sound is written."""

    class AudioEncoding(enum.IntEnum):
        """Headerless encodings."""

        AUDIO_ENCODING_UNSPECIFIED = 0
        LINEAR16 = 1
        MULAW = 2
        ALAW = 3

    FIELDS = {
        "encoding": Field(AudioEncoding),
        "sample_rate_hertz": Field(int),
        "audio_channel_count": Field(int),
    }


class AutoDetectDecodingConfig(Message):
    """The sound says so itself, by its header."""


class RecognitionFeatures(Message):
    """What is wanted beside the words."""

    class MultiChannelMode(enum.IntEnum):
        """One stream for each channel, or not."""

        MULTI_CHANNEL_MODE_UNSPECIFIED = 0
        SEPARATE_RECOGNITION_PER_CHANNEL = 1

    FIELDS = {
        "profanity_filter": Field(bool),
        "enable_word_time_offsets": Field(bool),
        "enable_word_confidence": Field(bool),
        "enable_automatic_punctuation": Field(bool),
        "enable_spoken_punctuation": Field(bool),
        "enable_spoken_emojis": Field(bool),
        "multi_channel_mode": Field(MultiChannelMode),
        "max_alternatives": Field(int),
    }


class SpeechAdaptation(Message):
    """Phrases; this stand-in knows none."""


class TranscriptNormalization(Message):
    """Replacements; this stand-in knows none."""


class RecognitionConfig(Message):
    """What is to be recognised and how."""

    FIELDS = {
        "auto_decoding_config": Field(AutoDetectDecodingConfig, one_of="decoding_config"),
        "explicit_decoding_config": Field(ExplicitDecodingConfig, one_of="decoding_config"),
        "model": Field(str),
        "language_codes": Field(str, repeated=True),
        "features": Field(RecognitionFeatures),
        "adaptation": Field(SpeechAdaptation),
        "transcript_normalization": Field(TranscriptNormalization),
    }


class StreamingRecognitionFeatures(Message):
    """What is sent beside final results."""

    class VoiceActivityTimeout(Message):
        """When a stream ends by itself."""

        FIELDS = {
            "speech_start_timeout": Field(timedelta),
            "speech_end_timeout": Field(timedelta),
        }

    FIELDS = {
        "enable_voice_activity_events": Field(bool),
        "interim_results": Field(bool),
        "voice_activity_timeout": Field(VoiceActivityTimeout),
    }


class StreamingRecognitionConfig(Message):
    """Of the first request."""

    FIELDS = {
        "config": Field(RecognitionConfig),
        "streaming_features": Field(StreamingRecognitionFeatures),
    }


class StreamingRecognizeRequest(Message):
    """The config, or sound."""

    FIELDS = {
        "recognizer": Field(str),
        "streaming_config": Field(StreamingRecognitionConfig, one_of="streaming_request"),
        "audio": Field(bytes, one_of="streaming_request"),
    }


class WordInfo(Message):
    """A word with its time."""

    FIELDS = {
        "start_offset": Field(timedelta),
        "end_offset": Field(timedelta),
        "word": Field(str),
        "confidence": Field(float),
        "speaker_label": Field(str),
    }


class SpeechRecognitionAlternative(Message):
    """One way to understand it."""

    FIELDS = {
        "transcript": Field(str),
        "confidence": Field(float),
        "words": Field(WordInfo, repeated=True),
    }


class StreamingRecognitionResult(Message):
    """A piece of text, final or not."""

    FIELDS = {
        "alternatives": Field(SpeechRecognitionAlternative, repeated=True),
        "is_final": Field(bool),
        "stability": Field(float),
        "result_end_offset": Field(timedelta),
        "channel_tag": Field(int),
        "language_code": Field(str),
    }


class StreamingRecognizeResponse(Message):
    """What the service sends."""

    class SpeechEventType(enum.IntEnum):
        """Beginning and end of speech."""

        SPEECH_EVENT_TYPE_UNSPECIFIED = 0
        END_OF_SINGLE_UTTERANCE = 1
        SPEECH_ACTIVITY_BEGIN = 2
        SPEECH_ACTIVITY_END = 3

    FIELDS = {
        "results": Field(StreamingRecognitionResult, repeated=True),
        "speech_event_type": Field(SpeechEventType),
        "speech_event_offset": Field(timedelta),
    }
