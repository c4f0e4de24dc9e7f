import http.client
import unittest

from tests.cloud_rest.azure_speech import AzureSpeech, region_of
from tests.cloud_rest.tests.support import (
    AZURE_SOUND,
    AZURE_TARGET,
    LIMIT,
    PeerTest,
    azure_speech,
    request,
    silence,
    tone,
    utterances,
    wav,
)

DETAILED = AZURE_TARGET.replace('simple', 'detailed')
PATH = '/speech/recognition/conversation/cognitiveservices/v1'
TOKEN_PATH = '/sts/v1.0/issueToken'


class Answers(PeerTest):
    def setUp(self):
        self.peer = self.start(AzureSpeech)

    def test_simple(self):
        reply = azure_speech(self.peer)
        self.assertEqual(reply.status, 200)
        self.assertEqual(
            set(reply.json), {'RecognitionStatus', 'DisplayText', 'Offset', 'Duration'}
        )
        self.assertEqual(reply.json['RecognitionStatus'], 'Success')
        self.assertEqual(reply.json['DisplayText'], 'sentence number one.')
        self.assertAlmostEqual(reply.json['Offset'], 2_000_000, delta=20_000)
        self.assertAlmostEqual(reply.json['Duration'], 4_000_000, delta=40_000)

    def test_simple_is_what_is_not_asked_for(self):
        reply = azure_speech(self.peer, target=f'{PATH}?language=de-DE')
        self.assertIn('DisplayText', reply.json)

    def test_detailed_has_no_text_at_the_top(self):
        reply = azure_speech(self.peer, target=DETAILED).json
        self.assertEqual(set(reply), {'RecognitionStatus', 'Offset', 'Duration', 'NBest'})
        best = reply['NBest'][0]
        self.assertEqual(set(best), {'Confidence', 'Lexical', 'ITN', 'MaskedITN', 'Display'})
        self.assertEqual(best['Display'], 'sentence number one.')
        self.assertEqual(best['Lexical'], 'sentence number one')
        self.assertEqual(best['Confidence'], 0.97)

    def test_numbers_are_texts_in_every_second_answer(self):
        for expected in (int, str, int, str):
            reply = azure_speech(self.peer).json
            self.assertEqual([type(reply[name]) for name in ('Offset', 'Duration')], [expected] * 2)
        azure_speech(self.peer)
        self.assertEqual(
            azure_speech(self.peer, target=DETAILED).json['NBest'][0]['Confidence'], '0.97'
        )

    def test_silence_is_success_without_text_and_takes_no_line(self):
        reply = azure_speech(self.peer, wav(silence(2.84)))
        self.assertEqual(reply.status, 200)
        self.assertEqual(
            reply.json,
            {'RecognitionStatus': 'InitialSilenceTimeout', 'Offset': 28_400_000, 'Duration': 0},
        )
        self.assertEqual(azure_speech(self.peer).json['DisplayText'], 'sentence number one.')

    def test_several_stretches_are_one_text(self):
        reply = azure_speech(self.peer, wav(*utterances(2)))
        self.assertEqual(reply.json['DisplayText'], 'sentence number one. sentence number two.')
        self.assertEqual(azure_speech(self.peer).json['DisplayText'], 'sentence number three.')

    def test_lines_that_have_ended_are_no_match(self):
        peer = self.start(AzureSpeech, lines=['Grüße.'])
        self.assertEqual(azure_speech(peer).json['DisplayText'], 'Grüße.')
        self.assertEqual(azure_speech(peer).json['RecognitionStatus'], 'NoMatch')

    def test_sound_in_chunks(self):
        connection = http.client.HTTPConnection('127.0.0.1', self.peer.port, timeout=LIMIT)
        self.addCleanup(connection.close)
        sound = wav(*utterances(1))
        parts = [sound[:44], sound[44:5000], sound[5000:]]
        connection.request('POST', AZURE_TARGET, iter(parts), AZURE_SOUND, encode_chunked=True)
        self.assertEqual(connection.getresponse().status, 200)
        headers = self.peer.wait_for('request')[0]['headers']
        self.assertEqual(headers['transfer-encoding'], 'chunked')

    def test_a_minute_is_taken(self):
        self.assertEqual(azure_speech(self.peer, wav(tone(60))).status, 200)

    def test_each_profanity_option(self):
        for option in ('masked', 'removed', 'raw'):
            reply = azure_speech(self.peer, target=f'{AZURE_TARGET}&profanity={option}')
            self.assertEqual(reply.status, 200)

    def test_an_event_says_what_was_sent_and_answered(self):
        azure_speech(self.peer, wav(silence(0.5), tone(1), silence(0.5)))
        answer = self.peer.wait_for('answer')[0]
        asked = self.peer.events[0]
        self.assertEqual((asked['event'], asked['sequence'], answer['sequence']), ('request', 1, 2))
        self.assertEqual((asked['request'], answer['request']), (1, 1))
        self.assertEqual((asked['method'], asked['path']), ('POST', PATH))
        self.assertEqual(asked['query'], {'language': ['de-DE'], 'format': ['simple']})
        self.assertEqual(asked['headers']['ocp-apim-subscription-key'], 'right')
        self.assertEqual(asked['audio'], 2.0)
        self.assertAlmostEqual(asked['voice'], 1.0, delta=0.004)
        self.assertEqual((asked['stretches'], asked['failed']), (1, None))
        self.assertEqual((answer['status'], answer['text']), (200, ['sentence number one.']))
        self.assertTrue(answer['sent'])


class Refusals(PeerTest):
    def setUp(self):
        self.peer = self.start(AzureSpeech)

    def refuse(self, status, failed, *args, json=True, **changes):
        reply = azure_speech(self.peer, *args, **changes)
        self.assertEqual(reply.status, status)
        self.assert_failed(self.peer, failed)
        if json:
            self.assertEqual(reply.json['error']['code'], str(status))
            self.assertTrue(reply.json['error']['message'])
        return reply

    def test_another_path(self):
        self.refuse(404, 'path', target='/speech/recognition/interactive/v1', json=False)

    def test_another_method(self):
        reply = self.refuse(405, 'method', method='PUT', json=False)
        self.assertEqual(reply.headers['allow'], 'POST')

    def test_the_speech_host_does_not_translate(self):
        for target in (
            f'{AZURE_TARGET}&to=en',
            f'{AZURE_TARGET}&from=de-DE',
            '/speech/translation/cognitiveservices/v1?from=de-DE&to=en',
            '/stt/speech/universal/v2?language=de-DE',
            '/translate?api-version=3.0&language=de-DE',
        ):
            with self.subTest(target=target):
                reply = self.refuse(404, 'no-translation', target=target, json=False)
                self.assertNotIn(b'{', reply.body)

    def test_no_credential(self):
        self.refuse(403, 'credential', without=['Ocp-Apim-Subscription-Key'])

    def test_a_wrong_key(self):
        reply = self.refuse(401, 'key', ocp_apim_subscription_key='wrong')
        self.assertTrue(
            reply.json['error']['message'].startswith(
                'Access denied due to invalid subscription key or wrong API endpoint.'
            )
        )

    def test_a_key_at_the_host_of_another_region(self):
        self.refuse(401, 'region', host='eastus.stt.speech.microsoft.com')

    def test_no_language(self):
        self.refuse(400, 'language-given', target=f'{PATH}?format=simple')

    def test_two_languages(self):
        self.refuse(400, 'language-given', target=f'{AZURE_TARGET}&language=en-US')

    def test_unknown_languages(self):
        for language in ('de', 'de_DE', 'no-NO', 'iw-IL', 'cmn-Hans-CN', 'auto'):
            with self.subTest(language=language):
                self.refuse(400, 'language', target=f'{PATH}?language={language}')

    def test_another_format(self):
        self.refuse(400, 'format', target=f'{PATH}?language=de-DE&format=full')

    def test_another_profanity_option(self):
        self.refuse(400, 'profanity', target=f'{AZURE_TARGET}&profanity=none')

    def test_an_answer_that_is_not_json(self):
        self.refuse(400, 'accept', accept='text/xml')

    def test_other_content_types(self):
        for content_type in (
            'audio/wav',
            'audio/wav; codecs=audio/pcm',
            'audio/wav; codecs=audio/pcm; samplerate=48000',
            'application/octet-stream',
        ):
            with self.subTest(content_type=content_type):
                self.refuse(400, 'content-type', content_type=content_type)

    def test_opus_is_what_the_stand_in_cannot(self):
        self.refuse(501, 'stand-in-can-decode', content_type='audio/ogg; codecs=opus', json=False)

    def test_no_riff_header(self):
        self.refuse(400, 'riff', bytes(3200))

    def test_other_wave_formats(self):
        for sound in (
            wav(tone(1), rate=48000),
            wav(tone(1), channels=2),
            wav(tone(1), width=1),
            wav(tone(1), width=3),
        ):
            with self.subTest(header=sound[:44]):
                self.refuse(400, 'wave-format', sound)

    def test_more_than_a_minute(self):
        self.refuse(400, 'duration', wav(tone(60.01)))

    def test_refusals_take_no_line(self):
        self.refuse(401, 'key', ocp_apim_subscription_key='wrong')
        self.assertEqual(azure_speech(self.peer).json['DisplayText'], 'sentence number one.')

    def test_a_parameter_that_nobody_knows_is_told(self):
        self.assertEqual(azure_speech(self.peer, target=f'{AZURE_TARGET}&cid=1').status, 200)
        self.assertEqual(self.peer.wait_for('request')[0]['surplus'], ['cid'])


class Tokens(PeerTest):
    def setUp(self):
        self.now = 1000.0
        self.peer = self.start(AzureSpeech, clock=lambda: self.now)

    def token(self):
        reply = request(self.peer, 'POST', TOKEN_PATH, b'', {'Ocp-Apim-Subscription-Key': 'right'})
        self.assertEqual(reply.status, 200)
        return reply.body.decode()

    def recognise(self, token):
        return azure_speech(
            self.peer, without=['Ocp-Apim-Subscription-Key'], authorization=f'Bearer {token}'
        ).status

    def test_a_token_stands_for_the_key(self):
        self.assertEqual(self.recognise(self.token()), 200)

    def test_it_lives_for_ten_minutes(self):
        token = self.token()
        self.now += 599
        self.assertEqual(self.recognise(token), 200)
        self.now += 1
        self.assertEqual(self.recognise(token), 401)
        self.assert_failed(self.peer, 'token-age')

    def test_an_invented_token_is_refused(self):
        self.assertEqual(self.recognise('invented'), 401)
        self.assert_failed(self.peer, 'token')

    def test_no_token_for_a_wrong_key(self):
        reply = request(self.peer, 'POST', TOKEN_PATH, b'', {'Ocp-Apim-Subscription-Key': 'wrong'})
        self.assertEqual((reply.status, reply.json['error']['code']), (401, '401'))

    def test_no_fault_meets_the_way_to_a_token(self):
        self.peer.obey({'fault': 'quota'})
        self.assertEqual(self.recognise(self.token()), 403)


class Regions(PeerTest):
    def test_the_hosts_name_tells_the_region(self):
        peer = self.start(AzureSpeech, region='eastus2')
        for host in ('eastus2.stt.speech.microsoft.com', '127.0.0.1:80', 'localhost', '[::1]:80'):
            with self.subTest(host=host):
                self.assertEqual(azure_speech(peer, host=host).status, 200)
        self.assertEqual(azure_speech(peer, host='westeurope.example').status, 401)

    def test_an_address_is_no_region(self):
        hosts = {'127.0.0.1:8': None, '[::1]': None, 'localhost': None, None: None, 'A.b:1': 'a'}
        self.assertEqual({host: region_of(host) for host in hosts}, hosts)

    def test_there_are_only_the_services_own_regions(self):
        with self.assertRaises(ValueError):
            AzureSpeech(region='southindia')


if __name__ == '__main__':
    unittest.main()
