"""The stand-ins as programs of their own."""

import array
import contextlib
import fcntl
import io
import json
import os
import pathlib
import queue
import ssl
import subprocess
import sys
import tempfile
import termios
import textwrap
import threading
import unittest
import urllib.error
import urllib.request

from tests.cloud_rest.azure_speech import AzureSpeech
from tests.cloud_rest.program import common_options
from tests.cloud_rest.tests.support import (
    AZURE_SOUND,
    AZURE_TARGET,
    LIMIT,
    azure_speech,
    azure_translator,
    google_speech,
    google_translate,
    utterances,
    wav,
)

ROOT = pathlib.Path(__file__).resolve().parents[3]


class Program:
    """One of the programs, its events and its commands."""

    def __init__(self, test, module, *arguments):
        self.process = subprocess.Popen(
            [sys.executable, '-m', f'tests.cloud_rest.{module}', *map(str, arguments)],
            cwd=ROOT,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )
        test.addCleanup(self.end)
        self._lines = queue.SimpleQueue()
        self._reader = threading.Thread(target=self._read)
        self._reader.start()
        self.listening = self.event()
        self.port = self.listening['port']

    def _read(self):
        for line in self.process.stdout:
            self._lines.put(json.loads(line))

    def event(self):
        """The next one, waited for with a generous limit."""
        return self._lines.get(timeout=LIMIT)

    def say(self, **command):
        self.process.stdin.write(json.dumps(command) + '\n')
        self.process.stdin.flush()

    def end(self):
        if not self.process.stdin.closed:
            self.process.stdin.close()
        status = self.process.wait(LIMIT)
        self._reader.join(LIMIT)
        self.process.stdout.close()
        return status


class Programs(unittest.TestCase):
    ALL = {
        'azure_speech': azure_speech,
        'azure_translator': azure_translator,
        'google_speech': google_speech,
        'google_translate': google_translate,
    }

    def test_each_listens_answers_tells_and_ends(self):
        for module, ask in self.ALL.items():
            with self.subTest(module=module):
                program = Program(self, module, '--key', 'right')
                self.assertEqual(program.listening['event'], 'listening')
                self.assertIsNone(program.listening['certificate'])
                self.assertEqual(ask(program).status, 200)
                asked, answered = program.event(), program.event()
                self.assertEqual((asked['event'], asked['sequence']), ('request', 1))
                self.assertEqual((answered['event'], answered['sequence']), ('answer', 2))
                self.assertEqual(answered['status'], 200)
                self.assertTrue(answered['text'])
                self.assertEqual(program.end(), 0)

    def test_a_fault_from_the_command_line_and_one_from_standard_input(self):
        program = Program(self, 'azure_speech', '--fault', 'quota', 'none', '--key', 'right')
        self.assertEqual([azure_speech(program).status for _ in range(3)], [403, 200, 200])
        for _ in range(6):
            program.event()
        program.say(fault='unavailable')
        program.say(nonsense=True)  # What it says of this shows that it has obeyed the first.
        self.assertEqual(program.event()['event'], 'misuse')
        self.assertEqual(azure_speech(program).status, 503)

    def test_who_still_speaks_does_not_break_the_end(self):
        talker = textwrap.dedent(
            """
            import sys, threading
            from tests.cloud_rest.helpers import say
            def talk():
                while True:
                    say(event='x', text='y' * 3000)
            threading.Thread(target=talk, daemon=True).start()
            sys.stdin.read()
        """
        )
        buffered = {name: value for name, value in os.environ.items() if name != 'PYTHONUNBUFFERED'}
        with subprocess.Popen([sys.executable, '-c', talker], cwd=ROOT, env=buffered,
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE) as program:  # fmt: skip
            self.addCleanup(program.kill)
            waits = array.array('i', [0])
            while waits[0] < 40000:  # Until the pipe is nearly full: who speaks waits now, or soon.
                fcntl.ioctl(program.stdout, termios.FIONREAD, waits)
            program.stdin.close()
            self.assertEqual(program.wait(LIMIT), 0)

    def test_an_unknown_option_is_refused(self):
        found = subprocess.run(
            [sys.executable, '-m', 'tests.cloud_rest.azure_speech', '--nonsense'],
            cwd=ROOT,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=LIMIT,
        )
        self.assertEqual((found.returncode, found.stdout), (2, b''))

    def test_an_unknown_fault_is_refused(self):
        with contextlib.redirect_stderr(io.StringIO()) as said, self.assertRaises(SystemExit):
            common_options(AzureSpeech).parse_args(['--fault', 'nothing'])
        self.assertIn('invalid choice', said.getvalue())

    def test_the_lines_of_a_file(self):
        with tempfile.NamedTemporaryFile('w', suffix='.txt', encoding='utf-8') as file:
            file.write('Grüße.\n\n漢字\n')
            file.flush()
            program = Program(self, 'azure_speech', '--lines', file.name, '--key', 'right')
            texts = [azure_speech(program).json.get('DisplayText') for _ in range(3)]
        self.assertEqual(texts, ['Grüße.', '漢字', None])

    def test_the_kind_of_a_translators_key(self):
        program = Program(self, 'azure_translator', '--key-kind', 'speech-only')
        self.assertEqual(azure_translator(program).json['error']['code'], 401015)

    def test_with_tls(self):
        program = Program(self, 'azure_speech', '--tls', '--key', 'right')
        context = ssl.create_default_context(cafile=program.listening['certificate'])
        url = f'https://127.0.0.1:{program.port}{AZURE_TARGET}'
        asked = urllib.request.Request(url, wav(*utterances(1)), AZURE_SOUND)
        with urllib.request.urlopen(asked, timeout=LIMIT, context=context) as answer:
            self.assertEqual(json.load(answer)['DisplayText'], 'sentence number one.')

    def test_a_refusal_as_urllib_sees_it(self):
        program = Program(self, 'azure_speech', '--key', 'another')
        url = f'http://127.0.0.1:{program.port}{AZURE_TARGET}'
        asked = urllib.request.Request(url, wav(*utterances(1)), AZURE_SOUND)
        with self.assertRaises(urllib.error.HTTPError) as caught:
            urllib.request.urlopen(asked, timeout=LIMIT)
        with caught.exception as answer:
            self.assertEqual(answer.code, 401)
            self.assertEqual(json.load(answer)['error']['code'], '401')


class InsideATest(unittest.TestCase):
    def test_the_process_is_not_tied_to_its_parent(self):
        found = subprocess.run(
            [sys.executable, '-c', ASK_FOR_DEATH_SIGNAL],
            cwd=ROOT,
            capture_output=True,
            text=True,
            timeout=LIMIT,
        )
        self.assertEqual(found.stdout, '0\n', found.stderr)


ASK_FOR_DEATH_SIGNAL = """
import ctypes
import tests.cloud_rest.azure_speech
signal = ctypes.c_int(-1)
ctypes.CDLL(None).prctl(2, ctypes.byref(signal))
print(signal.value)
"""


if __name__ == '__main__':
    unittest.main()
