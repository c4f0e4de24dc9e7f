"""What both packages of Whisper have in common as engines: choosing a model, languages, failures."""

from abc import abstractmethod
from importlib import import_module
from typing import Any, Optional

from ..languages import AUTO, short
from ..notices import Notice, Parameter, notice
from . import Recogniser, RecogniserError, Recognition, Utterance
from . import whisper_models as models
from .whisper_languages import ENGLISH, is_english_only, language_refusal, whisper_code
from .whisper_models import Installed

# After an error that speaks of one of these, the processor that the model is on cannot go on.
_RUINED = ("cuda", "cudnn", "cublas", "out of memory")


class WhisperEngine(Recogniser):
    """One package with one model. A model is not for two threads at once.

    A model that is not on this machine is not fetched: the nearest smaller one serves, and `remarks`
    say so.
    """

    package: str
    title: str
    # Every sound is filled up to a window of 30 s, so a long one costs little more than a short one.
    joins_seconds: float = 28.0

    def __init__(self, model: str, *, words: bool) -> None:
        self._wanted = model
        self._words = words
        self._model_name = models.full_name(model) or model
        self.name = f"{self.title} ({model})"
        self._model: Any = None

    def load(self) -> None:
        wanted = models.full_name(self._wanted)
        if wanted is None or not models.knows(self.package, wanted):
            raise self._error("recognition.model_unknown", model=self._wanted)
        package = self._import()
        found = models.nearest(self.package, wanted)
        usable = next((one for one in found if models.is_whole(one)), None)
        is_there = found[:1] != [] and found[0].model == wanted
        lack = "recognition.model_damaged" if is_there else "recognition.model_missing"
        if usable is None:
            raise self._error(lack, model=self._wanted)
        try:
            self._model = self._open(package, usable)
        except Exception as error:  # the packages let everything through
            raise self._error("recognition.not_loaded", reason=_reason(error)) from error
        self._model_name = usable.model
        self.only_language = ENGLISH if is_english_only(usable.model) else None
        if usable.model != wanted:
            self.name = f"{self.title} ({usable.model})"
            self.remarks = (
                self._notice(lack, model=self._wanted),
                self._notice("recognition.model_replaced", model=self._wanted, used=usable.model),
            )

    def refusal(self, language: str) -> Optional[Notice]:
        return language_refusal(language, self._model_name, self.name)

    def recognise(self, utterance: Utterance) -> Recognition:
        if (refused := self.refusal(utterance.language)) is not None:
            raise RecogniserError(refused, is_passing=True)
        wanted = None
        if self.only_language is not None:
            wanted = self.only_language
        elif short(utterance.language) != AUTO:
            wanted = whisper_code(utterance.language, self._model_name)
        try:
            return self._transcribe(utterance, wanted)
        except Exception as error:  # the packages let everything through
            reason = _reason(error)
            is_ruined = any(word in reason.lower() for word in _RUINED)
            raise self._error(
                "recognition.failed", reason=reason, is_passing=not is_ruined
            ) from error

    def close(self) -> None:
        self._model = None

    @abstractmethod
    def _open(self, package: Any, installed: Installed) -> Any:
        """Loads the model, without any traffic."""

    @abstractmethod
    def _transcribe(self, utterance: Utterance, language: Optional[str]) -> Recognition:
        """Does the work; detects the language where it is none. May raise anything."""

    def _import(self) -> Any:
        try:
            return import_module(self.package)
        except ModuleNotFoundError as error:
            if error.name == self.package:
                raise RecogniserError(
                    notice("recognition.not_installed", engine=self.title)
                ) from None
            raise self._error("recognition.not_loaded", reason=_reason(error)) from error
        except Exception as error:  # what the package is built on lets everything through
            raise self._error("recognition.not_loaded", reason=_reason(error)) from error

    def _notice(self, code: str, **parameters: Parameter) -> Notice:
        return notice(code, engine=self.title, **parameters)

    def _error(
        self, code: str, *, is_passing: bool = False, **parameters: Parameter
    ) -> RecogniserError:
        return RecogniserError(self._notice(code, **parameters), is_passing=is_passing)


def _reason(error: BaseException) -> str:
    lines = str(error).strip().splitlines()
    return lines[0][:200] if lines else type(error).__name__
