"""Chat servers of four kinds: how each is asked, which model, and its loading."""

import unittest
from unittest import mock

from orvane_backend.translators import Passage, chat, chat_server
from orvane_backend.translators.chat import ChatTranslator
from orvane_backend.translators.chat_server import Place
from tests.chat_case import FLAVOURS, TEXT, ChatCase
from tests.standins._chat_answers import Answer


class FlavoursTest(ChatCase):
    def test_each_is_asked_as_it_wants(self) -> None:
        for flavour in FLAVOURS:
            with self.subTest(flavour):
                server = self.server(flavour)
                translator = self.ready(server)
                self.assertEqual(translator.translate(Passage(TEXT, ("One.",))), TEXT.upper())
                self.assertEqual(server.faults, [])
                self.assertIn("istral", server.loads[0])
                self.assertIn("istral", translator.name)
                self.assertNotIn("/", translator.name)

    def test_thinking_is_switched_off_where_that_can_be(self) -> None:
        for flavour in ("ollama", "llama_cpp", "vllm"):
            with self.subTest(flavour):
                server = self.server(flavour, thinking=True)
                translator = self.ready(server)
                before = len(server.chats)
                self.assertEqual(translator.translate(Passage(TEXT)), TEXT.upper())
                self.assertEqual((server.faults, len(server.chats) - before), ([], 1))

    def test_a_model_that_cannot_stop_thinking_gets_room(self) -> None:
        for separate in (True, False):
            thought = "The user wants this line in the other language. " * 30
            server = self.server(
                "lmstudio", separate=separate,
                translate=lambda messages: Answer(TEXT.upper(), thought),
            )  # fmt: skip
            translator = self.ready(server)
            before = len(server.chats)
            for _ in range(2):
                self.assertEqual(translator.translate(Passage(TEXT)), TEXT.upper())
            # Once without room, then twice with it.
            self.assertEqual(len(server.chats) - before, 3)

    def test_the_key_goes_along_and_a_wrong_one_is_told_without_being_told(self) -> None:
        for flavour in FLAVOURS:
            server = self.server(flavour, key="geheim")
            self.assertEqual(self.ready(server, key="geheim").translate(Passage("a")), "A")
            for wrong in ("", "falsch-77"):
                error = self.failure(self.translator(server, key=wrong))
                self.assertEqual(error.notice.code, "translation.key_refused")
                self.assertNotIn("falsch-77", str(error))


class ModelTest(ChatCase):
    def test_a_named_model_wins(self) -> None:
        server = self.server()
        self.assertEqual(self.ready(server, model="qwen3:4b").name, "qwen3:4b")
        self.assertEqual(server.loads, ["qwen3:4b"])

    def test_a_named_model_that_is_not_there_is_replaced(self) -> None:
        server = self.server()
        known = chat_server.ChatServer(Place(server.address + "/v1", model="gemma"))
        known.find_model()
        self.assertEqual((known.shown, known.missing_wish), ("mistral", "gemma"))

    def test_ollama_is_asked_what_a_model_can(self) -> None:
        server = self.server(models=["my-embedder", "other"])
        self.ready(server)
        shows = [one.json() for one in server.requests if one.path == "/api/show"]
        # The name says enough of the first.
        self.assertEqual(shows, [{"model": "other"}])
        without = self.server(models=["m"], has_show=False)
        self.assertEqual(self.ready(without).name, "m")

    def test_a_server_with_nothing_to_chat_with_is_told(self) -> None:
        for flavour in FLAVOURS:
            server = self.server(flavour, models=["nomic-embed-text"])
            self.assertEqual(self.code(self.translator(server)), "translation.no_chat_model")

    def test_a_model_that_is_gone_is_replaced(self) -> None:
        for flavour in ("ollama", "lmstudio", "vllm"):
            server = self.server(flavour, models=["mistral", "qwen3:4b"])
            translator = self.ready(server)
            server.models.remove("mistral")
            self.assertEqual(translator.translate(Passage(TEXT)), TEXT.upper())
            self.assertEqual((translator.name, server.chats[-1]["model"]), ("qwen3:4b",) * 2)

    def test_a_model_that_is_listed_and_yet_missing_is_not_asked_for_ever(self) -> None:
        server = self.server(models=["mistral", "qwen3:4b"])
        translator = self.ready(server)
        server.style = "missing"
        self.assertEqual(self.code(translator), "translation.no_chat_model")


class LoadingTest(ChatCase):
    def test_a_text_does_not_wait_for_a_cold_model(self) -> None:
        for flavour in ("ollama", "lmstudio"):
            server = self.server(flavour, slow_load=True)
            translator = self.translator(server)
            with mock.patch.object(chat_server, "_READY_SECONDS", 0.05):
                error = self.failure(translator)
                self.assertEqual(error.notice.code, "translation.loading")
                self.assertTrue(error.is_passing)
                self.failure(translator)
            server.wait_until(lambda: server.held == 1)
            server.release_all()
            translator.warm_up()
            self.assertEqual(translator.translate(Passage(TEXT)), TEXT.upper())
            # However often it was asked meanwhile.
            self.assertEqual(self.generated(server), 1)
            self.assertEqual(len(server.loads), 1)

    def test_ollama_keeps_the_model_for_half_an_hour(self) -> None:
        server = self.server()
        self.ready(server)
        self.assertEqual(server.loaded, {"mistral:latest": 1800.0})
        self.assertEqual(server.chats, [])

    def test_a_server_that_says_it_is_loading_is_asked_until_it_is_not(self) -> None:
        server = self.server("llama_cpp", loading=3)
        with mock.patch.object(chat_server, "_LOADING_PAUSE", 0.01):
            self.assertEqual(self.ready(server).translate(Passage("a")), "A")

    def test_loading_in_the_middle_passes(self) -> None:
        server = self.server("llama_cpp")
        translator = self.ready(server)
        server.loading = 1
        error = self.failure(translator)
        self.assertEqual((error.notice.code, error.is_passing), ("translation.loading", True))
        translator.warm_up()
        self.assertEqual(translator.translate(Passage("a")), "A")

    def test_a_model_that_is_cold_again_is_loaded_behind_the_texts_back(self) -> None:
        server = self.server(slow_load=True)
        server.release()
        translator = self.ready(server)
        server.unload()
        with mock.patch.object(chat, "_ANSWER_SECONDS", 0.2):
            error = self.failure(translator)
        self.assertEqual((error.notice.code, error.is_passing), ("translation.silent", True))
        server.wait_until(lambda: self.generated(server) == 2)
        server.release_all()
        translator.warm_up()
        self.assertEqual(translator.translate(Passage("a")), "A")

    def test_nobody_there_is_told_at_once(self) -> None:
        for address in ("http://127.0.0.1:9/v1", "no address", "http://[", "ftp://127.0.0.1/"):
            known = chat_server.ChatServer(Place(address))
            error = self.failure(ChatTranslator(known, "en", "de"))
            self.assertEqual(error.notice.code, "translation.silent")


if __name__ == "__main__":
    unittest.main()
