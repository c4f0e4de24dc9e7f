"""What happens to an answer on its way, in front of each of the services."""

import http.client
import json
import unittest

from tests.cloud_rest import transport
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
    request,
)


class OnTheWay:
    """For each service: SERVICE, and ask(), which sends it a good request."""

    def setUp(self):
        self.waited = []
        self.peer = self.start(self.SERVICE, large=300_000, slow=9.0, wait=self.waited.append)

    def fail(self, name):
        self.peer.obey({'fault': name})

    def answer(self):
        return self.peer.wait_for('answer')[-1]

    def test_slow(self):
        self.fail('slow')
        self.assertEqual(self.ask(self.peer).status, 200)
        self.assertEqual(self.waited, [9.0])
        self.assertTrue(self.answer()['text'])

    def test_cut(self):
        self.fail('cut')
        with self.assertRaises(http.client.IncompleteRead) as caught:
            self.ask(self.peer)
        self.assertGreater(len(caught.exception.partial), 0)
        self.assertGreater(caught.exception.expected, 0)
        self.assertEqual((self.answer()['sent'], self.answer()['text']), (False, []))

    def test_reset(self):
        self.fail('reset')
        with self.assertRaises(ConnectionResetError):
            self.ask(self.peer)
        self.assertFalse(self.answer()['sent'])

    def test_closed(self):
        self.fail('closed')
        with self.assertRaises(http.client.RemoteDisconnected):
            self.ask(self.peer)
        self.assertFalse(self.answer()['sent'])

    def test_html_200(self):
        self.fail('html-200')
        self.assert_html(200)

    def test_html_502(self):
        self.fail('html-502')
        self.assert_html(502)

    def assert_html(self, status):
        reply = self.ask(self.peer)
        self.assertEqual(reply.status, status)
        self.assertTrue(reply.headers['content-type'].startswith('text/html'))
        self.assertIn(b'<html>', reply.body)
        self.assertEqual((self.answer()['status'], self.answer()['text']), (status, []))

    def test_empty(self):
        self.fail('empty')
        reply = self.ask(self.peer)
        self.assertEqual((reply.status, reply.body), (200, b''))

    def test_broken_json(self):
        self.fail('broken-json')
        reply = self.ask(self.peer)
        self.assertEqual(reply.status, 200)
        self.assertTrue(reply.body)
        with self.assertRaises(json.JSONDecodeError):
            reply.json

    def test_other_json(self):
        self.fail('other-json')
        reply = self.ask(self.peer)
        self.assertEqual((reply.status, reply.json), (200, [None]))

    def test_redirects(self):
        for name, status in (('redirect', 302), ('redirect-307', 307)):
            self.fail(name)
            reply = self.ask(self.peer)
            place = f'http://127.0.0.1:{self.peer.port}/elsewhere'
            self.assertEqual((reply.status, reply.headers['location']), (status, place))

    def test_who_follows_a_redirect_is_seen(self):
        self.fail('redirect')
        headers = {'Ocp-Apim-Subscription-Key': 'right'}
        reply = request(self.peer, 'GET', '/elsewhere', headers=headers)
        self.assertEqual((reply.status, reply.body), (200, transport.PORTAL))
        self.assert_failed(self.peer, 'followed-redirect')
        seen = self.peer.wait_for('request')[0]['headers']
        self.assertEqual(seen['ocp-apim-subscription-key'], 'right')

    def test_large(self):
        self.fail('large')
        reply = self.ask(self.peer)
        self.assertEqual(reply.status, 200)
        self.assertEqual(reply.body[:300_000], b' ' * 300_000)
        self.assertIn(self.answer()['text'][0], reply.body[300_000:].decode())

    def test_they_end_when_told(self):
        self.fail('html-502')
        self.fail(None)
        self.assertEqual(self.ask(self.peer).status, 200)

    def test_several_one_after_the_other_and_the_last_stays(self):
        self.peer.obey({'fault': ['html-502', 'unavailable', 'none']})
        statuses = [self.ask(self.peer).status for _ in range(4)]
        self.assertEqual(statuses, [502, 503, 200, 200])
        answers = self.peer.wait_for('answer', 4)
        faults = [answer['fault'] for answer in answers]
        self.assertEqual(faults, ['html-502', 'unavailable', None, None])


class AzureSpeechOnTheWay(OnTheWay, PeerTest):
    SERVICE = AzureSpeech

    def ask(self, peer):
        return azure_speech(peer)


class AzureTranslatorOnTheWay(OnTheWay, PeerTest):
    SERVICE = AzureTranslator

    def ask(self, peer):
        return azure_translator(peer)


class GoogleSpeechOnTheWay(OnTheWay, PeerTest):
    SERVICE = GoogleSpeech

    def ask(self, peer):
        return google_speech(peer)


class GoogleTranslateOnTheWay(OnTheWay, PeerTest):
    SERVICE = GoogleTranslate

    def ask(self, peer):
        return google_translate(peer)


if __name__ == '__main__':
    unittest.main()
