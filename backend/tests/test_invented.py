"""Which texts count as invented, and which of the same words were said."""

import unittest
from dataclasses import replace
from typing import Optional

from orvane_backend.invented import LEAST_CONFIDENCE, cleaned, reason_to_drop
from orvane_backend.recognisers import Evidence
from orvane_backend.speech_gate import Finding

SURE = Evidence(no_speech=0.02, log_probability=-0.25, compression=1.2)


def clear(seconds: float) -> Finding:
    """Speech without any doubt, from the first moment."""
    return Finding(True, seconds, 0.0, seconds, 0.9999)


def reason(
    text: str,
    evidence: Evidence = SURE,
    finding: Finding = clear(2),
    seconds: float = 8,
    language: str = "en",
) -> Optional[str]:
    return reason_to_drop(text, language, evidence, finding, seconds)


class PhraseTest(unittest.TestCase):
    def test_a_listed_phrase_goes_in_any_spelling_and_whatever_the_language(self) -> None:
        for text in (
            "Thanks for watching!", "THANKS FOR WATCHING", " thanks  for watching... ",
            "Vielen Dank fürs Zuschauen.", "vielen dank furs zuschauen", "Altyazı M.K.",
            "Gracias por ver el video", "Продолжение следует...", "ご視聴ありがとうございました。",
            "시청해주셔서 감사합니다.", "请不吝点赞 订阅 转发 打赏支持明镜与点点栏目", "Sous-titrage ST' 501",
        ):  # fmt: skip
            for language in ("en", "de", "xx"):
                self.assertEqual(reason(text, language=language), "known_phrase", text)

    def test_the_same_words_within_a_sentence_stay(self) -> None:
        for text in (
            "I told them thanks for watching the children while we were away.",
            "Please subscribe the letter and send it back.",
            "Er sagte vielen Dank fürs Zuschauen und ging.",
            "You know what I mean.",
            "Die Untertitel der Sendung waren falsch.",
            "We need subtitles by Friday.",
        ):
            self.assertIsNone(reason(text, finding=clear(4)), text)

    def test_credits_go_from_short_texts_alone(self) -> None:
        for text in (
            "Untertitelung des ZDF, 2023", "Untertitel von Stephanie Geiges", "Amara.org",
            "Subtitles by someone else", "Sous-titres par la communauté d'Amara.org",
            "Субтитры сделал кто-то", "字幕by索兰娅", "Titulky vytvořil někdo",
        ):  # fmt: skip
            self.assertEqual(reason(text, finding=clear(4)), "credits", text)
        long = "The volunteers who write all of this for amara.org meet on the first Monday."
        self.assertIsNone(reason(long, finding=clear(5)))

    def test_politeness_that_was_heard_clearly_stays(self) -> None:
        for text in ("Thank you.", "you", "Bye.", "Danke.", "Merci", "谢谢", "ありがとうございました"):
            self.assertIsNone(reason(text, finding=clear(0.9)), text)
            self.assertIsNone(reason(text, Evidence(), clear(0.9)), text)

    def test_politeness_that_little_speaks_for_goes(self) -> None:
        for evidence, finding in (
            (Evidence(no_speech=0.5), clear(0.9)),
            (Evidence(log_probability=-1.3), clear(0.9)),
            (SURE, Finding(True, 0.9, 0, 0.9, 0.6)),
            (SURE, Finding(True, 0.05, 0, 0.9, 0.99)),
            (Evidence(), clear(7.5)),
        ):
            self.assertEqual(reason("Thank you.", evidence, finding), "known_phrase")
            # What is no politeness does not depend on as little.
            self.assertIsNone(reason("It is late.", evidence, finding))


class TagTest(unittest.TestCase):
    def test_nothing_but_tags_is_nothing(self) -> None:
        for text in ("[Music]", "(music)", "♪", "♪♪ [BLANK_AUDIO] ♪", "*applause*", "【音楽】", "..."):
            self.assertEqual(reason(text), "tag", text)
        self.assertEqual(reason("  "), "empty")

    def test_tags_are_taken_from_texts(self) -> None:
        self.assertEqual(cleaned("[Music] Good morning. (laughs)"), "Good morning.")
        self.assertEqual(cleaned("♪ we shall overcome ♪"), "we shall overcome")
        self.assertEqual(reason("[Music] Thanks for watching!"), "known_phrase")


class LoopTest(unittest.TestCase):
    def test_what_people_repeat_stays_as_it_is(self) -> None:
        for text in (
            "no no no no", "Ha ha ha!", "No, no, no, no, no, no.", "very very good",
            "we will we will rock you", "row row row your boat", "ははははは",
            "let it be let it be let it be let it be",
        ):  # fmt: skip
            self.assertEqual(cleaned(text), text)
            self.assertIsNone(reason(text), text)

    def test_a_loop_is_said_twice(self) -> None:
        self.assertEqual(cleaned("and then " + "no " * 9 + "more"), "and then no no more")
        self.assertEqual(cleaned("I think so. " * 6 + "Yes."), "I think so. I think so. Yes.")
        self.assertEqual(cleaned("好的吗" * 8), "好的吗好的吗")

    def test_a_text_that_is_nothing_but_a_loop_goes(self) -> None:
        for text in ("la " * 15, "Thank you. " * 8, "I don't know. " * 7, "谢谢你" * 9):
            self.assertEqual(reason(text, finding=clear(8)), "repetition", text)

    def test_a_loop_within_a_longer_text_does_not_take_it_along(self) -> None:
        text = "this is a sentence with many words that somebody has said " + "no " * 13
        self.assertIsNone(reason(text, finding=clear(6)))

    def test_compression_counts_for_long_texts_that_nothing_else_speaks_for(self) -> None:
        tight = Evidence(log_probability=-1.2, compression=2.9)
        long = "the man and the man with the man " * 4
        self.assertEqual(reason(long, tight, clear(8)), "compression")
        self.assertIsNone(reason("no no no", tight, clear(2)))
        sung = Evidence(log_probability=-0.3, compression=2.9)
        self.assertIsNone(reason(long, sung, clear(8)))


class EvidenceTest(unittest.TestCase):
    def test_more_than_anyone_can_say_goes(self) -> None:
        text = "This sentence is rather long for somebody who has opened the mouth for so short a time."
        self.assertEqual(reason(text, finding=clear(0.5)), "speed")
        self.assertIsNone(reason(text, finding=clear(4)))
        self.assertEqual(reason("我们今天要谈谈天气和经济的情况还有别的事情", finding=clear(0.5)), "speed")
        self.assertIsNone(reason("我们今天要谈谈天气和经济", finding=clear(2.5)))

    def test_where_the_gate_heard_nobody_nothing_was_said(self) -> None:
        self.assertEqual(reason("It is late.", finding=Finding(False)), "silence")

    def test_silence_by_the_engine_takes_more_than_one_sign(self) -> None:
        doubtful = Finding(True, 1.5, 0, 2, 0.6)
        self.assertEqual(reason("It is late.", Evidence(no_speech=0.9), doubtful), "silence")
        unsure = Evidence(no_speech=0.9, log_probability=-1.2)
        self.assertEqual(reason("It is late.", unsure), "silence")
        self.assertIsNone(reason("It is late.", Evidence(no_speech=0.9)))
        self.assertEqual(reason("It is late.", Evidence(log_probability=-2.5)), "confidence")

    def test_words_without_confidence_go(self) -> None:
        self.assertEqual(reason("if", Evidence(confidence=LEAST_CONFIDENCE / 2)), "confidence")
        self.assertIsNone(reason("if", Evidence(confidence=LEAST_CONFIDENCE * 2)))

    def test_where_the_gate_was_in_doubt_words_have_to_be_good_ones(self) -> None:
        doubted = replace(clear(2), strength=0.95)
        for confidence, dropped in ((0.6, "confidence"), (0.75, None)):
            told = reason("that chance fits", Evidence(confidence=confidence), doubted)
            self.assertEqual(told, dropped)
        for confidence, dropped in ((0.9, "confidence"), (0.97, None)):
            self.assertEqual(reason("Oh.", Evidence(confidence=confidence), doubted), dropped)

    def test_a_clear_voice_leaves_no_doubt(self) -> None:
        # Of 168 cuts of recordings none was below 0.9999, of words out of music 1 of 110 above this.
        for strength, dropped in ((0.998, "confidence"), (0.999, None)):
            told = reason(
                "ten of clubs", Evidence(confidence=0.5), replace(clear(2), strength=strength)
            )
            self.assertEqual(told, dropped)


if __name__ == "__main__":
    unittest.main()
