"""Google's streaming recognition (version 2), through the package `google-cloud-speech`."""

import json
from importlib import import_module
from pathlib import Path
from typing import Any, Iterator

from ..audio import RECOGNITION_RATE, Samples, encode_pcm
from ..languages import AUTO, locale, short
from . import Recogniser, RecogniserError, Recognition

# The service takes at most 25,600 bytes of audio in one message.
_BLOCK_BYTES = 25600
_ANSWER_SECONDS = 60.0


class GoogleRecogniser(Recogniser):
    """A cloud service: needs a service account, a project and a location."""

    name = "Google Speech (gRPC)"
    parallel = 4

    def __init__(self, account: str, project: str, location: str) -> None:
        self._account = account
        self._project = project
        self._location = location or "global"

    def load(self) -> None:
        try:
            speech = import_module("google.cloud.speech_v2")
        except ImportError:
            raise RecogniserError("google-cloud-speech ist nicht installiert") from None
        project = self._project or _project_of(self._account)
        self._path = f"projects/{project}/locations/{self._location}/recognizers/_"
        host = "speech.googleapis.com"
        if self._location != "global":
            host = f"{self._location}-{host}"
        try:
            self._client = speech.SpeechClient.from_service_account_file(
                self._account, client_options={"api_endpoint": host}
            )
        except Exception as error:  # wrong keys raise the credentials package's own types
            raise RecogniserError(f"Google-Dienstkonto unbrauchbar: {error}") from error
        self._types = speech.types.cloud_speech

    def recognise(self, samples: Samples, language: str) -> Recognition:
        detect = short(language) == AUTO
        code = AUTO if detect else locale(language)
        try:
            responses = self._client.streaming_recognize(
                requests=self._requests(encode_pcm(samples), code), timeout=_ANSWER_SECONDS
            )
            finals = [
                result
                for response in responses
                for result in response.results
                if result.is_final and result.alternatives
            ]
        except Exception as error:  # whatever the transport raises
            raise RecogniserError(f"Google Speech: {error}") from error
        text = " ".join(result.alternatives[0].transcript.strip() for result in finals)
        heard = next((result.language_code for result in finals if result.language_code), code)
        return Recognition(text.strip(), short(heard if detect else code))

    def _requests(self, pcm: bytes, code: str) -> Iterator[Any]:
        types = self._types
        config = types.RecognitionConfig(
            explicit_decoding_config=types.ExplicitDecodingConfig(
                encoding=types.ExplicitDecodingConfig.AudioEncoding.LINEAR16,
                sample_rate_hertz=RECOGNITION_RATE,
                audio_channel_count=1,
            ),
            language_codes=[code],
            # Only this family of models detects languages.
            model="chirp_2" if code == AUTO else "long",
            features=types.RecognitionFeatures(enable_automatic_punctuation=True),
        )
        yield types.StreamingRecognizeRequest(
            recognizer=self._path,
            streaming_config=types.StreamingRecognitionConfig(config=config),
        )
        for start in range(0, len(pcm), _BLOCK_BYTES):
            yield types.StreamingRecognizeRequest(audio=pcm[start : start + _BLOCK_BYTES])


def _project_of(account: str) -> str:
    try:
        return str(json.loads(Path(account).read_text("utf-8"))["project_id"])
    except (OSError, ValueError, KeyError, TypeError) as error:
        raise RecogniserError(f"Google-Dienstkonto nicht lesbar: {error}") from error
