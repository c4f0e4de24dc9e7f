"""A recogniser behind `POST /v1/audio/transcriptions`, or whisper.cpp's own path."""

import threading
from typing import Callable, Mapping
from uuid import uuid4

from ...audio import RECOGNITION_RATE
from ...languages import AUTO, canonical, short
from .. import RecogniserError, Recognition, Utterance
from . import failure
from .answers import Unreadable, error_text, read_json, transcription
from .greeting import HEALTH_PATH, MODELS_PATH, Health, health, is_whisper_cpp
from .greeting import listed_models, only_speech_model, product
from .multipart import encode_form, form_type, wav
from .named import Named, NearRecogniser, Timings, turn_of
from .refusals import is_about_model, is_not_yet, refusal_error, seconds_to_wait
from .transport import Answer, Call, LateAnswer, LongAnswer, NoAnswer, ask

OPENAI_PATH = "/v1/audio/transcriptions"
NATIVE_PATH = "/inference"

_VERBOSE, _BRIEF = "verbose_json", "json"

# What may mean that the server does not know the form of the answer.
_FORM_REFUSALS = (400, 422, 501)

# Of what was said before; much more takes a model's time and its room.
_CONTEXT_CHARACTERS = 200

# A name that servers take for the model they like best, without listing it.
_ANY_MODEL = "whisper-1"


class TranscriptionsRecogniser(NearRecogniser):
    """One server is asked one thing at a time, whoever asks."""

    def __init__(self, named: Named, timings: Timings = Timings()) -> None:
        super().__init__(named, timings)
        self._turn = turn_of(named.address)
        self._closed = threading.Event()
        self._path = OPENAI_PATH
        self._form = _VERBOSE
        self._model = named.model
        self._is_native = False
        self._has_served = False

    def load(self) -> None:
        models = self._when_ready(lambda: self._get(MODELS_PATH))
        if models.status in (401, 403) or models.is_redirect:
            raise self._refused(models)
        pages: list[Answer] = []

        def look_at_health() -> Answer:
            pages[:] = [self._get(HEALTH_PATH)]
            # "Not ready" is loading, whatever status it comes with.
            return Answer(503 if health(pages[0]).is_loading else 200, b"")

        self._when_ready(look_at_health)
        told = health(pages[0])
        self._is_native = is_whisper_cpp(models, told)
        self._choose_model(models, told)
        self.greeted(product(models, pages[0]))

    def recognise(self, utterance: Utterance) -> Recognition:
        if not len(utterance.samples):
            return Recognition("", self.language_of(utterance.language, None))
        answer = self._transcribed(utterance)
        if answer.status != 200:
            raise self._refused(answer)
        try:
            heard = transcription(answer.body, len(utterance.samples) / RECOGNITION_RATE)
        except Unreadable:
            raise self._unreadable(answer) from None
        self._has_served = True
        language = self.language_of(utterance.language, heard.language)
        return Recognition(heard.text, language, evidence=heard.evidence, words=heard.words)

    def close(self) -> None:
        self._closed.set()

    def _choose_model(self, models: Answer, told: Health) -> None:
        listed = listed_models(models)
        named = self.named.model
        if not named:
            self._model = only_speech_model(listed)
            return
        # A server of one model, which recognises live, takes any name.
        if listed is None or told.is_live or named == _ANY_MODEL:
            return
        if named not in (model.name for model in listed):
            there = ", ".join(model.name for model in listed) or "keines"
            raise failure("model", self.name, model=named, reason=f"vorhanden: {there}")

    def _transcribed(self, utterance: Utterance) -> Answer:
        """The answer, in the form that tells most and that the server knows."""
        answer = self._posted_somewhere(utterance, self._form)
        if self._form == _VERBOSE and self._may_refuse_form(answer):
            shorter = self._posted_somewhere(utterance, _BRIEF)
            if shorter.status == 200:
                self._form = _BRIEF
            return shorter
        return answer

    def _may_refuse_form(self, answer: Answer) -> bool:
        if answer.status not in _FORM_REFUSALS:
            return False
        text = error_text(answer.body, answer.kind)
        if "response_format" in text or _VERBOSE in text:
            return True
        return not self._has_served and not is_about_model(text)

    def _posted_somewhere(self, utterance: Utterance, form: str) -> Answer:
        """The answer of the path that this server has, which is remembered."""
        answer = self._posted(utterance, form, self._path)
        is_unknown = answer.status == 404 and read_json(answer.body) is None
        if not is_unknown or self._path != OPENAI_PATH or answer.kind == "text/html":
            return answer
        was_native, self._is_native = self._is_native, True
        other = self._posted(utterance, form, NATIVE_PATH)
        if other.status == 404:
            self._is_native = was_native
        else:
            self._path = NATIVE_PATH
        return other

    def _posted(self, utterance: Utterance, form: str, path: str) -> Answer:
        boundary = f"orvane-{uuid4().hex}"
        body = encode_form(self._fields(utterance, form), wav(utterance.samples), boundary)
        call = Call(path, {**self._key(), "Content-Type": form_type(boundary)}, body)
        return self._when_ready(lambda: self._asked(call, self.timings.answer))

    def _fields(self, utterance: Utterance, form: str) -> dict[str, str]:
        fields = {"model": self._model, "response_format": form, "temperature": "0"}
        if short(utterance.language) != AUTO:
            # The program's code for Javanese and others is the one that Whisper has, too.
            fields["language"] = canonical(utterance.language)
        elif self._is_native:
            # Left out, it is what the server was started with, and that is English by default.
            fields["language"] = AUTO
        fields["prompt"] = _prompt(utterance.context)
        if self._is_native and form == _VERBOSE:
            # Or it listens a second time for the probabilities of all languages.
            fields["no_language_probabilities"] = "true"
        return {name: value for name, value in fields.items() if value}

    def _key(self) -> Mapping[str, str]:
        return {"Authorization": f"Bearer {self.named.key}"} if self.named.key else {}

    def _get(self, path: str) -> Answer:
        return self._asked(Call(path, self._key()), self.timings.greet)

    def _asked(self, call: Call, seconds: float) -> Answer:
        try:
            with self._turn:
                return ask(
                    self.named.address, call, connect_seconds=self.timings.connect, seconds=seconds
                )
        except LateAnswer:
            raise failure("late", self.name, seconds=round(seconds)) from None
        except LongAnswer:
            raise failure("too_long", self.name) from None
        except NoAnswer as error:
            authority = self.named.address.authority
            raise failure("silent", self.name, address=authority, reason=error) from error

    def _when_ready(self, send: Callable[[], Answer]) -> Answer:
        """The answer of a server that has its model; raises a passing error when that takes long."""
        left = self.timings.loading
        while True:
            answer = send()
            if not is_not_yet(answer):
                return answer
            pause = min(seconds_to_wait(answer, self.timings.pause), self.timings.longest_pause)
            if pause > left or self._closed.wait(pause):
                raise self._refused(answer)
            left -= pause

    def _refused(self, answer: Answer) -> RecogniserError:
        return refusal_error(self.named, self.name, self._model, answer)

    def _unreadable(self, answer: Answer) -> RecogniserError:
        """Older builds of some servers tell an error with the status of a success; and so do servers
        of other things, which have never served."""
        value = read_json(answer.body)
        if isinstance(value, dict) and ("error" in value or "detail" in value):
            reason = error_text(answer.body, answer.kind)
            return failure("refused", self.name, reason=reason, is_passing=self._has_served)
        return failure("unreadable", self.name)


def _prompt(context: str) -> str:
    """The end of what was said before, from a word's beginning where words have spaces."""
    context = " ".join(context.split())
    if len(context) <= _CONTEXT_CHARACTERS:
        return context
    end = context[-_CONTEXT_CHARACTERS:]
    return end.partition(" ")[2] or end
