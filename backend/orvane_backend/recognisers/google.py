"""Google's streaming recognition (version 2), through the package `google-cloud-speech`.

One stream per utterance, whose sound is sent at once; a stream lives five minutes at most.
"""

from contextlib import suppress
from importlib import import_module
from typing import Any, Iterator, Optional, Sequence

from ..audio import RECOGNITION_RATE, encode_pcm
from ..languages import AUTO, canonical, short
from ..notices import Notice, notice
from . import Evidence, Recogniser, RecogniserError, Recognition, Utterance
from .google_account import read_account, unreadable
from .google_errors import is_over, reason_of, recogniser_error
from .google_models import endpoint, locale, model_for, normal_location

# The service takes at most 15 KB of sound in one message: this is 0.4 s.
_BLOCK_BYTES = RECOGNITION_RATE * 2 * 2 // 5
_ANSWER_SECONDS = 30.0

# Between results of these languages there are no spaces.
_SPACELESS = ("ja", "km", "lo", "my", "th", "yue", "zh")


class GoogleRecogniser(Recogniser):
    """A cloud service: needs a service account, a project and a location."""

    name = "Google Speech (gRPC)"
    parallel = 4

    def __init__(self, account: str, project: str, location: str) -> None:
        self._account = account
        self._project = project
        self._location = normal_location(location)
        self._client: Any = None

    def load(self) -> None:
        try:
            speech = import_module("google.cloud.speech_v2")
            self._types = import_module("google.cloud.speech_v2.types.cloud_speech")
        except ModuleNotFoundError as error:
            if error.name is not None and not error.name.startswith("google"):
                raise self._not_loaded(error) from error
            told = notice("recognition.not_installed", engine="google-cloud-speech")
            raise RecogniserError(told) from None
        except Exception as error:  # what the package is built on lets everything through
            raise self._not_loaded(error) from error
        account = read_account(self._account, self.name)
        project = self._project or account.get("project_id")
        if not isinstance(project, str) or not project:
            raise unreadable(self._account, self.name, "project_id fehlt")
        self._path = f"projects/{project}/locations/{self._location}/recognizers/_"
        host = endpoint(self._location)
        try:
            self._client = speech.SpeechClient.from_service_account_file(
                self._account, client_options={} if host is None else {"api_endpoint": host}
            )
        except Exception as error:  # wrong keys raise the credentials package's own types
            raise unreadable(self._account, self.name, reason_of(error)) from error

    def _not_loaded(self, error: Exception) -> RecogniserError:
        return RecogniserError(
            notice("recognition.not_loaded", engine=self.name, reason=reason_of(error))
        )

    def refusal(self, language: str) -> Optional[Notice]:
        if short(language) == AUTO:
            if model_for(self._location, None) is not None:
                return None
            code = "recognition.no_detection_there"
            return notice(code, engine=self.name, location=self._location)
        if locale(language) is not None:
            return None
        code = "recognition.language_unknown"
        return notice(code, engine=self.name, language=canonical(language))

    def recognise(self, utterance: Utterance) -> Recognition:
        if (refused := self.refusal(utterance.language)) is not None:
            raise RecogniserError(refused, is_passing=True)
        code = None if short(utterance.language) == AUTO else locale(utterance.language)
        pcm = encode_pcm(utterance.samples)
        try:
            try:
                finals = self._stream(pcm, code)
            except Exception as error:
                if not is_over(error):
                    raise
                finals = self._stream(pcm, code)
        except Exception as error:  # whatever the transport raises
            raise recogniser_error(error, self.name, self._location) from error
        language = canonical(utterance.language)
        if code is None:
            told = (canonical(result.language_code) for result in finals if result.language_code)
            language = next(told, AUTO)
        return _recognition(finals, language)

    def close(self) -> None:
        client, self._client = self._client, None
        if client is not None:
            with suppress(Exception):  # nobody can do anything about it
                client.transport.close()

    def _stream(self, pcm: bytes, code: Optional[str]) -> list[Any]:
        # Without the package's own second attempts: they would send what is left of the requests.
        responses = self._client.streaming_recognize(
            requests=self._requests(pcm, code), retry=None, timeout=_ANSWER_SECONDS
        )
        return [
            result
            for response in responses
            for result in response.results
            if result.is_final and result.alternatives
        ]

    def _requests(self, pcm: bytes, code: Optional[str]) -> Iterator[Any]:
        types = self._types
        config = types.RecognitionConfig(
            explicit_decoding_config=types.ExplicitDecodingConfig(
                encoding=types.ExplicitDecodingConfig.AudioEncoding.LINEAR16,
                sample_rate_hertz=RECOGNITION_RATE,
                audio_channel_count=1,
            ),
            language_codes=["auto" if code is None else code],
            model=model_for(self._location, code),
            features=types.RecognitionFeatures(enable_automatic_punctuation=True),
        )
        yield types.StreamingRecognizeRequest(
            recognizer=self._path,
            streaming_config=types.StreamingRecognitionConfig(config=config),
        )
        for start in range(0, len(pcm), _BLOCK_BYTES):
            yield types.StreamingRecognizeRequest(audio=pcm[start : start + _BLOCK_BYTES])


def _recognition(finals: Sequence[Any], language: str) -> Recognition:
    """The results as one text. Later ones may or may not begin with the space between them."""
    text = ""
    confidences = []
    for result in finals:
        best = result.alternatives[0]
        joint = "" if language in _SPACELESS else " "
        text = joint.join(filter(None, (text, best.transcript.strip())))
        if best.confidence > 0:  # zero says that there is none
            confidences.append(float(best.confidence))
    confidence = sum(confidences) / len(confidences) if confidences else None
    return Recognition(text, language, evidence=Evidence(confidence=confidence))
