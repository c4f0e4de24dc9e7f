"""Which sessions AssemblyAI takes: what it checks of a query, and what is wrong with it."""

import dataclasses
import json
from collections.abc import Callable, Mapping
from typing import Any

from tests.cloud_services._speech import LEAST_PAUSE, LINEAR16, MULAW, Coding

ENGLISH = 'universal-streaming-english'
MULTILINGUAL = 'universal-streaming-multilingual'
WHISPER = 'whisper-rt'
SIX = frozenset('en es fr de it pt'.split())
U3_LANGUAGES: Mapping[str, frozenset[str] | None] = {
    'u3-rt-pro': SIX,
    'universal-3-5-pro': frozenset(
        'en es de fr pt it tr nl sv no da fi hi vi ar he ja ur zh'.split()
    ),
    'universal-3-6-pro': None,  # Thirty-two, which ones is not published.
}
MODELS = frozenset({ENGLISH, MULTILINGUAL, WHISPER, *U3_LANGUAGES})

CODINGS: dict[str, Coding] = {'pcm_s16le': LINEAR16, 'pcm_mulaw': MULAW}
ENCODINGS = frozenset(CODINGS) | {'opus', 'ogg_opus', 'aac'}


class Invalid(Exception):
    """Something the service cannot use; the text says what."""


def _one_of(known: frozenset[str]) -> Callable[[str], str]:
    def check(text: str) -> str:
        if text not in known:
            raise Invalid(f'{text!r} is not known')
        return text

    return check


def _between(least: float, most: float, kind: Callable[[str], Any]) -> Callable[[str], Any]:
    def check(text: str) -> Any:
        try:
            value = kind(text)
        except ValueError as error:
            raise Invalid(f'{text!r} is no number') from error
        if not least <= value <= most:
            raise Invalid(f'{text} is not from {least} to {most}')
        return value

    return check


def _flag(text: str) -> bool:
    if text not in ('true', 'false'):
        raise Invalid(f'{text!r} is neither true nor false')
    return text == 'true'


def _list_of(most: int) -> Callable[[str], tuple[str, ...]]:
    def check(text: str) -> tuple[str, ...]:
        try:
            values = json.loads(text)
        except ValueError as error:
            raise Invalid(f'{text!r} is no JSON') from error
        if not isinstance(values, list) or not all(isinstance(one, str) for one in values):
            raise Invalid('a list of texts is wanted')
        if len(values) > most:
            raise Invalid(f'more than {most} entries')
        return tuple(values)

    return check


_ANY = float('inf')
CHECKS: dict[str, Callable[[str], Any]] = {
    'sample_rate': _between(1, _ANY, int),
    'encoding': _one_of(ENCODINGS),
    'speech_model': _one_of(MODELS),
    'language': _one_of(frozenset({'en', 'multi'})),
    'keyterms_prompt': _list_of(100),
    'language_codes': _list_of(100),
    'prompt': str,
    'token': str,
    'inactivity_timeout': _between(5, 3600, float),
    'end_of_turn_confidence_threshold': _between(0, 1, float),
    'vad_threshold': _between(0, 1, float),
    'min_turn_silence': _between(0, _ANY, int),
    'max_turn_silence': _between(0, _ANY, int),
    'max_speakers': _between(1, _ANY, int),
}
FLAGS = (
    'format_turns language_detection speaker_labels filter_profanity include_partial_turns'
    ' continuous_partials session_heartbeat'
).split()
CHECKS |= dict.fromkeys(FLAGS, _flag)


@dataclasses.dataclass(frozen=True)
class Wishes:
    """What was asked for, by the query's names, and by updates of it later."""

    given: Mapping[str, Any]

    def updated(self, texts: Mapping[str, str]) -> 'Wishes':
        """With these wishes, too; raises Invalid."""
        values = dict(self.given)
        for name in texts.keys() & CHECKS.keys():
            try:
                values[name] = CHECKS[name](texts[name])
            except Invalid as error:
                raise Invalid(f'{name}: {error}') from error
        return Wishes(values)

    def flag(self, name: str) -> bool:
        return bool(self.given.get(name, False))

    @property
    def model(self) -> str:
        if 'speech_model' in self.given:
            return str(self.given['speech_model'])
        return MULTILINGUAL if self.given.get('language') == 'multi' else ENGLISH

    @property
    def is_u3(self) -> bool:
        return self.model in U3_LANGUAGES

    @property
    def pause(self) -> float:
        """Seconds of silence that end a turn: all turns here sound as if they were over."""
        own = self.given.get('min_turn_silence', 100 if self.is_u3 else 400)
        return max(LEAST_PAUSE, float(own) / 1000)

    @property
    def language(self) -> str:
        """What is heard where the language is to be told."""
        codes = self.given.get('language_codes')
        return str(codes[0]) if codes else 'en'

    def check(self) -> None:
        """Whether it fits together; raises Invalid."""
        if self.given.get('encoding', 'pcm_s16le') in CODINGS and 'sample_rate' not in self.given:
            raise Invalid('sample_rate is missing')
        known = U3_LANGUAGES.get(self.model)
        if known and not known.issuperset(self.given.get('language_codes', ())):
            raise Invalid(f'language_codes: not all of them are of {self.model}')
        for code in self.given.get('language_codes', ()):
            if len(code) != 2 or not (code.isascii() and code.islower()):
                raise Invalid(f'language_codes: {code!r} has not two letters')

    def misuses(self, names: list[str]) -> list[str]:
        """What the service puts up with, though it should not be asked for so."""
        found = [f'unknown parameter {name}' for name in names if name not in CHECKS]
        if 'speech_model' not in self.given:
            found.append('no speech_model')
        if 'language' in self.given:
            found.append('language is deprecated')
        only_u3 = {'prompt', 'language_codes'} & self.given.keys()
        if not self.is_u3:
            found += [f'{name} is for u3 models' for name in sorted(only_u3)]
        return found
