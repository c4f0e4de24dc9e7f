"""A stand-in for Azure's text translation.

  python3 -m tests.cloud_rest.azure_translator [--key-kind KIND] [--region REGION] ... (see --help)
"""

from __future__ import annotations

from typing import Callable

from .languages import AZURE_REGIONS, AZURE_TRANSLATOR
from .messages import Answer, Checks, Request, json_answer
from .program import common_options, run
from .service import Service
from .translation import translated

PATH = '/translate'
OWN_NAME_PATH = '/translator/text/v3.0/translate'
OWN_NAME_HOST = '.cognitiveservices.azure.com'
COMMON_HOST = '.cognitive.microsofttranslator.com'
KEY_KINDS = ('global', 'regional', 'multi', 'speech-only')
MOST_ITEMS = 1000
MOST_CHARACTERS = 50_000
PARAMETERS = {'api-version', 'to', 'from', 'textType'}

# Where the service has no number of its own for it among those that are known.
NOT_VALID = 400000
MESSAGES = {
    400000: 'One of the request inputs is not valid.',
    400019: 'One of the specified languages is not supported.',
    400023: 'The language pair is not valid.',
    400035: 'The source language is not valid.',
    400036: 'The target language is missing or not valid.',
    400050: 'The input text is too long.',
    401000: 'The request is not authorized because credentials are missing or invalid.',
    401015: 'The credentials provided are for the Speech API. This request requires credentials for '
    'the Text API.',
    403001: 'The operation is not allowed because the subscription has exceeded its free quota.',
    429000: 'The server rejected the request because the client has exceeded request limits.',
    429001: 'The server rejected the request because the client has exceeded request limits.',
    429002: 'The server rejected the request because the client has exceeded request limits.',
    500000: 'An unexpected error occurred.',
    503000: 'Service is temporarily unavailable. Please retry.',
}


def error(code: int) -> Answer:
    return json_answer(code // 1000, {'error': {'code': code, 'message': MESSAGES[code]}})


def failing(code: int) -> Callable[..., Answer]:
    return lambda service, request, checks: error(code)


def paths_of(host: str | None) -> tuple[str, ...]:
    """Each kind of host has its own path; an address on loopback stands for either."""
    name = (host or '').rsplit(':', 1)[0].lower()
    if name.endswith(OWN_NAME_HOST):
        return (OWN_NAME_PATH,)
    if name.endswith(COMMON_HOST):
        return (PATH,)
    return PATH, OWN_NAME_PATH


class AzureTranslator(Service):
    """Azure's Translator, version 3: texts in, texts out, in the same order."""

    FAULTS = {
        'invalid-key': failing(401000),
        'speech-only-key': failing(401015),
        'quota': failing(403001),
        'too-many': failing(429000),
        'too-many-429001': failing(429001),
        'too-many-429002': failing(429002),
        'server-error': failing(500000),
        'unavailable': failing(503000),
        'language-400019': failing(400019),
        'language-400023': failing(400023),
        'language-400035': failing(400035),
        'language-400036': failing(400036),
        'too-long': failing(400050),
    }

    def __init__(self, key_kind: str = 'regional', region: str = 'westeurope', **settings) -> None:
        """The region is that of the key, if it has one."""
        super().__init__(**settings)
        if key_kind not in KEY_KINDS or region not in AZURE_REGIONS:
            raise ValueError(f'no kind of key or no region: {key_kind} {region}')
        self.key_kind, self.region = key_kind, region

    def admit(self, request: Request, checks: Checks) -> Callable[[], Answer]:
        not_here = json_answer(404, {'error': {'code': 404000, 'message': 'Resource not found.'}})
        checks.require('path', request.path in paths_of(request.header('Host')), not_here)
        not_so = json_answer(405, {'error': {'code': 405000, 'message': 'Method not allowed.'}})
        checks.require('method', request.method == 'POST', not_so.with_header('Allow', 'POST'))
        self._check_credential(request, checks)
        targets, source, as_html = self._check_query(request, checks)
        texts = self._check_body(request, checks)
        return lambda: self._translate(texts, targets, source, as_html)

    def _check_credential(self, request: Request, checks: Checks) -> None:
        key = request.header('Ocp-Apim-Subscription-Key')
        checks.require('key', key and self.key in (None, key), error(401000))
        checks.require('key-for-text', self.key_kind != 'speech-only', error(401015))
        if self.key_kind != 'global':
            region = request.header('Ocp-Apim-Subscription-Region')
            checks.require('region', region == self.region, error(401000))

    def _check_query(self, request: Request, checks: Checks) -> tuple[list[str], str | None, bool]:
        query = request.query
        # The path of hosts with a name of their own holds the version already.
        version = request.one('api-version')
        fits = version == '3.0' or (request.path == OWN_NAME_PATH and 'api-version' not in query)
        checks.require('api-version', fits, error(NOT_VALID))
        targets = query.get('to', [])
        known = [target in AZURE_TRANSLATOR for target in targets]
        checks.require('to', known and all(known), error(400036))
        source = request.one('from')
        checks.require('from', 'from' not in query or source in AZURE_TRANSLATOR, error(400035))
        text_type = request.one('textType') if 'textType' in query else 'plain'
        checks.require('textType', text_type in ('plain', 'html'), error(NOT_VALID))
        checks.facts.update(source=source, targets=targets, surplus=sorted(set(query) - PARAMETERS))
        return targets, source, text_type == 'html'

    def _check_body(self, request: Request, checks: Checks) -> list[str]:
        media, parameters = request.content_type()
        is_json = media == 'application/json' and parameters.get('charset', 'utf-8') == 'utf-8'
        checks.require('content-type', is_json, error(NOT_VALID))
        content = request.json()
        checks.require('json', content is not None, error(NOT_VALID))
        fits = isinstance(content, list) and content and all(map(is_item, content))
        checks.require('items', fits, error(NOT_VALID))
        checks.require('item-count', len(content) <= MOST_ITEMS, error(NOT_VALID))
        texts = [item['Text'] for item in content]
        characters = sum(map(len, texts))
        checks.facts.update(texts=len(texts), characters=characters)
        checks.require('characters', characters <= MOST_CHARACTERS, error(400050))
        return texts

    def _translate(
        self, texts: list[str], targets: list[str], source: str | None, as_html: bool
    ) -> Answer:
        items: list[dict] = []
        for text in texts:
            item: dict = {}
            if source is None:
                item['detectedLanguage'] = {'language': self.heard or 'en', 'score': 1.0}
            item['translations'] = [
                {'text': translated(text, target, as_html), 'to': target} for target in targets
            ]
            items.append(item)
        said = [translation['text'] for item in items for translation in item['translations']]
        return json_answer(200, items, text=tuple(said))


def is_item(item) -> bool:
    return isinstance(item, dict) and set(item) == {'Text'} and isinstance(item['Text'], str)


def main() -> None:
    parser = common_options(AzureTranslator)
    parser.add_argument('--key-kind', choices=KEY_KINDS, default='regional')
    parser.add_argument('--region', choices=AZURE_REGIONS, default='westeurope')
    run(AzureTranslator, parser)


if __name__ == '__main__':
    main()
