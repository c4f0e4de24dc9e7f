import base64
import struct
import unittest

from tests.cloud_rest.google_speech import GoogleSpeech
from tests.cloud_rest.tests.support import (
    GOOGLE_CONFIG,
    GOOGLE_TARGET,
    PeerTest,
    google_speech,
    pcm,
    silence,
    tone,
    utterances,
    wav,
)

JSON_TYPE = 'application/json'


class Answers(PeerTest):
    def setUp(self):
        self.peer = self.start(GoogleSpeech)

    def test_one_utterance(self):
        reply = google_speech(self.peer)
        self.assertEqual(reply.status, 200)
        self.assertEqual(set(reply.json), {'results', 'totalBilledTime', 'requestId'})
        (result,) = reply.json['results']
        self.assertEqual(
            result['alternatives'], [{'transcript': 'sentence number one.', 'confidence': 0.93}]
        )
        self.assertEqual(result['languageCode'], 'de-de')
        self.assertAlmostEqual(float(result['resultEndTime'].removesuffix('s')), 0.6, delta=0.01)
        self.assertEqual(reply.json['totalBilledTime'], '15s')

    def test_two_utterances_are_two_results_to_be_put_behind_each_other(self):
        results = google_speech(self.peer, pcm(*utterances(2))).json['results']
        self.assertEqual(
            [result['alternatives'][0]['transcript'] for result in results],
            ['sentence number one.', ' sentence number two.'],
        )

    def test_silence_has_no_results_and_takes_no_line(self):
        reply = google_speech(self.peer, pcm(silence(1)))
        self.assertEqual((reply.status, set(reply.json)), (200, {'totalBilledTime', 'requestId'}))
        again = google_speech(self.peer).json['results'][0]['alternatives'][0]
        self.assertEqual(again['transcript'], 'sentence number one.')

    def test_lines_that_have_ended_are_no_results(self):
        peer = self.start(GoogleSpeech, lines=[])
        self.assertNotIn('results', google_speech(peer).json)

    def test_a_channel_tag_stands_in_every_second_answer(self):
        for expected in (False, True, False, True):
            result = google_speech(self.peer).json['results'][0]
            self.assertEqual('channelTag' in result, expected)

    def test_two_alternatives_where_two_are_wanted(self):
        result = google_speech(self.peer, maxAlternatives=2).json['results'][0]
        self.assertEqual(len(result['alternatives']), 2)
        self.assertEqual(result['alternatives'][0]['transcript'], 'sentence number one.')

    def test_the_language_heard_is_one_of_those_allowed(self):
        self.peer.obey({'heard': 'en-US'})
        languages = {'alternativeLanguageCodes': ['fr-FR', 'en-US']}
        result = google_speech(self.peer, **languages).json['results'][0]
        self.assertEqual(result['languageCode'], 'en-us')
        result = google_speech(self.peer, alternativeLanguageCodes=['fr-FR']).json['results'][0]
        self.assertEqual(result['languageCode'], 'de-de')

    def test_a_wave_file_says_what_it_is(self):
        without = ['encoding', 'sampleRateHertz', 'audioChannelCount']
        for rate in (8000, 16000, 48000):
            sound = wav(silence(0.2, rate), tone(0.4, rate=rate), rate=rate)
            reply = google_speech(self.peer, sound, without=without)
            self.assertEqual(len(reply.json['results']), 1)
            self.assertAlmostEqual(self.peer.wait_for('request')[-1]['voice'], 0.4, delta=0.004)

    def test_only_the_language_is_needed_of_the_rest(self):
        others = ['alternativeLanguageCodes', 'enableAutomaticPunctuation', 'model']
        others += ['maxAlternatives', 'audioChannelCount']
        self.assertEqual(google_speech(self.peer, without=others).status, 200)

    def test_each_model(self):
        for model in 'default command_and_search latest_short latest_long phone_call video'.split():
            self.assertEqual(google_speech(self.peer, model=model).status, 200)

    def test_the_limits_of_rate_duration_and_languages_are_within(self):
        for rate in (8000, 48000):
            self.assertEqual(google_speech(self.peer, sampleRateHertz=rate).status, 200)
        self.assertEqual(google_speech(self.peer, pcm(tone(60))).status, 200)
        three = ['en-US', 'iw-IL', 'cmn-Hans-CN']
        self.assertEqual(google_speech(self.peer, alternativeLanguageCodes=three).status, 200)

    def test_a_path_with_an_escaped_colon_is_the_same(self):
        self.assertEqual(
            google_speech(self.peer, target='/v1/speech%3Arecognize?key=right').status, 200
        )

    def test_an_event_says_what_was_heard(self):
        google_speech(self.peer, pcm(*utterances(2)))
        answer = self.peer.wait_for('answer')[0]
        asked = self.peer.events[0]
        self.assertEqual((asked['stretches'], asked['language']), (2, 'de-DE'))
        self.assertEqual(asked['query'], {'key': ['right']})
        self.assertAlmostEqual(asked['voice'], 0.8, delta=0.008)
        self.assertEqual(answer['text'], ['sentence number one.', ' sentence number two.'])


class Keys(PeerTest):
    def setUp(self):
        self.peer = self.start(GoogleSpeech, token='ya29')

    def refuse(self, status, reason, failed, **changes):
        reply = google_speech(self.peer, **changes)
        error = reply.json['error']
        self.assertEqual((reply.status, error['code']), (status, status))
        (detail,) = error['details']
        self.assertEqual(detail['@type'], 'type.googleapis.com/google.rpc.ErrorInfo')
        self.assertEqual((detail['reason'], detail['domain']), (reason, 'googleapis.com'))
        self.assertEqual(detail['metadata']['service'], 'speech.googleapis.com')
        self.assert_failed(self.peer, failed)
        return error

    def test_a_wrong_key_is_a_bad_request(self):
        error = self.refuse(400, 'API_KEY_INVALID', 'key', target='/v1/speech:recognize?key=wrong')
        self.assertEqual(error['status'], 'INVALID_ARGUMENT')
        self.assertEqual(error['message'], 'API key not valid. Please pass a valid API key.')

    def test_a_key_of_the_newer_kind_is_not_taken(self):
        target = '/v1/speech:recognize?key=AQ.right'
        error = self.refuse(401, 'CREDENTIALS_MISSING', 'key-kind', target=target)
        self.assertEqual(error['status'], 'UNAUTHENTICATED')
        self.assertTrue(error['message'].startswith('API keys are not supported by this API.'))
        self.assertEqual(
            error['details'][0]['metadata']['method'], 'google.cloud.speech.v1.Speech.Recognize'
        )

    def test_no_key(self):
        for target in ('/v1/speech:recognize', '/v1/speech:recognize?key='):
            self.refuse(401, 'CREDENTIALS_MISSING', 'credential', target=target)

    def test_a_token_of_the_oauth_kind(self):
        def headers(token):
            return {'Content-Type': JSON_TYPE, 'Authorization': f'Bearer {token}'}

        target = '/v1/speech:recognize'
        self.assertEqual(
            google_speech(self.peer, target=target, headers=headers('ya29')).status, 200
        )
        wrong = headers('other')
        self.refuse(401, 'CREDENTIALS_MISSING', 'token', target=target, headers=wrong)


class Refusals(PeerTest):
    def setUp(self):
        self.peer = self.start(GoogleSpeech)

    def refuse(self, failed, *args, status=400, name='INVALID_ARGUMENT', **changes):
        reply = google_speech(self.peer, *args, **changes)
        error = reply.json['error']
        self.assertEqual((reply.status, error['code']), (status, status))
        self.assertEqual(error['status'], name)
        self.assertTrue(error['message'])
        self.assert_failed(self.peer, failed)

    def test_other_paths(self):
        for path in (
            '/v1/speech',
            '/v1p1beta1/speech:recognize',
            '/v1/speech:longrunningrecognize',
        ):
            with self.subTest(path=path):
                self.refuse('path', target=f'{path}?key=right', status=404, name='NOT_FOUND')

    def test_another_method(self):
        self.refuse('method', method='PUT', status=404, name='NOT_FOUND')

    def test_another_content_type(self):
        self.refuse('content-type', headers={'Content-Type': 'text/plain'})

    def test_what_is_not_json(self):
        for body in (b'{', b'[]', b'\xff'):
            self.refuse('json', body=body)

    def test_more_than_ten_megabytes(self):
        self.refuse('size', body=b' ' * (10 * 1024 * 1024 + 1))

    def test_unknown_names(self):
        self.refuse('config', languageCodes=['de-DE'])
        self.refuse('request', body={'config': GOOGLE_CONFIG, 'content': ''})
        self.refuse('audio', body={'config': GOOGLE_CONFIG, 'audio': {'uri': 'gs://a/b'}})

    def test_missing_parts(self):
        self.refuse('config', body={'audio': {'content': 'AAAA'}})
        self.refuse('audio', body={'config': GOOGLE_CONFIG})

    def test_wrong_types(self):
        wrong = {'sampleRateHertz': '16000', 'languageCode': 1, 'enableAutomaticPunctuation': 1}
        for name, value in wrong.items():
            with self.subTest(name=name):
                self.refuse('config-types', **{name: value})

    def test_no_language(self):
        self.refuse('language-given', without=['languageCode'])

    def test_unknown_languages(self):
        for language in ('de', 'he-IL', 'zh-CN', 'nb-NO', 'pa-IN', 'de_DE', 'auto'):
            with self.subTest(language=language):
                self.refuse('language', languageCode=language)

    def test_four_alternative_languages(self):
        four = ['en-US', 'fr-FR', 'it-IT', 'es-ES']
        self.refuse('alternative-count', alternativeLanguageCodes=four)

    def test_an_unknown_alternative_language(self):
        for code in ('en', 7):
            self.refuse('alternative-languages', alternativeLanguageCodes=[code])

    def test_an_unknown_model(self):
        self.refuse('model', model='chirp_2')

    def test_fewer_alternatives_than_none(self):
        self.refuse('maxAlternatives', maxAlternatives=-1)

    def test_what_is_not_base64(self):
        for content in ('A', '!!!!', 'AA-_', 7):
            with self.subTest(content=content):
                body = {'config': GOOGLE_CONFIG, 'audio': {'content': content}}
                self.refuse('base64', body=body)

    def test_no_sound(self):
        self.refuse('audio-given', b'')

    def test_an_unknown_encoding(self):
        self.refuse('encoding', encoding='PCM')

    def test_raw_sound_needs_encoding_and_rate(self):
        self.refuse('encoding-given', without=['encoding'])
        self.refuse('rate', without=['sampleRateHertz'])

    def test_rates_beyond_the_limits(self):
        for rate in (7999, 48001):
            self.refuse('rate', sampleRateHertz=rate)

    def test_a_rate_that_contradicts_the_wave_file(self):
        self.refuse('rate-of-wave', wav(tone(0.5), rate=48000))

    def test_channels_that_contradict_the_wave_file(self):
        self.refuse('channels', wav(tone(0.5), channels=2))

    def test_more_channels_than_there_are(self):
        self.refuse('channels', audioChannelCount=9)

    def test_a_wave_file_of_another_format(self):
        self.refuse('wave-format', wav(tone(0.5), width=3))

    def test_a_wave_file_cut_off(self):
        self.refuse('riff', wav(tone(0.5))[:-10])

    def test_half_a_sample(self):
        self.refuse('whole-samples', pcm(tone(0.5))[:-1])

    def test_more_than_a_minute(self):
        self.refuse('duration', pcm(tone(60.01)))

    def test_flac_is_what_the_stand_in_cannot(self):
        self.assertEqual(google_speech(self.peer, b'fLaC' + bytes(100)).status, 501)
        self.assert_failed(self.peer, 'stand-in-can-decode')


class Pace(PeerTest):
    def test_nine_hundred_requests_a_minute(self):
        now = [0.0]
        peer = self.start(GoogleSpeech, clock=lambda: now[0])
        peer._recent.extend([0.0] * 899)
        self.assertEqual(google_speech(peer).status, 200)
        reply = google_speech(peer)
        self.assertEqual((reply.status, reply.json['error']['status']), (429, 'RESOURCE_EXHAUSTED'))
        self.assert_failed(peer, 'pace')
        now[0] = 60.0
        self.assertEqual(google_speech(peer).status, 200)


if __name__ == '__main__':
    unittest.main()
