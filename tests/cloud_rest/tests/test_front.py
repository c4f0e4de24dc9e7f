"""nginx in front of a stand-in, asked by curl and by Python's own client."""

import http.client
import json
import os
import pathlib
import select
import signal
import socket
import ssl
import subprocess
import sys
import tempfile
import unittest

from tests.cloud_rest.azure_speech import AzureSpeech
from tests.cloud_rest.front import Front
from tests.cloud_rest.google_translate import GoogleTranslate
from tests.cloud_rest.tests.support import (
    AZURE_SOUND,
    AZURE_TARGET,
    LIMIT,
    PeerTest,
    send,
    tone,
    utterances,
    wav,
)
from tests.cloud_rest.tests.test_programs import ROOT, Program

SOUND = wav(*utterances(1))
HOST = 'westeurope.stt.speech.microsoft.com'


def curl(front, *arguments, host='127.0.0.1', target=AZURE_TARGET, headers=AZURE_SOUND, body=SOUND):
    """What curl wrote, with the version of HTTP and the status in a line of its own behind it."""
    with tempfile.NamedTemporaryFile() as file:
        file.write(body)
        file.flush()
        more = [part for name, value in headers.items() for part in ('-H', f'{name}: {value}')]
        return subprocess.run(
            ['curl', '--silent', '--show-error', '--noproxy', '*', '--max-time', str(LIMIT)]
            + ['--cacert', front.certificate, '--data-binary', f'@{file.name}', *more]
            + ['--write-out', '\n%{http_version} %{http_code}', *arguments]
            + [f'https://{host}:{front.port}{target}'],
            capture_output=True,
            text=True,
            timeout=2 * LIMIT,
        )


class FrontTest(PeerTest):
    def setUp(self):
        self.peer = self.start(AzureSpeech, large=2_000_000)
        self.front = self.enterContext(Front(self.peer.port, names=[HOST]))

    def connect(self):
        context = ssl.create_default_context(cafile=self.front.certificate)
        connection = http.client.HTTPSConnection(
            '127.0.0.1', self.front.port, timeout=LIMIT, context=context
        )
        self.addCleanup(connection.close)
        return connection

    def ask(self, connection):
        return send(connection, 'POST', AZURE_TARGET, SOUND, AZURE_SOUND)

    def assert_over_http2(self, done, text='sentence number one.'):
        body, version = done.stdout.rsplit('\n', 1)
        self.assertEqual((version, done.returncode), ('2 200', 0), done.stderr)
        self.assertEqual(json.loads(body)['DisplayText'], text)


class Through(FrontTest):
    def test_http_2(self):
        self.assert_over_http2(curl(self.front, '--http2'))

    def test_http_1_for_who_knows_no_other(self):
        reply = self.ask(self.connect())
        self.assertEqual(reply.json['DisplayText'], 'sentence number one.')

    def test_the_certificate_has_both_names(self):
        for host in ('127.0.0.1', 'localhost'):
            done = curl(self.front, '--http2', '--ipv4', host=host)
            self.assertEqual(done.returncode, 0, done.stderr)

    def test_another_certificate_is_not_trusted(self):
        context = ssl.create_default_context()
        connection = http.client.HTTPSConnection('127.0.0.1', self.front.port, context=context)
        self.addCleanup(connection.close)
        with self.assertRaises(ssl.SSLCertVerificationError):
            connection.request('POST', AZURE_TARGET)

    def test_the_hosts_name_arrives(self):
        resolve = f'{HOST}:{self.front.port}:127.0.0.1'
        self.assert_over_http2(curl(self.front, '--http2', '--resolve', resolve, host=HOST))
        headers = self.peer.wait_for('request')[0]['headers']
        self.assertEqual(headers['host'], f'{HOST}:{self.front.port}')
        self.assertEqual(self.peer.wait_for('request')[0]['region'], 'westeurope')

    def test_a_minute_of_sound_gets_through(self):
        self.assert_over_http2(curl(self.front, '--http2', body=wav(tone(60))))
        self.assertEqual(self.peer.wait_for('request')[0]['audio'], 60.0)

    def test_a_large_answer_gets_through(self):
        self.peer.obey({'fault': 'large'})
        done = curl(self.front, '--http2')
        self.assert_over_http2(done)
        self.assertGreater(len(done.stdout), 2_000_000)

    def test_a_body_cut_off_is_an_error_of_the_stream(self):
        for fault in ('cut', 'reset'):
            self.peer.obey({'fault': fault})
            done = curl(self.front, '--http2')
            self.assertIn(done.returncode, (18, 92), done.stderr)  # partial file, HTTP/2 stream

    def test_a_stand_in_that_closes_is_a_bad_gateway(self):
        self.peer.obey({'fault': 'closed'})
        done = curl(self.front, '--http2')
        self.assertTrue(done.stdout.endswith('\n2 502'), done.stdout)
        self.assertIn('<html>', done.stdout)

    def test_the_same_in_front_of_another_service(self):
        peer = self.start(GoogleTranslate)
        front = self.enterContext(Front(peer.port))
        body = b'{"q":"one","target":"de","format":"text"}'
        target = '/language/translate/v2?key=right'
        headers = {'Content-Type': 'application/json'}
        done = curl(front, '--http2', target=target, headers=headers, body=body)
        self.assertIn('"de: one"', done.stdout)
        self.assertTrue(done.stdout.endswith('\n2 200'))


class Moods(FrontTest):
    def test_frozen_it_does_not_answer_until_it_is_thawed(self):
        connection = self.connect()
        self.ask(connection)
        self.front.freeze()
        connection.request('POST', AZURE_TARGET, SOUND, AZURE_SOUND)
        ready, _, _ = select.select([connection.sock], [], [], 0)
        self.assertEqual(ready, [])
        self.assertEqual(len(self.peer.wait_for('request')), 1)
        self.front.thaw()
        self.assertEqual(connection.getresponse().status, 200)

    def test_frozen_it_takes_connections_without_a_handshake(self):
        self.front.freeze()
        with socket.create_connection(('127.0.0.1', self.front.port), LIMIT) as plain:
            context = ssl.create_default_context(cafile=self.front.certificate)
            plain.setblocking(False)
            secure = context.wrap_socket(
                plain, server_hostname='127.0.0.1', do_handshake_on_connect=False
            )
            with self.assertRaises(ssl.SSLWantReadError):
                secure.do_handshake()
            secure.close()

    def test_frozen_all_its_processes_are_stopped(self):
        self.front.freeze()
        self.assertEqual(len(self.front.workers), 1)
        for worker in self.front.workers:
            self.assertEqual(state_of(worker), 'T')

    def test_an_idle_connection_is_closed(self):
        connection = self.connect()
        self.ask(connection)
        self.front.close_connections()
        self.assertEqual(connection.sock.recv(1), b'')
        self.assertEqual(self.ask(self.connect()).status, 200)

    def test_one_that_waits_for_its_answer_gets_it(self):
        self.peer.obey({'hold': True})
        connection = self.connect()
        connection.request('POST', AZURE_TARGET, SOUND, AZURE_SOUND)
        self.peer.wait_for('request')
        self.front.close_connections()
        self.peer.obey({'release': True})
        self.assertEqual(connection.getresponse().status, 200)

    def test_all_are_cut(self):
        self.peer.obey({'hold': True})
        connection = self.connect()
        connection.request('POST', AZURE_TARGET, SOUND, AZURE_SOUND)
        self.peer.wait_for('request')
        self.front.cut_connections()
        with self.assertRaises((http.client.RemoteDisconnected, OSError)):
            connection.getresponse()
        self.peer.obey({'release': True})
        self.assertFalse(self.peer.wait_for('answer')[0]['sent'])
        self.assertEqual(self.ask(self.connect()).status, 200)

    def test_a_connection_for_so_many_requests(self):
        front = self.enterContext(Front(self.peer.port, keepalive_requests=2))
        self.front = front
        connection = self.connect()
        self.assertNotEqual(self.ask(connection).headers.get('connection'), 'close')
        self.assertEqual(self.ask(connection).headers['connection'], 'close')


class Ends(FrontTest):
    def test_nothing_is_left_of_it(self):
        with Front(self.peer.port) as front:
            folder = pathlib.Path(front.certificate).parent
            handles = watch(front)
            front.freeze()
        self.assert_ended(handles)
        self.assertFalse(folder.exists())

    def assert_ended(self, handles):
        for handle in handles:
            self.addCleanup(os.close, handle)
            self.assertTrue(select.select([handle], [], [], LIMIT)[0])

    def test_it_ends_with_an_owner_that_is_killed(self):
        with tempfile.TemporaryDirectory() as folder:
            owner = subprocess.Popen(
                [sys.executable, '-c', OWNER.format(port=self.peer.port)],
                cwd=ROOT,
                env={**os.environ, 'TMPDIR': folder},
                stdout=subprocess.PIPE,
            )
            self.addCleanup(owner.stdout.close)
            processes = json.loads(owner.stdout.readline())
            handles = [os.pidfd_open(process) for process in processes]
            owner.kill()
            owner.wait(LIMIT)
            self.assert_ended(handles)

    def test_as_a_program(self):
        program = Program(self, 'front', '--to', self.peer.port)
        self.front.port = program.port
        self.front.certificate = program.listening['certificate']
        self.assert_over_http2(curl(self.front, '--http2'))
        connection = self.connect()
        self.ask(connection)
        for command in ('freeze', 'thaw', 'closeConnections'):
            program.say(**{command: True})
            self.assertEqual(program.event(), {'event': 'done', 'command': command})
        self.assertEqual(connection.sock.recv(1), b'')
        program.say(cutConnections=True)
        self.assertEqual(program.event(), {'event': 'done', 'command': 'cutConnections'})
        self.assertEqual(program.end(), 0)
        self.assertFalse(pathlib.Path(program.listening['certificate']).exists())


OWNER = """
import json, signal
from tests.cloud_rest.front import Front
with Front({port}) as front:
    print(json.dumps([front._process.pid, *front.workers]), flush=True)
    signal.pause()
"""


def watch(front):
    """What becomes readable when a process has ended; of the master and its workers."""
    return [os.pidfd_open(process) for process in (front._process.pid, *front.workers)]


def state_of(process):
    return pathlib.Path(f'/proc/{process}/stat').read_text().rpartition(')')[2].split()[0]


if __name__ == '__main__':
    unittest.main()
