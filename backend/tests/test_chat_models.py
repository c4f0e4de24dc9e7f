"""Which model is asked, with what request, and what a refusal means."""

import unittest
from typing import Any

from orvane_backend import languages
from orvane_backend.translators import Passage
from orvane_backend.translators.chat_models import can_chat, in_order, listing, named, shown_name
from orvane_backend.translators.chat_refusals import lacks_model, parts_to_leave
from orvane_backend.translators.chat_request import Asked, estimated_tokens, translation_request
from orvane_backend.translators.local_http import Refusal, full_address


class ModelsTest(unittest.TestCase):
    def test_a_mistral_comes_first_then_the_servers_order(self) -> None:
        for models, expected in (
            (["llama", "Mistral-7B", "qwen"], ["Mistral-7B", "llama", "qwen"]),
            (["b", "ministral-3:8b", "a"], ["ministral-3:8b", "b", "a"]),
            (["mixtral", "a"], ["mixtral", "a"]),
            (["/models/mistral/llama.gguf", "x"], ["/models/mistral/llama.gguf", "x"]),
            ([], []),
        ):
            self.assertEqual(in_order(models), expected)
        self.assertEqual(in_order(["a", "mistral"], {"mistral"}), ["a"])

    def test_models_for_something_else_are_left_out(self) -> None:
        for model in (
            "nomic-embed-text:latest", "mistral-embed", "text-embedding-3", "BAAI/bge-m3",
            "all-minilm:22m", "intfloat/multilingual-e5-large", "gte-large", "bge-reranker-v2",
            "whisper-large", "orpheus-tts", "clip-vit", "openai/clip", "qwen3-rerank",
            "snowflake-arctic-embed", "/srv/models/E5-small.gguf",
        ):  # fmt: skip
            self.assertEqual(in_order([model, "llama"]), ["llama"], model)

    def test_models_that_only_look_like_it_stay(self) -> None:
        for model in ("/home/embed/llama.gguf", "qwen3.5-9b", "eclipse-7b", "code5-7b", "nous-e5x"):
            self.assertEqual(in_order([model]), [model])

    def test_lists_of_every_server(self) -> None:
        for entry, kind in (
            ({"id": "a", "owned_by": "library"}, "ollama"),
            ({"id": "a", "owned_by": "llamacpp", "meta": None}, "llama.cpp"),
            ({"id": "a", "owned_by": "x", "max_model_len": 4096}, "vllm"),
            ({"id": "a", "owned_by": "organization_owner"}, ""),
            ({"id": "a"}, ""),
        ):
            found = listing({"object": "list", "data": [entry]})
            self.assertEqual((found.models, found.kind), (("a",), kind))

    def test_odd_lists(self) -> None:
        self.assertEqual(listing({"object": "list", "data": None}).models, ())
        self.assertEqual(listing({"data": [{}, None, {"id": 3}, {"id": "a"}]}).models, ("a",))
        for record in (None, [], {}, {"data": 3}, {"error": "x"}, "x"):
            with self.assertRaises(ValueError):
                listing(record)

    def test_a_named_model_is_found_in_its_forms(self) -> None:
        models = ["mistral:latest", "mistral:7b", "/srv/Qwen.gguf"]
        for wish, expected in (
            ("mistral:7b", "mistral:7b"),
            ("mistral", "mistral:latest"),
            ("qwen.gguf", "/srv/Qwen.gguf"),
            ("gemma", None),
        ):
            self.assertEqual(named(wish, models), expected)

    def test_what_ollama_says_of_a_model(self) -> None:
        for shown, expected in (
            ({"capabilities": ["completion", "vision"]}, True),
            ({"capabilities": ["embedding"]}, False),
            ({"capabilities": []}, None), ({}, None), (None, None), ("x", None),
        ):  # fmt: skip
            self.assertIs(can_chat(shown), expected)

    def test_names_as_a_person_reads_them(self) -> None:
        self.assertEqual(shown_name("/srv/models/Mistral-7B.gguf"), "Mistral-7B")
        self.assertEqual(shown_name("mistral:latest"), "mistral")


class RequestTest(unittest.TestCase):
    def request(self, asked: Asked = Asked("mistral"), source: str = "en", target: str = "de",
                text: str = "Hello", context: tuple[str, ...] = ()) -> dict[str, Any]:  # fmt: skip
        return translation_request(asked, source, target, Passage(text, context))

    def test_both_languages_are_named_and_the_text_stands_alone(self) -> None:
        request = self.request(text="Hello\nyou")
        system, user = request["messages"]
        self.assertEqual((system["role"], user["role"]), ("system", "user"))
        self.assertIn("from English into German", system["content"])
        self.assertEqual(user["content"], "Hello you")
        self.assertEqual(request["temperature"], 0.2)
        self.assertIs(request["stream"], False)

    def test_every_language_has_an_english_name(self) -> None:
        for code in languages._LANGUAGES:
            content = self.request(source=code, target="de")["messages"][0]["content"]
            self.assertRegex(content, r"from [A-Z]\w+( \w+)* into German\.", code)

    def test_a_source_that_is_not_known_is_not_named(self) -> None:
        content = self.request(source="auto")["messages"][0]["content"]
        self.assertIn("subtitles into German.", content)
        self.assertNotIn("auto", content)

    def test_two_sentences_of_context_are_marked(self) -> None:
        messages = self.request(context=("One.", "Two.", "Three."))["messages"]
        self.assertIn("not to be translated", messages[0]["content"])
        self.assertIn("<context>\nTwo.\nThree.\n</context>", messages[0]["content"])
        self.assertEqual(messages[1]["content"], "Hello")
        self.assertNotIn("context", self.request(context=(" ",))["messages"][0]["content"])

    def test_room_for_the_answer_grows_with_the_text(self) -> None:
        for text in ("Hello", "word " * 100, "本日はお集まりいただき"):
            tokens = estimated_tokens(text.strip())
            self.assertTrue(
                2 * tokens + 64 <= self.request(text=text)["max_tokens"] <= 3 * tokens + 64
            )
        self.assertGreater(self.request(Asked("m", thinks=True))["max_tokens"], 1000)

    def test_thinking_is_switched_off_as_each_server_knows(self) -> None:
        for kind, model, field, value in (
            ("ollama", "qwen3", "reasoning_effort", "none"),
            ("ollama", "gpt-oss:20b", "reasoning_effort", "low"),
            ("", "qwen3", "reasoning_effort", "none"),
            ("llama.cpp", "qwen3", "chat_template_kwargs", {"enable_thinking": False}),
            ("vllm", "qwen3", "chat_template_kwargs", {"enable_thinking": False}),
        ):
            request = self.request(Asked(model, kind))
            self.assertEqual(request[field], value)
            self.assertEqual(len(request), 6, request)

    def test_refused_parts_are_left_out(self) -> None:
        refused = frozenset({"reasoning_effort", "system"})
        request = self.request(Asked("m", refused=refused))
        self.assertNotIn("reasoning_effort", request)
        self.assertEqual([one["role"] for one in request["messages"]], ["user"])
        self.assertIn("from English into German", request["messages"][0]["content"])
        self.assertTrue(request["messages"][0]["content"].endswith("\n\nHello"))

    def test_translategemma_has_its_own_form(self) -> None:
        asked = Asked("translategemma:4b", "ollama")
        messages = self.request(asked, "jw", "de", context=("One.",))["messages"]
        self.assertEqual([one["role"] for one in messages], ["user"])
        content = messages[0]["content"]
        self.assertIn("from Javanese (jv) to German (de)", content)
        self.assertTrue(content.endswith(":\n\n\nHello"))
        self.assertNotIn("One.", content)


class RefusalTest(unittest.TestCase):
    def test_a_missing_model_and_one_for_something_else(self) -> None:
        self.assertTrue(lacks_model(Refusal(404, "model 'x' not found")))
        self.assertTrue(lacks_model(Refusal(400, '"nomic" does not support chat')))
        self.assertFalse(lacks_model(Refusal(404, "404 page not found")))
        self.assertFalse(lacks_model(Refusal(400, '"mistral" does not support thinking')))

    def test_what_is_left_out_after_a_refusal(self) -> None:
        body = {"model": "m", "reasoning_effort": "none", "chat_template_kwargs": {}}
        both = {"reasoning_effort", "chat_template_kwargs"}
        for status, said, expected in (
            (400, "unknown field chat_template_kwargs", {"chat_template_kwargs"}),
            (422, "reasoning_effort: wrong", both),
            (400, '"m" does not support thinking', both),
            (400, "bad request", both),
            (500, "System role not supported", {"system"}),
            (400, "Conversation roles must alternate user/assistant", {"system"}),
            (500, "it failed", set()),
            (401, "reasoning", set()),
            (400, '"m" does not support chat', set()),
        ):
            self.assertEqual(parts_to_leave(Refusal(status, said), body), expected, said)
        self.assertEqual(parts_to_leave(Refusal(400, "bad"), {"model": "m"}), set())


class AddressTest(unittest.TestCase):
    def test_what_a_person_writes(self) -> None:
        for written, whole in (
            ("http://127.0.0.1:1/v1/", "http://127.0.0.1:1/v1"),
            (" localhost:11434 ", "http://localhost:11434/v1"),
            ("http://127.0.0.1:1", "http://127.0.0.1:1/v1"),
            ("https://a/b", "https://a/b"),
        ):
            self.assertEqual(full_address(written, "/v1"), whole)
        self.assertEqual(full_address("127.0.0.1:5000/"), "http://127.0.0.1:5000")


if __name__ == "__main__":
    unittest.main()
