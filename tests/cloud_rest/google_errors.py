"""Errors as all of Google's services write them, and how they take a key."""

from __future__ import annotations

from typing import Callable

from .messages import Answer, Checks, Request, json_answer

STATUSES = {
    'INVALID_ARGUMENT': 400,
    'FAILED_PRECONDITION': 400,
    'OUT_OF_RANGE': 400,
    'UNAUTHENTICATED': 401,
    'PERMISSION_DENIED': 403,
    'NOT_FOUND': 404,
    'ABORTED': 409,
    'RESOURCE_EXHAUSTED': 429,
    'INTERNAL': 500,
    'UNIMPLEMENTED': 501,
    'UNAVAILABLE': 503,
    'DEADLINE_EXCEEDED': 504,
}


def error(
    status: str, message: str, reason: str | None = None, metadata: dict | None = None
) -> Answer:
    content = {'code': STATUSES[status], 'message': message, 'status': status}
    if reason is not None:
        content['details'] = [
            {
                '@type': 'type.googleapis.com/google.rpc.ErrorInfo',
                'reason': reason,
                'domain': 'googleapis.com',
                'metadata': metadata or {},
            }
        ]
    return json_answer(STATUSES[status], {'error': content})


def invalid(message: str) -> Answer:
    return error('INVALID_ARGUMENT', message)


def fixed(answer: Answer) -> Callable[..., Answer]:
    """A fault that gives the same answer to everything."""
    return lambda service, request, checks: answer


def invalid_key(host: str) -> Answer:
    return error(
        'INVALID_ARGUMENT',
        'API key not valid. Please pass a valid API key.',
        'API_KEY_INVALID',
        {'service': host},
    )


def credentials_missing(host: str, method: str) -> Answer:
    return error(
        'UNAUTHENTICATED',
        'API keys are not supported by this API. Expected OAuth2 access token or other '
        'authentication credentials that assert a principal. See '
        'https://cloud.google.com/docs/authentication',
        'CREDENTIALS_MISSING',
        {'method': method, 'service': host},
    )


def service_disabled(host: str, title: str) -> Answer:
    return error(
        'PERMISSION_DENIED',
        f'{title} has not been used in project 123456789012 before or it is disabled. Enable it, then '
        'retry.',
        'SERVICE_DISABLED',
        {'service': host, 'consumer': 'projects/123456789012'},
    )


def key_blocked(host: str, method: str) -> Answer:
    return error(
        'PERMISSION_DENIED',
        f'Requests to this API {host} method {method} are blocked.',
        'API_KEY_SERVICE_BLOCKED',
        {'service': host, 'methodName': method, 'consumer': 'projects/123456789012'},
    )


def check_key(
    request: Request, checks: Checks, right: str | None, token: str | None, host: str, method: str
) -> None:
    """A key stands in the query, a token of the OAuth kind in the header."""
    missing = credentials_missing(host, method)
    authorization = request.header('Authorization')
    if authorization is not None and 'key' not in request.query:
        scheme, _, given = authorization.partition(' ')
        fits = scheme.lower() == 'bearer' and token is not None and given.strip() == token
        checks.require('token', fits, missing)
        return
    checks.require('credential', request.query.get('key', [''])[0], missing)
    key = request.one('key')
    checks.require('key', key is not None and right in (None, key), invalid_key(host))


def check_json(request: Request, checks: Checks, most_bytes: int):
    """The body, which is an object in JSON and not too long."""
    checks.require(
        'size',
        len(request.body) <= most_bytes,
        error('INVALID_ARGUMENT', f'Request payload size exceeds the limit: {most_bytes} bytes.'),
    )
    unreadable = error('INVALID_ARGUMENT', 'Invalid JSON payload received. Parsing failed.')
    checks.require(
        'content-type',
        request.content_type()[0] == 'application/json',
        error('INVALID_ARGUMENT', 'The Content-Type has to be application/json.'),
    )
    content = request.json()
    checks.require('json', isinstance(content, dict), unreadable)
    return content


def check_names(name: str, content, known: set[str], checks: Checks) -> None:
    strange = sorted(set(content) - known) if isinstance(content, dict) else ['?']
    checks.require(
        name,
        not strange,
        error(
            'INVALID_ARGUMENT',
            f'Invalid JSON payload received. Unknown name "{strange[0] if strange else ""}" at '
            f"'{name}': Cannot find field.",
        ),
    )
