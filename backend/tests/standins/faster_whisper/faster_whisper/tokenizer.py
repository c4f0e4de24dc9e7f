"""Languages as the tokenizer knows them: codes alone, names are refused."""

from typing import Optional

from standin_languages import LANGUAGES

_LANGUAGE_CODES = tuple(LANGUAGES)
_TASKS = ("transcribe", "translate")


def check_language(multilingual: bool, language: Optional[str], task: Optional[str]) -> None:
    """A model that knows English only has no languages to refuse."""
    if not multilingual:
        return
    if task not in _TASKS:
        raise ValueError(f"'{task}' is not a valid task (accepted tasks: {', '.join(_TASKS)})")
    if language not in _LANGUAGE_CODES:
        raise ValueError(
            f"'{language}' is not a valid language code"
            f" (accepted language codes: {', '.join(_LANGUAGE_CODES)})"
        )
