"""What the stand-in of Deepgram says to sound, and how its streams end."""

import hashlib

from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.listening import END, PATH, StreamTest, results, text, utterances

LONG = 'these are ten words that take some time to say.'


class Recognition(StreamTest):
    async def test_every_utterance_is_one_line_in_order(self) -> None:
        peer = self.peer(lines=['One is first.', 'Two, is second!', 'Three is third.'])
        messages = await self.hear(peer, sounds.spoken(5, seconds=1.3))
        expected = ['One is first.', 'Two, is second!', 'Three is third.']
        expected += ['sentence number four.', 'sentence number five.']
        self.assertEqual(utterances(messages), expected)
        self.assertEqual([line['text'] for line in peer.all('line')], expected)
        self.assertEqual([line['number'] for line in peer.all('line')], [1, 2, 3, 4, 5])
        self.assertEqual(peer.all('lost'), [])

    async def test_lines_go_on_with_the_next_stream(self) -> None:
        peer = self.peer()
        for number in ('one', 'two'):
            messages = await self.hear(peer, sounds.spoken(1))
            self.assertEqual(utterances(messages), [f'sentence number {number}.'])

    async def test_text_without_punctuation(self) -> None:
        messages = await self.hear(self.peer(lines=['Well, Sir: no.']), sounds.spoken(1), '')
        self.assertEqual(utterances(messages), ['well sir no'])
        self.assertNotIn('punctuated_word', str(messages))
        messages = await self.hear(self.peer(lines=['No.']), sounds.spoken(1), 'smart_format=true')
        self.assertEqual(utterances(messages), ['No.'])

    async def test_an_interim_for_each_second_that_grows(self) -> None:
        messages = await self.hear(self.peer(lines=[LONG]), sounds.spoken(1, seconds=7))
        shown, committed = [], ''
        for message in results(messages):
            whole = (committed + ' ' + text(message)).strip()
            if message['is_final']:
                committed = whole
            elif whole:
                shown.append(whole)
        self.assertEqual(len(shown), 7)
        for earlier, later in zip(shown, shown[1:]):
            self.assertTrue(later.startswith(earlier) and later != earlier, (earlier, later))
        self.assertEqual(committed, LONG)

    async def test_a_long_utterance_becomes_final_piece_by_piece(self) -> None:
        messages = await self.hear(self.peer(lines=[LONG]), sounds.spoken(1, seconds=7))
        finals = [message for message in results(messages) if message['is_final'] and text(message)]
        self.assertGreaterEqual(len(finals), 3)
        self.assertEqual([one['speech_final'] for one in finals[:-1]], [False] * (len(finals) - 1))
        self.assertTrue(finals[-1]['speech_final'])
        self.assertEqual(' '.join(text(one) for one in finals), LONG)

    async def test_without_interims_only_finals_come(self) -> None:
        messages = await self.hear(self.peer(lines=[LONG]), sounds.spoken(2, seconds=5), '')
        self.assertTrue(all(one['is_final'] for one in results(messages)))

    async def test_silence_gets_empty_results(self) -> None:
        messages = results(await self.hear(self.peer(), sounds.pcm(sounds.pause(9))))
        self.assertEqual({text(one) for one in messages}, {''})
        self.assertEqual(len(messages), 9)
        self.assertEqual([one['is_final'] for one in messages], [False, False, True] * 3)
        self.assertFalse(any(one['speech_final'] for one in messages))

    async def test_places_in_the_sound_follow_each_other(self) -> None:
        messages = results(await self.hear(self.peer(), sounds.spoken(4, seconds=4)))
        finals = [message for message in messages if message['is_final']]
        end = 0.0
        for message in finals:
            self.assertAlmostEqual(message['start'], end, places=2)
            end = message['start'] + message['duration']
        self.assertAlmostEqual(end, 19.0, places=1)
        words = [word for one in finals for word in one['channel']['alternatives'][0]['words']]
        self.assertEqual(len(words), 12)
        for earlier, later in zip(words, words[1:]):
            self.assertLessEqual(earlier['start'], earlier['end'])
            self.assertLessEqual(earlier['end'], later['start'] + 1e-6)

    async def test_the_pause_that_ends_an_utterance_is_the_clients(self) -> None:
        data = sounds.spoken(2, silence=0.6)
        for query, count in (('endpointing=500', 2), ('endpointing=800', 1), ('endpointing=10', 2)):
            messages = await self.hear(self.peer(), data, query)
            self.assertEqual(len(utterances(messages)), count, query)

    async def test_without_endpointing_no_speech_is_final(self) -> None:
        messages = results(await self.hear(self.peer(), sounds.spoken(2), 'endpointing=false'))
        self.assertEqual(len([one for one in messages if text(one)]), 2)
        self.assertFalse(any(one['speech_final'] for one in messages))

    async def test_several_languages_are_named(self) -> None:
        peer = self.peer()
        for hint, language in (('', 'en'), ('&language_hint=de&language_hint=fr', 'de')):
            query = '/v1/listen?model=nova-3&language=multi&encoding=linear16&sample_rate=16000'
            client = await self.connect(peer, query + hint)
            await self.say(client, sounds.spoken(1))
            await client.send(END)
            alternative = results(await client.rest())[0]['channel']['alternatives'][0]
            self.assertEqual(alternative['languages'], [language])
            self.assertEqual({word['language'] for word in alternative['words']}, {language})

    async def test_a_wav_file_says_its_rate_itself(self) -> None:
        data = sounds.spoken(1)
        head = b'RIFF\0\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0' + (16000).to_bytes(4, 'little')
        head += (32000).to_bytes(4, 'little') + b'\2\0\x10\0data\0\0\0\0'
        client = await self.connect(self.peer(), PATH)
        await client.send(head + data[:3200], *sounds.frames(data[3200:]), END)
        self.assertEqual(utterances(await client.rest()), ['sentence number one'])

    async def test_what_is_no_container_cannot_be_decoded(self) -> None:
        client = await self.connect(self.peer(), PATH)
        await self.say(client, sounds.spoken(1)[:3200])
        await client.rest()
        self.assertEqual(client.code, 1008)
        self.assertIn('DATA-0000', client.reason)

    async def test_channels_are_mixed(self) -> None:
        data = sounds.spoken(1)
        stereo = b''.join(data[n : n + 2] + b'\0\0' for n in range(0, len(data), 2))
        messages = await self.hear(self.peer(), stereo, 'channels=2')
        self.assertEqual(utterances(messages), ['sentence number one'])
        self.assertEqual((messages[-1]['channels'], messages[-1]['duration']), (2, 2.2))


class Messages(StreamTest):
    async def test_utterance_ends(self) -> None:
        query = 'interim_results=true&utterance_end_ms=1000'
        data = sounds.pcm(sounds.speech(1), sounds.pause(0.8), sounds.speech(1), sounds.pause(3))
        messages = await self.hear(self.peer(), data, query)
        ends = [one for one in messages if one['type'] == 'UtteranceEnd']
        self.assertEqual([one['channel'] for one in ends], [[0, 1]])
        self.assertAlmostEqual(ends[0]['last_word_end'], 2.8, delta=0.05)
        kinds = [one['type'] for one in messages if one['type'] != 'Results' or text(one)]
        self.assertEqual(kinds[-2:], ['UtteranceEnd', 'Metadata'])

    async def test_the_end_of_an_utterance_makes_it_final(self) -> None:
        query = 'interim_results=true&utterance_end_ms=1000&endpointing=5000'
        messages = await self.hear(self.peer(), sounds.spoken(1, silence=2), query)
        last = [one for one in results(messages) if text(one)][-1]
        self.assertEqual((last['is_final'], last['speech_final']), (True, False))
        self.assertEqual(messages[messages.index(last) + 1]['type'], 'UtteranceEnd')

    async def test_beginnings_are_told_to_those_who_ask(self) -> None:
        for query, count in (('vad_events=true', 2), ('', 0)):
            messages = await self.hear(self.peer(), sounds.spoken(2), query)
            begins = [one for one in messages if one['type'] == 'SpeechStarted']
            self.assertEqual(len(begins), count)
            self.assertTrue(all(one['channel'] == [0] for one in begins))
            if begins:
                self.assertAlmostEqual(begins[0]['timestamp'], 0.6, delta=0.021)

    async def test_finalize_in_the_middle(self) -> None:
        peer = self.peer()
        client = await self.connect(peer)
        await self.say(client, sounds.pcm(sounds.speech(0.8)))
        await client.send({'type': 'Finalize'})
        final = await client.next()
        self.assertEqual(text(final), 'sentence number one.')
        self.assertEqual((final['is_final'], final['from_finalize']), (True, True))
        self.assertTrue(final['speech_final'])
        await self.say(client, sounds.pcm(sounds.speech(0.7), sounds.pause(0.5)))
        self.assertEqual(
            text((await client.until('speech_final', True))[-1]), 'sentence number two.'
        )
        peer.settle()
        self.assertEqual([one['how'] for one in peer.all('line')], ['finalize', 'pause'])

    async def test_finalize_of_nothing(self) -> None:
        client = await self.connect(self.peer())
        await client.send({'type': 'Finalize'})
        final = await client.next()
        self.assertEqual((text(final), final['from_finalize']), ('', True))

    async def test_keep_alive_gets_no_answer(self) -> None:
        client = await self.connect(self.peer())
        await client.send({'type': 'KeepAlive'}, {'type': 'Finalize'})
        self.assertTrue((await client.next())['from_finalize'])

    async def test_the_end_of_the_stream(self) -> None:
        peer = self.peer()
        data = sounds.pcm(sounds.pause(0.5), sounds.speech(0.8))
        messages = await self.hear(peer, data)
        self.assertEqual([one['type'] for one in messages[-2:]], ['Results', 'Metadata'])
        self.assertEqual(text(messages[-2]), 'sentence number one.')
        self.assertTrue(messages[-2]['is_final'])
        metadata = messages[-1]
        self.assertEqual(metadata['request_id'], messages[0]['metadata']['request_id'])
        self.assertEqual((metadata['duration'], metadata['channels']), (1.3, 1))
        self.assertEqual(metadata['sha256'], hashlib.sha256(data).hexdigest())
        self.assertEqual(peer.wait_for('closed')['by'], 'service')
        self.assertEqual(peer.all('line')[0]['how'], 'end')

    async def test_an_empty_binary_frame_ends_the_stream(self) -> None:
        peer = self.peer()
        client = await self.connect(peer)
        await self.say(client, sounds.pcm(sounds.speech(0.5)))
        await client.send(b'')
        messages = await client.rest()
        self.assertEqual(utterances(messages), ['sentence number one.'])
        self.assertEqual((messages[-1]['type'], client.code), ('Metadata', 1000))
        peer.wait_for('misuse', what='empty binary frame')

    async def test_what_it_does_not_understand(self) -> None:
        peer = self.peer()
        client = await self.connect(peer)
        await client.send('hello', '[]', {'type': 'Terminate'}, {'type': 'Configure'})
        kinds = [(await client.next())['type'] for _ in range(4)]
        self.assertEqual(kinds, ['Error'] * 3 + ['ConfigureFailure'])
        self.assertEqual(len(peer.all('misuse')), 3)

    async def test_text_that_comes_as_sound(self) -> None:
        peer = self.peer()
        client = await self.connect(peer)
        await client.send(b'{"type":"KeepAlive"}', b'\0')
        peer.wait_for('misuse', what='a text message in a binary frame')
        peer.wait_for('misuse', what='half a sample at the end of a frame')
