"""Which sessions the stand-in of AssemblyAI begins, how it refuses the others, and its own faults."""

import urllib.parse
from typing import Any

from tests.cloud_services._clock import ManualClock
from tests.cloud_services.assemblyai import OLD_CODES, AssemblyAI
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import Client, PeerTest, knock

MODEL = 'speech_model=universal-streaming-english'
KEY = {'Authorization': 'right'}
NONE: dict[str, str] = {}
REFUSED = 'Unauthorized Connection: '


class HandshakeTest(PeerTest):
    KIND = AssemblyAI
    PATH = f'/v3/ws?sample_rate=16000&{MODEL}'
    HEADERS = KEY

    async def begins(self, peer: Any, path: str | None = None, headers: Any = KEY) -> Client:
        """Begin, and nothing before it."""
        client = await self.connect(peer, path, headers=headers)
        begin = await client.next()
        self.assertEqual(begin['type'], 'Begin')
        self.assertEqual(set(begin), {'type', 'id', 'expires_at'})
        return client

    async def closes(
        self, peer: Any, code: int, reason: str, path: str | None = None, headers: Any = KEY
    ) -> None:
        """An error of the same code, and nothing else."""
        client = await self.connect(peer, path, headers=headers)
        messages = await client.rest()
        self.assertEqual((client.code, client.reason[: len(reason)]), (code, reason))
        (error,) = messages
        self.assertEqual((error['type'], error['error_code']), ('Error', code))
        self.assertEqual(error['error'], client.reason)
        peer.wait_for('refused', code=code, reason=client.reason)


class Keys(HandshakeTest):
    async def test_the_key_goes_without_a_scheme(self) -> None:
        peer = self.peer(key='right')
        await self.begins(peer)
        for wrong in ('wrong', 'Bearer right', 'Token right', ''):
            reason = REFUSED + 'Invalid API key'
            await self.closes(peer, 1008, reason, headers={'Authorization': wrong})

    async def test_a_scheme_is_wrong_with_any_key(self) -> None:
        peer = self.peer()
        await self.begins(peer, headers={'Authorization': 'whatever'})
        wrong = {'Authorization': 'Bearer whatever'}
        await self.closes(peer, 1008, REFUSED, headers=wrong)

    async def test_no_key(self) -> None:
        reason = REFUSED + 'Missing Authorization header'
        await self.closes(self.peer(), 1008, reason, headers=NONE)

    async def test_a_token_is_good_once(self) -> None:
        peer = self.peer(key='right')
        status, _, body = knock(peer, '/v3/token?expires_in_seconds=60', KEY)
        self.assertEqual((status, body['expires_in_seconds']), (200, 60))
        path = f'{self.PATH}&token={body["token"]}'
        await self.begins(peer, path, NONE)
        await self.closes(peer, 1008, REFUSED, path, NONE)

    async def test_a_token_ends(self) -> None:
        peer = self.peer(clock=ManualClock())
        query = 'expires_in_seconds=60&max_session_duration_seconds=90'
        first, second = (knock(peer, f'/v3/token?{query}', KEY)[2]['token'] for _ in range(2))
        client = await self.begins(peer, f'{self.PATH}&token={first}', NONE)
        peer.obey({'advance': 61})
        await self.closes(peer, 1008, REFUSED, f'{self.PATH}&token={second}', NONE)
        peer.obey({'advance': 29})
        await client.rest()
        self.assertEqual(client.code, 3008)

    def test_who_gets_a_token(self) -> None:
        peer = self.peer(key='right')
        self.assertEqual(knock(peer, '/v3/token?expires_in_seconds=60')[0], 401)
        for query in ('', 'expires_in_seconds=0', 'expires_in_seconds=601', 'expires_in_seconds=x'):
            self.assertEqual(knock(peer, '/v3/token?' + query, KEY)[0], 400)
        for most in (59, 10801):
            query = f'expires_in_seconds=1&max_session_duration_seconds={most}'
            self.assertEqual(knock(peer, '/v3/token?' + query, KEY)[0], 400)

    async def test_no_more_sessions_than_there_may_be(self) -> None:
        peer = self.peer(sessions=1)
        first = await self.begins(peer)
        await self.closes(peer, 3009, REFUSED + 'Too many concurrent sessions')
        await first.socket.close()
        peer.wait_for('abandoned')
        await self.begins(peer)


class Queries(HandshakeTest):
    async def test_what_is_taken(self) -> None:
        peer = self.peer()
        terms = urllib.parse.quote('["Orvane", "loopback"]')
        codes = urllib.parse.quote('["de", "en"]')
        for query in (
            f'{MODEL}&encoding=pcm_s16le&format_turns=false&keyterms_prompt={terms}',
            f'speech_model=u3-rt-pro&language_codes={codes}&prompt=hello',
            'speech_model=whisper-rt&language_detection=true&vad_threshold=0.5',
            'speech_model=universal-3-5-pro&inactivity_timeout=3600&min_turn_silence=100',
        ):
            await self.begins(peer, f'/v3/ws?sample_rate=48000&{query}')
        self.assertEqual(peer.all('misuse'), [])

    async def test_what_is_refused(self) -> None:
        peer = self.peer()
        many = urllib.parse.quote(str(['x'] * 101).replace("'", '"'))
        for query in (
            MODEL,
            f'{MODEL}&sample_rate=0',
            f'{MODEL}&sample_rate=16k',
            'sample_rate=16000&speech_model=best',
            f'{MODEL}&sample_rate=16000&encoding=linear16',
            f'{MODEL}&sample_rate=16000&format_turns=True',
            f'{MODEL}&sample_rate=16000&inactivity_timeout=4',
            f'{MODEL}&sample_rate=16000&keyterms_prompt=Orvane',
            f'{MODEL}&sample_rate=16000&keyterms_prompt={many}',
            f'{MODEL}&sample_rate=16000&end_of_turn_confidence_threshold=1.5',
            'sample_rate=16000&speech_model=u3-rt-pro&language_codes=%5B%22nl%22%5D',
            'sample_rate=16000&speech_model=universal-3-6-pro&language_codes=%5B%22en-US%22%5D',
        ):
            await self.closes(peer, 3006, 'Invalid Message: ', '/v3/ws?' + query)

    async def test_what_is_not_as_it_should_be(self) -> None:
        peer = self.peer()
        known = {
            'format_turns=true': 'no speech_model',
            f'{MODEL}&language=en': 'language is deprecated',
            f'{MODEL}&smart_format=true': 'unknown parameter smart_format',
            f'{MODEL}&prompt=hello': 'prompt is for u3 models',
        }
        for query, what in known.items():
            await self.begins(peer, '/v3/ws?sample_rate=16000&' + query)
            peer.wait_for('misuse', what=what)

    def test_what_is_not_here(self) -> None:
        peer = self.peer()
        self.assertEqual(knock(peer, f'/v3/ws?{MODEL}&encoding=opus', KEY)[0], 501)
        self.assertEqual(knock(peer, '/v4/ws', KEY)[0], 404)


class Faults(HandshakeTest):
    async def test_each_that_closes_has_its_code(self) -> None:
        known = {
            'key': (1008, REFUSED + 'Invalid API key'),
            'credit': (1008, REFUSED + 'Insufficient account balance'),
            'model': (3006, 'Invalid Message: '),
            'too-many': (3009, REFUSED + 'Too many concurrent sessions'),
        }
        early = {code: text for code, (text, is_early) in OLD_CODES.items() if is_early}
        known |= {f'old-{code}': (code, text) for code, text in early.items()}
        peer = self.peer()
        for name, (code, reason) in known.items():
            peer.obey({'fault': name, 'times': 1})
            await self.closes(peer, code, reason)
            await self.begins(peer)

    async def test_each_that_closes_later_has_its_code(self) -> None:
        late = {code: text for code, (text, is_early) in OLD_CODES.items() if not is_early}
        self.assertEqual(len(late) + 6, len(OLD_CODES))
        peer = self.peer()
        for code, text in late.items():
            peer.obey({'fault': f'old-{code}', 'times': 1})
            client = await self.begins(peer)
            self.assertEqual((await client.rest())[0]['error_code'], code)
            self.assertEqual((client.code, client.reason), (code, text))

    def test_each_of_the_handshake_has_its_status(self) -> None:
        peer = self.peer()
        for name, status in (('key-http', 401), ('key-http-403', 403), ('unavailable', 503)):
            peer.obey({'fault': name, 'times': 1})
            self.assertEqual(knock(peer, self.PATH, KEY)[0], status)
            self.assertEqual(knock(peer, self.PATH, KEY)[0], 101)

    async def test_internal(self) -> None:
        client = await self.begins(self.peer(faults=['internal']))
        self.assertEqual((await client.rest(), client.code), ([], 1011))

    async def test_the_end_of_a_session_in_an_utterance(self) -> None:
        for fault, code in (('close-mid', 3005), ('expired', 3008)):
            peer = self.peer(faults=[fault])
            client = await self.begins(peer)
            await client.send(*sounds.frames(sounds.pcm(sounds.speech(0.8))))
            messages = await client.rest()
            self.assertEqual([one['type'] for one in messages][-2:], ['Turn', 'Error'])
            self.assertFalse(any(one.get('end_of_turn') for one in messages))
            self.assertEqual(client.code, code)
            peer.wait_for('lost', number=1)

    async def test_too_fast(self) -> None:
        client = await self.begins(self.peer(faults=['too-fast'], burst=2.0))
        await client.send(bytes(3200))
        error = (await client.rest())[0]
        self.assertEqual((error['error_code'], client.code), (3007, 3007))
        self.assertIn('Received 0.10 sec. audio', error['error'])

    async def test_a_reason_that_is_too_long(self) -> None:
        client = await self.begins(self.peer(faults=['long-reason']))
        error = (await client.rest())[0]['error']
        self.assertEqual(len(client.reason), 123)
        self.assertTrue(client.reason.endswith('See Error message for details'))
        self.assertEqual(error[:60], client.reason[:60])
        self.assertGreater(len(error), 123)

    async def test_errors_of_the_older_form(self) -> None:
        client = await self.connect(self.peer(faults=['old-error', 'key']))
        self.assertEqual(await client.rest(), [{'error': REFUSED + 'Invalid API key'}])
        self.assertEqual(client.code, 1008)

    async def test_a_warning(self) -> None:
        client = await self.begins(self.peer(faults=['warning']))
        warning = await client.next()
        self.assertEqual(set(warning), {'type', 'warning_code', 'warning'})

    async def test_a_session_that_ends_before_the_twin(self) -> None:
        peer = self.peer(faults=['no-twin'])
        client = await self.begins(peer, self.PATH + '&format_turns=true')
        await client.send(*sounds.frames(sounds.spoken(1)))
        messages = await client.rest()
        self.assertEqual([one['type'] for one in messages][-2:], ['Turn', 'Error'])
        self.assertTrue(messages[-2]['end_of_turn'])
        self.assertFalse(any(one.get('turn_is_formatted') for one in messages))
        self.assertEqual(client.code, 3005)
