"""A LibreTranslate server: its languages, its answers, its errors."""

import unittest
from typing import Any
from unittest import mock

from orvane_backend.translators import Passage, TranslatorError, libretranslate
from orvane_backend.translators.libretranslate import LibreTranslator, Place, find
from tests.standins._http import Reply, Turn, html_page, json_reply
from tests.standins.libretranslate_server import LibreTranslateServer


class LibreTranslateTest(unittest.TestCase):
    def server(self, **options: Any) -> LibreTranslateServer:
        server = LibreTranslateServer(**options)
        server.__enter__()
        self.addCleanup(server.__exit__)
        return server

    def find(
        self, server: LibreTranslateServer, source: str, target: str, key: str = ""
    ) -> LibreTranslator:
        return find(Place(server.address, key), source, target)

    def asked(self, server: LibreTranslateServer, source: str, target: str) -> tuple[str, str]:
        """The languages as the server was asked for them."""
        self.find(server, source, target).translate(Passage("a"))
        return server.calls[-1]["source"], server.calls[-1]["target"]

    def error(self, action: Any) -> TranslatorError:
        with self.assertRaises(TranslatorError) as caught:
            action()
        return caught.exception

    def test_a_text_is_translated(self) -> None:
        server = self.server()
        translated = self.find(server, "en-US", "de").translate(Passage("One <b>\ntwo", ("x",)))
        self.assertEqual(translated, "de: ONE <B> TWO")
        self.assertEqual(
            server.calls,
            [{"q": "One <b> two", "source": "en", "target": "de", "format": "text"}],
        )
        self.assertEqual(server.faults, [])

    def test_languages_it_lacks_are_not_chosen(self) -> None:
        server = self.server(missing=(("en", "ja"),))
        for source, target in (("en", "ja"), ("en", "ko"), ("ko", "en"), ("auto", "ko")):
            error = self.error(lambda: self.find(server, source, target))
            self.assertEqual(error.notice.code, "translation.language_missing")
            self.assertEqual(error.notice.parameters["target"], target)
        self.find(server, "ja", "en")

    def test_a_source_that_is_not_known_is_found_out_there(self) -> None:
        self.assertEqual(self.asked(self.server(), "auto", "de"), ("auto", "de"))

    def test_languages_have_other_names_there(self) -> None:
        codes = ("en", "zh-Hans", "zh-Hant", "nb", "pt-BR", "pt", "jv", "fil", "iw")
        server = self.server(languages={code: code for code in codes})
        for code, name in (
            ("zh", "zh-Hans"), ("zh-TW", "zh-Hant"), ("zh_CN", "zh-Hans"), ("no", "nb"),
            ("nb-NO", "nb"), ("pt-BR", "pt-BR"), ("pt-PT", "pt"), ("jw", "jv"), ("tl", "fil"),
            ("he", "iw"),
        ):  # fmt: skip
            self.assertEqual(self.asked(server, "en", code), ("en", name), code)
            self.assertEqual(self.asked(server, code, "en"), (name, "en"), code)
        old = self.server(languages={"en": "", "zt": "", "zh": "", "pb": ""})
        for code, name in (("zh", "zh"), ("zh-TW", "zt"), ("pt-BR", "pb")):
            self.assertEqual(self.asked(old, "en", code), ("en", name))

    def test_a_list_without_targets_means_all(self) -> None:
        listed = json_reply([{"code": "en", "name": "x"}, {"code": "de", "name": "x"}, None, {}])
        server = self.server()
        with mock.patch.object(LibreTranslateServer, "answer", lambda *_: listed):
            self.find(server, "en", "de")
            self.error(lambda: self.find(server, "en", "es"))

    def test_a_target_that_is_no_language_there_is_none(self) -> None:
        listed = json_reply([{"code": "en", "targets": ["de", 3]}, {"code": "es", "targets": []}])
        server = self.server()
        with mock.patch.object(LibreTranslateServer, "answer", lambda *_: listed):
            for target in ("de", "es"):
                error = self.error(lambda: self.find(server, "en", target))
                self.assertEqual(error.notice.code, "translation.language_missing")

    def test_something_else_at_the_address(self) -> None:
        for reply in (
            json_reply({"models": []}), json_reply([]), json_reply([1]), html_page(200), Reply(404),
        ):  # fmt: skip
            server = self.server()
            with mock.patch.object(LibreTranslateServer, "answer", lambda *_: reply):
                self.error(lambda: self.find(server, "en", "de"))
        error = self.error(lambda: find(Place("http://127.0.0.1:9"), "en", "de"))
        self.assertEqual(error.notice.code, "translation.silent")

    def test_the_key(self) -> None:
        server = self.server(key="geheim")
        self.assertEqual(self.find(server, "en", "de", "geheim").translate(Passage("a")), "de: A")
        for wrong in ("", "falsch"):
            error = self.error(lambda: self.find(server, "en", "de", wrong).translate(Passage("a")))
            self.assertEqual(error.notice.code, "translation.key_refused")

    def test_errors_by_their_status(self) -> None:
        server = self.server()
        translator = self.find(server, "en", "de")
        for status, passing, of_text, said in (
            (400, False, True, "Refused"), (429, True, False, "Slowdown: too many requests"),
            (500, False, False, "Cannot translate text: it failed"), (503, True, False, "Refused"),
        ):  # fmt: skip
            server.refuses = status
            error = self.error(lambda: translator.translate(Passage("a")))
            self.assertEqual((error.is_passing, error.is_of_text), (passing, of_text), status)
            self.assertEqual(error.notice.parameters["reason"], said)
        server.refuses = 0
        self.assertEqual(translator.translate(Passage("a")), "de: A")

    def test_answers_that_are_none(self) -> None:
        for reply, code in (
            (json_reply({"translatedText": " \n"}), "translation.empty"),
            (json_reply({"translatedText": ["a"]}), "translation.unreadable"),
            (json_reply({}), "translation.unreadable"), (json_reply([]), "translation.unreadable"),
            (json_reply({"error": "a"}), "translation.failed"),
            (html_page(502), "translation.failed"),
        ):  # fmt: skip
            server = self.server(plan=[Turn(reply)])
            translator = self.find(server, "en", "de")
            self.assertEqual(
                self.error(lambda: translator.translate(Passage("a"))).notice.code, code
            )

    def test_an_answer_that_does_not_come_ends_in_time(self) -> None:
        server = self.server(plan=[Turn(hold=True), Turn(cut=True)])
        translator = self.find(server, "en", "de")
        with mock.patch.object(libretranslate, "_ANSWER_SECONDS", 0.2):
            for _ in range(2):
                error = self.error(lambda: translator.translate(Passage("a")))
                self.assertEqual(error.notice.code, "translation.silent")
                self.assertTrue(error.is_passing)


if __name__ == "__main__":
    unittest.main()
