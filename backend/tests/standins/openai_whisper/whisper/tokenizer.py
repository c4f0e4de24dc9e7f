"""Languages as the tokenizer knows them."""

from dataclasses import dataclass
from typing import Optional

from standin_languages import LANGUAGES as LANGUAGES
from standin_languages import TO_LANGUAGE_CODE as TO_LANGUAGE_CODE


@dataclass
class Tokenizer:
    """Knows whether the model has a token for the language."""

    num_languages: int
    language: Optional[str] = None
    task: Optional[str] = None

    def __post_init__(self) -> None:
        if self.language is not None:
            # Fails with "tuple.index(x): x not in tuple" for a language that came later.
            self.token = tuple(LANGUAGES)[: self.num_languages].index(self.language)


def get_tokenizer(
    multilingual: bool,
    *,
    num_languages: int = 99,
    language: Optional[str] = None,
    task: Optional[str] = None,
) -> Tokenizer:
    """Takes codes and names; a model that is English only has no languages."""
    if language is not None:
        language = language.lower()
        if language not in LANGUAGES:
            if language not in TO_LANGUAGE_CODE:
                raise ValueError(f"Unsupported language: {language}")
            language = TO_LANGUAGE_CODE[language]
    if not multilingual:
        return Tokenizer(num_languages)
    return Tokenizer(num_languages, language or "en", task or "transcribe")
