import html
import unittest

from tests.cloud_rest.google_translate import GoogleTranslate
from tests.cloud_rest.tests.support import PeerTest, google_translate, request

TEXT = 'Tom & Jerry\'s "new" <b>film</b>'


class Answers(PeerTest):
    def setUp(self):
        self.peer = self.start(GoogleTranslate)

    def translations(self, **changes):
        reply = google_translate(self.peer, **changes)
        self.assertEqual(reply.status, 200)
        self.assertEqual(set(reply.json), {'data'})
        return reply.json['data']['translations']

    def test_one_text(self):
        self.assertEqual(self.translations(), [{'translatedText': 'de: one'}])

    def test_many_texts_keep_their_order(self):
        texts = [f'text {number}' for number in range(128)]
        translations = self.translations(q=texts)
        self.assertEqual(
            [item['translatedText'] for item in translations], [f'de: {text}' for text in texts]
        )

    def test_text_stays_as_it_is(self):
        self.assertEqual(self.translations(q=TEXT)[0]['translatedText'], f'de: {TEXT}')

    def test_html_is_what_is_not_asked_for_and_has_entities(self):
        for changes in ({'without': ['format']}, {'format': 'html'}):
            (item,) = self.translations(q=TEXT, **changes)
            self.assertEqual(
                item['translatedText'], 'de: Tom &amp; Jerry&#39;s &quot;new&quot; <b>film</b>'
            )
            self.assertEqual(html.unescape(item['translatedText']), f'de: {TEXT}')

    def test_html_is_understood(self):
        (item,) = self.translations(q='a &amp; b', format='html')
        self.assertEqual(item['translatedText'], 'de: a &amp; b')

    def test_the_language_is_detected_only_where_none_is_given(self):
        (item,) = self.translations(without=['source'])
        self.assertEqual(item['detectedSourceLanguage'], 'en')

    def test_a_model_stands_in_every_second_answer(self):
        self.assertEqual(['model' in self.translations()[0] for _ in range(4)], [False, True] * 2)

    def test_the_list_of_languages(self):
        reply = request(self.peer, 'GET', '/language/translate/v2/languages?key=right')
        codes = [item['language'] for item in reply.json['data']['languages']]
        self.assertIn('de', codes)
        self.assertIn('zh-TW', codes)

    def test_an_event_says_what_was_translated(self):
        google_translate(self.peer, q=['one', 'three'])
        answer = self.peer.wait_for('answer')[0]
        asked = self.peer.events[0]
        self.assertEqual((asked['texts'], asked['characters'], asked['format']), (2, 8, 'text'))
        self.assertEqual((asked['source'], asked['target']), ('en', 'de'))
        self.assertEqual(answer['text'], ['de: one', 'de: three'])


class Refusals(PeerTest):
    def setUp(self):
        self.peer = self.start(GoogleTranslate)

    def refuse(self, failed, status=400, name='INVALID_ARGUMENT', **changes):
        reply = google_translate(self.peer, **changes)
        error = reply.json['error']
        self.assertEqual((reply.status, error['code'], error['status']), (status, status, name))
        self.assert_failed(self.peer, failed)
        return error

    def test_a_wrong_key(self):
        error = self.refuse('key', target='/language/translate/v2?key=wrong')
        self.assertEqual(error['details'][0]['reason'], 'API_KEY_INVALID')

    def test_no_key(self):
        target = '/language/translate/v2'
        self.refuse('credential', status=401, name='UNAUTHENTICATED', target=target)

    def test_a_key_is_no_header(self):
        headers = {'Content-Type': 'application/json', 'Authorization': 'Bearer right'}
        target = '/language/translate/v2'
        self.refuse('token', 401, 'UNAUTHENTICATED', target=target, headers=headers)

    def test_another_path(self):
        self.refuse('path', 404, 'NOT_FOUND', target='/v3/projects/p:translateText?key=right')

    def test_other_methods(self):
        self.refuse('method', 404, 'NOT_FOUND', method='PUT')
        languages = '/language/translate/v2/languages?key=right'
        self.refuse('method', 404, 'NOT_FOUND', target=languages)

    def test_another_content_type(self):
        self.refuse('content-type', headers={'Content-Type': 'text/plain'})

    def test_what_is_not_json(self):
        self.refuse('json', body=b'q=one&target=de')

    def test_unknown_names(self):
        self.refuse('request', to='de')

    def test_no_text(self):
        self.refuse('q', without=['q'])
        for text in ([], 7, ['one', 7]):
            self.refuse('q', q=text)

    def test_too_many_texts(self):
        self.refuse('text-count', q=['x'] * 129)

    def test_too_many_bytes(self):
        self.refuse('size', q='x' * 102_400)

    def test_another_format(self):
        self.refuse('format', format='plain')

    def test_no_target(self):
        self.refuse('target-given', without=['target'])

    def test_equal_languages(self):
        error = self.refuse('pair', target='/language/translate/v2?key=right', source='de')
        self.assertTrue(error['message'].startswith('Bad language pair: '))


class Languages(PeerTest):
    """Apart from the rest, as `target` means the address there."""

    def setUp(self):
        self.peer = self.start(GoogleTranslate)

    def refuse(self, failed, source, target):
        body = f'{{"q":"one","source":"{source}","target":"{target}"}}'.encode()
        reply = google_translate(self.peer, body=body)
        self.assertEqual((reply.status, reply.json['error']['status']), (400, 'INVALID_ARGUMENT'))
        self.assert_failed(self.peer, failed)

    def test_unknown_targets(self):
        for code in ('nn', 'bo', 'fo', 'oc', 'de-DE', 'zh-Hans', 'xx', ''):
            with self.subTest(code=code):
                self.refuse('target', 'en', code)

    def test_unknown_sources(self):
        for code in ('auto', 'xx', ''):
            with self.subTest(code=code):
                self.refuse('source', code, 'de')


if __name__ == '__main__':
    unittest.main()
