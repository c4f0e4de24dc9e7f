import unittest

from tests.cloud_rest.azure_translator import AzureTranslator
from tests.cloud_rest.tests.support import (
    TRANSLATOR_TARGET,
    PeerTest,
    azure_translator,
)

OWN_NAME = '/translator/text/v3.0/translate?to=de'


class Answers(PeerTest):
    def setUp(self):
        self.peer = self.start(AzureTranslator)

    def test_one_text(self):
        reply = azure_translator(self.peer)
        self.assertEqual(reply.status, 200)
        self.assertEqual(reply.json, [{'translations': [{'text': 'de: one', 'to': 'de'}]}])

    def test_many_texts_keep_their_order(self):
        texts = [f'text {number}' for number in range(1000)]
        reply = azure_translator(self.peer, [{'Text': text} for text in texts])
        self.assertEqual(
            [item['translations'][0]['text'] for item in reply.json], [f'de: {t}' for t in texts]
        )

    def test_several_targets_in_their_order(self):
        reply = azure_translator(self.peer, target=f'{TRANSLATOR_TARGET}&to=zh-Hans&to=pt-PT')
        self.assertEqual(
            reply.json[0]['translations'],
            [
                {'text': 'de: one', 'to': 'de'},
                {'text': 'zh-Hans: one', 'to': 'zh-Hans'},
                {'text': 'pt-PT: one', 'to': 'pt-PT'},
            ],
        )

    def test_the_language_is_detected_only_where_none_is_given(self):
        reply = azure_translator(self.peer, target='/translate?api-version=3.0&to=de')
        self.assertEqual(reply.json[0]['detectedLanguage'], {'language': 'en', 'score': 1.0})
        self.peer.obey({'heard': 'fr'})
        reply = azure_translator(self.peer, target='/translate?api-version=3.0&to=de')
        self.assertEqual(reply.json[0]['detectedLanguage']['language'], 'fr')

    def test_plain_text_stays_as_it_is(self):
        for target in (TRANSLATOR_TARGET, f'{TRANSLATOR_TARGET}&textType=plain'):
            reply = azure_translator(self.peer, [{'Text': '"Grüße" & \'x\' &amp;'}], target)
            self.assertEqual(reply.json[0]['translations'][0]['text'], 'de: "Grüße" & \'x\' &amp;')

    def test_html_has_entities(self):
        reply = azure_translator(
            self.peer, [{'Text': '<b>"a"</b> &amp; \'b\''}], f'{TRANSLATOR_TARGET}&textType=html'
        )
        self.assertEqual(
            reply.json[0]['translations'][0]['text'],
            'de: <b>&quot;a&quot;</b> &amp; &#39;b&#39;',
        )

    def test_resources_with_a_name_of_their_own(self):
        host = 'mine.cognitiveservices.azure.com'
        for target in (OWN_NAME, f'{OWN_NAME}&api-version=3.0'):
            self.assertEqual(azure_translator(self.peer, target=target, host=host).status, 200)
        self.assertEqual(azure_translator(self.peer, target=OWN_NAME).status, 200)

    def test_the_common_hosts(self):
        for name in ('api', 'api-nam', 'api-eur', 'api-apc'):
            host = f'{name}.cognitive.microsofttranslator.com'
            self.assertEqual(azure_translator(self.peer, host=host).status, 200)

    def test_an_event_says_what_was_translated(self):
        azure_translator(self.peer, [{'Text': 'one'}, {'Text': 'three'}])
        answer = self.peer.wait_for('answer')[0]
        asked = self.peer.events[0]
        self.assertEqual((asked['texts'], asked['characters']), (2, 8))
        self.assertEqual((asked['source'], asked['targets']), ('en', ['de']))
        self.assertEqual(asked['headers']['ocp-apim-subscription-region'], 'westeurope')
        self.assertEqual(answer['text'], ['de: one', 'de: three'])


class Keys(PeerTest):
    def refuse(self, code, failed, peer, **changes):
        reply = azure_translator(peer, **changes)
        self.assertEqual((reply.status, reply.json['error']['code']), (401, code))
        self.assert_failed(peer, failed)

    def test_keys_that_want_their_region(self):
        for kind in ('regional', 'multi'):
            with self.subTest(kind=kind):
                peer = self.start(AzureTranslator, key_kind=kind, region='eastus')
                region = 'Ocp-Apim-Subscription-Region'
                self.refuse(401000, 'region', peer, without=[region])
                self.refuse(401000, 'region', peer, ocp_apim_subscription_region='westus')
                good = azure_translator(peer, ocp_apim_subscription_region='eastus')
                self.assertEqual(good.status, 200)

    def test_a_global_key_needs_no_region(self):
        peer = self.start(AzureTranslator, key_kind='global')
        reply = azure_translator(peer, without=['Ocp-Apim-Subscription-Region'])
        self.assertEqual(reply.status, 200)

    def test_a_key_for_speech_cannot_translate(self):
        peer = self.start(AzureTranslator, key_kind='speech-only')
        self.refuse(401015, 'key-for-text', peer)

    def test_a_wrong_key(self):
        peer = self.start(AzureTranslator)
        self.refuse(401000, 'key', peer, ocp_apim_subscription_key='wrong')

    def test_no_key(self):
        peer = self.start(AzureTranslator, key=None)
        self.refuse(401000, 'key', peer, without=['Ocp-Apim-Subscription-Key'])


class Refusals(PeerTest):
    def setUp(self):
        self.peer = self.start(AzureTranslator)

    def refuse(self, code, failed, *args, **changes):
        reply = azure_translator(self.peer, *args, **changes)
        self.assertEqual(reply.status, code // 1000)
        self.assertIs(type(reply.json['error']['code']), int)
        self.assertEqual(reply.json['error']['code'], code)
        self.assertTrue(reply.json['error']['message'])
        self.assert_failed(self.peer, failed)

    def test_another_path(self):
        self.refuse(404000, 'path', target='/translator?api-version=3.0&to=de')

    def test_the_path_of_another_kind_of_host(self):
        common = 'api.cognitive.microsofttranslator.com'
        self.refuse(404000, 'path', target=OWN_NAME, host=common)
        self.refuse(404000, 'path', host='mine.cognitiveservices.azure.com')

    def test_another_method(self):
        self.refuse(405000, 'method', method='PUT')

    def test_another_version(self):
        self.refuse(400000, 'api-version', target='/translate?api-version=2.0&to=de')

    def test_no_version(self):
        self.refuse(400000, 'api-version', target='/translate?to=de')

    def test_no_target(self):
        self.refuse(400036, 'to', target='/translate?api-version=3.0&from=en')

    def test_unknown_targets(self):
        for code in ('zh', 'no', 'sr', 'mn', 'jv', 'de-DE', 'de,fr', 'auto', ''):
            with self.subTest(code=code):
                self.refuse(400036, 'to', target=f'/translate?api-version=3.0&to={code}')

    def test_one_unknown_target_of_two(self):
        self.refuse(400036, 'to', target=f'{TRANSLATOR_TARGET}&to=xx')

    def test_an_unknown_source(self):
        for code in ('zh', 'xx', 'en-US', ''):
            with self.subTest(code=code):
                target = f'/translate?api-version=3.0&to=de&from={code}'
                self.refuse(400035, 'from', target=target)

    def test_another_type_of_text(self):
        self.refuse(400000, 'textType', target=f'{TRANSLATOR_TARGET}&textType=text')

    def test_another_content_type(self):
        self.refuse(400000, 'content-type', content_type='text/plain')

    def test_what_is_not_json(self):
        self.refuse(400000, 'json', b'[{')

    def test_other_shapes(self):
        for body in ({'Text': 'one'}, [], ['one'], [{'text': 'one'}], [{'Text': 1}]):
            with self.subTest(body=body):
                self.refuse(400000, 'items', body)

    def test_too_many_texts(self):
        self.refuse(400000, 'item-count', [{'Text': 'x'}] * 1001)

    def test_too_long_texts(self):
        self.assertEqual(azure_translator(self.peer, [{'Text': 'x' * 50_000}]).status, 200)
        self.refuse(400050, 'characters', [{'Text': 'x' * 50_000}, {'Text': 'x'}])


if __name__ == '__main__':
    unittest.main()
