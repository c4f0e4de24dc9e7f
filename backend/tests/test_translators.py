"""Translators by themselves: a chat server on loopback, Apertium for real."""

import json
import os
import select
import tempfile
import threading
import unittest
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path
from typing import Any
from unittest import mock

from orvane_backend.translators import TranslatorError, apertium, mistral, selection
from orvane_backend.translators.apertium import ApertiumTranslator
from orvane_backend.translators.identity import IdentityTranslator
from orvane_backend.translators.mistral import MistralTranslator

NOWHERE = "http://127.0.0.1:9/v1"


class ChatServer:
    """A local chat server with the given models and answers; keeps what it was asked."""

    def __init__(self, models: Any, answer: Any = None) -> None:
        self.asked: list[Any] = []
        outer = self

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self) -> None:
                self.reply({"data": models} if self.path == "/v1/models" else None)

            def do_POST(self) -> None:
                outer.asked.append(json.loads(self.rfile.read(int(self.headers["Content-Length"]))))
                self.reply(answer if self.path == "/v1/chat/completions" else None)

            def reply(self, record: Any) -> None:
                self.send_response(404 if record is None else 200)
                self.end_headers()
                self.wfile.write(
                    record if isinstance(record, bytes) else json.dumps(record).encode()
                )

            def log_message(self, *_: Any) -> None:
                pass

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.address = f"http://127.0.0.1:{self._server.server_port}/v1"

    def __enter__(self) -> "ChatServer":
        threading.Thread(target=self._server.serve_forever, args=(0.02,), daemon=True).start()
        return self

    def __exit__(self, *_: object) -> None:
        self._server.shutdown()
        self._server.server_close()


def says(text: str) -> Any:
    return {"choices": [{"message": {"role": "assistant", "content": text}}]}


class MistralTest(unittest.TestCase):
    def translate(self, answer: Any, text: str = "Hello") -> str:
        with ChatServer([], answer) as server:
            translator = MistralTranslator(server.address, "mistral:7b", "en", "de")
            translated = translator.translate(text)
        self.asked = server.asked
        return translated

    def test_the_answer_is_the_translation(self) -> None:
        self.assertEqual(self.translate(says(" Hallo\n Welt ")), "Hallo Welt")
        request = self.asked[0]
        self.assertEqual(request["model"], "mistral:7b")
        self.assertEqual(request["messages"][1], {"role": "user", "content": "Hello"})
        self.assertIn("from English into German", request["messages"][0]["content"])

    def test_added_quotation_marks_are_taken_off_and_own_ones_kept(self) -> None:
        self.assertEqual(self.translate(says('"Hallo"')), "Hallo")
        self.assertEqual(self.translate(says('"Hallo"'), '"Hello"'), '"Hallo"')

    def test_answers_that_are_none_are_told(self) -> None:
        for answer in (says("  "), {"choices": []}, {}, [], b"<html>", None):
            with self.assertRaises(TranslatorError):
                self.translate(answer)

    def test_a_mistral_is_preferred_and_anything_else_will_do(self) -> None:
        for models, expected in (
            ([{"id": "llama"}, {"id": "Mistral-7B"}], "Mistral-7B"),
            ([{"id": "llama"}], "llama"),
            ([], None),
            (None, None),
            ([{}], None),
        ):
            with ChatServer(models) as server:
                self.assertEqual(mistral.find_model(server.address), expected)

    def test_nobody_there_means_no_model(self) -> None:
        self.assertIsNone(mistral.find_model(NOWHERE))
        self.assertIsNone(mistral.find_model("no address"))

    def test_the_address_can_be_set(self) -> None:
        with mock.patch.dict(os.environ, {"ORV_CHAT_URL": "http://127.0.0.1:1/v1/"}):
            self.assertEqual(mistral.chat_address(), "http://127.0.0.1:1/v1")
        with mock.patch.dict(os.environ):
            os.environ.pop("ORV_CHAT_URL", None)
            self.assertEqual(mistral.chat_address(), "http://127.0.0.1:11434/v1")


class ApertiumTest(unittest.TestCase):
    def test_english_becomes_spanish_and_back(self) -> None:
        self.assertEqual(ApertiumTranslator("eng-spa").translate("The house is big"),
                         "La casa es grande")  # fmt: skip
        self.assertEqual(
            ApertiumTranslator("spa-eng").translate("La casa es grande"), "The house is big"
        )

    def test_unknown_words_stay_without_a_mark(self) -> None:
        self.assertEqual(ApertiumTranslator("eng-spa").translate("the frobnitz"), "El frobnitz")

    def test_signs_of_its_own_formats_survive(self) -> None:
        text = r"[b] ^c$ {d} <e> \f @g #h /i 😀"
        translated = ApertiumTranslator("eng-spa").translate(text)
        for sign in ("[b]", "^c$", "{d}", "<e>", "\\f", "@g", "#h", "😀"):
            self.assertIn(sign.lower(), translated.lower())

    def test_line_ends_do_not_matter(self) -> None:
        self.assertEqual(
            ApertiumTranslator("eng-spa").translate("The house\nis\n\nbig"), "La casa es grande"
        )

    def test_directions_are_found_by_short_codes(self) -> None:
        self.assertEqual(apertium.installed_direction("en", "es"), "eng-spa")
        self.assertEqual(apertium.installed_direction("es-MX", "EN"), "spa-eng")
        self.assertIsNone(apertium.installed_direction("en", "de"))

    def test_a_missing_program_is_told(self) -> None:
        with mock.patch.object(apertium, "_COMMAND", "/nowhere/apertium"):
            self.assertIsNone(apertium.installed_direction("en", "es"))
            with self.assertRaises(TranslatorError):
                ApertiumTranslator("eng-spa").translate("a")

    def test_a_direction_that_is_not_installed_is_told(self) -> None:
        with self.assertRaises(TranslatorError):
            ApertiumTranslator("eng-xyz").translate("a")

    def test_a_program_that_hangs_is_ended_with_its_children(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            fifo, hanging = Path(folder, "fifo"), Path(folder, "hanging")
            os.mkfifo(fifo)
            hanging.write_text(f'#!/bin/sh\nsleep 60 > "{fifo}" &\nsleep 60\n')
            hanging.chmod(0o755)
            # A reader of the pipe sees its end only when no child holds it any more.
            reader = os.open(fifo, os.O_RDONLY | os.O_NONBLOCK)
            self.addCleanup(os.close, reader)
            with mock.patch.object(apertium, "_COMMAND", str(hanging)):
                with mock.patch.object(apertium, "_SECONDS", 0.5):
                    with self.assertRaisesRegex(TranslatorError, "keine Antwort"):
                        ApertiumTranslator("eng-spa").translate("a")
            while True:
                self.assertTrue(select.select([reader], [], [], 10)[0], "a child lives on")
                if not os.read(reader, 100):
                    break


class SelectionTest(unittest.TestCase):
    def choose(self, source: str, target: str, address: str = NOWHERE, **options: Any) -> Any:
        with mock.patch.dict(os.environ, {"ORV_CHAT_URL": address}):
            return selection.choose(source, target, **options)

    def test_one_language_is_not_translated(self) -> None:
        for source, target in (("en", "en"), ("en-US", "EN")):
            choice = self.choose(source, target)
            self.assertIsInstance(choice.translator, IdentityTranslator)
            self.assertEqual(choice.translator.translate("Text"), "Text")

    def test_no_target_is_not_translated(self) -> None:
        self.assertIsInstance(self.choose("en", "auto").translator, IdentityTranslator)

    def test_mistral_comes_first_when_it_answers(self) -> None:
        with ChatServer([{"id": "mistral"}]) as server:
            choice = self.choose("en", "es", server.address)
            self.assertIsInstance(choice.translator, MistralTranslator)
            self.assertEqual(choice.reason, "")
            choice = self.choose("en", "es", server.address, without_mistral=True)
            self.assertIsInstance(choice.translator, ApertiumTranslator)

    def test_apertium_serves_its_pairs(self) -> None:
        choice = self.choose("en", "es")
        self.assertIsInstance(choice.translator, ApertiumTranslator)
        self.assertIn("Mistral antwortet nicht", choice.reason)

    def test_other_pairs_stay_as_they_are_and_the_reason_is_told(self) -> None:
        choice = self.choose("en", "de")
        self.assertIsInstance(choice.translator, IdentityTranslator)
        self.assertIn("Apertium hat English–German nicht", choice.reason)


if __name__ == "__main__":
    unittest.main()
