"""A chat server on loopback and a translator in front of it: what the tests of both share."""

import unittest
from typing import Any

from orvane_backend.translators import Passage, TranslatorError, chat_server
from orvane_backend.translators.chat import ChatTranslator
from orvane_backend.translators.chat_server import Place
from tests.standins.chat_server import ChatServer

FLAVOURS = ("ollama", "llama_cpp", "lmstudio", "vllm")
TEXT = "Where is the station?"


class ChatCase(unittest.TestCase):
    def server(self, *arguments: Any, **options: Any) -> ChatServer:
        server = ChatServer(*arguments, **options)
        server.__enter__()
        self.addCleanup(server.__exit__)
        return server

    def translator(self, server: ChatServer, **place: str) -> ChatTranslator:
        known = chat_server.ChatServer(Place(server.address + "/v1", **place))
        return ChatTranslator(known, "en", "de")

    def ready(self, server: ChatServer, **place: str) -> ChatTranslator:
        translator = self.translator(server, **place)
        translator.warm_up()
        return translator

    def failure(self, translator: ChatTranslator, text: str = TEXT) -> TranslatorError:
        with self.assertRaises(TranslatorError) as caught:
            translator.translate(Passage(text))
        return caught.exception

    def generated(self, server: ChatServer) -> int:
        return sum(one.path == "/api/generate" and one.method == "POST" for one in server.requests)

    def code(self, translator: ChatTranslator, text: str = TEXT) -> str:
        return self.failure(translator, text).notice.code
