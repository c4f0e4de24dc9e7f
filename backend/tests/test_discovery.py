"""The look at the usual local ports: what it takes for a recogniser, and what it never sends."""

import os
import socket
import tempfile
import threading
import unittest
import unittest.mock
from pathlib import Path
from typing import Any

from orvane_backend.notices import notice
from orvane_backend.recognisers.near import neighbours as neighbours_module
from orvane_backend.recognisers.near.address import Address
from orvane_backend.recognisers.near.discovery import Found, look
from orvane_backend.recognisers.near.neighbours import Neighbours
from orvane_backend.settings_file import VARIABLE
from tests.standins._http import HttpStandIn, Reply, Request, json_reply, redirect_to
from tests.standins._http import text_reply
from tests.standins._websocket import Upgrade, WebSocketStandIn, say
from tests.standins.listen_server import ListenServer
from tests.standins.sherpa_server import KINDS, SherpaServer
from tests.standins.transcription_server import TranscriptionServer

# No test ends by this limit but those of servers that never answer.
SECONDS = 30.0


class Pages(HttpStandIn):
    """Some web server: one answer for each path, and one for all others."""

    def __init__(
        self, other: Reply = text_reply("404 page not found", 404), **pages: Reply
    ) -> None:
        super().__init__()
        self._pages = pages
        self._other = other

    def answer(self, request: Request) -> Reply:
        name = request.path.strip("/").replace("/", "_")
        return self._pages.get(name, self._other)


def chat_models(*names: str) -> Reply:
    data = [{"id": name, "object": "model"} for name in names]
    return json_reply({"object": "list", "data": data})


class Talker(WebSocketStandIn):
    """A WebSocket server of another kind: answers everything with this, or not at all."""

    def __init__(self, answer: Any = None) -> None:
        super().__init__()
        self._answer = answer

    async def talk(self, connection: Any, request: Upgrade) -> None:
        async for _ in connection:
            if self._answer is None:
                return
            await (say(connection, self._answer) if isinstance(self._answer, dict)
                   else connection.send(self._answer))  # fmt: skip


class DiscoveryTest(unittest.TestCase):
    def start(self, server: Any) -> Any:
        return self.enterContext(server)

    def found(self, server: Any) -> list[Found]:
        return look([server.port], [], SECONDS)

    def found_sherpa(self, server: Any) -> list[Found]:
        return look([], [server.port], SECONDS)

    def test_every_recogniser_is_found_with_its_name_and_model(self) -> None:
        for flavour, models, kind, name, model in (
            ("speaches", ("a/whisper",), "transcriptions", "Speaches", "a/whisper"),
            ("whisper_cpp", (), "transcriptions", "whisper.cpp", ""),
            ("localai", ("llama", "whisper-1"), "transcriptions", "", "whisper-1"),
            ("whisperlivekit", ("base",), "listen", "WhisperLiveKit", ""),
            ("nemo", ("parakeet-tdt",), "transcriptions", "", "parakeet-tdt"),
        ):
            with self.subTest(flavour):
                server = self.start(TranscriptionServer(flavour, models=models))
                address = Address(False, "127.0.0.1", server.port)
                self.assertEqual(self.found(server), [Found(kind, address, name, model)])

    def test_each_model_that_recognises_is_one_to_choose(self) -> None:
        models = ("a/whisper", "voice", *(f"whisper-{number}" for number in range(20)))
        server = self.start(TranscriptionServer("localai", models=models))
        found = self.found(server)
        self.assertEqual([one.model for one in found[:2]], ["a/whisper", "whisper-0"])
        self.assertEqual(len(found), 8)

    def test_whisper_cpp_is_found_at_either_path_and_while_it_loads(self) -> None:
        for options in (
            {"path": "/v1/audio/transcriptions"}, {"loading": 1}, {"plain_errors": True},
        ):  # fmt: skip
            server = self.start(TranscriptionServer("whisper_cpp", **options))
            self.assertEqual([one.name for one in self.found(server)], ["whisper.cpp"])

    def test_both_servers_of_sherpa_are_found(self) -> None:
        for kind in KINDS:
            server = self.start(SherpaServer(kind))
            address = Address(False, "127.0.0.1", server.port)
            self.assertEqual(self.found_sherpa(server), [Found("sherpa", address, "sherpa-onnx")])
            self.assertEqual(server.faults, [])

    def test_nothing_that_is_looked_at_hears_a_sound(self) -> None:
        for flavour in ("speaches", "whisper_cpp", "localai", "whisperlivekit", "nemo"):
            server = self.start(TranscriptionServer(flavour))
            self.found(server)
            self.assertEqual(server.uploads, [])
            for request in server.requests:
                self.assertNotIn(b"RIFF", request.body)
                self.assertNotIn("authorization", {name.lower() for name in request.headers})
        for kind in KINDS:
            sherpa = self.start(SherpaServer(kind))
            self.found_sherpa(sherpa)
            self.assertEqual(sum(map(len, sherpa.sounds)), 0)

    def test_other_web_servers_are_no_recognisers(self) -> None:
        plain_health = json_reply({"status": "ok"})
        servers = (
            Pages(),
            Pages(json_reply({}, 200)),
            Pages(text_reply("<html>", 200, content_type="text/html")),
            # A chat server, one whose models are secret, and small services with a health page.
            Pages(v1_models=chat_models("llama3.2", "mistral-nemo", "qwen3"), health=plain_health),
            Pages(v1_models=json_reply({"error": "key"}, 401), health=plain_health),
            Pages(health=plain_health),
            Pages(text_reply("not found", 404), health=plain_health),
            Pages(health=plain_health, inference=json_reply({"result": 1})),
            Pages(health=plain_health, inference=text_reply("no", 405)),
            Pages(health=plain_health, inference=text_reply("no such file", 410)),
            Pages(health=json_reply({"message": "OK"})),
            Pages(v1_models=json_reply({"data": []}), health=json_reply({"message": "OK"})),
        )
        for number, server in enumerate(servers):
            with self.subTest(number):
                self.assertEqual(self.found(self.start(server)), [])

    def test_a_form_is_sent_only_where_all_else_fits(self) -> None:
        chat = Pages(v1_models=chat_models("llama"), health=json_reply({"status": "ok"}))
        for server in (chat, Pages(), Pages(json_reply({}))):
            self.found(self.start(server))
            self.assertEqual({request.method for request in server.requests}, {"GET"})

    def test_other_websocket_servers_are_no_recognisers(self) -> None:
        for server in (Talker(), Talker({"text": "x"}), Talker("nonsense"), Talker(b"Done!"),
                       Talker({"segment": 1}), ListenServer(), Pages()):  # fmt: skip
            self.assertEqual(self.found_sherpa(self.start(server)), [])
        # Nor does one that speaks no HTTP but this trip anything.
        self.assertEqual(self.found(self.start(Talker())), [])

    def test_a_redirect_is_not_followed(self) -> None:
        target = self.start(TranscriptionServer("speaches"))
        server = Pages(redirect_to(f"{target.address}/v1/models"))
        self.assertEqual(self.found(self.start(server)), [])
        self.assertEqual(target.requests, [])

    def test_ports_where_nobody_answers_hold_nothing_up(self) -> None:
        # One that takes connections and says nothing, and one that is closed.
        with socket.create_server(("127.0.0.1", 0)) as mute, socket.socket() as closed:
            closed.bind(("127.0.0.1", 0))
            ports = [mute.getsockname()[1], closed.getsockname()[1]]
            self.assertEqual(look(ports, ports, 0.05), [])

    def test_all_ports_are_looked_at_at_once(self) -> None:
        servers = [self.start(Together()) for _ in range(3)]
        Together.meet = threading.Barrier(3)
        # Each waits for the others before it answers; one after another none would.
        self.assertEqual(look([server.port for server in servers], [], SECONDS), [])
        self.assertFalse(Together.meet.broken)

    def test_the_look_at_the_start_tells_once_what_is_not_named(self) -> None:
        servers = [self.start(TranscriptionServer("speaches")) for _ in range(2)]
        ports = [server.port for server in servers]
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        file = Path(folder.name) / "recognisers.toml"
        # The first is named; a server of another machine has the second's port.
        named = (f"http://localhost:{ports[0]}/v1", f"http://box.example:{ports[1]}")
        file.write_text(
            "".join(
                f'[[recogniser]]\nkind = "transcriptions"\naddress = "{address}"\n'
                for address in named
            )
        )
        with (
            unittest.mock.patch.object(neighbours_module, "look", lambda: look(ports, [], SECONDS)),
            unittest.mock.patch.dict(os.environ, {VARIABLE: str(file)}),
        ):
            neighbours = Neighbours()
            self.assertEqual(neighbours.notices(), ())
            thread = neighbours.look()
            thread.join(60)
            told = list(neighbours.notices())
        self.assertTrue(thread.daemon)
        self.assertEqual(
            told, [notice("recognition.near_found", engine=f"Speaches (127.0.0.1:{ports[1]})")]
        )


class Together(HttpStandIn):
    """Answers the first question when all have got one."""

    meet: threading.Barrier

    def answer(self, request: Request) -> Reply:
        if request.path == "/v1/models":
            self.meet.wait(60)
        return text_reply("", 404)


if __name__ == "__main__":
    unittest.main()
