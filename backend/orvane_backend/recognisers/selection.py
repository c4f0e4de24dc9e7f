"""Which recogniser serves a configuration, and what comes next when it cannot."""

from typing import Callable, Optional

from ..notices import Notice, notice
from ..protocol import Config
from ..settings_file import settings
from . import Candidate
from .faster_whisper import FasterWhisperRecogniser
from .google import GoogleRecogniser
from .near.choice import candidates_near
from .pocketsphinx import PocketSphinxRecogniser
from .vosk import VoskRecogniser
from .whisper import WhisperRecogniser
from .whisper_models import FASTER, OPENAI, full_name, packages_for

# The clients talk to these themselves; audio arrives here only when one fails them.
DIRECT_ENGINES = ("deepgram", "assemblyai", "azure", "google_rest")


def candidates(config: Config) -> list[Candidate]:
    """The engine asked for, then what the person runs, then Whisper, then the built-in one."""
    builtin = Candidate(("pocketsphinx",), PocketSphinxRecogniser)
    if config.sttEngine == "pocketsphinx":
        return [builtin]
    first = _FIRST.get(config.sttEngine)
    asked_for = [first(config)] if first is not None else []
    return [*asked_for, *candidates_near(settings()), *_whisper(config), builtin]


def is_served_elsewhere(config: Config) -> bool:
    """Whether the client recognises by itself, so that loading can wait for audio."""
    return config.sttEngine in DIRECT_ENGINES


def foreign_engine(config: Config) -> Optional[Notice]:
    """Why the engine asked for is not among the candidates; none when it is."""
    if config.sttEngine in ("whisper", "pocketsphinx", *_FIRST):
        return None
    return notice("engine.elsewhere", engine=config.sttEngine)


def _vosk(config: Config) -> Candidate:
    host, port = config.engineHost, config.enginePort
    return Candidate(("vosk", host, port), lambda: VoskRecogniser(host, port))


def _google(config: Config) -> Candidate:
    account, project = config.engineServiceAccountPath, config.engineProjectId
    location = config.engineLocation
    return Candidate(
        ("google_grpc", account, project, location),
        lambda: GoogleRecogniser(account, project, location),
    )


# Engines that come before Whisper when they are asked for.
_FIRST: dict[str, Callable[[Config], Candidate]] = {"vosk": _vosk, "google_grpc": _google}


def _whisper(config: Config) -> list[Candidate]:
    """The packages that are there; one that tells what is missing when none is."""
    model = config.whisperModel
    known = {
        FASTER: Candidate(("faster_whisper", model), lambda: FasterWhisperRecogniser(model)),
        OPENAI: Candidate(("whisper", model), lambda: WhisperRecogniser(model)),
    }
    found = [known[package] for package in packages_for(full_name(model) or model)]
    return found or [known[OPENAI]]
