"""The course of requests: held back, given up, sent again, many at a time."""

import http.client
import socket
import threading
import unittest

from tests.cloud_rest.azure_speech import AzureSpeech
from tests.cloud_rest.tests.support import (
    AZURE_SOUND,
    AZURE_TARGET,
    LIMIT,
    PeerTest,
    azure_speech,
    send,
    utterances,
    wav,
)

SOUND = wav(*utterances(1))


class Client:
    """A request that is under way in a thread of its own."""

    def __init__(self, peer):
        self.reply = None
        self._thread = threading.Thread(target=self._run, args=(peer,))
        self._thread.start()

    def _run(self, peer):
        self.reply = azure_speech(peer, SOUND)

    def text(self):
        self._thread.join(LIMIT)
        return self.reply.json['DisplayText']


class Held(PeerTest):
    def setUp(self):
        self.peer = self.start(AzureSpeech)

    def answered(self):
        return [event['request'] for event in self.peer.events if event['event'] == 'answer']

    def clients(self, count):
        """They come one after the other, so that the numbers of their requests are known."""
        clients = []
        for number in range(count):
            clients.append(Client(self.peer))
            self.peer.wait_for('request', number + 1)
        return clients

    def test_nothing_is_answered_before_the_release(self):
        self.peer.obey({'hold': True})
        clients = self.clients(3)
        self.assertEqual(self.answered(), [])
        self.peer.obey({'release': True})
        self.assertEqual(
            [client.text() for client in clients],
            ['sentence number one.', 'sentence number two.', 'sentence number three.'],
        )

    def test_answers_in_another_order(self):
        self.peer.obey({'hold': True})
        clients = self.clients(3)
        for count, number in enumerate((3, 1, 2), start=1):
            self.peer.obey({'release': number})
            clients[number - 1].text()
            self.peer.wait_for('answer', count)  # It is told when it has been sent.
        self.assertEqual(self.answered(), [3, 1, 2])

    def test_after_the_release_nothing_is_held(self):
        self.peer.obey({'hold': True})
        self.peer.obey({'release': True})
        self.assertEqual(azure_speech(self.peer).status, 200)

    def test_the_end_of_the_stand_in_ends_what_is_held(self):
        with AzureSpeech() as peer:
            peer.obey({'hold': True})
            client = self.open(peer)
        self.assertIn(client.recv(1), (b'', b'H'))

    def open(self, peer):
        before = len([event for event in peer.events if event['event'] == 'request'])
        client = socket.create_connection(('127.0.0.1', peer.port), LIMIT)
        self.addCleanup(client.close)
        headers = {**AZURE_SOUND, 'Host': 'localhost', 'Content-Length': str(len(SOUND))}
        head = ''.join(f'{name}: {value}\r\n' for name, value in headers.items())
        client.sendall(f'POST {AZURE_TARGET} HTTP/1.1\r\n{head}\r\n'.encode() + SOUND)
        self.assertEqual(len(peer.wait_for('request', before + 1)), before + 1)
        return client

    def test_who_gives_up_finds_the_same_words_again(self):
        self.peer.obey({'hold': True})
        self.open(self.peer).close()
        self.peer.obey({'release': True})
        self.assertEqual(azure_speech(self.peer, SOUND).json['DisplayText'], 'sentence number one.')
        self.assertEqual(azure_speech(self.peer, SOUND).json['DisplayText'], 'sentence number two.')
        sent = {event['request']: event['sent'] for event in self.peer.wait_for('answer', 3)}
        self.assertEqual(sent, {1: False, 2: True, 3: True})

    def test_who_comes_again_while_the_first_is_still_held_does_too(self):
        self.peer.obey({'hold': True})
        self.open(self.peer).close()
        again = Client(self.peer)
        self.peer.wait_for('request', 2)
        self.peer.obey({'release': True})
        self.assertEqual(again.text(), 'sentence number one.')

    def test_who_waits_keeps_the_words(self):
        self.peer.obey({'hold': True})
        first, second = self.clients(2)
        self.peer.obey({'release': True})
        self.assertEqual(first.text(), 'sentence number one.')
        self.assertEqual(second.text(), 'sentence number two.')


class Again(PeerTest):
    def test_a_line_nobody_received_is_said_to_the_next(self):
        for fault in ('cut', 'reset', 'closed', 'html-200', 'html-502', 'empty', 'broken-json'):
            with self.subTest(fault=fault):
                peer = self.start(AzureSpeech, fault=[fault, 'none'])
                try:
                    azure_speech(peer)
                except (http.client.HTTPException, OSError):
                    pass
                self.assertEqual(azure_speech(peer).json['DisplayText'], 'sentence number one.')
                self.assertEqual(azure_speech(peer).json['DisplayText'], 'sentence number two.')

    def test_a_line_that_came_slowly_or_in_a_large_body_is_said_once(self):
        for fault in ('slow', 'large'):
            with self.subTest(fault=fault):
                peer = self.start(AzureSpeech, fault=fault, large=100, wait=lambda seconds: None)
                texts = [azure_speech(peer).json['DisplayText'] for _ in range(2)]
                self.assertEqual(texts, ['sentence number one.', 'sentence number two.'])


class Delays(PeerTest):
    def test_every_answer_waits_as_told(self):
        waited = []
        peer = self.start(AzureSpeech, wait=waited.append)
        peer.obey({'slow': 2.5})
        azure_speech(peer)
        azure_speech(peer)
        peer.obey({'slow': 0})
        azure_speech(peer)
        self.assertEqual(waited, [2.5, 2.5])

    def test_a_stalled_body_ends_with_the_client(self):
        peer = self.start(AzureSpeech, fault='stall')
        connection = http.client.HTTPConnection('127.0.0.1', peer.port, timeout=LIMIT)
        connection.request('POST', AZURE_TARGET, SOUND, AZURE_SOUND)
        answer = connection.getresponse()
        self.assertEqual(answer.status, 200)
        length = int(answer.headers['content-length'])
        self.assertEqual(len(answer.read(length // 2)), length // 2)
        self.assertEqual([e for e in peer.events if e['event'] == 'answer'], [])
        answer.close()
        connection.close()
        self.assertFalse(peer.wait_for('answer')[0]['sent'])


class Connections(PeerTest):
    def setUp(self):
        self.peer = self.start(AzureSpeech)
        self.connection = http.client.HTTPConnection('127.0.0.1', self.peer.port, timeout=LIMIT)
        self.addCleanup(self.connection.close)

    def send(self):
        return send(self.connection, 'POST', AZURE_TARGET, SOUND, AZURE_SOUND)

    def test_one_serves_for_several_requests(self):
        self.send()
        self.send()
        numbers = [event['connection'] for event in self.peer.wait_for('request', 2)]
        self.assertEqual(numbers, [1, 1])

    def test_an_idle_one_is_closed(self):
        self.send()
        self.peer.obey({'closeConnections': True})
        self.assertEqual(self.connection.sock.recv(1), b'')

    def test_one_that_waits_for_its_answer_is_not(self):
        self.peer.obey({'hold': True})
        self.connection.request('POST', AZURE_TARGET, SOUND, AZURE_SOUND)
        self.peer.wait_for('request')
        self.peer.obey({'closeConnections': True})
        self.peer.obey({'release': True})
        self.assertEqual(self.connection.getresponse().status, 200)

    def test_who_asks_first_is_told_to_go_on(self):
        raw = socket.create_connection(('127.0.0.1', self.peer.port), LIMIT)
        self.addCleanup(raw.close)
        headers = {**AZURE_SOUND, 'Host': 'localhost', 'Expect': '100-continue'}
        headers['Content-Length'] = str(len(SOUND))
        head = ''.join(f'{name}: {value}\r\n' for name, value in headers.items())
        raw.sendall(f'POST {AZURE_TARGET} HTTP/1.1\r\n{head}\r\n'.encode())
        with raw.makefile('rb') as answers:
            self.assertEqual(answers.readline(), b'HTTP/1.1 100 Continue\r\n')
            raw.sendall(SOUND)
            self.assertEqual(answers.readline(), b'\r\n')
            self.assertEqual(answers.readline(), b'HTTP/1.1 200 OK\r\n')

    def test_a_length_that_is_none_ends_it(self):
        raw = socket.create_connection(('127.0.0.1', self.peer.port), LIMIT)
        self.addCleanup(raw.close)
        raw.sendall(b'POST / HTTP/1.1\r\nHost: x\r\nContent-Length: many\r\n\r\n')
        self.assertEqual(raw.recv(1), b'')

    def test_chunks_that_are_none_end_it(self):
        for chunk in (b'zz\r\n', b'2\r\nabcd', b'-1\r\n'):
            raw = socket.create_connection(('127.0.0.1', self.peer.port), LIMIT)
            self.addCleanup(raw.close)
            head = b'POST / HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n'
            raw.sendall(head + chunk)
            raw.shutdown(socket.SHUT_WR)
            self.assertEqual(raw.recv(1), b'')


class Commands(unittest.TestCase):
    def test_what_is_no_command_is_told(self):
        for command in (
            {'fault': 'nothing'},
            {'slow': 'long'},
            {'hold': False},
            {'release': None},
            {'dance': True},
            ['fault'],
        ):
            with self.subTest(command=command), AzureSpeech() as peer:
                peer.obey(command)
                self.assertEqual(len(peer.wait_for('misuse')), 1)


if __name__ == '__main__':
    unittest.main()
