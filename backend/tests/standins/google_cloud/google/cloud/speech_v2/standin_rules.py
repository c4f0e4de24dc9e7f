"""What the service refuses in the first request."""

import re
from typing import Any

from google.api_core.exceptions import InvalidArgument, PermissionDenied, ServiceUnavailable
from google.api_core.exceptions import GoogleAPICallError

from .types import cloud_speech

MAX_AUDIO_BYTES = 15360
_MANY = ("global", "us", "eu")
_LOCATIONS = (
    *_MANY, "us-central1", "northamerica-northeast1", "europe-west2", "europe-west3",
    "europe-west4", "asia-northeast1", "asia-south1", "asia-southeast1",
)  # fmt: skip
_EVERYWHERE = ("short", "long", "telephony", "latest_long", "latest_short")
_CHIRP = {
    "chirp_2": ("us-central1", "europe-west4", "asia-southeast1"),
    "chirp_3": (
        "us", "eu", "asia-northeast1", "asia-south1", "europe-west2", "europe-west3",
        "northamerica-northeast1",
    ),
}  # fmt: skip
LANGUAGES = (
    "af-ZA am-ET ar-SA az-AZ bg-BG bn-IN bs-BA ca-ES cs-CZ da-DK de-DE el-GR en-US es-ES et-EE"
    " eu-ES fa-IR fi-FI fr-FR gl-ES gu-IN iw-IL hi-IN hr-HR hu-HU hy-AM id-ID is-IS it-IT ja-JP"
    " jv-ID ka-GE kk-KZ km-KH kn-IN ko-KR lo-LA lt-LT lv-LV mk-MK ml-IN mn-MN mr-IN ms-MY my-MM"
    " ne-NP nl-NL no-NO pa-Guru-IN pl-PL pt-BR pt-PT ro-RO ru-RU si-LK sk-SK sl-SI sq-AL sr-RS"
    " su-ID sv-SE sw-KE ta-IN te-IN th-TH fil-PH tr-TR uk-UA ur-PK uz-UZ vi-VN yue-Hant-HK"
    " cmn-Hans-CN cmn-Hant-TW en-AU en-GB en-IN fr-CA es-US"
).split()
_CHIRP_2 = (
    "cmn-Hans-CN cmn-Hant-TW yue-Hant-HK en-AU en-IN en-GB en-US fr-CA fr-FR de-DE it-IT ja-JP"
    " ko-KR pt-BR es-ES es-US"
).split()
_NAME = re.compile(r"projects/([^/]+)/locations/([^/]+)/recognizers/([^/]+)")


def check_first(request: Any, endpoint: str, projects: tuple[str, ...]) -> None:
    """Raises what the service answers to a first request that it does not take."""
    if request.standin_which("streaming_request") != "streaming_config":
        raise InvalidArgument("Malformed request: the first message has to hold a config.")
    named = _NAME.fullmatch(request.recognizer)
    if named is None:
        raise InvalidArgument(f"Invalid resource field value in the request: {request.recognizer}")
    project, location, _ = named.groups()
    _check_place(endpoint, location)
    if projects and project not in projects:
        raise PermissionDenied(
            f"Permission 'speech.recognizers.recognize' denied on resource (or it may not exist)"
            f" for project {project}."
        )
    config = request.streaming_config.config
    _check_model(config.model, location)
    _check_languages(list(config.language_codes), config.model, location)
    _check_decoding(config)
    if config.features.enable_word_confidence and config.model == "chirp_3":
        raise InvalidArgument("Recognizer does not support feature: word_level_confidence")


def check_audio(request: Any) -> bytes:
    """The sound of a later request, which may hold nothing else."""
    if request.standin_which("streaming_request") != "audio":
        raise InvalidArgument("Malformed request: a config can only be in the first message.")
    if not request.audio:
        raise InvalidArgument("Malformed request: no audio.")
    if len(request.audio) > MAX_AUDIO_BYTES:
        raise InvalidArgument(f"Audio chunk can be of a maximum of {MAX_AUDIO_BYTES} bytes.")
    return bytes(request.audio)


def location_of(endpoint: str) -> str:
    """The location that a host serves; no other host can be reached."""
    found = re.fullmatch(r"(?:([a-z0-9-]+)-)?speech\.googleapis\.com(?::443)?", endpoint)
    location = (found.group(1) or "global") if found else ""
    if location not in _LOCATIONS or endpoint.startswith("global-"):
        raise ServiceUnavailable(f"DNS resolution failed for {endpoint}: Domain name not found")
    return location


def language_failure(code: str, model: str, location: str) -> GoogleAPICallError:
    """The model does not know it."""
    return InvalidArgument(
        f'The language "{code}" is not supported by the model "{model}" in the location named'
        f' "{location}".'
    )


def _check_place(endpoint: str, location: str) -> None:
    served = location_of(endpoint)
    if served != location:
        raise InvalidArgument(
            f"Expected resource location to be {served}, but found {location} in resource name."
        )


def _check_model(model: str, location: str) -> None:
    if model == "chirp_3" and location == "asia-southeast1":
        raise PermissionDenied(f"The model {model} in {location} is no longer generally available.")
    if location not in _CHIRP.get(model, _LOCATIONS if model in _EVERYWHERE else ()):
        raise InvalidArgument(
            f'The model "{model}" does not exist in the location named "{location}".'
        )


def _check_languages(codes: list[str], model: str, location: str) -> None:
    if not codes:
        raise InvalidArgument("Invalid recognition config: no language codes.")
    if codes == ["auto"] and model in _CHIRP:
        return
    if len(codes) > 3:
        raise InvalidArgument("Invalid recognition config: at most 3 language codes.")
    if len(codes) > 1 and location not in _MANY:
        raise InvalidArgument(
            f'Multiple language codes are not supported in the location named "{location}".'
        )
    for code in codes:
        if code not in (_CHIRP_2 if model == "chirp_2" else LANGUAGES):
            raise language_failure(code, model, location)


def _check_decoding(config: Any) -> None:
    which = config.standin_which("decoding_config")
    if which is None:
        raise InvalidArgument("Invalid recognition config: no decoding config.")
    explicit = config.explicit_decoding_config
    encodings = cloud_speech.ExplicitDecodingConfig.AudioEncoding
    if which != "explicit_decoding_config":
        return
    if explicit.encoding == encodings.AUDIO_ENCODING_UNSPECIFIED:
        raise InvalidArgument("Invalid recognition config: no encoding.")
    if not 8000 <= explicit.sample_rate_hertz <= 48000:
        raise InvalidArgument(
            f"Invalid recognition config: bad sample rate {explicit.sample_rate_hertz} Hertz."
        )
    if explicit.encoding != encodings.LINEAR16:
        raise NotImplementedError("this stand-in decodes LINEAR16 alone")
