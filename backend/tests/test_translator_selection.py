"""Which translator serves a pair, and what is told about it."""

import os
import tempfile
import unittest
from pathlib import Path
from typing import Any
from unittest import mock

from orvane_backend import settings_file
from orvane_backend.translators import Passage, TranslatorError, apertium, chat_server, selection
from orvane_backend.translators.apertium import ApertiumTranslator
from orvane_backend.translators.chat import ChatTranslator
from orvane_backend.translators.identity import IdentityTranslator
from orvane_backend.translators.libretranslate import LibreTranslator
from orvane_backend.translators.selection import Choice
from tests.standins.chat_server import ChatServer
from tests.standins.libretranslate_server import LibreTranslateServer

NOWHERE = "http://127.0.0.1:9"


class SelectionTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.file = Path(folder.name, "recognisers.toml")
        changes = mock.patch.dict(os.environ, {settings_file.VARIABLE: str(self.file)})
        changes.start()
        self.addCleanup(changes.stop)
        os.environ.pop(selection.VARIABLE, None)
        # Whatever runs on this machine is none of these tests' business.
        for name, address in (
            ("_CHAT_ADDRESS", NOWHERE + "/v1"), ("_LIBRETRANSLATE_ADDRESS", NOWHERE),
        ):  # fmt: skip
            usual = mock.patch.object(selection, name, address)
            usual.start()
            self.addCleanup(usual.stop)

    def serve(self, server: Any) -> Any:
        server.__enter__()
        self.addCleanup(server.__exit__)
        return server

    def write(self, **values: str) -> None:
        lines = [f'{key} = "{value}"' for key, value in values.items()]
        self.file.write_text("[translation]\n" + "\n".join(lines) + "\n")

    def codes(self, choice: Choice) -> list[str]:
        return [one.code for one in choice.notices]

    def test_one_language_is_not_translated(self) -> None:
        for source, target in (("en", "en"), ("en-US", "EN"), ("nb", "no"), ("jv", "jw")):
            choice = selection.choose(source, target)
            self.assertIsInstance(choice.translator, IdentityTranslator)
            self.assertEqual(self.codes(choice), ["translation.same"])
            assert choice.translator is not None
            self.assertEqual(choice.translator.translate(Passage("a\nb")), "a b")

    def test_no_target_is_not_translated(self) -> None:
        for source in ("en", "auto"):
            choice = selection.choose(source, "auto")
            self.assertIsInstance(choice.translator, IdentityTranslator)
            self.assertEqual(self.codes(choice), ["translation.no_target"])

    def test_the_chat_server_comes_first(self) -> None:
        chat, libre = self.serve(ChatServer()), self.serve(LibreTranslateServer())
        with mock.patch.object(selection, "_CHAT_ADDRESS", chat.address + "/v1"):
            with mock.patch.object(selection, "_LIBRETRANSLATE_ADDRESS", libre.address):
                choice = selection.choose("en", "es")
                self.assertIsInstance(choice.translator, ChatTranslator)
                self.assertEqual(choice.notices, ())
                self.assertEqual(libre.requests, [])
                # What has failed is left out, one after another.
                kinds = []
                without: frozenset[tuple[object, ...]] = frozenset()
                while (choice := selection.choose("en", "es", without)).translator is not None:
                    kinds.append(type(choice.translator))
                    without |= {choice.translator.key}
        self.assertEqual(kinds, [ChatTranslator, LibreTranslator, ApertiumTranslator])
        self.assertEqual(self.codes(choice), ["translation.none"])

    def test_what_the_person_has_named_comes_before_what_is_usual(self) -> None:
        chat, libre = self.serve(ChatServer()), self.serve(LibreTranslateServer())
        with mock.patch.object(selection, "_CHAT_ADDRESS", chat.address + "/v1"):
            self.write(libretranslate=libre.address)
            self.assertIsInstance(selection.choose("en", "es").translator, LibreTranslator)
            self.write(libretranslate=libre.address, model="qwen3:4b")
            choice = selection.choose("en", "es")
        assert isinstance(choice.translator, ChatTranslator)
        self.assertEqual(choice.translator.name, "qwen3:4b")

    def test_the_file_names_addresses_and_keys(self) -> None:
        chat = self.serve(ChatServer(key="k1"))
        libre = self.serve(LibreTranslateServer(key="k2"))
        self.write(chat=f"127.0.0.1:{chat.port}", key="k1",
                   libretranslate=libre.address, libretranslate_key="k2")  # fmt: skip
        for kind, said in ((ChatTranslator, "A"), (LibreTranslator, "es: A")):
            without = frozenset[tuple[object, ...]]()
            if kind is LibreTranslator:
                without = frozenset({("chat", chat.address + "/v1")})
            choice = selection.choose("en", "es", without)
            self.assertIsInstance(choice.translator, kind)
            assert choice.translator is not None
            choice.translator.warm_up()
            self.assertEqual(choice.translator.translate(Passage("a")), said)
            self.assertEqual(choice.notices, ())

    def test_the_variable_still_names_the_chat_server(self) -> None:
        chat = self.serve(ChatServer())
        self.write(chat=NOWHERE)
        with mock.patch.dict(os.environ, {selection.VARIABLE: chat.address + "/v1/"}):
            self.assertEqual(selection.chat_address(), chat.address + "/v1")
            self.assertIsInstance(selection.choose("en", "es").translator, ChatTranslator)

    def test_who_is_named_and_does_not_answer_is_told(self) -> None:
        choice = selection.choose("en", "es")
        self.assertIsInstance(choice.translator, ApertiumTranslator)
        self.assertEqual(choice.notices, ())
        self.write(libretranslate=NOWHERE + "/x", chat=NOWHERE + "/v2")
        choice = selection.choose("en", "es")
        self.assertEqual(self.codes(choice), ["translation.silent"] * 2)
        self.assertEqual(
            [one.parameters["address"] for one in choice.notices],
            [NOWHERE + "/v2", NOWHERE + "/x"],
        )

    def test_a_server_at_the_usual_address_that_cannot_serve_is_told(self) -> None:
        chat = self.serve(ChatServer(models=["nomic-embed-text"]))
        with mock.patch.object(selection, "_CHAT_ADDRESS", chat.address + "/v1"):
            choice = selection.choose("en", "es")
        self.assertIsInstance(choice.translator, ApertiumTranslator)
        self.assertEqual(self.codes(choice), ["translation.no_chat_model"])

    def test_a_language_that_the_named_server_lacks_is_told(self) -> None:
        libre = self.serve(LibreTranslateServer(languages={"en": "", "de": ""}))
        self.write(libretranslate=libre.address)
        choice = selection.choose("en", "es")
        self.assertIsInstance(choice.translator, ApertiumTranslator)
        self.assertEqual(self.codes(choice)[0], "translation.language_missing")

    def test_a_server_without_a_usable_model_is_told_and_not_chosen(self) -> None:
        for options in ({"models": ["nomic-embed-text"]}, {"key": "k"}):
            chat = self.serve(ChatServer(**options))
            self.write(chat=chat.address)
            choice = selection.choose("en", "es")
            self.assertIsInstance(choice.translator, ApertiumTranslator)
        self.assertEqual(self.codes(choice), ["translation.key_refused"])

    def test_a_model_that_was_named_and_is_missing_is_told(self) -> None:
        chat = self.serve(ChatServer())
        self.write(chat=chat.address, model="gemma")
        choice = selection.choose("en", "es")
        self.assertIsInstance(choice.translator, ChatTranslator)
        self.assertEqual(self.codes(choice), ["translation.model_missing"])
        self.assertEqual(choice.notices[0].parameters["instead"], "mistral")

    def test_a_cold_model_is_told_and_another_translator_serves_meanwhile(self) -> None:
        chat = self.serve(ChatServer(slow_load=True))
        self.write(chat=chat.address)
        with mock.patch.object(chat_server, "_READY_SECONDS", 0.05):
            choice = selection.choose("en", "es")
            self.assertEqual(self.codes(choice), ["translation.loading"])
            assert choice.translator is not None
            with self.assertRaises(TranslatorError) as caught:
                choice.translator.translate(Passage("The house"))
            self.assertTrue(caught.exception.is_passing)
            other = selection.choose("en", "es", {choice.translator.key}).translator
        assert other is not None
        self.assertEqual(other.translate(Passage("The house")), "La casa")
        chat.release_all()
        choice.translator.warm_up()
        self.assertEqual(selection.choose("en", "es").notices, ())
        self.assertEqual(choice.translator.translate(Passage("The house")), "THE HOUSE")

    def test_a_server_that_has_no_list_yet_gets_ready_by_itself(self) -> None:
        chat = self.serve(ChatServer("llama_cpp"))
        self.write(chat=chat.address)
        busy = chat.flavour.error(503, "Loading model")
        with mock.patch.object(chat_server, "_LOADING_PAUSE", 0.01):
            with mock.patch.object(ChatServer, "_listed", lambda *_: busy):
                choice = selection.choose("en", "es")
            self.assertEqual(self.codes(choice), ["translation.loading"])
            self.assertIsInstance(choice.translator, ChatTranslator)
            chat.wait_until(lambda: bool(chat.loads and chat.chats))
        assert choice.translator is not None
        self.assertEqual(choice.translator.translate(Passage("a")), "A")

    def test_a_pair_that_nothing_translates_says_how_to_get_it(self) -> None:
        with mock.patch.object(apertium, "installed", lambda: ("eng-spa",)):
            choice = selection.choose("en-GB", "ca")
        self.assertIsNone(choice.translator)
        self.assertEqual(
            [one.record() for one in choice.notices],
            [
                {
                    "code": "translation.none",
                    "parameters": {"source": "en", "target": "ca", "address": NOWHERE + "/v1"},
                },
                {
                    "code": "translation.package",
                    "parameters": {
                        "source": "en", "target": "ca", "packages": "apertium-eng-cat",
                    },
                },
            ],
        )  # fmt: skip
        self.assertEqual(self.codes(selection.choose("en", "ja")), ["translation.none"])

    def test_a_source_that_is_not_known_yet(self) -> None:
        choice = selection.choose("auto", "es")
        self.assertIsNone(choice.translator)
        self.assertEqual(self.codes(choice), ["translation.awaits_language"])
        chat = self.serve(ChatServer())
        self.write(chat=chat.address)
        self.assertIsInstance(selection.choose("auto", "es").translator, ChatTranslator)

    def test_damage_of_the_file_is_told(self) -> None:
        self.file.write_text("[translation\n")
        self.assertEqual(self.codes(selection.choose("en", "es"))[0], "settings.damaged")

    def test_every_notice_is_a_german_sentence_without_a_full_stop(self) -> None:
        with mock.patch.object(apertium, "installed", lambda: ()):
            for one in selection.choose("en", "ca").notices:
                self.assertNotRegex(one.german, r"\.$|[{}]")


if __name__ == "__main__":
    unittest.main()
