"""Which streams Deepgram takes: what its handshake checks, and how it refuses."""

import dataclasses
from collections.abc import Callable

from tests.cloud_services._speech import LINEAR16, MULAW, Coding
from tests.cloud_services._websocket import Handshake

NOVA_2 = frozenset(
    'multi bg ca zh zh-CN zh-Hans zh-TW zh-Hant zh-HK cs da da-DK nl en en-US en-AU en-GB en-NZ en-IN'
    ' et fi nl-BE fr fr-CA de de-CH el hi hu id it ja ko ko-KR lv lt ms no pl pt pt-BR pt-PT ro ru'
    ' sk es es-419 sv sv-SE th th-TH tr uk vi'.split()
)
# Arabic is listed for several languages in one stream only; Malayalam and Odia are refused.
NOVA_3 = frozenset(
    'multi en en-US en-AU en-GB en-NZ en-IN de nl sv da es es-419 fr fr-CA pt pt-BR pt-PT it tr no id'
    ' bg cs fi hi hu ja ko pl ru uk vi ca et nl-BE de-CH el lv lt ms ro sk be bn bs hr kn mk mr sr sl'
    ' ta te tl he fa ur zh-HK th zh zh-CN zh-Hans zh-TW zh-Hant gu pa ne kk af hy ka'.split()
)
LANGUAGES = {'nova-2': NOVA_2, 'nova-3': NOVA_3}

HINTS = frozenset(
    'af ar be bg bn bs ca cs da de el en en-US en-AU en-GB en-NZ en-IN es et fa fi fr gl gu he hi hr hu'
    ' id it ja kn ko lt lv mk mr ms nl no pl pt ro ru sk sl sr sv ta te th tl tr uk vi xh zu'
    ' zh zh-CN zh-Hans zh-TW zh-Hant zh-HK'.split()
)

ENCODINGS = frozenset(
    'linear16 linear32 flac alaw mulaw amr-nb amr-wb opus ogg-opus speex g729'.split()
)
CODINGS: dict[str, Coding] = {'linear16': LINEAR16, 'mulaw': MULAW}

FLAGS = frozenset(
    'interim_results punctuate smart_format numerals profanity_filter diarize multichannel vad_events'
    ' detect_entities dictation mip_opt_out'.split()
)
NUMBERS = frozenset('channels sample_rate utterance_end_ms'.split())
SINGLE = FLAGS | NUMBERS | {'model', 'language', 'encoding', 'endpointing', 'version', 'callback'}
LISTS = frozenset('keyterm keywords search replace redact tag extra language_hint'.split())
KNOWN = SINGLE | LISTS


class Refusal(Exception):
    """A handshake that the service refuses."""

    def __init__(self, status: int, code: str, message: str) -> None:
        super().__init__(message)
        self.status = status
        self.code = code
        self.message = message


class NotHere(Refusal):
    """What the service takes and the stand-in does not carry out."""

    def __init__(self, what: str) -> None:
        super().__init__(501, 'NOT_IN_THE_STAND_IN', f'this stand-in has no {what}')


def bad_query(why: str) -> Refusal:
    why = f'Failed to deserialize query parameters: {why}'
    return Refusal(400, 'INVALID_QUERY_PARAMETER', why)


def no_such_model() -> Refusal:
    why = 'Bad Request: No such model/language/tier combination found.'
    return Refusal(400, 'Bad Request', why)


@dataclasses.dataclass(frozen=True)
class Stream:
    """What was asked for. Times in seconds; None for what there shall not be."""

    model: str
    language: str
    hints: tuple[str, ...]
    coding: Coding | None  # None: a container, which says it by itself.
    rate: int
    channels: int
    endpointing: float | None
    utterance_end: float | None
    flags: frozenset[str]
    misuses: tuple[str, ...]

    @property
    def punctuated(self) -> bool:
        return bool(self.flags & {'punctuate', 'smart_format'})


def _number(name: str, text: str) -> int:
    if not (text.isascii() and text.isdigit()):
        raise bad_query(f'{name}: invalid digit found in string')
    return int(text)


def _single(handshake: Handshake) -> dict[str, str]:
    values: dict[str, str] = {}
    for name, value in handshake.query:
        if name in SINGLE and name in values:
            raise bad_query(f'duplicate field `{name}`')
        values[name] = value
    return values


def _flags(values: dict[str, str]) -> frozenset[str]:
    for name in FLAGS & values.keys():
        if values[name] not in ('true', 'false'):
            raise bad_query(f'{name}: provided string was not `true` or `false`')
    return frozenset(name for name in FLAGS if values.get(name) == 'true')


def _coding(values: dict[str, str]) -> Coding | None:
    encoding = values.get('encoding')
    if (encoding is None) != ('sample_rate' not in values):
        raise bad_query('`encoding` and `sample_rate` must be given together')
    if encoding is None:
        return None
    if encoding not in ENCODINGS:
        raise bad_query(f'encoding: unknown variant `{encoding}`')
    if encoding not in CODINGS:
        raise NotHere(f'decoder for {encoding}')
    return CODINGS[encoding]


def _endpointing(values: dict[str, str]) -> float | None:
    text = values.get('endpointing', '10')
    return None if text == 'false' else _number('endpointing', text) / 1000


def _check_language(values: dict[str, str], lists: dict[str, list[str]]) -> None:
    model, language = values.get('model'), values.get('language', 'en')
    if model is None:
        if not language.startswith('en'):
            raise no_such_model()
    elif language not in LANGUAGES.get(model, ()):
        raise no_such_model()
    if not HINTS.issuperset(lists.get('language_hint', ())):
        raise no_such_model()


def _check_words(values: dict[str, str], lists: dict[str, list[str]]) -> None:
    if 'keyterm' in lists and values.get('model') != 'nova-3':
        raise bad_query('keyterm: only for nova-3')
    if 'keywords' in lists and values.get('model') == 'nova-3':
        raise bad_query('keywords: not for nova-3, which takes keyterm')


MISUSES: tuple[tuple[str, Callable[[dict[str, str], dict[str, list[str]]], bool]], ...] = (
    ('no model', lambda values, lists: 'model' not in values),
    (
        'utterance_end_ms below 1000',
        lambda values, lists: int(values.get('utterance_end_ms', 1000)) < 1000,
    ),
    (
        'language_hint without language=multi of nova-3',
        lambda values, lists: 'language_hint' in lists
        and (values.get('model'), values.get('language')) != ('nova-3', 'multi'),
    ),
)


def read(handshake: Handshake) -> Stream:
    """What a client asked for; raises what it is refused with."""
    values = _single(handshake)
    lists: dict[str, list[str]] = {}
    for name, value in handshake.query:
        if name in LISTS:
            lists.setdefault(name, []).append(value)
    if 'detect_language' in values:
        why = 'Bad Request: detect_language is for recorded audio only.'
        raise Refusal(400, 'Bad Request', why)
    flags = _flags(values)
    coding = _coding(values)
    numbers = {name: _number(name, values[name]) for name in NUMBERS & values.keys()}
    if 0 in (numbers.get('channels'), numbers.get('sample_rate')):
        raise bad_query('channels and sample_rate begin with 1')
    if 'utterance_end_ms' in numbers and 'interim_results' not in flags:
        raise bad_query('utterance_end_ms needs interim_results=true')
    endpointing = _endpointing(values)
    _check_language(values, lists)
    _check_words(values, lists)
    if 'multichannel' in flags:
        raise NotHere('multichannel')
    end = numbers.get('utterance_end_ms')
    unknown = sorted({name for name, _ in handshake.query} - KNOWN)
    return Stream(
        values.get('model', 'general'),
        values.get('language', 'en'),
        tuple(lists.get('language_hint', ())),
        coding,
        numbers.get('sample_rate', 0),
        numbers.get('channels', 1),
        endpointing,
        None if end is None else max(1000, end) / 1000,
        flags,
        tuple(what for what, is_so in MISUSES if is_so(values, lists))
        + tuple(f'unknown parameter {name}' for name in unknown),
    )
