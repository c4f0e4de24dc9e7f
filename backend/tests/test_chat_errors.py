"""What chat servers answer and refuse, and many texts at once."""

import threading
from unittest import mock, main

from orvane_backend.translators import Passage, chat
from tests.chat_case import FLAVOURS, TEXT, ChatCase
from tests.standins._http import Turn, html_page, json_reply, redirect_to, text_reply

SECONDS = 60.0


class AnswersTest(ChatCase):
    def test_wrapped_answers_are_unwrapped(self) -> None:
        server = self.server()
        translator = self.ready(server)
        for style in (
            "plain", "think", "think_empty", "think_end", "quoted", "curly", "guillemets", "fenced",
            "noted", "labelled", "spaced",
        ):  # fmt: skip
            server.style = style
            self.assertEqual(translator.translate(Passage(TEXT)), TEXT.upper(), style)

    def test_what_is_no_translation_is_a_failure_of_this_text_alone(self) -> None:
        for style, code in (
            ("think_unclosed", "translation.only_thoughts"),
            ("refusal", "translation.declined"),
            ("length", "translation.cut"),
            ("empty", "translation.only_thoughts"),
            ("null", "translation.empty"),
            ("no_choices", "translation.unreadable"),
        ):
            server = self.server(style=style)
            error = self.failure(self.ready(server))
            self.assertEqual((error.notice.code, error.is_of_text), (code, True), style)
            server.style = "plain"

    def test_an_essay_is_a_failure(self) -> None:
        server = self.server(translate=lambda messages: "It depends on many things. " * 5)
        self.assertEqual(self.code(self.ready(server), "Yes."), "translation.too_long")

    def test_errors_in_all_shapes(self) -> None:
        for flavour in FLAVOURS:
            server = self.server(flavour)
            translator = self.ready(server)
            for style, passing, said in (
                ("html", True, "HTTP 502"), ("broken", False, "it failed"), ("full", True, None),
            ):  # fmt: skip
                server.style = style
                error = self.failure(translator)
                self.assertEqual(error.notice.code, "translation.failed")
                self.assertEqual((error.is_passing, error.is_of_text), (passing, False))
                if said:
                    self.assertEqual(error.notice.parameters["reason"], said)
            server.style = "plain"
            self.assertEqual(translator.translate(Passage("a")), "A")

    def test_answers_that_are_no_answers(self) -> None:
        server = self.server()
        translator = self.ready(server)
        for turn, said in (
            (Turn(text_reply("busy", 500)), "busy"),
            (Turn(json_reply({"error": "no such path"})), "no such path"),
            (Turn(json_reply({"detail": [{"msg": "x"}]}, 500)), '[{"msg": "x"}]'),
            (Turn(redirect_to(server.address, 307)), "HTTP 307"),
            (Turn(html_page(200)), "HTTP 200"),
        ):
            server.plan.append(turn)
            error = self.failure(translator)
            self.assertEqual(error.notice.parameters["reason"], said)

    def test_an_answer_cut_in_the_middle_is_silence(self) -> None:
        server = self.server()
        translator = self.ready(server)
        server.plan.append(Turn(cut=True))
        self.assertEqual(self.code(translator), "translation.silent")
        self.assertEqual(translator.translate(Passage("a")), "A")

    def test_an_answer_that_does_not_come_ends_in_time(self) -> None:
        server = self.server(plan=[Turn(hold=True)])
        translator = self.ready(server)
        with mock.patch.object(chat, "_ANSWER_SECONDS", 0.2):
            self.assertEqual(self.code(translator), "translation.silent")


class RefusedPartsTest(ChatCase):
    def test_a_part_that_is_refused_is_left_out_from_then_on(self) -> None:
        refusal = json_reply({"error": {"message": "unknown field reasoning_effort"}}, 400)
        server = self.server(plan=[Turn(refusal)])
        translator = self.ready(server)
        for _ in range(2):
            self.assertEqual(translator.translate(Passage(TEXT)), TEXT.upper())
        chats = [one.json() for one in server.requests if one.path.endswith("/completions")]
        self.assertEqual(["reasoning_effort" in one for one in chats], [True, False, False])

    def test_parts_that_were_not_the_reason_come_back(self) -> None:
        refusal = json_reply({"error": "too long"}, 400)
        server = self.server(plan=[Turn(refusal), Turn(refusal)])
        translator = self.ready(server)
        self.assertEqual(self.failure(translator).notice.parameters["reason"], "too long")
        translator.translate(Passage(TEXT))
        self.assertIn("reasoning_effort", server.chats[-1])

    def test_a_template_without_a_system_message(self) -> None:
        refusal = json_reply({"error": {"message": "System role not supported"}}, 500)
        server = self.server("llama_cpp", plan=[Turn(), Turn(refusal)])
        translator = self.ready(server)
        self.assertEqual(translator.translate(Passage(TEXT)), TEXT.upper())
        self.assertEqual([one["role"] for one in server.chats[-1]["messages"]], ["user"])

    def test_sessions_side_by_side(self) -> None:
        server = self.server()
        translator = self.translator(server)
        done: list[str] = []

        def work(number: int) -> None:
            translator.warm_up()
            done.append(translator.translate(Passage(f"n{number}")))

        threads = [threading.Thread(target=work, args=(number,)) for number in range(6)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(SECONDS)
        self.assertEqual(sorted(done), [f"N{number}" for number in range(6)])
        self.assertEqual(server.loads, ["mistral:latest"])


if __name__ == "__main__":
    main()
