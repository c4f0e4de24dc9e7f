"""The stand-in of chat servers refuses and answers what it is there for."""

import http.client
import json
import threading
import unittest
from typing import Any, Optional

from tests.standins._chat_answers import STYLES, Answer
from tests.standins._http import Turn
from tests.standins.chat_server import ChatServer

_FLAVOURS = ("ollama", "llama_cpp", "lmstudio", "vllm")
_PATH = "/v1/chat/completions"


def call(server: Any, method: str, path: str, body: Any = None, **headers: str) -> tuple[int, Any]:
    """Status and answer: its value, or its text when it is no JSON."""
    sent = {"Content-Type": "application/json"} if body is not None else {}
    sent.update({name.replace("_", "-"): value for name, value in headers.items()})
    connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=60)
    data = body if body is None or isinstance(body, bytes) else json.dumps(body).encode()
    try:
        connection.request(method, path, data, sent)
        reply = connection.getresponse()
        text = reply.read().decode()
    finally:
        connection.close()
    try:
        return reply.status, json.loads(text)
    except ValueError:
        return reply.status, text


def asking(server: ChatServer, text: str = "good day", **more: Any) -> dict[str, Any]:
    """A chat without faults; None leaves a field out."""
    system = {"role": "system", "content": "Only the translation."}
    body = {
        "model": next(name for name in server.models if "embed" not in name),
        "messages": [system, {"role": "user", "content": text}],
        "temperature": 0.2, "max_tokens": 100, **more,
    }  # fmt: skip
    return {name: value for name, value in body.items() if value is not None}


def chat(server: ChatServer, text: str = "good day", **more: Any) -> tuple[int, Any]:
    return call(server, "POST", _PATH, asking(server, text, **more))


def message(server: ChatServer, text: str = "good day", **more: Any) -> Any:
    status, value = chat(server, text, **more)
    assert status == 200, value
    return value["choices"][0]["message"]


class Common(unittest.TestCase):
    def test_answers_and_records(self) -> None:
        for flavour in _FLAVOURS:
            with ChatServer(flavour) as server:
                status, value = chat(server, "Translate.\n\ngood day")
                choice = value["choices"][0]
                self.assertEqual((status, value["object"]), (200, "chat.completion"))
                self.assertEqual(choice["message"], {"role": "assistant", "content": "GOOD DAY"})
                self.assertEqual(choice["finish_reason"], "stop")
                self.assertEqual((len(server.chats), server.faults), (1, []))

    def test_refuses_what_is_of_no_use(self) -> None:
        for flavour in _FLAVOURS:
            with ChatServer(flavour) as server:
                bad: tuple[dict[str, Any], ...] = (
                    {"messages": None}, {"messages": []}, {"messages": ["text"]},
                    {"messages": [{"role": "robot", "content": "x"}]},
                    {"messages": [{"role": "user", "content": 1}]},
                    {"temperature": "low"}, {"max_tokens": "9"}, {"max_tokens": 0},
                    {"max_tokens": 1.5}, {"stop": 1}, {"stream": "no"}, {"top_p": 2},
                )  # fmt: skip
                for wrong in bad:
                    self.assertEqual(chat(server, **wrong)[0], 400, wrong)
                self.assertEqual(call(server, "POST", _PATH, b"{")[0], 400)
                self.assertEqual(call(server, "POST", _PATH, [])[0], 400)
                self.assertEqual(call(server, "GET", _PATH)[0], 404)
                self.assertEqual(server.chats, [])

    def test_asks_for_the_key_where_there_is_one(self) -> None:
        for flavour in _FLAVOURS:
            with ChatServer(flavour, key="k") as server:
                self.assertEqual(chat(server)[0], 401)
                body = asking(server)
                for key, status in (("Bearer x", 401), ("k", 401), ("Bearer k", 200)):
                    self.assertEqual(
                        call(server, "POST", _PATH, body, Authorization=key)[0], status
                    )
                self.assertEqual(call(server, "GET", "/v1/models")[0], 401)

    def test_models(self) -> None:
        listed = {}
        for flavour in _FLAVOURS:
            with ChatServer(flavour, context=2048) as server:
                listed[flavour] = call(server, "GET", "/v1/models")[1]["data"]
        self.assertIn("embed", listed["ollama"][0]["id"])
        self.assertEqual(len(listed["llama_cpp"]), 1)
        self.assertTrue(listed["llama_cpp"][0]["id"].startswith("/"))
        self.assertTrue(listed["lmstudio"][0]["id"].startswith("text-embedding-"))
        self.assertEqual(listed["vllm"][0]["max_model_len"], 2048)

    def test_missing_models(self) -> None:
        for flavour, status in (
            ("ollama", 404),
            ("llama_cpp", 200),
            ("lmstudio", 404),
            ("vllm", 404),
        ):
            with ChatServer(flavour) as server:
                self.assertEqual(chat(server, model="x")[0], status)
                self.assertEqual(chat(server, model="")[0], 400 if status == 404 else 200)

    def test_tells_of_faults(self) -> None:
        with ChatServer("llama_cpp") as server:
            chat(server, max_tokens=None, temperature=None, keep_alive="30m")
            self.assertEqual(len(server.faults), 3)
            got = call(server, "POST", _PATH, asking(server), Content_Type="text/plain")
            self.assertEqual((got[0], len(server.faults)), (200, 4))

    def test_styles(self) -> None:
        with ChatServer("lmstudio") as server:
            said = {}
            for server.style in STYLES:
                said[server.style] = chat(server)
        texts = {
            style: value["choices"][0]["message"]["content"]
            for style, (status, value) in said.items()
            if status == 200 and value["choices"]
        }
        self.assertTrue(texts["think"].endswith("</think>\n\nGOOD DAY"))
        self.assertNotIn("</think>", texts["think_unclosed"])
        self.assertNotIn("<think>", texts["think_end"])
        self.assertEqual((texts["quoted"], texts["null"]), ('"GOOD DAY"', None))
        self.assertTrue(texts["fenced"].startswith("```") and texts["fenced"].endswith("```"))
        self.assertIn("(Note: ", texts["noted"])
        self.assertEqual(said["length"][1]["choices"][0]["finish_reason"], "length")
        self.assertIn("GOOD DAY", said["empty"][1]["choices"][0]["message"]["reasoning_content"])
        self.assertIn("<html>", said["html"][1])
        statuses = [said[style][0] for style in ("html", "missing", "full", "broken")]
        self.assertEqual(statuses, [502, 404, 503, 500])

    def test_is_cut_off_at_max_tokens(self) -> None:
        with ChatServer("vllm") as server:
            choice = chat(server, "a long sentence", max_tokens=2)[1]["choices"][0]
            self.assertEqual(choice["message"]["content"], "A LONG S")
            self.assertEqual(choice["finish_reason"], "length")
        with ChatServer("ollama", thinking=True) as server:
            cut = message(server, max_tokens=5)
            self.assertEqual((cut["content"], len(cut["reasoning"])), ("", 20))

    def test_streams(self) -> None:
        with ChatServer("vllm") as server:
            text = chat(server, stream=True)[1]
            events = [line.removeprefix("data: ") for line in text.split("\n\n") if line]
            deltas = [json.loads(event)["choices"][0]["delta"] for event in events[:-1]]
            self.assertEqual("".join(delta.get("content", "") for delta in deltas), "GOOD DAY")
            self.assertEqual(events[-1], "[DONE]")

    def test_answers_what_the_test_says_and_breaks_off(self) -> None:
        said = Answer("hallo", reasoning="hm")
        plan = [Turn(cut=True)]
        with ChatServer("vllm", translate=lambda messages: said, plan=plan) as server:
            with self.assertRaises(http.client.IncompleteRead):
                chat(server)
            expected = {"role": "assistant", "content": "hallo", "reasoning": "hm"}
            self.assertEqual(message(server), expected)


class Thinking(unittest.TestCase):
    def thinks(self, flavour: str, field: str, off: dict[str, Any], **options: Any) -> None:
        with ChatServer(flavour, thinking=True, **options) as server:
            self.assertIn(field, message(server))
            self.assertEqual(field in message(server, **off), bool(options))

    def test_is_switched_off_in_each_its_way(self) -> None:
        template = {"chat_template_kwargs": {"enable_thinking": False}}
        self.thinks("ollama", "reasoning", {"reasoning_effort": "none"})
        self.thinks("ollama", "reasoning", {"reasoning": {"effort": "none"}})
        self.thinks("ollama", "reasoning", {"reasoning_effort": "none"}, always_thinks=True)
        self.thinks("llama_cpp", "reasoning_content", template)
        self.thinks("llama_cpp", "reasoning_content", {"reasoning_effort": "none"})
        self.thinks("vllm", "reasoning", template)

    def test_stays_in_the_text_when_not_separated(self) -> None:
        for flavour in ("lmstudio", "vllm"):
            with ChatServer(flavour, thinking=True, separate=False) as server:
                said = message(server)
                self.assertEqual(set(said), {"role", "content"})
                self.assertRegex(said["content"], r"(?s)^<think>.*</think>\n\nGOOD DAY$")


class Own(unittest.TestCase):
    def test_ollama_tells_what_a_model_can_do(self) -> None:
        with ChatServer("ollama", thinking=True) as server:
            for model, able in (
                ("nomic-embed-text", ["embedding"]), ("mistral", ["completion", "thinking"]),
            ):  # fmt: skip
                status, value = call(server, "POST", "/api/show", {"model": model})
                self.assertEqual((status, value["capabilities"]), (200, able))
            missing = call(server, "POST", "/api/show", {"model": "x"})
            self.assertEqual(missing, (404, {"error": "model 'x' not found"}))
            self.assertEqual(call(server, "POST", "/api/show", {})[0], 400)
            status, value = chat(server, model="nomic-embed-text")
            said = '"nomic-embed-text" does not support chat'
            self.assertEqual((status, value["error"]["message"]), (400, said))
            self.assertEqual(call(server, "GET", "/health"), (404, "404 page not found"))
        with ChatServer("ollama", has_show=False) as server:
            self.assertEqual(call(server, "POST", "/api/show", {"model": "mistral"})[0], 404)

    def loads(self, server: ChatServer, keep_alive: Any) -> int:
        body = {"model": "mistral", "keep_alive": keep_alive}
        return call(server, "POST", "/api/generate", body)[0]

    def test_ollama_loads_and_unloads(self) -> None:
        with ChatServer("ollama") as server:
            for wrong in ("soon", "30", [1], True):
                self.assertEqual(self.loads(server, wrong), 400)
            self.assertEqual(call(server, "GET", "/api/ps")[1], {"models": []})
            self.assertEqual(self.loads(server, "30m"), 200)
            self.assertEqual(server.loaded, {"mistral:latest": 1800.0})
            self.assertIn("expires_at", call(server, "GET", "/api/ps")[1]["models"][0])
            self.assertEqual(chat(server)[0], 200)
            self.assertEqual(server.loads, ["mistral:latest"])
            self.assertEqual(self.loads(server, -1), 200)
            self.assertIn("expires_at", call(server, "GET", "/api/ps")[1]["models"][0])
            self.assertEqual(self.loads(server, 0), 200)
            self.assertEqual(server.loaded, {})

    def test_ollama_has_no_keep_alive_in_chats(self) -> None:
        with ChatServer("ollama") as server:
            self.assertEqual(chat(server, keep_alive="30m")[0], 200)
            self.assertEqual(server.faults, ["keep_alive is no field here"])
        with ChatServer("ollama", refuses_keep_alive=True) as server:
            self.assertEqual(chat(server, keep_alive="30m")[0], 400)

    def test_first_call_takes_until_it_is_released(self) -> None:
        for flavour in ("ollama", "lmstudio"):
            with ChatServer(flavour, slow_load=True) as server:
                found: list[Optional[int]] = []
                calls = [
                    threading.Thread(target=lambda: found.append(chat(server)[0])) for _ in "ab"
                ]
                for thread in calls:
                    thread.start()
                server.wait_until(lambda: server.held == 1 and server.most_at_once == 2)
                self.assertEqual(found, [])
                server.release()
                for thread in calls:
                    thread.join()
                self.assertEqual((found, len(server.loads)), ([200, 200], 1))

    def test_llama_cpp_loads_at_first(self) -> None:
        with ChatServer("llama_cpp", loading=2) as server:
            self.assertIsNone(call(server, "GET", "/v1/models")[1]["data"][0]["meta"])
            status, value = call(server, "GET", "/health")
            error = {"code": 503, "message": "Loading model", "type": "unavailable_error"}
            self.assertEqual((status, value), (503, {"error": error}))
            self.assertEqual(chat(server), (503, {"error": error}))
            self.assertEqual(chat(server)[0], 200)
            self.assertIsNotNone(call(server, "GET", "/v1/models")[1]["data"][0]["meta"])

    def test_lmstudio_tells_kinds(self) -> None:
        with ChatServer("lmstudio") as server:
            kinds = [one["type"] for one in call(server, "GET", "/api/v0/models")[1]["data"]]
            self.assertEqual(kinds, ["embeddings", "llm"])
            self.assertEqual(chat(server, model=server.models[0])[0], 400)

    def test_vllm_is_strict(self) -> None:
        with ChatServer("vllm", context=200) as server:
            for name in ("keep_alive", "think", "ttl", "reasoning"):
                self.assertEqual(chat(server, **{name: "x"})[0], 400, name)
            self.assertEqual(chat(server, max_tokens=190)[0], 400)
            self.assertEqual(chat(server, "long " * 200, max_tokens=None)[0], 400)
            self.assertEqual(chat(server, max_tokens=150)[0], 200)
            body = asking(server)
            self.assertEqual(call(server, "POST", _PATH, body, Content_Type="text/plain")[0], 415)
            self.assertEqual(call(server, "GET", "/health"), (200, ""))
