"""The stand-ins as programs, and their description."""

import json
import pathlib
import queue
import re
import subprocess
import sys
import tempfile
import threading
from typing import Any

from tests.cloud_services import assemblyai, deepgram
from tests.cloud_services.tests import sounds
from tests.cloud_services.tests.client import PATIENT, PeerTest, knock

FOLDER = pathlib.Path(__file__).parents[1]
ROOT = FOLDER.parents[1]
LISTEN = '/v1/listen?model=nova-3&encoding=linear16&sample_rate=16000&punctuate=true'
WS = '/v3/ws?sample_rate=16000&speech_model=universal-streaming-english'


class Program:
    """A stand-in in a process of its own."""

    def __init__(self, name: str, *arguments: str) -> None:
        command = [sys.executable, '-m', f'tests.cloud_services.{name}', *arguments]
        pipe = subprocess.PIPE
        self.process = subprocess.Popen(command, cwd=ROOT, stdin=pipe, stdout=pipe, text=True)
        self._said: queue.Queue[Any] = queue.Queue()
        threading.Thread(target=self._read, daemon=True).start()
        listening = self.event('listening')
        self.port, self.certificate = listening['port'], listening['certificate']

    def _read(self) -> None:
        assert self.process.stdout
        for line in self.process.stdout:
            self._said.put(json.loads(line))

    def event(self, name: str) -> Any:
        while True:
            said = self._said.get(timeout=PATIENT)
            if said['event'] == name:
                return said

    def tell(self, text: str) -> None:
        assert self.process.stdin
        self.process.stdin.write(text + '\n')
        self.process.stdin.flush()

    def end(self) -> int:
        """By closing its standard input."""
        assert self.process.stdin and self.process.stdout
        self.process.stdin.close()
        status = self.process.wait(PATIENT)
        self.process.stdout.close()
        return status


class Programs(PeerTest):
    HEADERS = {'Authorization': 'Token right'}

    def program(self, name: str, *arguments: str) -> Any:
        program = Program(name, *arguments)
        self.addCleanup(lambda: self.assertEqual(program.end(), 0))
        return program

    async def test_deepgram(self) -> None:
        with tempfile.NamedTemporaryFile('w') as lines:
            lines.write('Orvane läuft.\n')
            lines.flush()
            program = self.program(
                'deepgram', '--tls', '--key', 'right', '--lines', lines.name, '--burst', 'inf'
            )
        client = await self.connect(program, LISTEN, trust=program.certificate)
        self.assertEqual(program.event('connection')['path'], '/v1/listen')
        self.assertEqual(program.event('accepted')['connection'], 1)
        await client.send(*sounds.frames(sounds.spoken(1)))
        self.assertEqual(program.event('audio')['ms'], 100)
        line = program.event('line')
        self.assertEqual((line['number'], line['text']), (1, 'Orvane läuft.'))
        program.tell('{"drop":true}')
        await client.rest()
        self.assertEqual((client.code, program.event('closed')['by']), (1006, 'cut'))

    async def test_a_clock_that_is_told_the_time(self) -> None:
        program = self.program('deepgram', '--clock', 'manual', '--patience', '3')
        client = await self.connect(program, LISTEN)
        program.event('accepted')
        program.tell('{"advance":3}')
        await client.rest()
        self.assertEqual((client.code, program.event('closed')['code']), (1011, 1011))

    async def test_assemblyai(self) -> None:
        program = self.program('assemblyai', '--fault', 'key-http:1', 'too-many:2', '--key', 'k')
        self.assertEqual(knock(program, WS, {'Authorization': 'k'})[0], 401)
        self.assertEqual(program.event('refused')['status'], 401)
        client = await self.connect(program, WS, headers={'Authorization': 'k'})
        await client.rest()
        self.assertEqual((client.code, program.event('refused')['code']), (3009, 3009))
        client = await self.connect(program, WS, headers={'Authorization': 'k'})
        self.assertEqual((await client.next())['type'], 'Begin')
        program.tell('{"fault":"expired","now":true}')
        program.tell('{"close":1012,"reason":"restart"}')
        await client.rest()
        self.assertEqual((client.code, client.reason), (1012, 'restart'))
        client = await self.connect(program, WS, headers={'Authorization': 'wrong'})
        await client.rest()
        self.assertEqual(client.code, 1008)

    async def test_the_old_interface(self) -> None:
        program = self.program('assemblyai', '--old', 'alive')
        client = await self.connect(
            program, '/v2/realtime/ws?sample_rate=16000', headers={'Authorization': 'k'}
        )
        self.assertEqual((await client.next())['message_type'], 'SessionBegins')

    def test_what_it_does_not_understand(self) -> None:
        program = self.program('assemblyai')
        for line in ('hello', '7', '{"jump":1}', '{"fault":"weather"}', '{"advance":1}'):
            program.tell(line)
            self.assertEqual(program.event('misunderstood')['line'], line)


class Description(PeerTest):
    def test_the_tables_have_every_fault_and_no_other(self) -> None:
        text = (FOLDER / 'README.md').read_text()
        tables = re.findall(r'^## Faults of (.+?)$(.*?)(?=^## |\Z)', text, re.DOTALL | re.MULTILINE)
        named = {title: set(re.findall(r'^\| `([\w-]+)`', body, re.M)) for title, body in tables}
        common = named['both']
        self.assertEqual(common | named['Deepgram'], set(deepgram.FAULTS))
        old = {f'old-{code}' for code in assemblyai.OLD_CODES}
        self.assertEqual(
            (common | named['AssemblyAI'] | old) - {'old-CODE'}, set(assemblyai.FAULTS)
        )
        self.assertIn('old-CODE', named['AssemblyAI'])
        for code in assemblyai.OLD_CODES:
            self.assertIn(str(code), text)

    def test_no_file_is_too_long(self) -> None:
        for file in FOLDER.rglob('*.py'):
            self.assertLess(len(file.read_text().splitlines()), 300, file.name)
