"""The stand-ins of servers wait, break off and lead elsewhere when told; each runs as a process."""

import http.client
import json
import socket
import subprocess
import sys
import threading
import unittest
from pathlib import Path

from tests.standins._http import Turn, html_page, redirect_to
from tests.standins.transcription_server import TranscriptionServer
from tests.test_standins_servers import PATH, call, form


class Turns(unittest.TestCase):
    def test_second_call_waits_behind_the_first(self) -> None:
        with TranscriptionServer("whisper_cpp", path=PATH, plan=[Turn(hold=True)]) as server:
            calls = [threading.Thread(target=call, args=(server, form({}))) for _ in range(2)]
            calls[0].start()
            server.wait_until(lambda: server.held == 1)
            calls[1].start()
            server.wait_until(lambda: server.most_at_once == 2)
            self.assertEqual(server.uploads, [])
            server.release()
            for thread in calls:
                thread.join()
            self.assertEqual(len(server.uploads), 2)

    def test_misbehaves_as_planned(self) -> None:
        plan = [Turn(cut=True), Turn(redirect_to("http://127.0.0.1:9/")), Turn(html_page())]
        with TranscriptionServer("whisperlivekit", plan=plan) as server:
            with self.assertRaises(http.client.IncompleteRead):
                call(server, form({}))
            status, headers, _ = call(server, form({}))
            self.assertEqual((status, headers["Location"]), (307, "http://127.0.0.1:9/"))
            self.assertIn("<html>", call(server, form({}))[2])
            self.assertEqual(call(server, form({}))[0], 200)

    def test_runs_as_a_process(self) -> None:
        command = [sys.executable, "-m", "tests.standins.transcription_server", "--log"]
        with subprocess.Popen(
            [*command, "--flavour", "whisperlivekit", "--hold", "1", "--text", "told"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8",
            cwd=Path(__file__).resolve().parent.parent,
        ) as process:  # fmt: skip
            assert process.stdin and process.stdout
            port = int(process.stdout.readline().rpartition(":")[2])
            process.stdin.write("release\n")
            process.stdin.close()
            address = type("Address", (), {"port": port})
            self.assertEqual(json.loads(call(address, form({}))[2]), {"text": "told"})
            self.assertIn('"path": "' + PATH, process.stdout.readline())
            process.kill()

    def test_each_runs_as_a_process(self) -> None:
        for name, scheme in (
            ("listen", "ws"), ("sherpa", "ws"), ("chat", "http"), ("libretranslate", "http"),
        ):  # fmt: skip
            command = [sys.executable, "-m", f"tests.standins.{name}_server", "--port", "0"]
            with subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, encoding="utf-8",
                cwd=Path(__file__).resolve().parent.parent,
            ) as process:  # fmt: skip
                assert process.stdout
                line = process.stdout.readline()
                self.assertRegex(line, rf"^{scheme}://127\.0\.0\.1:\d+\n$")
                socket.create_connection(("127.0.0.1", int(line.rpartition(":")[2])), 60).close()
                process.kill()
