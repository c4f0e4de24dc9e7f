"""`recognisers.py` as the program's settings run it: a process with a file of its own."""

import contextlib
import io
import json
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any
from unittest import mock

from orvane_backend.recognisers.near.command import main
from orvane_backend.recognisers.near.discovery import look
from orvane_backend.settings_file import VARIABLE
from tests.standins.sherpa_server import SherpaServer
from tests.standins.transcription_server import TranscriptionServer

_SCRIPT = Path(__file__).resolve().parent.parent / "recognisers.py"
MODEL = "a/whisper"


class RecognisersCommandTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="home with blanks ")
        self.addCleanup(folder.cleanup)
        self.path = Path(folder.name) / "recognisers.toml"
        self.web_ports: list[int] = []
        self.sherpa_ports: list[int] = []

    def process(self, *arguments: str) -> tuple[int, list[dict[str, Any]]]:
        ended = subprocess.run(
            [sys.executable, "-B", str(_SCRIPT), *arguments], cwd="/", timeout=300,
            env={**os.environ, VARIABLE: str(self.path), "LC_ALL": "C"},
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, encoding="utf-8",
        )  # fmt: skip
        return ended.returncode, [json.loads(line) for line in ended.stdout.splitlines()]

    def run_here(self, *arguments: str) -> list[dict[str, Any]]:
        """In this process, so that the look goes to the test's ports alone."""
        output = io.StringIO()
        environment = mock.patch.dict(os.environ, {VARIABLE: str(self.path)})
        with environment, contextlib.redirect_stdout(output):
            status = main(arguments, lambda: look(self.web_ports, self.sherpa_ports, 30.0))
        self.assertEqual(status, 0, output.getvalue())
        return [json.loads(line) for line in output.getvalue().splitlines()]

    def speaches(self, **options: Any) -> TranscriptionServer:
        server = TranscriptionServer("speaches", models=(MODEL,), **options)
        self.enterContext(server)
        return server

    def code(self, *arguments: str) -> tuple[int, str]:
        status, lines = self.process(*arguments)
        self.assertEqual([line["state"] for line in lines], ["notice"])
        self.assertTrue(lines[0]["text"])
        code: str = lines[0]["notice"]["code"]
        return status, code.removeprefix("recognition.near_")

    def test_what_is_found_is_accepted_serves_and_is_forgotten(self) -> None:
        server = self.speaches()
        self.web_ports = [server.port]
        name = f"Speaches (127.0.0.1:{server.port})"
        found = {
            "state": "found", "name": name, "kind": "transcriptions", "address": server.address,
            "model": MODEL, "answers": True,
        }  # fmt: skip
        self.assertEqual(self.run_here("list"), [found])
        self.assertFalse(self.path.exists())

        accepted = self.process("accept", found["kind"], found["address"], found["model"])
        self.assertEqual(accepted, (0, [{"state": "accepted", "name": name}]))
        named = {**found, "state": "named", "languages": [], "notice": None, "text": ""}
        self.assertEqual(self.run_here("list"), [named])

        self.assertEqual(self.process("forget", name), (0, [{"state": "forgotten", "name": name}]))
        self.assertEqual(self.run_here("list"), [found])
        self.assertEqual(server.uploads, [])

    def test_the_other_kinds_are_accepted_too(self) -> None:
        sherpa = self.enterContext(SherpaServer())
        self.sherpa_ports = [sherpa.port]
        [found] = self.run_here("list")
        self.assertEqual(found["kind"], "sherpa")
        self.process("accept", "sherpa", found["address"])
        self.assertEqual([line["state"] for line in self.run_here("list")], ["named"])

    def test_one_that_does_not_answer_now_says_why(self) -> None:
        server = self.speaches(key="right")
        self.path.write_text(
            f'[[recogniser]]\nname = "locked"\nkind = "transcriptions"\nkey = "s3cret"\n'
            f'address = "{server.address}"\n'
            f'[[recogniser]]\nname = "gone"\nkind = "listen"\naddress = "ws://127.0.0.1:1"\n'
            f'languages = ["de"]\n'
        )
        locked, gone = self.run_here("list")
        self.assertEqual((locked["name"], locked["answers"]), ("locked", False))
        self.assertEqual(locked["notice"]["code"], "recognition.near_key")
        self.assertEqual(gone["notice"]["code"], "recognition.near_silent")
        self.assertEqual((gone["languages"], gone["address"]), (["de"], "ws://127.0.0.1:1"))
        self.assertNotIn("s3cret", json.dumps([locked, gone]))

    def test_a_server_that_is_gone_may_be_accepted(self) -> None:
        status, lines = self.process("accept", "transcriptions", "http://127.0.0.1:1")
        self.assertEqual((status, lines[0]["name"]), (0, "Erkenner (127.0.0.1:1)"))

    def test_what_is_wrong_in_the_file_is_told_among_the_rest(self) -> None:
        self.path.write_text('[[recogniser]]\nkind = "listen"\naddress = "x"\ncolour = 1\n')
        told = [line["notice"]["code"] for line in self.run_here("list")]
        self.assertEqual(told, ["settings.unknown", "recognition.near_address"])

    def test_what_cannot_be_done_is_told(self) -> None:
        self.assertEqual(self.code("accept", "chat", "http://127.0.0.1:1"), (1, "kind"))
        self.assertEqual(self.code("accept", "listen", "127.0.0.1:1"), (1, "address_given"))
        self.assertEqual(self.code("forget", "nobody"), (1, "not_named"))
        self.assertFalse(self.path.exists())
        self.path.write_text("a =\n")
        self.assertEqual(self.code("forget", "x"), (1, "file_damaged"))

    def test_arguments_that_say_nothing_are_refused(self) -> None:
        for arguments in ((), ("lists",), ("list", "x"), ("accept",), ("accept", "sherpa"),
                          ("accept", "a", "b", "c", "d"), ("forget",)):  # fmt: skip
            self.assertEqual(self.code(*arguments), (2, "usage"))


if __name__ == "__main__":
    unittest.main()
