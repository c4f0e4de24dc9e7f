"""The stand-in of LibreTranslate refuses and answers what it is there for."""

import http.client
import threading
import unittest
from typing import Any
from urllib.parse import urlencode

from tests.standins._http import Turn, html_page
from tests.standins.libretranslate_server import LibreTranslateServer
from tests.test_standins_servers_chat import call

_GOOD = {"q": "good day", "source": "en", "target": "de", "format": "text"}


def ask(server: LibreTranslateServer, **more: Any) -> tuple[int, Any]:
    """A translation; None leaves a field out."""
    body = {name: value for name, value in {**_GOOD, **more}.items() if value is not None}
    return call(server, "POST", "/translate", body)


class LibreTranslate(unittest.TestCase):
    def test_translates_a_text_and_texts(self) -> None:
        with LibreTranslateServer() as server:
            self.assertEqual(ask(server), (200, {"translatedText": "de: GOOD DAY"}))
            texts = {"translatedText": ["de: A", "de: B"]}
            self.assertEqual(ask(server, q=["a", "b"]), (200, texts))
            self.assertEqual([made["q"] for made in server.calls], ["good day", ["a", "b"]])
            form = urlencode(_GOOD).encode()
            kind = "application/x-www-form-urlencoded"
            status, value = call(server, "POST", "/translate", form, Content_Type=kind)
            self.assertEqual((status, value), (200, {"translatedText": "de: GOOD DAY"}))

    def test_tells_what_it_detected_and_alternatives(self) -> None:
        with LibreTranslateServer(detected="fr") as server:
            value = ask(server, source="auto", alternatives=2)[1]
            told = {"confidence": 90.0, "language": "fr"}
            self.assertEqual((value["detectedLanguage"], len(value["alternatives"])), (told, 2))
            value = ask(server, source="auto", q=["a", "b"], alternatives=1)[1]
            self.assertEqual(value["detectedLanguage"], [told, told])
            self.assertEqual(value["alternatives"], [["de: A (2)"], ["de: B (2)"]])

    def test_lists_languages_and_their_targets(self) -> None:
        languages = {"en": "English", "de": "German"}
        with LibreTranslateServer(languages=languages, missing=(("de", "en"),)) as server:
            listed = call(server, "GET", "/languages")[1]
            self.assertEqual([one["code"] for one in listed], ["en", "de"])
            self.assertEqual([one["targets"] for one in listed], [["en", "de"], ["de"]])
            self.assertEqual(ask(server)[0], 200)
            self.assertEqual(ask(server, source="de", target="en")[0], 400)

    def test_refuses_bad_calls(self) -> None:
        with LibreTranslateServer(longest=20, most=2) as server:
            bad: tuple[dict[str, Any], ...] = (
                {"q": None}, {"source": None}, {"target": None}, {"q": ""}, {"q": []},
                {"q": 1}, {"q": [1]}, {"source": "xx"}, {"target": "xx"}, {"target": "auto"},
                {"target": "de-DE"}, {"source": ["en"]}, {"format": "markdown"},
                {"alternatives": "some"}, {"q": "x" * 21}, {"q": ["a", "b", "c"]},
            )  # fmt: skip
            for wrong in bad:
                status, value = ask(server, **wrong)
                self.assertEqual((status, list(value)), (400, ["error"]), wrong)
            for body in (b"{", b"[]", b'"text"'):
                self.assertEqual(call(server, "POST", "/translate", body)[0], 400)
            body = b"q=x&source=en&target=de"
            self.assertEqual(call(server, "POST", "/translate", body)[0], 400)
            got = call(server, "POST", "/translate", _GOOD, Content_Type="text/plain")
            self.assertEqual(got[0], 400)
            self.assertEqual(call(server, "GET", "/translate")[0], 405)
            self.assertEqual(call(server, "GET", "/frontend/settings")[0], 404)
            self.assertEqual(server.calls, [])

    def test_asks_for_the_key(self) -> None:
        with LibreTranslateServer(key="k") as server:
            absent = "Please contact the server operator to get an API key"
            self.assertEqual(ask(server), (403, {"error": absent}))
            self.assertEqual(ask(server, api_key="x"), (403, {"error": "Invalid API key"}))
            self.assertEqual(ask(server, api_key="k")[0], 200)
            got = call(server, "POST", "/translate", _GOOD, Authorization="Bearer k")
            self.assertEqual(got[0], 403)
            self.assertEqual(call(server, "GET", "/languages")[0], 200)

    def test_refuses_and_breaks_as_told(self) -> None:
        plan = [Turn(cut=True), Turn(html_page())]
        with LibreTranslateServer(plan=plan) as server:
            with self.assertRaises(http.client.IncompleteRead):
                ask(server)
            self.assertEqual(ask(server)[0], 502)
            for server.refuses in (429, 500):
                status, value = ask(server)
                self.assertEqual((status, list(value)), (server.refuses, ["error"]))
            server.refuses = 0
            self.assertEqual(ask(server)[0], 200)

    def test_answers_when_it_is_released(self) -> None:
        with LibreTranslateServer(plan=[Turn(hold=True)]) as server:
            found: list[int] = []
            thread = threading.Thread(target=lambda: found.append(ask(server)[0]))
            thread.start()
            server.wait_until(lambda: server.held == 1)
            self.assertEqual((found, server.calls), ([], []))
            server.release()
            thread.join()
            self.assertEqual(found, [200])
