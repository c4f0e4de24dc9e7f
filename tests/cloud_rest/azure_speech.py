"""A stand-in for Azure's speech recognition of short audio.

  python3 -m tests.cloud_rest.azure_speech [--region REGION] [--key KEY] ... (see --help)
"""

from __future__ import annotations

import ipaddress
import time
from typing import Callable

from .languages import AZURE_REGIONS, AZURE_SPEECH
from .messages import Answer, Checks, Request, json_answer, plain_answer
from .program import common_options, hears, run
from .service import Service
from .sound import PCM, NotSound, Stretch, find_voice, read_wave, samples_of, voiced

PATH = '/speech/recognition/conversation/cognitiveservices/v1'
TOKEN_PATH = '/sts/v1.0/issueToken'
TOKEN_LIFE = 600
LONGEST = 60
RATE = 16000
TICKS = 10_000_000

# The paths and parameters with which the speech host would be asked for a translation.
TRANSLATION_WORDS = ('translat', '/universal/')
TRANSLATION_PARAMETERS = {'to', 'from', 'target', 'targetlanguage', 'translate'}

DENIED = (
    'Access denied due to invalid subscription key or wrong API endpoint. Make sure to provide a valid '
    'key for an active subscription and use a correct regional API endpoint for your resource.'
)


def error(status: int, message: str) -> Answer:
    return json_answer(status, {'error': {'code': str(status), 'message': message}})


def region_of(host: str | None) -> str | None:
    """What the host's name says of the region; an address or a bare name says nothing."""
    name = (host or '').rsplit(':', 1)[0].lower()
    try:
        ipaddress.ip_address(name.strip('[]'))
        return None
    except ValueError:
        return name.split('.')[0] if '.' in name else None


def asks_for_translation(request: Request) -> bool:
    path = request.path.lower()
    names = {name.lower() for name in request.query}
    return any(word in path for word in TRANSLATION_WORDS) or bool(names & TRANSLATION_PARAMETERS)


def status_only(status: str) -> Callable[..., Answer]:
    def make(service: AzureSpeech, request: Request, checks: Checks) -> Answer:
        return service.without_text(status, float(checks.facts.get('audio', 0)))

    return make


def failing(status: int, message: str) -> Callable[..., Answer]:
    return lambda service, request, checks: error(status, message)


class AzureSpeech(Service):
    """Azure's short-audio recognition: one WAV file in, one text out."""

    FAULTS = {
        'bad-request': failing(400, 'The request is not valid.'),
        'invalid-key': failing(401, DENIED),
        'wrong-region': failing(401, DENIED),
        'quota': failing(403, 'Out of call volume quota.'),
        'region-rule': lambda service, request, checks: plain_answer(403, 'Forbidden'),
        'too-many': failing(429, 'Too many requests. Please try again later.'),
        'server-error': failing(500, 'An internal error has occurred.'),
        'unavailable': lambda service, request, checks: plain_answer(503, 'Service Unavailable'),
        'no-match': status_only('NoMatch'),
        'initial-silence': status_only('InitialSilenceTimeout'),
        'babble': status_only('BabbleTimeout'),
        'error': status_only('Error'),
        'end-of-dictation': status_only('EndOfDictation'),
        'status-too-many': status_only('TooManyRequests'),
        'status-bad-request': status_only('BadRequest'),
        'status-forbidden': status_only('Forbidden'),
    }
    SPARED = (TOKEN_PATH,)

    def __init__(
        self,
        region: str = 'westeurope',
        clock: Callable[[], float] = time.monotonic,
        **settings,
    ) -> None:
        """The region is the key's own, and that of a host whose name says none."""
        super().__init__(**settings)
        if region not in AZURE_REGIONS:
            raise ValueError(f'no region: {region}')
        self.region = region
        self._clock = clock
        self._tokens: dict[str, float] = {}

    def admit(self, request: Request, checks: Checks) -> Callable[[], Answer]:
        checks.require(
            'no-translation', not asks_for_translation(request), plain_answer(404, 'Not Found')
        )
        checks.require('path', request.path in (PATH, TOKEN_PATH), plain_answer(404, 'Not Found'))
        checks.require(
            'method',
            request.method == 'POST',
            plain_answer(405, 'Method Not Allowed').with_header('Allow', 'POST'),
        )
        if request.path == TOKEN_PATH:
            self._check_credential(request, checks, token_too=False)
            return self._issue_token
        self._check_credential(request, checks)
        form = self._check_query(request, checks)
        self._check_headers(request, checks)
        samples = self._check_sound(request, checks)
        stretches = find_voice(samples, RATE)
        duration = len(samples) / RATE
        checks.facts.update(
            audio=round(duration, 4), voice=round(voiced(stretches), 4), stretches=len(stretches)
        )
        return lambda: self._recognise(checks, stretches, duration, form)

    # What is refused.

    def _check_credential(self, request: Request, checks: Checks, token_too: bool = True) -> None:
        key = request.header('Ocp-Apim-Subscription-Key')
        bearer = request.header('Authorization') if token_too and key is None else None
        checks.require('credential', key or bearer, error(403, 'No subscription key or token.'))
        if key is not None:
            checks.require('key', self.key in (None, key), error(401, DENIED))
        else:
            scheme, _, token = bearer.partition(' ')
            end = self._tokens.get(token.strip())
            checks.require(
                'token', scheme.lower() == 'bearer' and end is not None, error(401, DENIED)
            )
            checks.require('token-age', self._clock() < end, error(401, DENIED))
        region = region_of(request.header('Host')) or self.region
        checks.facts['region'] = region
        checks.require('region', region == self.region, error(401, DENIED))

    def _check_query(self, request: Request, checks: Checks) -> str:
        query = request.query
        language = request.one('language')
        checks.require('language-given', language, error(400, 'The language is missing.'))
        checks.facts['language'] = language
        checks.require(
            'language', language in AZURE_SPEECH, error(400, f'Unsupported language: {language}')
        )
        form = request.one('format') if 'format' in query else 'simple'
        checks.require(
            'format', form in ('simple', 'detailed'), error(400, 'The format is not valid.')
        )
        profanity = request.one('profanity') if 'profanity' in query else 'masked'
        checks.require(
            'profanity',
            profanity in ('masked', 'removed', 'raw'),
            error(400, 'The profanity option is not valid.'),
        )
        checks.facts['surplus'] = sorted(set(query) - {'language', 'format', 'profanity'})
        return form

    def _check_headers(self, request: Request, checks: Checks) -> None:
        accept = request.header('Accept')
        checks.require(
            'accept',
            accept is None or 'application/json' in accept.lower() or '*/*' in accept,
            error(400, 'Only application/json can be answered.'),
        )
        media, parameters = request.content_type()
        opus = (media, parameters) == ('audio/ogg', {'codecs': 'opus'})
        checks.require(
            'stand-in-can-decode', not opus, plain_answer(501, 'This stand-in decodes no Opus.')
        )
        checks.require(
            'content-type',
            media == 'audio/wav' and parameters == {'codecs': 'audio/pcm', 'samplerate': str(RATE)},
            error(400, 'The Content-Type is not supported.'),
        )

    def _check_sound(self, request: Request, checks: Checks):
        problem, wave = '', None
        try:
            wave = read_wave(request.body, request.streamed)
        except NotSound as found:
            problem = str(found)
        checks.require('riff', wave is not None, error(400, f'The audio is not valid: {problem}'))
        form = (wave.encoding, wave.bits, wave.rate, wave.channels)
        checks.require(
            'wave-format',
            form == (PCM, 16, RATE, 1),
            error(400, f'The audio has to be 16-bit PCM, {RATE} Hz, mono, and is {form}.'),
        )
        samples = samples_of(wave.data)
        duration = len(samples) / RATE
        checks.facts['audio'] = round(duration, 4)
        checks.require(
            'duration', duration <= LONGEST, error(400, f'The audio is longer than {LONGEST} s.')
        )
        return samples

    # What is answered.

    def _issue_token(self) -> Answer:
        token = f'token-{len(self._tokens) + 1}-of-{self.region}'
        self._tokens[token] = self._clock() + TOKEN_LIFE
        return plain_answer(200, token)

    def _numbered(self, content: dict) -> Answer:
        """Numbers as numbers in one answer, as texts in the next one."""
        if self.count('recognitions') % 2 == 0:
            content = in_texts(content)
        said = content.get('DisplayText') or content.get('NBest', [{}])[0].get('Display')
        return json_answer(200, content, text=(said,) if said else ())

    def without_text(self, status: str, duration: float) -> Answer:
        return self._numbered(
            {'RecognitionStatus': status, 'Offset': round(duration * TICKS), 'Duration': 0}
        )

    def _recognise(
        self, checks: Checks, stretches: list[Stretch], duration: float, form: str
    ) -> Answer:
        lines = self.hear(checks, len(stretches))
        if not stretches:
            return self.without_text('InitialSilenceTimeout', duration)
        if not lines:
            return self.without_text('NoMatch', duration)
        text = ' '.join(lines)
        start, end = (round(at * TICKS) for at in (stretches[0].start, stretches[-1].end))
        content: dict = {'RecognitionStatus': 'Success'}
        if form == 'simple':
            content['DisplayText'] = text
        content.update(Offset=start, Duration=end - start)
        if form == 'detailed':
            content['NBest'] = [alternative(0.97, text), alternative(0.41, 'Something else.')]
        return self._numbered(content)


def alternative(confidence: float, display: str) -> dict:
    lexical = ' '.join(''.join(c if c.isalnum() else ' ' for c in display.lower()).split())
    return {
        'Confidence': confidence,
        'Lexical': lexical,
        'ITN': lexical,
        'MaskedITN': lexical,
        'Display': display,
    }


def in_texts(content):
    if isinstance(content, dict):
        return {name: in_texts(value) for name, value in content.items()}
    if isinstance(content, list):
        return [in_texts(value) for value in content]
    return str(content) if isinstance(content, (int, float)) else content


def main() -> None:
    parser = common_options(AzureSpeech)
    hears(parser)
    parser.add_argument('--region', choices=AZURE_REGIONS, default='westeurope')
    run(AzureSpeech, parser)


if __name__ == '__main__':
    main()
