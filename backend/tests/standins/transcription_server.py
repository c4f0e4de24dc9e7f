"""A server of `POST /v1/audio/transcriptions` in five flavours, as FLAVOURS names them."""

import re
import threading
from contextlib import nullcontext
from dataclasses import dataclass, replace
from typing import Any, Optional, Sequence

from . import _http
from ._http import HttpStandIn, Reply, Request, json_reply, text_reply
from ._multipart import BadForm, File, Form, read_form
from ._transcription_flavours import FLAVOURS, FORMATS
from ._wav import RATE, BadSound, Hearing, Samples, describe, is_silent, raw_samples, samples_of

_WAV_TYPES = ("audio/wav", "audio/x-wav", "audio/wave", "audio/vnd.wave")
_UPLOADS = 25 << 20  # Of the one server that says 413.


class _Refused(Exception):
    """Carries the answer."""

    def __init__(self, reply: Reply) -> None:
        super().__init__(reply.status)
        self.reply = reply


@dataclass(frozen=True)
class Upload:
    """A call that was understood."""

    fields: dict[str, str]
    file: File
    samples: Samples


class TranscriptionServer(HttpStandIn):
    """`uploads` holds what was understood, `requests` everything, `faults` what was unwise.

    `loading` so many calls and looks at the health get 503. `hear` says what is heard; `on_silence`
    is heard instead where nobody speaks.
    """

    def __init__(
        self,
        flavour: str = "speaches",
        *,
        hear: Hearing = describe,
        on_silence: Optional[str] = None,
        models: Sequence[str] = ("Systran/faster-whisper-small",),
        key: Optional[str] = None,
        path: Optional[str] = None,
        loading: int = 0,
        retry_after: Optional[str] = "1",
        verbose: bool = True,
        plain_errors: bool = False,
        hidden_errors: bool = False,
        **options: Any,
    ) -> None:
        super().__init__(**options)
        self.flavour = FLAVOURS[flavour]
        self.uploads: list[Upload] = []
        self.loading = loading
        self.models = list(models)
        self._key = key
        self._path = path or self.flavour.path
        self._hear = hear
        self._on_silence = on_silence
        self._retry_after = retry_after
        self._formats = FORMATS if verbose else tuple(f for f in FORMATS if f != "verbose_json")
        self._plain_errors = plain_errors
        self._hidden_errors = hidden_errors
        self._loaded: set[str] = set()
        self._one = threading.Lock() if self.flavour.one_at_a_time else nullcontext()

    def answer(self, request: Request) -> Reply:
        try:
            return self._route(request)
        except _Refused as refused:
            return refused.reply

    def _route(self, request: Request) -> Reply:
        route = (request.method, request.path)
        if route == ("GET", "/health"):
            told = self.flavour.name != "speaches" and self._is_loading()
            return self.flavour.health(told) or self._unknown(request)
        if route == ("POST", self._path):
            return self._transcription(request)
        if route == ("GET", "/v1/models") and self.flavour.has_models:
            self._check_key(request)
            return self.flavour.models(self.models)
        if request.method == "POST" and self.flavour.name == "speaches":
            return self._model_call(request)
        if route == ("POST", "/load") and self.flavour.name == "whisper_cpp":
            return text_reply("Load was successful!")
        return self._unknown(request)

    def _unknown(self, request: Request) -> Reply:
        if self.flavour.name == "whisper_cpp":
            return text_reply(f"File Not Found ({request.path})", 404)
        return self.flavour.error(404, "Not Found")

    def _transcription(self, request: Request) -> Reply:
        self._check_key(request)
        if self._is_loading():
            again = () if self._retry_after is None else (("Retry-After", self._retry_after),)
            raise _Refused(replace(self.flavour.loading(), headers=again))
        return self.planned(lambda: self._honest(request), self._one)

    def _honest(self, request: Request) -> Reply:
        upload = self._understood(request)
        with self._changed:
            self.uploads.append(upload)
            self._changed.notify_all()
        segments = self._segments(upload.samples)
        if upload.fields.get("stream") == "true":
            return self.flavour.stream(segments)
        form = upload.fields.get("response_format", "json")
        seconds = len(upload.samples) / RATE
        return self.flavour.reply(form, segments, seconds, upload.fields.get("language", ""))

    def _segments(self, samples: Samples) -> list[str]:
        if self._on_silence is not None and is_silent(samples):
            return self._on_silence.splitlines()
        return self._hear(samples).splitlines()

    def _understood(self, request: Request) -> Upload:
        form = self._form(request)
        file = form.files.get("file")
        if file is None or not file.name:
            raise self._refusal(self.flavour.bad_field, self.flavour.missing_file())
        self._check_model(form.fields.get("model"))
        self._check_fields(form.fields)
        return Upload(form.fields, file, self._samples(file))

    def _form(self, request: Request) -> Form:
        if self.flavour.name == "whisperlivekit" and len(request.body) > _UPLOADS:
            raise self._refusal(413, "the file is too large")
        try:
            return read_form(request.headers.get("Content-Type"), request.body)
        except BadForm as error:
            raise self._refusal(400, f"There was an error parsing the body: {error}") from None

    def _samples(self, file: File) -> Samples:
        kind = (file.content_type or "").lower()
        if not file.content:
            raise self._refusal(400, self.flavour.unreadable("the file is empty"))
        try:
            if kind in self.flavour.raw_types:
                return raw_samples(file.content)
            if kind not in _WAV_TYPES:
                raise BadSound(f"{kind or 'nothing'} is no content type of a WAV file")
            if not file.name.lower().endswith(".wav"):
                self.fault("a WAV file that is not named so")
            return samples_of(file.content)
        except BadSound as error:
            text = self.flavour.unreadable(str(error))
            raise self._refusal(self.flavour.bad_sound, text) from None

    def _check_key(self, request: Request) -> None:
        status = self.flavour.key_refusal
        if self._key is None or status is None or request.bearer() == self._key:
            return
        if self._hidden_errors:
            raise _Refused(Reply(status))
        raise self._refusal(status, "Not authenticated")

    def _check_model(self, model: Optional[str]) -> None:
        if not model:
            if self.flavour.needs_model:
                raise self._refusal(self.flavour.needs_model, "model: Field required")
        elif self.flavour.checks_model and model not in self.models:
            raise self._refusal(404, self.flavour.missing_model(model))

    def _check_fields(self, fields: dict[str, str]) -> None:
        form = fields.get("response_format", "json")
        if form not in self._formats:
            raise self._refusal(400, f"response_format: {form} is not supported")
        if not re.fullmatch(r"[a-z]{2,3}", fields.get("language", "en")):
            if not (self.flavour.name == "whisper_cpp" and fields["language"] == "auto"):
                raise self._refusal(self.flavour.bad_field, "language: Input should be a code")
        if not re.fullmatch(r"\d+(\.\d+)?", fields.get("temperature", "0")):
            raise self._refusal(self.flavour.bad_field, "temperature: Input should be a number")
        if self.flavour.name == "whisper_cpp" and form == "verbose_json":
            if fields.get("no_language_probabilities") != "true":
                self.fault("a second pass for the probabilities of languages")

    def _refusal(self, status: int, text: str) -> _Refused:
        if self._plain_errors and status == 400:
            return _Refused(text_reply(text, 400))
        return _Refused(self.flavour.error(status, text))

    def _is_loading(self) -> bool:
        with self._changed:
            self.loading -= 1
            return self.loading >= 0

    def _model_call(self, request: Request) -> Reply:
        """Downloads a model, or loads it."""
        self._check_key(request)
        found = re.fullmatch(r"/(v1/models|api/ps)/(.+)", request.path)
        if not found:
            return self._unknown(request)
        name = found[2]
        if found[1] == "v1/models":
            status = 200 if name in self.models else 201
            self.models += [name] * (status == 201)
            return text_reply(f"Model '{name}' is there", status)
        if name not in self.models:
            raise self._refusal(404, self.flavour.missing_model(name))
        status = 409 if name in self._loaded else 201
        self._loaded.add(name)
        return json_reply({"detail": f"Model '{name}' is loaded"}, status)


def main() -> None:
    parser = _http.options(str(__doc__))
    parser.add_argument("--flavour", choices=sorted(FLAVOURS), default="speaches")
    parser.add_argument("--model", action="append", help="an installed model; more than once")
    parser.add_argument("--path", help="answer there")
    parser.add_argument("--text", help="what is heard, whatever comes")
    parser.add_argument("--on-silence", help="what is heard in silence")
    parser.add_argument("--loading", type=int, default=0, help="calls that get 503 at first")
    parser.add_argument("--hold", type=int, default=0, help="calls that wait for `release`")
    given = parser.parse_args()
    stand_in = TranscriptionServer(
        given.flavour, key=given.key, path=given.path, loading=given.loading, port=given.port,
        hear=describe if given.text is None else lambda samples: str(given.text),
        on_silence=given.on_silence, plan=[_http.Turn(hold=True)] * given.hold,
        models=given.model or ("Systran/faster-whisper-small",),
    )  # fmt: skip
    _http.run(stand_in, given.log)


if __name__ == "__main__":
    main()
