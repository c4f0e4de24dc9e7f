"""A stand-in for Google's text translation, version 2.

  python3 -m tests.cloud_rest.google_translate [--key KEY] ... (see --help)
"""

from __future__ import annotations

from typing import Callable

from . import google_errors
from .google_errors import check_json, check_key, check_names, error, fixed, invalid
from .languages import GOOGLE_TRANSLATE
from .messages import Answer, Checks, Request, json_answer
from .program import common_options, run
from .service import Service
from .translation import translated

HOST = 'translation.googleapis.com'
METHOD = 'google.cloud.translate.v2.TranslateService.TranslateText'
TITLE = 'Cloud Translation API'
PATH = '/language/translate/v2'
LANGUAGES_PATH = '/language/translate/v2/languages'
MOST_TEXTS = 128
MOST_BYTES = 100 * 1024


class GoogleTranslate(Service):
    """Google's Translation, version 2 (Basic): texts in, texts out, in the same order."""

    FAULTS = {
        'bad-request': fixed(invalid('Request contains an invalid argument.')),
        'invalid-key': fixed(google_errors.invalid_key(HOST)),
        'credentials-missing': fixed(google_errors.credentials_missing(HOST, METHOD)),
        'service-disabled': fixed(google_errors.service_disabled(HOST, TITLE)),
        'key-blocked': fixed(google_errors.key_blocked(HOST, METHOD)),
        'quota': fixed(error('PERMISSION_DENIED', 'Daily Limit Exceeded')),
        'too-many': fixed(error('PERMISSION_DENIED', 'User Rate Limit Exceeded')),
        'too-many-429': fixed(error('RESOURCE_EXHAUSTED', 'Resource has been exhausted.')),
        'server-error': fixed(error('INTERNAL', 'Internal error encountered.')),
        'unavailable': fixed(error('UNAVAILABLE', 'The service is currently unavailable.')),
        'deadline': fixed(error('DEADLINE_EXCEEDED', 'Deadline exceeded.')),
    }

    def admit(self, request: Request, checks: Checks) -> Callable[[], Answer]:
        not_found = error('NOT_FOUND', f'No {request.method} at {request.path}.')
        checks.require('path', request.path in (PATH, LANGUAGES_PATH), not_found)
        method = 'POST' if request.path == PATH else 'GET'
        checks.require('method', request.method == method, not_found)
        check_key(request, checks, self.key, None, HOST, METHOD)
        if request.path == LANGUAGES_PATH:
            return list_languages
        content = check_json(request, checks, MOST_BYTES)
        check_names('request', content, {'q', 'target', 'source', 'format'}, checks)
        texts = self._check_texts(content, checks)
        target, source, form = self._check_rest(content, checks)
        return lambda: self._translate(texts, target, source, form)

    def _check_texts(self, content: dict, checks: Checks) -> list[str]:
        given = content.get('q')
        texts = [given] if isinstance(given, str) else given
        fits = isinstance(texts, list) and texts and all(isinstance(text, str) for text in texts)
        checks.require('q', fits, invalid('Required Text'))
        checks.facts.update(texts=len(texts), characters=sum(map(len, texts)))
        checks.require('text-count', len(texts) <= MOST_TEXTS, invalid('Too many text segments'))
        return texts

    def _check_rest(self, content: dict, checks: Checks) -> tuple[str, str | None, str]:
        target, source = content.get('target'), content.get('source')
        form = content.get('format', 'html')
        checks.facts.update(target=target, source=source, format=form)
        checks.require('format', form in ('text', 'html'), invalid('Invalid Value: format'))
        checks.require('target-given', isinstance(target, str), invalid('Required: target'))
        checks.require('target', target in GOOGLE_TRANSLATE, invalid('Invalid Value: target'))
        source_fits = isinstance(source, str) and source in GOOGLE_TRANSLATE
        checks.require(
            'source', 'source' not in content or source_fits, invalid('Invalid Value: source')
        )
        checks.require('pair', source != target, invalid(f'Bad language pair: {source}|{target}'))
        return target, source, form

    def _translate(self, texts: list[str], target: str, source: str | None, form: str) -> Answer:
        every_second = self.count('translations') % 2 == 0
        items = []
        for text in texts:
            item = {'translatedText': translated(text, target, form == 'html')}
            if source is None:
                item['detectedSourceLanguage'] = self.heard or 'en'
            if every_second:
                item['model'] = 'nmt'
            items.append(item)
        said = tuple(item['translatedText'] for item in items)
        return json_answer(200, {'data': {'translations': items}}, text=said)


def list_languages() -> Answer:
    languages = [{'language': code} for code in sorted(GOOGLE_TRANSLATE)]
    return json_answer(200, {'data': {'languages': languages}})


def main() -> None:
    run(GoogleTranslate, common_options(GoogleTranslate))


if __name__ == '__main__':
    main()
