"""What the stand-in of AssemblyAI says to sound and text, and how its sessions end."""

from typing import Any

from tests.cloud_services._clock import ManualClock
from tests.cloud_services.assemblyai import AssemblyAI
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import Client, PeerTest

END = {'type': 'Terminate'}
LONG = 'These are Ten words, that take some time to say.'
PLAIN = 'these are ten words that take some time to say'
ENGLISH = 'speech_model=universal-streaming-english'


def path(query: str) -> str:
    return f'/v3/ws?sample_rate=16000&{query}'


def turns(messages: list[Any]) -> list[Any]:
    return [message for message in messages if message['type'] == 'Turn']


class SessionTest(PeerTest):
    KIND = AssemblyAI
    PATH = path(f'{ENGLISH}&format_turns=true')
    HEADERS = {'Authorization': 'x'}

    async def hear(self, peer: Any, data: bytes, query: str | None = None) -> list[Any]:
        client = await self.connect(peer, None if query is None else path(query))
        await client.send(*sounds.frames(data), END)
        messages = await client.rest()
        self.assertEqual((client.code, messages[0]['type']), (1000, 'Begin'))
        self.assertEqual(messages[-1]['type'], 'Termination')
        return messages

    async def closes(self, client: Client, code: int, reason: str) -> None:
        """With an error of the same code first."""
        messages = await client.rest()
        self.assertEqual((client.code, client.reason), (code, reason))
        self.assertEqual(messages[-1], {'type': 'Error', 'error_code': code, 'error': reason})


class Turns(SessionTest):
    async def test_every_utterance_is_one_turn_in_order(self) -> None:
        peer = self.peer(lines=['One, two.', 'Three!'])
        messages = turns(await self.hear(peer, sounds.spoken(3)))
        final = [one for one in messages if one['turn_is_formatted']]
        texts = ['One, two.', 'Three!', 'sentence number three.']
        self.assertEqual([one['transcript'] for one in final], texts)
        self.assertEqual([one['turn_order'] for one in final], [0, 1, 2])
        self.assertEqual([one['text'] for one in peer.all('line')], texts)
        orders = [one['turn_order'] for one in messages]
        self.assertEqual(orders, sorted(orders))

    async def test_a_turn_grows_word_by_word(self) -> None:
        messages = turns(await self.hear(self.peer(lines=[LONG]), sounds.spoken(1, seconds=3.5)))
        partial = [one for one in messages if not one['end_of_turn']]
        self.assertGreaterEqual(len(partial), 9)
        shown = [' '.join(word['text'] for word in one['words']) for one in partial]
        for earlier, later in zip(shown, shown[1:]):
            self.assertTrue(later.startswith(earlier), (earlier, later))
        for one in partial:
            final = [word['text'] for word in one['words'] if word['word_is_final']]
            self.assertEqual(one['transcript'], ' '.join(final))
            self.assertEqual(len(one['words']) - len(final), 1)
            self.assertLess(one['end_of_turn_confidence'], 0.4)
        self.assertTrue(PLAIN.startswith(shown[-1]))

    async def test_the_formatted_twin(self) -> None:
        messages = turns(await self.hear(self.peer(lines=[LONG]), sounds.spoken(1)))[-2:]
        self.assertEqual([one['end_of_turn'] for one in messages], [True, True])
        self.assertEqual([one['turn_is_formatted'] for one in messages], [False, True])
        self.assertEqual([one['transcript'] for one in messages], [PLAIN, LONG])
        self.assertEqual([one['turn_order'] for one in messages], [0, 0])
        self.assertTrue(all(word['word_is_final'] for word in messages[1]['words']))

    async def test_no_twin_unless_it_was_asked_for(self) -> None:
        messages = turns(await self.hear(self.peer(lines=[LONG]), sounds.spoken(1), ENGLISH))
        ends = [one for one in messages if one['end_of_turn']]
        self.assertEqual([one['transcript'] for one in ends], [PLAIN])
        self.assertFalse(any(one['turn_is_formatted'] for one in messages))

    async def test_the_multilingual_model_is_punctuated_already(self) -> None:
        query = 'speech_model=universal-streaming-multilingual&format_turns=true'
        for faults, formatted in (([], False), (['formatted-flag'], True)):
            peer = self.peer(lines=[LONG], faults=faults)
            messages = turns(await self.hear(peer, sounds.spoken(1), query))
            ends = [one for one in messages if one['end_of_turn']]
            self.assertEqual([one['transcript'] for one in ends], [LONG])
            self.assertEqual(ends[0]['turn_is_formatted'], formatted)
            self.assertTrue(LONG.startswith(messages[1]['transcript']))

    async def test_u3_models(self) -> None:
        for model in ('u3-rt-pro', 'universal-3-5-pro', 'universal-3-6-pro'):
            peer = self.peer(lines=[LONG])
            messages = await self.hear(peer, sounds.spoken(1), f'speech_model={model}')
            begin = messages[1]
            self.assertEqual(begin['type'], 'SpeechStarted')
            self.assertAlmostEqual(begin['timestamp'], 600, delta=21)
            for one in turns(messages):
                self.assertEqual(one['turn_is_formatted'], one['end_of_turn'])
            self.assertEqual(turns(messages)[-1]['transcript'], LONG)

    async def test_other_models_tell_no_beginnings(self) -> None:
        for query in (ENGLISH, 'speech_model=whisper-rt'):
            kinds = {one['type'] for one in await self.hear(self.peer(), sounds.spoken(1), query)}
            self.assertEqual(kinds, {'Begin', 'Turn', 'Termination'})

    async def test_whispers_tags(self) -> None:
        peer = self.peer(faults=['tags'])
        data = sounds.spoken(2, silence=5.6)
        messages = turns(await self.hear(peer, data, 'speech_model=whisper-rt'))
        ends = [one['transcript'] for one in messages if one['end_of_turn']]
        tag = '[Silence]'
        self.assertEqual(ends, [tag, 'sentence number one.', tag, 'sentence number two.', tag])
        self.assertEqual([one['turn_order'] for one in messages if one['end_of_turn']], [*range(5)])

    async def test_the_language_is_told_to_those_who_ask(self) -> None:
        model = 'speech_model=u3-rt-pro'
        codes = '&language_codes=%5B%22de%22%5D'
        for query, language in (('', None), ('&language_detection=true' + codes, 'de')):
            messages = turns(await self.hear(self.peer(), sounds.spoken(1), model + query))
            self.assertEqual({one.get('language_code') for one in messages}, {language})

    async def test_the_pause_that_ends_a_turn_is_the_clients(self) -> None:
        for query, count in (('', 2), ('&min_turn_silence=800', 1), ('&min_turn_silence=10', 2)):
            messages = await self.hear(self.peer(), sounds.spoken(2, silence=0.6), ENGLISH + query)
            self.assertEqual(len([one for one in turns(messages) if one['end_of_turn']]), count)

    async def test_no_partial_turns_where_none_are_wanted(self) -> None:
        query = ENGLISH + '&include_partial_turns=false'
        messages = turns(await self.hear(self.peer(), sounds.spoken(2), query))
        self.assertEqual([one['end_of_turn'] for one in messages], [True, True])

    async def test_mulaw(self) -> None:
        client = await self.connect(self.peer(), path(f'{ENGLISH}&encoding=pcm_mulaw'))
        await client.send(*[bytes([0x90, 0x10] * 800)] * 5, *[bytes([0xFF] * 1600)] * 5, END)
        ends = [one for one in turns(await client.rest()) if one['end_of_turn']]
        self.assertEqual(len(ends), 1)
        self.assertEqual(ends[0]['words'][-1]['end'], 500)


class Messages(SessionTest):
    async def test_terminate_ends_the_open_turn(self) -> None:
        peer = self.peer()
        messages = await self.hear(peer, sounds.pcm(sounds.pause(0.5), sounds.speech(2.0)))
        last = messages[-3:]
        self.assertEqual([one['type'] for one in last], ['Turn', 'Turn', 'Termination'])
        self.assertEqual(last[1]['transcript'], 'sentence number one.')
        self.assertEqual(last[2]['audio_duration_seconds'], 2)
        self.assertIsInstance(last[2]['session_duration_seconds'], int)
        self.assertEqual(peer.wait_for('closed')['by'], 'service')
        self.assertEqual(peer.all('abandoned'), [])

    async def test_a_session_without_terminate_is_abandoned(self) -> None:
        peer = self.peer()
        client = await self.connect(peer)
        await client.socket.close()
        peer.wait_for('abandoned')

    async def test_force_endpoint(self) -> None:
        client = await self.connect(self.peer())
        force = {'type': 'ForceEndpoint'}
        await client.send(force, *sounds.frames(sounds.pcm(sounds.speech(0.8))), force)
        messages = await client.until('turn_is_formatted', True)
        self.assertEqual(messages[-1]['transcript'], 'sentence number one.')

    async def test_the_wishes_can_be_changed(self) -> None:
        client = await self.connect(self.peer())
        update = {'type': 'UpdateConfiguration', 'min_turn_silence': 800, 'format_turns': False}
        await client.send(update, *sounds.frames(sounds.spoken(2, silence=0.6)), END)
        ends = [one for one in turns(await client.rest()) if one['end_of_turn']]
        self.assertEqual([one['turn_is_formatted'] for one in ends], [False])

    async def test_wrong_wishes(self) -> None:
        client = await self.connect(self.peer())
        await client.send({'type': 'UpdateConfiguration', 'vad_threshold': 7})
        why = 'Invalid Message: vad_threshold: 7 is not from 0 to 1'
        await self.closes(client, 3006, why)

    async def test_keep_alive_gets_no_answer(self) -> None:
        client = await self.connect(self.peer())
        await client.send({'type': 'KeepAlive'}, END)
        self.assertEqual([one['type'] for one in await client.rest()], ['Begin', 'Termination'])

    async def test_text_that_cannot_be_used(self) -> None:
        known = {
            'hello': 'Invalid JSON: hello',
            '[]': 'Invalid Message: type is missing',
            '{"terminate_session":true}': 'Invalid Message: type is missing',
            '{"audio_data":"AAAA"}': 'Invalid Message: type is missing',
            '{"type":"CloseStream"}': 'Invalid Message Type: CloseStream',
        }
        for text, why in known.items():
            client = await self.connect(self.peer())
            await client.send(text)
            await self.closes(client, 3006, why)


class Sound(SessionTest):
    async def test_frames_that_are_too_short_or_too_long(self) -> None:
        for size, length in ((0, '0'), (1598, '49.94'), (640, '20'), (32002, '1000.06')):
            client = await self.connect(self.peer())
            await client.send(bytes(size))
            why = f'Input duration violation: {length} ms. Expected between 50 and 1000 ms'
            await self.closes(client, 3007, why)

    async def test_frames_that_are_just_right(self) -> None:
        client = await self.connect(self.peer())
        await client.send(bytes(1600), bytes(32000), END)
        self.assertEqual((await client.rest())[-1]['type'], 'Termination')

    async def test_sound_that_is_too_fast(self) -> None:
        peer = self.peer(clock=ManualClock(), burst=2.0)
        client = await self.connect(peer)
        for _ in range(30):
            await client.send(bytes(3200))
            await client.answered()
            peer.obey({'advance': 0.1})
        self.assertEqual(peer.all('too_fast'), [])
        await client.send(*[bytes(3200)] * 21)
        why = 'Audio Transmission Rate Exceeded: Received 2.10 sec. audio in 0.00 sec'
        await self.closes(client, 3007, why)
        self.assertEqual(len(peer.all('too_fast')), 1)

    async def test_sound_before_begin(self) -> None:
        peer = self.peer(faults=['slow-begin:1'])
        client = await self.connect(peer)
        peer.wait_for('held', what='begin')
        await client.send(bytes(3200))
        await client.answered()
        peer.wait_for('misuse', what='sound before Begin')
        peer.obey({'release': True})
        self.assertEqual((await client.next())['type'], 'Begin')
        await client.send(END)
        self.assertEqual([one['type'] for one in await client.rest()], ['Termination'])


class Ends(SessionTest):
    async def test_a_session_lasts_three_hours(self) -> None:
        peer = self.peer(clock=ManualClock())
        client = await self.connect(peer)
        await client.answered()
        peer.obey({'advance': 10799})
        await client.send({'type': 'KeepAlive'})
        await client.answered()
        peer.obey({'advance': 1})
        await self.closes(client, 3008, 'Session Expired: Maximum session duration exceeded')

    async def test_inactivity(self) -> None:
        peer = self.peer(clock=ManualClock())
        client = await self.connect(peer, self.PATH + '&inactivity_timeout=5')
        for message in ({'type': 'KeepAlive'}, bytes(3200)):
            peer.obey({'advance': 4})
            await client.send(message)
            await client.answered()
        peer.obey({'advance': 5})
        await self.closes(client, 3005, 'Session Cancelled: no activity within inactivity_timeout')
