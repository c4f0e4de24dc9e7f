"""The stand-in of chat servers words each flavour's answers as that one does."""

import unittest
from typing import Any

from tests.standins.chat_server import ChatServer
from tests.test_standins_servers_chat import call, chat, message

_BUSY = "server busy, please try again.  maximum pending requests exceeded"


def refusals(flavour: str) -> dict[str, Any]:
    """How a flavour says that a field, the key, the model is wrong, and that it is full."""
    with ChatServer(flavour, key="k") as server:
        found = {"key": chat(server)}
    with ChatServer(flavour) as server:
        found["model"] = chat(server, model="x")
        server.style = "full"
        found["full"] = chat(server)
        server.style = "missing"
        found["missing"] = chat(server)
        found["path"] = call(server, "GET", "/other")
    return found


class Words(unittest.TestCase):
    def test_of_ollama(self) -> None:
        def error(text: str, kind: str) -> Any:
            return {"error": {"message": text, "type": kind, "param": None, "code": None}}

        said = refusals("ollama")
        missing = error("model 'x' not found", "not_found_error")
        self.assertEqual(said["model"], (404, missing))
        missing = error("model 'mistral:latest' not found", "not_found_error")
        self.assertEqual(said["missing"], (404, missing))
        self.assertEqual(said["full"], (503, error(_BUSY, "unavailable_error")))
        self.assertEqual(said["key"], (401, error("Invalid API Key", "authentication_error")))
        self.assertEqual(said["path"], (404, "404 page not found"))

    def test_of_llama_cpp(self) -> None:
        said = refusals("llama_cpp")
        error = {"code": 401, "message": "Invalid API Key", "type": "authentication_error"}
        self.assertEqual(said["key"], (401, {"error": error}))
        self.assertEqual(said["model"][0], 200)
        self.assertEqual(said["path"][1]["error"]["code"], 404)
        self.assertNotEqual(said["full"][1]["error"]["message"], _BUSY)

    def test_of_lmstudio(self) -> None:
        said = refusals("lmstudio")
        for name, status in (("key", 401), ("model", 404), ("full", 503), ("path", 404)):
            self.assertEqual((said[name][0], type(said[name][1]["error"])), (status, str))
        self.assertEqual(said["model"][1], {"error": 'Model "x" is not there'})

    def test_of_vllm(self) -> None:
        said = refusals("vllm")
        self.assertEqual(said["key"], (401, {"error": "Unauthorized"}))
        missing = "The model `x` does not exist."
        error = {"message": missing, "type": "NotFoundError", "param": None, "code": 404}
        self.assertEqual(said["model"], (404, {"error": error}))
        self.assertEqual(said["full"][1]["error"]["type"], "InternalServerError")
        self.assertEqual(said["path"], (404, {"detail": "Not Found"}))
        with ChatServer("vllm") as server:
            error = chat(server, max_tokens=5000)[1]["error"]
            self.assertEqual((error["type"], error["code"]), ("BadRequestError", 400))


class Rest(unittest.TestCase):
    def test_fields_of_listed_models(self) -> None:
        for flavour, field in (("llama_cpp", "meta"), ("vllm", "max_model_len")):
            for other in ("ollama", "llama_cpp", "lmstudio", "vllm"):
                with ChatServer(other) as server:
                    listed = call(server, "GET", "/v1/models")[1]["data"][0]
                    self.assertEqual(field in listed, flavour == other)

    def test_lmstudio_cannot_be_told_not_to_think(self) -> None:
        with ChatServer("lmstudio", thinking=True) as server:
            template: dict[str, Any] = {"chat_template_kwargs": {"enable_thinking": False}}
            said = message(server, reasoning_effort="none", **template)
            self.assertIn("reasoning_content", said)

    def test_thoughts_without_an_answer_stay_unclosed(self) -> None:
        with ChatServer("vllm", style="empty", separate=False) as server:
            said = message(server)["content"]
            self.assertTrue(said.startswith("<think>") and "</think>" not in said)
            server.style = "plain"
            self.assertEqual(message(server)["content"], "GOOD DAY")

    def test_content_in_parts(self) -> None:
        with ChatServer("vllm") as server:
            good = [{"role": "user", "content": [{"type": "text", "text": "hello"}]}]
            self.assertEqual(message(server, messages=good)["content"], "HELLO")
            bad = [{"role": "user", "content": [{"type": "image_url"}]}]
            self.assertEqual(chat(server, messages=bad)[0], 400)

    def test_ollama_alone_adds_a_tag(self) -> None:
        for flavour, status in (("ollama", 200), ("lmstudio", 404)):
            with ChatServer(flavour, models=["some:latest"]) as server:
                self.assertEqual(chat(server, model="some")[0], status)

    def test_ollama_loses_the_beginning_of_a_long_prompt(self) -> None:
        with ChatServer("ollama", context=50) as server:
            self.assertEqual(chat(server, "long " * 100)[0], 200)
            self.assertEqual(server.faults, ["a prompt of which the beginning is lost"])

    def test_ollamas_own_routes(self) -> None:
        with ChatServer("ollama") as server:
            tags = call(server, "GET", "/api/tags")[1]["models"]
            self.assertEqual(tags[0]["name"], "nomic-embed-text:latest")
            path = "/api/generate"
            for body, status in (
                ({"model": "nomic-embed-text"}, 400), ({"model": "mistral", "prompt": "x"}, 500),
                ({"model": "x"}, 404), ({}, 400), ([], 400), (b"{", 400),
            ):  # fmt: skip
                got, value = call(server, "POST", path, body)
                self.assertEqual((got, type(value["error"])), (status, str))
        with ChatServer("lmstudio") as server:
            self.assertEqual(call(server, "GET", "/api/tags")[0], 404)
            self.assertEqual(call(server, "GET", "/api/ps")[0], 404)
