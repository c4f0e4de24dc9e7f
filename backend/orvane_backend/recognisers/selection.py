"""Which recogniser serves a configuration, and what comes next when it cannot."""

from dataclasses import dataclass
from typing import Callable

from ..protocol import Config
from . import Recogniser
from .google import GoogleRecogniser
from .pocketsphinx import PocketSphinxRecogniser
from .vosk import VoskRecogniser
from .whisper import WhisperRecogniser

# The clients talk to these themselves; audio arrives here only when one fails them.
DIRECT_ENGINES = ("deepgram", "assemblyai", "azure", "google_rest")


@dataclass(frozen=True)
class Candidate:
    """A recogniser that might serve; equal keys are served by one and the same object."""

    key: tuple[object, ...]
    create: Callable[[], Recogniser]


def candidates(config: Config) -> list[Candidate]:
    """The engine asked for, then Whisper, then the built-in one."""
    whisper = Candidate(
        ("whisper", config.whisperModel), lambda: WhisperRecogniser(config.whisperModel)
    )
    builtin = Candidate(("pocketsphinx",), PocketSphinxRecogniser)
    if config.sttEngine == "pocketsphinx":
        return [builtin]
    if config.sttEngine == "vosk":
        host, port = config.engineHost, config.enginePort
        return [
            Candidate(("vosk", host, port), lambda: VoskRecogniser(host, port)),
            whisper,
            builtin,
        ]
    if config.sttEngine == "google_grpc":
        account = (
            config.engineServiceAccountPath, config.engineProjectId, config.engineLocation
        )  # fmt: skip
        google = Candidate(("google_grpc", *account), lambda: GoogleRecogniser(*account))
        return [google, whisper, builtin]
    return [whisper, builtin]


def is_served_elsewhere(config: Config) -> bool:
    """Whether the client recognises by itself, so that loading can wait for audio."""
    return config.sttEngine in DIRECT_ENGINES


def foreign_engine(config: Config) -> str:
    """Why the engine asked for is not among the candidates; empty when it is."""
    if config.sttEngine in ("whisper", "vosk", "google_grpc", "pocketsphinx"):
        return ""
    return f"„{config.sttEngine}“ läuft nicht im Backend"
