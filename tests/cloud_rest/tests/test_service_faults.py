"""Every answer that a service can be told to give, by its name."""

import unittest

from tests.cloud_rest.azure_speech import AzureSpeech
from tests.cloud_rest.azure_translator import AzureTranslator
from tests.cloud_rest.google_speech import GoogleSpeech
from tests.cloud_rest.google_translate import GoogleTranslate
from tests.cloud_rest.tests.support import (
    PeerTest,
    azure_speech,
    azure_translator,
    google_speech,
    google_translate,
)


class AzureSpeechFaults(PeerTest):
    JSON = {
        'bad-request': 400,
        'invalid-key': 401,
        'wrong-region': 401,
        'quota': 403,
        'too-many': 429,
        'server-error': 500,
    }
    PLAIN = {'region-rule': 403, 'unavailable': 503}
    STATUSES = {
        'no-match': 'NoMatch',
        'initial-silence': 'InitialSilenceTimeout',
        'babble': 'BabbleTimeout',
        'error': 'Error',
        'end-of-dictation': 'EndOfDictation',
        'status-too-many': 'TooManyRequests',
        'status-bad-request': 'BadRequest',
        'status-forbidden': 'Forbidden',
    }

    def setUp(self):
        self.peer = self.start(AzureSpeech)

    def test_all_are_here(self):
        self.assertEqual({*self.JSON, *self.PLAIN, *self.STATUSES}, set(AzureSpeech.FAULTS))

    def test_errors_in_json(self):
        for name, status in self.JSON.items():
            with self.subTest(name=name):
                self.peer.obey({'fault': name})
                reply = azure_speech(self.peer)
                self.assertEqual((reply.status, reply.json['error']['code']), (status, str(status)))
                self.assertEqual(set(reply.json['error']), {'code', 'message'})

    def test_errors_that_are_not_json(self):
        for name, status in self.PLAIN.items():
            with self.subTest(name=name):
                self.peer.obey({'fault': name})
                reply = azure_speech(self.peer)
                self.assertEqual(reply.status, status)
                self.assertTrue(reply.headers['content-type'].startswith('text/plain'))

    def test_statuses_without_text(self):
        for name, status in self.STATUSES.items():
            with self.subTest(name=name):
                self.peer.obey({'fault': name})
                reply = azure_speech(self.peer)
                self.assertEqual(reply.status, 200)
                self.assertEqual(set(reply.json), {'RecognitionStatus', 'Offset', 'Duration'})
                self.assertEqual(reply.json['RecognitionStatus'], status)

    def test_numbers_alternate_there_too(self):
        self.peer.obey({'fault': 'no-match'})
        kinds = [type(azure_speech(self.peer).json['Offset']) for _ in range(4)]
        self.assertEqual(kinds, [int, str] * 2)

    def test_none_of_them_takes_a_line(self):
        for name in AzureSpeech.FAULTS:
            self.peer.obey({'fault': name})
            azure_speech(self.peer)
        self.peer.obey({'fault': None})
        self.assertEqual(azure_speech(self.peer).json['DisplayText'], 'sentence number one.')

    def test_a_bad_request_is_refused_before_them(self):
        self.peer.obey({'fault': 'quota'})
        reply = azure_speech(self.peer, ocp_apim_subscription_key='wrong')
        self.assertEqual(reply.status, 401)

    def test_every_second_429_says_when_to_come_again(self):
        peer = self.start(AzureSpeech, fault='too-many', retry_after=7)
        replies = [azure_speech(peer).headers.get('retry-after') for _ in range(4)]
        self.assertEqual(replies, [None, '7', None, '7'])


class TranslatorFaults(PeerTest):
    CODES = {
        'invalid-key': 401000,
        'speech-only-key': 401015,
        'quota': 403001,
        'too-many': 429000,
        'too-many-429001': 429001,
        'too-many-429002': 429002,
        'server-error': 500000,
        'unavailable': 503000,
        'language-400019': 400019,
        'language-400023': 400023,
        'language-400035': 400035,
        'language-400036': 400036,
        'too-long': 400050,
    }

    def test_all_of_them(self):
        self.assertEqual(set(self.CODES), set(AzureTranslator.FAULTS))
        peer = self.start(AzureTranslator)
        for name, code in self.CODES.items():
            with self.subTest(name=name):
                peer.obey({'fault': name})
                reply = azure_translator(peer)
                self.assertEqual(reply.status, code // 1000)
                self.assertEqual(set(reply.json), {'error'})
                self.assertEqual(reply.json['error']['code'], code)
                self.assertTrue(reply.json['error']['message'])

    def test_every_second_429_says_when_to_come_again(self):
        peer = self.start(AzureTranslator, fault='too-many')
        replies = [azure_translator(peer).headers.get('retry-after') for _ in range(4)]
        self.assertEqual(replies, [None, '1', None, '1'])


class GoogleFaults:
    """What both of Google's stand-ins have to show."""

    def test_all_of_them(self):
        self.assertEqual(set(self.FAULTS), set(self.SERVICE.FAULTS))
        peer = self.start(self.SERVICE)
        for name, (http, status, reason) in self.FAULTS.items():
            with self.subTest(name=name):
                peer.obey({'fault': name})
                reply = self.send(peer)
                error = reply.json['error']
                self.assertEqual(
                    (reply.status, error['code'], error['status']), (http, http, status)
                )
                reasons = [detail['reason'] for detail in error.get('details', [])]
                self.assertEqual(reasons, [reason] if reason else [])

    def test_every_second_429_says_when_to_come_again(self):
        peer = self.start(self.SERVICE, fault=self.LIMITED)
        replies = [self.send(peer).headers.get('retry-after') for _ in range(4)]
        self.assertEqual(replies, [None, '1', None, '1'])


class GoogleSpeechFaults(GoogleFaults, PeerTest):
    SERVICE = GoogleSpeech
    LIMITED = 'too-many'
    FAULTS = {
        'bad-request': (400, 'INVALID_ARGUMENT', None),
        'failed-precondition': (400, 'FAILED_PRECONDITION', None),
        'out-of-range': (400, 'OUT_OF_RANGE', None),
        'invalid-key': (400, 'INVALID_ARGUMENT', 'API_KEY_INVALID'),
        'credentials-missing': (401, 'UNAUTHENTICATED', 'CREDENTIALS_MISSING'),
        'service-disabled': (403, 'PERMISSION_DENIED', 'SERVICE_DISABLED'),
        'key-blocked': (403, 'PERMISSION_DENIED', 'API_KEY_SERVICE_BLOCKED'),
        'not-found': (404, 'NOT_FOUND', None),
        'aborted': (409, 'ABORTED', None),
        'quota': (429, 'RESOURCE_EXHAUSTED', None),
        'too-many': (429, 'RESOURCE_EXHAUSTED', None),
        'server-error': (500, 'INTERNAL', None),
        'unimplemented': (501, 'UNIMPLEMENTED', None),
        'unavailable': (503, 'UNAVAILABLE', None),
        'deadline': (504, 'DEADLINE_EXCEEDED', None),
    }

    def send(self, peer):
        return google_speech(peer)


class GoogleTranslateFaults(GoogleFaults, PeerTest):
    SERVICE = GoogleTranslate
    LIMITED = 'too-many-429'
    FAULTS = {
        'bad-request': (400, 'INVALID_ARGUMENT', None),
        'invalid-key': (400, 'INVALID_ARGUMENT', 'API_KEY_INVALID'),
        'credentials-missing': (401, 'UNAUTHENTICATED', 'CREDENTIALS_MISSING'),
        'service-disabled': (403, 'PERMISSION_DENIED', 'SERVICE_DISABLED'),
        'key-blocked': (403, 'PERMISSION_DENIED', 'API_KEY_SERVICE_BLOCKED'),
        'quota': (403, 'PERMISSION_DENIED', None),
        'too-many': (403, 'PERMISSION_DENIED', None),
        'too-many-429': (429, 'RESOURCE_EXHAUSTED', None),
        'server-error': (500, 'INTERNAL', None),
        'unavailable': (503, 'UNAVAILABLE', None),
        'deadline': (504, 'DEADLINE_EXCEEDED', None),
    }

    def send(self, peer):
        return google_translate(peer)

    def test_the_texts_of_quotas(self):
        for name, text in (
            ('quota', 'Daily Limit Exceeded'),
            ('too-many', 'User Rate Limit Exceeded'),
        ):
            peer = self.start(GoogleTranslate, fault=name)
            self.assertEqual(self.send(peer).json['error']['message'], text)


if __name__ == '__main__':
    unittest.main()
