"""A chat model behind a local server with OpenAI's interface: ollama, llama.cpp, LM Studio, vLLM."""

import time
from typing import Any

from ..notices import notice
from . import Passage, Translator, TranslatorError, one_line
from .chat_answer import cleaned, said, without_thoughts
from .chat_judgement import is_refusal, is_too_long
from .chat_request import translation_request
from .chat_server import ChatServer
from .local_http import said_error

# For one passage once the model is loaded, with all that is asked again.
_ANSWER_SECONDS = 10.0


def chat_key(address: str) -> tuple[object, ...]:
    """The key of every translator at an address, whatever its model."""
    return ("chat", address)


class ChatTranslator(Translator):
    """Any pair of languages. While its model loads, `translate` fails soon with a passing error."""

    def __init__(self, server: ChatServer, source: str, target: str) -> None:
        self._server = server
        self._source = source
        self._target = target
        self.key = chat_key(server.place.address)

    @property
    def name(self) -> str:  # type: ignore[override]
        """The model's; it changes when the model is replaced."""
        return self._server.shown

    def warm_up(self) -> None:
        self._server.warm_up()

    def translate(self, passage: Passage) -> str:
        end = time.monotonic() + _ANSWER_SECONDS
        while True:
            record = self._server.ask(
                lambda asked: translation_request(asked, self._source, self._target, passage),
                end - time.monotonic(),
            )
            if not self._lacked_room(record, passage.text):
                return self._translation(record, one_line(passage.text))

    def _lacked_room(self, record: Any, text: str) -> bool:
        """Whether thoughts took the room of the translation, for the first time: then the model is
        asked again with more."""
        answer = said(record)
        if answer is None or not (answer.cut and answer.thought):
            return False
        return self._server.note_thoughts()

    def _translation(self, record: Any, text: str) -> str:
        answer = said(record)
        if answer is None:
            reason = said_error(record)
            if reason:
                raise self._failure("translation.failed", reason=reason[:300])
            raise self._failure("translation.unreadable")
        if not without_thoughts(answer.content, text).strip():
            code = "translation.only_thoughts" if answer.thought else "translation.empty"
            raise self._failure(code)
        if answer.cut:
            raise self._failure("translation.cut")
        translated = cleaned(answer.content, text)
        if not translated:
            raise self._failure("translation.empty")
        if is_refusal(translated, text, self._source, self._target):
            raise self._failure("translation.declined")
        if is_too_long(translated, text):
            raise self._failure("translation.too_long")
        return translated

    def _failure(self, code: str, **parameters: str) -> TranslatorError:
        return TranslatorError(notice(code, translator=self.name, **parameters), is_of_text=True)
