"""Which handshakes the stand-in of Deepgram takes, and how it refuses the others."""

from tests.cloud_services.deepgram import Deepgram
from tests.cloud_services.tests.client import PeerTest, knock

AUDIO = 'encoding=linear16&sample_rate=16000'
KEY = {'Authorization': 'Token right'}


def listen(query: str) -> str:
    return f'/v1/listen?{AUDIO}&{query}'


class Handshake(PeerTest):
    KIND = Deepgram
    HEADERS: dict[str, str] = {}

    def setUp(self) -> None:
        self.stand_in = self.peer(key='right', token='brief')

    def expect(self, path: str, status: int, code: str = '', message: str = '') -> None:
        got, headers, body = knock(self.stand_in, path, KEY)
        self.stand_in.settle()
        self.assertEqual(got, status, path)
        self.assertTrue(headers['dg-request-id'])
        if status == 101:
            return
        self.assertEqual(body['err_code'], code, path)
        self.assertEqual(body['err_msg'][: len(message)], message)
        self.assertEqual(headers['dg-error'], body['err_msg'])
        self.assertEqual(headers['dg-request-id'], body['request_id'])
        self.assertEqual(headers['content-type'], 'application/json')
        self.stand_in.wait_for('refused', status=status, body=body)

    def refuses_query(self, query: str) -> None:
        wrong = 'Failed to deserialize query parameters: '
        self.expect(listen('model=nova-3&' + query), 400, 'INVALID_QUERY_PARAMETER', wrong)

    def test_keys(self) -> None:
        path = listen('model=nova-3')
        good = [
            {'Authorization': 'Token right'},
            {'Authorization': 'Bearer brief'},
            {'Sec-WebSocket-Protocol': 'token, right'},
        ]
        bad = [
            {},
            {'Authorization': 'Token wrong'},
            {'Authorization': 'Token brief'},
            {'Authorization': 'Bearer right'},
            {'Authorization': 'right'},
            {'Authorization': 'Token '},
            {'Authorization': 'Basic right'},
            {'Sec-WebSocket-Protocol': 'token, wrong'},
            {'Sec-WebSocket-Protocol': 'token'},
            {'Sec-WebSocket-Protocol': 'right'},
            {'Authorization': 'Token wrong', 'Sec-WebSocket-Protocol': 'token, right'},
        ]
        for headers in good:
            self.assertEqual(knock(self.stand_in, path, headers)[0], 101, headers)
        for headers in bad:
            status, answer, body = knock(self.stand_in, path, headers)
            self.assertEqual((status, body['err_code']), (401, 'INVALID_AUTH'), headers)
            self.assertEqual(answer['dg-error'], 'Invalid credentials.')

    def test_without_a_key_any_goes_but_none(self) -> None:
        anyone = self.peer()
        path = listen('model=nova-3')
        self.assertEqual(knock(anyone, path, {'Authorization': 'Token x'})[0], 101)
        self.assertEqual(knock(anyone, path)[0], 401)

    def test_the_subprotocol_is_confirmed(self) -> None:
        offered = {'Sec-WebSocket-Protocol': 'token, right'}
        _, headers, _ = knock(self.stand_in, listen('model=nova-3'), offered)
        self.assertEqual(headers['sec-websocket-protocol'], 'token')
        _, headers, _ = knock(self.stand_in, listen('model=nova-3'), KEY)
        self.assertNotIn('sec-websocket-protocol', headers)

    def test_another_path(self) -> None:
        self.expect('/v2/listen', 404, 'NOT_FOUND')

    def test_what_is_no_websocket(self) -> None:
        status, _, body = knock(self.stand_in, listen('model=nova-3'), KEY, 'POST')
        self.assertEqual((status, body), (400, {'error': 'not a handshake'}))

    def test_languages_that_a_model_has(self) -> None:
        known = {
            'nova-3': 'multi en en-GB de de-CH pt-BR es-419 be zh-HK zh-Hant tl ne pa ur kk af hy ka',
            'nova-2': 'multi en en-IN de th-TH ko-KR zh-HK nl-BE da-DK sv-SE vi',
        }
        for model, languages in known.items():
            for language in languages.split():
                self.expect(listen(f'model={model}&language={language}'), 101)

    def test_languages_that_a_model_lacks(self) -> None:
        unknown = {
            'nova-3': 'ar ml or gl xh zu am en_US pt_BR de-DE EN auto yue nn',
            'nova-2': 'be hr he fa ta te tl ar gl en_GB ur kk',
            'nova': 'en',
            'whisper-large': 'en',
            'nova-3-secret': 'en',
        }
        message = 'Bad Request: No such model/language/tier combination found.'
        for model, languages in unknown.items():
            for language in languages.split():
                path = listen(f'model={model}&language={language}')
                self.expect(path, 400, 'Bad Request', message)

    def test_english_is_what_no_language_means(self) -> None:
        self.expect(listen('model=nova-3'), 101)
        self.expect(listen(''), 101)
        self.stand_in.wait_for('misuse', what='no model')
        self.expect(listen('language=de'), 400, 'Bad Request')

    def test_hints_for_several_languages(self) -> None:
        self.expect(listen('model=nova-3&language=multi&language_hint=gl&language_hint=zu'), 101)
        self.assertEqual(self.stand_in.all('misuse'), [])
        self.expect(listen('model=nova-3&language=multi&language_hint=xx'), 400, 'Bad Request')
        self.expect(listen('model=nova-3&language=de&language_hint=de'), 101)
        what = 'language_hint without language=multi of nova-3'
        self.stand_in.wait_for('misuse', what=what)

    def test_languages_are_not_detected_live(self) -> None:
        for value in ('true', 'false', 'de'):
            path = listen(f'model=nova-3&detect_language={value}')
            self.expect(path, 400, 'Bad Request', 'Bad Request: detect_language')

    def test_encoding_and_rate_belong_together(self) -> None:
        wrong = 'INVALID_QUERY_PARAMETER'
        self.expect('/v1/listen?model=nova-3&encoding=linear16', 400, wrong)
        self.expect('/v1/listen?model=nova-3&sample_rate=16000', 400, wrong)
        self.expect('/v1/listen?model=nova-3', 101)

    def test_encodings(self) -> None:
        path = '/v1/listen?model=nova-3&sample_rate=8000&encoding='
        self.expect(path + 'mulaw', 101)
        self.expect(path + 'pcm', 400, 'INVALID_QUERY_PARAMETER')
        self.expect(path + 'opus', 501, 'NOT_IN_THE_STAND_IN')

    def test_booleans_are_lower_case(self) -> None:
        for name in ('interim_results', 'punctuate', 'smart_format', 'vad_events', 'mip_opt_out'):
            self.expect(listen(f'model=nova-3&{name}=true'), 101)
            self.expect(listen(f'model=nova-3&{name}=false'), 101)
            for value in ('True', 'FALSE', '1', ''):
                self.refuses_query(f'{name}={value}')

    def test_numbers(self) -> None:
        self.expect(listen('model=nova-3&endpointing=300&channels=2'), 101)
        self.expect(listen('model=nova-3&endpointing=false'), 101)
        for query in ('endpointing=true', 'endpointing=1.5', 'channels=two', 'channels=0'):
            self.refuses_query(query)
        for rate in ('0', '-16000', '16k', ''):
            path = f'/v1/listen?model=nova-3&encoding=linear16&sample_rate={rate}'
            self.expect(path, 400, 'INVALID_QUERY_PARAMETER')

    def test_ends_of_utterances_need_interims(self) -> None:
        self.refuses_query('utterance_end_ms=1000')
        self.expect(listen('model=nova-3&utterance_end_ms=1000&interim_results=true'), 101)
        self.assertEqual(self.stand_in.all('misuse'), [])
        self.expect(listen('model=nova-3&utterance_end_ms=500&interim_results=true'), 101)
        self.stand_in.wait_for('misuse', what='utterance_end_ms below 1000')

    def test_what_is_no_list_comes_once(self) -> None:
        self.refuses_query('language=en&language=de')
        self.expect(listen('model=nova-3&keyterm=one&keyterm=two&tag=a&tag=b'), 101)

    def test_words_to_listen_for(self) -> None:
        self.expect(listen('model=nova-2&keywords=one'), 101)
        self.refuses_query('keywords=one')
        self.expect(listen('model=nova-2&keyterm=one'), 400, 'INVALID_QUERY_PARAMETER')

    def test_unknown_parameters_are_told(self) -> None:
        self.expect(listen('model=nova-3&format_turns=true'), 101)
        self.stand_in.wait_for('misuse', what='unknown parameter format_turns')

    async def test_no_more_streams_than_there_may_be(self) -> None:
        few = self.peer(sessions=1)
        first = await self.connect(few, listen('model=nova-3'), subprotocols=['token', 'x'])
        few.wait_for('accepted')
        status, headers, body = knock(few, listen('model=nova-3'), KEY)
        self.assertEqual((status, body['err_code']), (429, 'TOO_MANY_REQUESTS'))
        self.assertIn('Too many requests', headers['dg-error'])
        await first.socket.close()
        few.wait_for('closed')
        self.assertEqual(knock(few, listen('model=nova-3'), KEY)[0], 101)
