"""A stand-in for Google's speech recognition, version 1.

  python3 -m tests.cloud_rest.google_speech [--key KEY] [--token TOKEN] ... (see --help)
"""

from __future__ import annotations

import base64
import binascii
import collections
import math
import time
from dataclasses import dataclass
from typing import Callable

import numpy

from . import google_errors
from .google_errors import check_json, check_key, check_names, error, fixed, invalid
from .languages import GOOGLE_SPEECH
from .messages import Answer, Checks, Request, json_answer, plain_answer
from .program import common_options, hears, run
from .service import Service
from .sound import PCM, NotSound, Stretch, find_voice, read_wave, samples_of, voiced

HOST = 'speech.googleapis.com'
METHOD = 'google.cloud.speech.v1.Speech.Recognize'
TITLE = 'Cloud Speech-to-Text API'
PATH = '/v1/speech:recognize'
MODELS = ('default', 'command_and_search', 'latest_short', 'latest_long', 'phone_call', 'video')
CONFIG = {
    'encoding': str,
    'sampleRateHertz': int,
    'languageCode': str,
    'alternativeLanguageCodes': list,
    'enableAutomaticPunctuation': bool,
    'model': str,
    'maxAlternatives': int,
    'audioChannelCount': int,
}
MOST_BYTES = 10 * 1024 * 1024
LONGEST = 60
MOST_A_MINUTE = 900
MOST_ALTERNATIVE_LANGUAGES = 3
BILLED = 15


@dataclass(frozen=True)
class Sound:
    samples: numpy.ndarray
    rate: int


class GoogleSpeech(Service):
    """Google's Speech-to-Text, version 1: sound in Base64 in, results in JSON out."""

    FAULTS = {
        'bad-request': fixed(error('INVALID_ARGUMENT', 'Request contains an invalid argument.')),
        'failed-precondition': fixed(error('FAILED_PRECONDITION', 'Precondition check failed.')),
        'out-of-range': fixed(error('OUT_OF_RANGE', 'Out of range.')),
        'invalid-key': fixed(google_errors.invalid_key(HOST)),
        'credentials-missing': fixed(google_errors.credentials_missing(HOST, METHOD)),
        'service-disabled': fixed(google_errors.service_disabled(HOST, TITLE)),
        'key-blocked': fixed(google_errors.key_blocked(HOST, METHOD)),
        'not-found': fixed(error('NOT_FOUND', 'Requested entity was not found.')),
        'aborted': fixed(error('ABORTED', 'The operation was aborted.')),
        'quota': fixed(
            error('RESOURCE_EXHAUSTED', 'Quota exceeded for quota metric of this project.')
        ),
        'too-many': fixed(
            error('RESOURCE_EXHAUSTED', 'Resource has been exhausted (e.g. check quota).')
        ),
        'server-error': fixed(error('INTERNAL', 'Internal error encountered.')),
        'unimplemented': fixed(error('UNIMPLEMENTED', 'The operation is not implemented.')),
        'unavailable': fixed(error('UNAVAILABLE', 'The service is currently unavailable.')),
        'deadline': fixed(error('DEADLINE_EXCEEDED', 'Deadline exceeded.')),
    }

    def __init__(
        self,
        token: str | None = None,
        clock: Callable[[], float] = time.monotonic,
        **settings,
    ) -> None:
        super().__init__(**settings)
        self.token = token
        self._clock = clock
        self._recent: collections.deque[float] = collections.deque()

    def admit(self, request: Request, checks: Checks) -> Callable[[], Answer]:
        not_found = error('NOT_FOUND', f'No {request.method} at {request.path}.')
        checks.require('path', request.path == PATH, not_found)
        checks.require('method', request.method == 'POST', not_found)
        # Keys of the newer kind are not taken, whether right or wrong.
        checks.require(
            'key-kind',
            not (request.one('key') or '').startswith('AQ.'),
            google_errors.credentials_missing(HOST, METHOD),
        )
        check_key(request, checks, self.key, self.token, HOST, METHOD)
        self._check_pace(checks)
        content = check_json(request, checks, MOST_BYTES)
        check_names('request', content, {'config', 'audio'}, checks)
        config = content.get('config')
        self._check_config(config, checks)
        sound = self._check_sound(content.get('audio'), config, checks)
        stretches = find_voice(sound.samples, sound.rate)
        duration = len(sound.samples) / sound.rate
        checks.facts.update(
            audio=round(duration, 4), voice=round(voiced(stretches), 4), stretches=len(stretches)
        )
        return lambda: self._recognise(checks, config, stretches, duration)

    # What is refused.

    def _check_pace(self, checks: Checks) -> None:
        now = self._clock()
        while self._recent and self._recent[0] <= now - 60:
            self._recent.popleft()
        self._recent.append(now)
        checks.require(
            'pace',
            len(self._recent) <= MOST_A_MINUTE,
            error('RESOURCE_EXHAUSTED', 'Quota exceeded: requests per minute.'),
        )

    def _check_config(self, config, checks: Checks) -> None:
        check_names('config', config, set(CONFIG), checks)
        wrong = [name for name, value in config.items() if type(value) is not CONFIG[name]]
        checks.require('config-types', not wrong, invalid(f"Invalid value at 'config': {wrong}"))
        language = config.get('languageCode')
        checks.facts['language'] = language
        checks.require('language-given', language, invalid('languageCode is missing.'))
        checks.require(
            'language', language in GOOGLE_SPEECH, invalid(f'Unknown languageCode: {language}')
        )
        others = config.get('alternativeLanguageCodes', [])
        checks.facts['alternatives'] = others
        checks.require(
            'alternative-count',
            len(others) <= MOST_ALTERNATIVE_LANGUAGES,
            invalid('At most 3 alternativeLanguageCodes can be given.'),
        )
        checks.require(
            'alternative-languages',
            all(isinstance(other, str) and other in GOOGLE_SPEECH for other in others),
            invalid(f'Unknown alternativeLanguageCodes: {others}'),
        )
        model = config.get('model', 'default')
        checks.require('model', model in MODELS, invalid(f'Unknown model: {model}'))
        checks.require(
            'maxAlternatives',
            config.get('maxAlternatives', 0) >= 0,
            invalid('maxAlternatives has to be 0 or more.'),
        )

    def _check_sound(self, audio, config: dict, checks: Checks) -> Sound:
        check_names('audio', audio, {'content'}, checks)
        encoded = audio.get('content')
        content = None
        if isinstance(encoded, str):
            try:
                content = base64.b64decode(encoded, validate=True)
            except (ValueError, binascii.Error):
                pass
        checks.require('base64', content is not None, invalid('Base64 decoding failed.'))
        checks.require('audio-given', content, invalid('RecognitionAudio not set.'))
        encoding = config.get('encoding')
        checks.require(
            'encoding', encoding in (None, 'LINEAR16', 'FLAC'), invalid(f'encoding: {encoding}')
        )
        is_flac = content.startswith(b'fLaC') or encoding == 'FLAC'
        checks.require(
            'stand-in-can-decode', not is_flac, plain_answer(501, 'This stand-in decodes no FLAC.')
        )
        if content.startswith(b'RIFF'):
            sound = self._check_wave(content, config, checks)
        else:
            sound = self._check_raw(content, config, checks)
        duration = len(sound.samples) / sound.rate
        checks.facts['audio'] = round(duration, 4)
        checks.require(
            'duration', duration <= LONGEST, invalid('Sync input too long: more than 1 min.')
        )
        return sound

    def _check_wave(self, content: bytes, config: dict, checks: Checks) -> Sound:
        problem, wave = '', None
        try:
            wave = read_wave(content)
        except NotSound as found:
            problem = str(found)
        checks.require('riff', wave is not None, invalid(f'Bad WAV file: {problem}'))
        checks.require(
            'wave-format',
            (wave.encoding, wave.bits) == (PCM, 16) and 8000 <= wave.rate <= 48000,
            invalid('The WAV file has to be 16-bit PCM at 8000 to 48000 Hz.'),
        )
        rate = config.get('sampleRateHertz', wave.rate)
        checks.require(
            'rate-of-wave',
            rate == wave.rate,
            invalid(f'sampleRateHertz is {rate}, the WAV header says {wave.rate}.'),
        )
        checks.require(
            'channels',
            config.get('audioChannelCount', 1) == wave.channels,
            invalid(f'audioChannelCount does not match the {wave.channels} of the WAV header.'),
        )
        return Sound(samples_of(wave.data, wave.channels), wave.rate)

    def _check_raw(self, content: bytes, config: dict, checks: Checks) -> Sound:
        checks.require(
            'encoding-given', 'encoding' in config, invalid('encoding is needed for raw audio.')
        )
        rate = config.get('sampleRateHertz', 0)
        checks.require(
            'rate', 8000 <= rate <= 48000, invalid('sampleRateHertz has to be 8000 to 48000.')
        )
        channels = config.get('audioChannelCount', 1)
        checks.require('channels', 1 <= channels <= 8, invalid('audioChannelCount: 1 to 8.'))
        checks.require(
            'whole-samples',
            len(content) % (2 * channels) == 0,
            invalid('The audio is no whole number of samples.'),
        )
        return Sound(samples_of(content, channels), rate)

    # What is answered.

    def _recognise(
        self, checks: Checks, config: dict, stretches: list[Stretch], duration: float
    ) -> Answer:
        lines = self.hear(checks, len(stretches))
        possible = [config['languageCode'], *config.get('alternativeLanguageCodes', [])]
        language = self.heard if self.heard in possible else possible[0]
        every_second = self.count('recognitions') % 2 == 0
        results = []
        for number, (line, stretch) in enumerate(zip(lines, stretches)):
            # The results are to be put behind each other as they are.
            transcript = f' {line}' if number else line
            alternatives = [{'transcript': transcript, 'confidence': 0.93}]
            if config.get('maxAlternatives', 0) > 1:
                alternatives.append({'transcript': 'something else', 'confidence': 0.41})
            result = {
                'alternatives': alternatives,
                'resultEndTime': f'{stretch.end:.3f}s',
                'languageCode': language.lower(),
            }
            results.append({**result, 'channelTag': 0} if every_second else result)
        content: dict = {'results': results} if results else {}
        content['totalBilledTime'] = f'{math.ceil(duration / BILLED) * BILLED}s'
        content['requestId'] = str(4_000_000_000 + self._counts['recognitions'])
        said = tuple(result['alternatives'][0]['transcript'] for result in results)
        return json_answer(200, content, text=said)


def main() -> None:
    parser = common_options(GoogleSpeech)
    hears(parser)
    parser.add_argument('--token', help='the right one of the OAuth kind; without it there is none')
    run(GoogleSpeech, parser)


if __name__ == '__main__':
    main()
