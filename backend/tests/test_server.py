"""The whole program as a process: starting, listening, misuse, signals, and real recognition."""

import asyncio
import os
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import uuid
from pathlib import Path
from typing import Any

import numpy as np

from orvane_backend import listening, main, protocol
from orvane_backend.audio import decode_pcm, encode_pcm
from orvane_backend.websocket import ConnectionClosed, InvalidHandshake
from tests.peers import Client, ServerProcess, results
from tests.recordings import at_48_khz, planar, recordings

# The client sends its next signal so long after the first; before that the server has to be gone.
_NEXT_SIGNAL_SECONDS = 1.0
# For an end that waits neither for work in hand, which takes far longer, nor for a reader that
# never comes. More than the above: a busy machine is slow at everything.
_STOP_SECONDS = 3.0


def processes_with(variable: str) -> list[int]:
    """The processes that were started with a variable in their environment, such as "A=1"."""
    found = []
    for path in Path("/proc").glob("[0-9]*/environ"):
        try:
            if variable.encode() in path.read_bytes().split(b"\0"):
                found.append(int(path.parent.name))
        except OSError:
            continue
    return found


# What follows the end of what somebody said, 16-bit at 16 kHz.
_PAUSE = bytes(2 * 11200)


class ServerTest(unittest.IsolatedAsyncioTestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name)

    def start(self, **environment: str) -> ServerProcess:
        server = ServerProcess(self.home, **environment)
        self.addCleanup(server.__exit__)
        return server

    async def ready(self, **wishes: Any) -> tuple[ServerProcess, Client]:
        server = self.start()
        server.read_log()
        client = await Client.connect(server.port)
        await client.config(sttEngine="pocketsphinx", **wishes)
        await client.until("status", "engine")
        return server, client

    async def test_recorded_speech_comes_back_as_text_and_translation(self) -> None:
        sentence = recordings()[4]
        server, client = await self.ready(targetLang="es", saveTranscript=True, saveSRT=True)
        pcm = at_48_khz(sentence.pcm + _PAUSE)
        await client.audio(pcm)
        stereo = planar(decode_pcm(pcm), decode_pcm(pcm))
        await client.audio(encode_pcm(stereo))
        pairs = results(await client.flush())
        self.assertEqual([original for original, _ in pairs], [sentence.words] * 2)
        self.assertIn("amable", pairs[0][1])
        output = self.home / "Library" / "Application Support" / "Orvane" / "output"
        (transcript,) = output.glob("transcript_*.txt")
        self.assertEqual(transcript.read_text().count(f"Original: {sentence.words}\n"), 2)
        (subtitles,) = output.glob("subtitles_*.srt")
        self.assertEqual(subtitles.read_text().count(" --> "), 2)
        await client.close()
        # The lines come by a way of their own, which may be the longer one.
        deadline = time.monotonic() + 10
        while not any(line.startswith("📝 he might") for line in server.lines):
            self.assertLess(time.monotonic(), deadline, "the result is not in the log")
            await asyncio.sleep(0.01)

    async def test_noise_gives_no_result(self) -> None:
        _, client = await self.ready()
        noise = np.random.default_rng(1).normal(0, 0.05, 96000).astype(np.float32)
        await client.audio(encode_pcm(noise))
        self.assertEqual(await client.flush(), [])
        await client.close()

    async def test_the_socket_answers_while_speech_is_recognised(self) -> None:
        server, client = await self.ready()
        await client.audio(at_48_khz(b"".join(one.pcm for one in recordings()[:2]) + _PAUSE))
        flushing = asyncio.ensure_future(client.flush())
        for _ in range(10):
            async with await Client.connect(server.port) as other:
                await other.next()
                await other.flush()
        self.assertFalse(flushing.done(), "it answered only after the recognition")
        self.assertEqual(len(results(await flushing)), 1)
        await client.close()

    async def test_misuse_is_answered_by_warnings_and_the_connection_stays(self) -> None:
        server = self.start()
        server.read_log()
        good = '{"type":"audio","sample_rate":48000,"format":"int16","data":"%s"}'
        async with await Client.connect(server.port) as client:
            await client.next()
            for frame in (
                "{", "[]", '{"type":1}', b"\xff\x00", "[" * 100000, good % "AAA", good % "AAAA",
                '{"type":"audio"}', '{"type":"audio","data":["AA=="]}', "",
                good.replace("48000", "1e999") % "AAAA",
                "x" * (protocol.MAX_MESSAGE_BYTES + 1),
            ):  # fmt: skip
                await client.send(frame)
                message = await client.next()
                self.assertEqual((message["type"], message["status"]), ("status", "warning"))
                self.assertTrue(message["message"])
            await client.send('{"type":"something else"}')
            await client.send(b'{"type":"flush"}')
            self.assertEqual(await client.next(), {"type": "flushed"})
        self.assertNotIn("Traceback", "".join(server.lines))

    async def test_the_largest_message_is_taken(self) -> None:
        _, client = await self.ready()
        samples = (protocol.MAX_MESSAGE_BYTES - 200) // 4 * 3 // 2
        await client.audio(bytes(2 * samples))
        # Longer than the sound that may wait, so that it can overload the server for a moment.
        messages = await client.flush()
        self.assertLessEqual({message.get("status") for message in messages}, {"overloaded"})
        await client.close()

    async def test_probes_and_strangers_leave_no_trace_in_the_log(self) -> None:
        server = self.start()
        server.read_log()
        for data in (b"", b"GET / HTTP/1.0\r\n\r\n", b"\x00" * 100):
            with socket.create_connection(("127.0.0.1", server.port)) as probe:
                probe.sendall(data)
                probe.shutdown(socket.SHUT_WR)
                while probe.recv(1000):
                    pass
        async with await Client.connect(server.port) as client:
            await client.next()
        self.assertNotIn("Traceback", "\n".join(server.lines))

    async def test_web_pages_of_others_are_refused(self) -> None:
        server = self.start()
        with self.assertRaisesRegex(InvalidHandshake, "HTTP 403"):
            await Client.connect(server.port, origin="https://example.com")
        await (await Client.connect(server.port, origin=f"http://127.0.0.1:{server.port}")).close()

    async def test_localhost_means_both_loopback_addresses_and_no_other(self) -> None:
        server = self.start(ORV_BIND_HOST="localhost")
        await (await Client.connect(server.port, "127.0.0.1")).close()
        if "[::1]" in server.first_line:
            await (await Client.connect(server.port, "[::1]")).close()
        with self.assertRaises(OSError):
            await Client.connect(server.port, "127.0.0.2")

    async def test_all_addresses_are_reachable_when_asked_for(self) -> None:
        server = self.start(ORV_BIND_HOST="0.0.0.0")
        await (await Client.connect(server.port, "127.0.0.2")).close()

    async def test_every_signal_ends_it_at_once_in_the_middle_of_its_work(self) -> None:
        speech = at_48_khz(b"".join(one.pcm for one in recordings()))
        for number in (signal.SIGTERM, signal.SIGINT):
            server, client = await self.ready()
            await client.audio(speech)
            # Answered between the arrival of the chunk and its result: the chunk is in work.
            await client.send("no json")
            await client.until("status", "warning")
            began = time.monotonic()
            server.process.send_signal(number)
            status = await asyncio.to_thread(server.process.wait, 10)
            self.assertLess(time.monotonic() - began, _STOP_SECONDS)
            self.assertEqual(status, 0)
            with self.assertRaises(ConnectionClosed) as closed:
                while True:
                    await client.next()
            self.assertEqual(closed.exception.rcvd.code, 1001)

    def test_what_it_waits_for_at_its_end_is_over_before_the_next_signal(self) -> None:
        waits = main._CLOSE_SECONDS + main._LOG_SECONDS
        self.assertLess(waits, _NEXT_SIGNAL_SECONDS / 2, "the ending itself takes time, too")

    async def test_a_kill_leaves_no_process_behind(self) -> None:
        mark = f"ORV_TEST_MARK={uuid.uuid4()}"
        server = self.start(**dict([mark.split("=")]))
        server.read_log()
        async with await Client.connect(server.port) as client:
            await client.config(sttEngine="pocketsphinx", targetLang="es")
            await client.audio(at_48_khz(recordings()[4].pcm))
            await client.audio(at_48_khz(recordings()[1].pcm))
            await client.until("translation")
            self.assertIn(server.process.pid, processes_with(mark))
            server.process.kill()
            server.process.wait()
            deadline = time.monotonic() + 10
            while processes_with(mark):
                self.assertLess(time.monotonic(), deadline, "processes were left behind")
                await asyncio.sleep(0.01)
            await client.vanish()

    async def test_it_lives_on_when_nobody_reads_its_log_any_more(self) -> None:
        server = self.start()
        assert server.process.stdout is not None
        server.process.stdout.close()
        for _ in range(3):
            async with await Client.connect(server.port) as client:
                await client.next()
                await client.send('{"type":"noise"}')
                self.assertEqual(await client.flush(), [])
        self.assertIsNone(server.process.poll())

    async def test_it_goes_on_when_its_log_is_stuck(self) -> None:
        server = self.start()
        async with await Client.connect(server.port) as client:
            await client.next()
            # More lines than the pipe and the queue before it hold; nobody reads them.
            for _ in range(3000):
                await client.send('{"type":"%s"}' % ("x" * 40))
            self.assertEqual(await client.flush(), [])
        began = time.monotonic()
        server.process.terminate()
        await asyncio.to_thread(server.process.wait, 10)
        self.assertLess(time.monotonic() - began, _STOP_SECONDS)

    async def test_a_port_in_use_is_told(self) -> None:
        first = self.start()
        second = self.start(ORV_PORT=str(first.port))
        self.assertIn("❌ Backend kann nicht lauschen", second.first_line)
        self.assertEqual(second.process.wait(10), 1)

    async def test_a_port_that_is_no_number_is_told(self) -> None:
        for port in ("abc", "99999"):
            server = self.start(ORV_PORT=port)
            self.assertIn("❌ Backend kann nicht lauschen", server.first_line)
            self.assertEqual(server.process.wait(10), 1)

    async def test_a_missing_module_is_told_without_a_trace(self) -> None:
        entry = Path(__file__).resolve().parent.parent / "server.py"
        # -S: no site packages, as in an environment that lacks them.
        ended = subprocess.run(
            [sys.executable, "-S", str(entry)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            encoding="utf-8", env={**os.environ, "PYTHONUTF8": "1"}, timeout=20,
        )  # fmt: skip
        self.assertEqual(ended.returncode, 1)
        self.assertRegex(ended.stdout, "❌ Python-Modul fehlt: (numpy|websockets)")
        self.assertNotIn("Traceback", ended.stdout)


class ListeningTest(unittest.TestCase):
    def test_who_may_come_in(self) -> None:
        for origin, host, welcome in (
            (None, None, True),
            ("", "127.0.0.1:8765", True),
            ("null", "127.0.0.1:8765", False),
            ("qt-app", "127.0.0.1:8765", True),
            ("http://localhost:3000", "127.0.0.1:8765", True),
            ("http://[::1]:3000", "127.0.0.1:8765", True),
            ("http://192.0.2.7:8080", "192.0.2.7:8765", True),
            ("http://192.0.2.7:8080", "192.0.2.8:8765", False),
            ("http://studio:8080", "studio:8765", False),
            ("http://rebound.example.com:8765", "rebound.example.com:8765", False),
            ("file://", "127.0.0.1:8765", False),
            ("chrome-extension://localhost", "127.0.0.1:8765", False),
            ("http://[broken", "127.0.0.1:8765", False),
            ("https://example.com", "127.0.0.1:8765", False),
            ("http://localhost.example.com", "localhost:8765", False),
            ("https://example.com", None, False),
        ):
            self.assertEqual(listening.is_welcome(origin, host), welcome, origin)

    def test_addresses(self) -> None:
        def hosts(value: str) -> list[str]:
            return [host for _, host in listening.addresses(value)]

        self.assertEqual(hosts("localhost"), ["127.0.0.1", "::1"])
        self.assertEqual(hosts(""), ["127.0.0.1", "::1"])
        self.assertEqual(hosts("0.0.0.0"), ["0.0.0.0", "::1"])
        self.assertEqual(hosts("192.0.2.1"), ["192.0.2.1"])
        self.assertEqual(listening.addresses("fe80::1"), [(socket.AF_INET6, "fe80::1")])


if __name__ == "__main__":
    unittest.main()
