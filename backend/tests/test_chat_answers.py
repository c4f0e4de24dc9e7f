"""What of a chat model's answer is the translation, and what is none."""

import unittest
from typing import Any

from orvane_backend.translators.chat_answer import cleaned, said
from orvane_backend.translators.chat_judgement import is_refusal, is_too_long


def answer(content: Any, finish: str = "stop", **more: Any) -> Any:
    message = {"role": "assistant", "content": content, **more}
    return {"choices": [{"message": message, "finish_reason": finish}]}


class SaidTest(unittest.TestCase):
    def test_what_is_no_answer(self) -> None:
        for record in (
            None, [], {}, "x", {"choices": []}, {"choices": [None]}, {"choices": [{}]},
            {"choices": [{"message": None}]}, answer(3), {"error": "x"},
        ):  # fmt: skip
            self.assertIsNone(said(record), record)

    def test_content_in_parts_and_none_at_all(self) -> None:
        parts = [{"type": "text", "text": "Hal"}, {"type": "text", "text": "lo"}, {"type": "x"}]
        for content, expected in ((parts, "Hallo"), (None, ""), ("Hallo", "Hallo")):
            found = said(answer(content))
            assert found is not None
            self.assertEqual(found.content, expected)

    def test_cut_and_thoughts(self) -> None:
        for record, cut, thought in (
            (answer("a"), False, False),
            (answer("a", "length"), True, False),
            (answer("", reasoning="b"), False, True),
            (answer("", reasoning_content="b"), False, True),
            (answer("<think>b"), False, True),
            (answer("b</think>a"), False, True),
        ):
            found = said(record)
            assert found is not None
            self.assertEqual((found.cut, found.thought), (cut, thought), record)


class CleaningTest(unittest.TestCase):
    def check(self, content: str, expected: str, source: str = "Hello") -> None:
        self.assertEqual(cleaned(content, source), expected, repr(content))

    def test_thoughts_go(self) -> None:
        self.check("<think>\nI think\n</think>\n\nHallo", "Hallo")
        self.check("<think>\n\n</think>Hallo", "Hallo")
        self.check("<THINK>a</THINK> <thinking>b</thinking> Hallo", "Hallo")
        self.check("I think\n</think>\nHallo", "Hallo")
        self.check("[THINK]a[/THINK]Hallo", "Hallo")
        self.check("<think>\nI think Hallo", "")
        self.check("<think>a</think>", "")

    def test_thoughts_that_the_source_has_stay(self) -> None:
        self.check("<think> ist ein Wort", "<think> ist ein Wort", "<think> is a word")

    def test_fences_and_marks_go(self) -> None:
        self.check("```\nHallo\n```", "Hallo")
        self.check("```text\nHallo\n```\nThis is an explanation", "Hallo")
        self.check("~~~\nHallo\n~~~", "Hallo")
        self.check("`Hallo`", "Hallo")
        self.check("**Hallo**", "Hallo")
        self.check("*Hallo*", "*Hallo*", "*Hello*")
        self.check("2 * 3 * 4", "2 * 3 * 4")

    def test_added_quotes_go(self) -> None:
        for content in (
            '"Hallo"',
            "“Hallo”",
            "„Hallo“",
            "« Hallo »",
            "»Hallo«",
            "「Hallo」",
            "'Hallo'",
        ):
            self.check(content, "Hallo")
        self.check('"Er sagte „Hallo“"', "Er sagte „Hallo“", "He said “hello”")

    def test_quotes_that_the_source_has_stay(self) -> None:
        self.check('"Hallo"', '"Hallo"', '"Hello"')
        self.check("„Hallo“", "„Hallo“", '"Hello"')
        self.check('Er sagte "Hallo"', 'Er sagte "Hallo"', 'He said "Hello"')
        self.check('"Hallo" und "Tschüss"', '"Hallo" und "Tschüss"', "Hello and bye")
        self.check('"Hallo", sagte er', '"Hallo", sagte er', '"Hello," he said')
        self.check("Rock 'n' Roll'", "Rock 'n' Roll'")

    def test_notes_go(self) -> None:
        for note in (
            "\n\n(Note: informal)", " (Note: informal.)", "\n\nNote: informal\nand more",
            "\nAnmerkung: informell", "\n\n*(Anmerkung: informell)*", "\n\n**Note:** informal",
            "\n\n[Translator's note: informal]", "\n（注：口语）",
        ):  # fmt: skip
            self.check("Hallo" + note, "Hallo")

    def test_notes_and_brackets_that_the_source_has_stay(self) -> None:
        self.check("Es regnet.\nHinweis: Schirm!", "Es regnet. Hinweis: Schirm!",
                   "It rains. Note: umbrella!")  # fmt: skip
        self.check("Hallo (Note: x)", "Hallo (Note: x)", "Hello (note: x)")
        self.check("Hallo (leise)", "Hallo (leise)", "Hello (softly)")
        self.check("(Applaus)", "(Applaus)", "(applause)")
        self.check("Note: Schirm", "Note: Schirm", "Note: umbrella")
        self.check("Hallo (wörtlich)", "Hallo (wörtlich)")

    def test_labels_go(self) -> None:
        for label in (
            "Translation: ", "Here is the translation:\n\n", "Here's the German translation: ",
            "Sure! Here is the translation: ", "**Translation:** ", "Übersetzung: ",
            "Die deutsche Übersetzung lautet:\n", "Hier ist die Übersetzung: ", "翻译：",
            "German translation: ", "The translation is: ",
        ):  # fmt: skip
            self.check(label + "Hallo", "Hallo")

    def test_labels_that_the_source_has_stay(self) -> None:
        self.check("Translation: a craft", "Translation: a craft", "Übersetzung: ein Handwerk")
        self.check("Here is the plan: we go", "Here is the plan: we go", "Hier der Plan: wir gehen")
        self.check("Translation: Übersetzung: die Kunst", "Übersetzung: die Kunst",
                   "Translation: the art")  # fmt: skip
        self.check("Übersetzungen sind schwer", "Übersetzungen sind schwer")
        self.check("Translation:", "Translation:")

    def test_all_of_it_at_once(self) -> None:
        self.check('<think>a</think>\n```\nHere is the translation:\n\n"**Hallo\nWelt**"\n\n'
                   "(Note: informal)\n```", "Hallo Welt")  # fmt: skip

    def test_line_breaks_become_spaces_and_nothing_else_changes(self) -> None:
        self.check(" Hallo \n\n Welt\r\n\u2028da ", "Hallo Welt da")
        self.check("Quoi\u00a0? 1 < 2 & 3 > 2 \\ {x} 😀", "Quoi\u00a0? 1 < 2 & 3 > 2 \\ {x} 😀")


class JudgementTest(unittest.TestCase):
    def test_refusals(self) -> None:
        for text in (
            "I'm sorry, but I can't help with that request.",
            "I’m sorry, but I can’t assist with that.",
            "I cannot translate this text.",
            "I can't help with that.",
            "As an AI language model, I have no opinion.",
            "Es tut mir leid, aber ich kann dabei nicht helfen.",
            "Ich kann diesen Text leider nicht übersetzen.",
            "Je suis désolé, mais je ne peux pas vous aider.",
            "Lo siento, pero no puedo ayudar con eso.",
            "Mi dispiace, ma non posso aiutarti.",
            "Desculpe, mas não posso ajudar.",
            "Het spijt me, maar ik kan je daar niet bij helpen.",
            "Przykro mi, ale nie mogę w tym pomóc.",
            "Извините, но я не могу помочь.",
            "抱歉，我无法提供帮助。",
            "申し訳ありませんが、お手伝いできません。",
            "죄송하지만 도와드릴 수 없습니다.",
        ):
            self.assertTrue(is_refusal(text, "Take him down.", "en", "de"), text)
            self.assertTrue(is_refusal(text, "Nehmt ihn fest.", "de-AT", "en"), text)

    def test_what_the_source_says_is_no_refusal(self) -> None:
        for source, text, from_, to in (
            (
                "I'm sorry, but I can't come",
                "Es tut mir leid, aber ich kann nicht kommen",
                "en",
                "de",
            ),
            ("Es tut mir leid, ich kann nicht", "I'm sorry, I can't", "de", "en"),
            ("Lo siento, no puedo ayudar", "I'm sorry, I can't help", "es", "en"),
            ("Ich kann nicht helfen", "I can't help", "de", "en"),
            ("Olen pahoillani, en voi tulla", "I'm sorry, I can't come", "fi", "en"),
            ("En voi auttaa", "I can't help", "fi", "en"),
            ("A language model is a program", "Ein Sprachmodell ist ein Programm", "en", "de"),
            ("Take him down.", "Nehmt ihn fest.", "en", "de"),
            ("I am sorry", "Es tut mir leid", "en", "de"),
            ("Je ne peux pas venir", "I can't come", "fr", "en"),
        ):
            self.assertFalse(is_refusal(text, source, from_, to), text)

    def test_a_refusal_in_another_language_than_the_target_is_one_from_any_source(self) -> None:
        refusal = "I'm sorry, but I can't help with that."
        self.assertTrue(is_refusal(refusal, "Ota hänet kiinni", "fi", "de"))
        self.assertFalse(is_refusal(refusal, "Ota hänet kiinni", "fi", "en"))

    def test_an_essay_is_too_long_and_another_script_is_not(self) -> None:
        self.assertTrue(is_too_long("Das ist eine sehr gute Frage. " * 4, "Hello"))
        self.assertTrue(is_too_long("x" * 230, "y" * 20))
        self.assertFalse(is_too_long("x" * 230, "字" * 20))
        self.assertTrue(is_too_long("x" * 500, "A sentence of some words is said here."))
        for source, text in (
            ("Ja.", "Yes, of course, with the greatest of pleasure."),
            ("本日はお集まりいただきありがとうございます", "Thank you very much for joining us here today, everyone"),
            ("Thank you very much for coming", "本日はお集まりいただきありがとうございます"),
            ("How are you doing today", "ဒီနေ့ နေကောင်းလား ခင်ဗျာ"),
        ):
            self.assertFalse(is_too_long(text, source), text)


if __name__ == "__main__":
    unittest.main()
