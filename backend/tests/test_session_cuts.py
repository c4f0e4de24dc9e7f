"""Sentences that the client cut in the middle, and languages that are detected."""

import unittest
from typing import Optional

import numpy as np

from orvane_backend.audio import Samples
from orvane_backend.recognisers import Recognition, Utterance, Word
from orvane_backend.speech_gate import Finding
from tests.peers import results
from tests.session_case import FakeRecogniser, SessionCase

_WORD_SECONDS = 0.5


def spoken(first: int, last: int, *, cut_at: float = 0.0) -> bytes:
    """Words of half a second each, whose level is their number, from one to another; the last one
    is cut short by so many seconds."""
    samples = np.repeat(np.arange(first, last + 1) * 256, int(_WORD_SECONDS * 16000))
    return samples[: len(samples) - int(cut_at * 16000)].astype("<i2").tobytes()


def quiet(seconds: float = 0.5) -> bytes:
    return bytes(2 * int(seconds * 16000))


def find_speech(samples: Samples) -> Finding:
    """Everything but zeros is speech."""
    (sounding,) = np.nonzero(samples)
    if not len(sounding):
        return Finding(is_speech=False, speech_seconds=0.0, begin=0.0, end=0.0)
    begin, end = sounding[0] / 16000, (sounding[-1] + 1) / 16000
    return Finding(is_speech=True, speech_seconds=end - begin, begin=begin, end=end)


class WordRecogniser(FakeRecogniser):
    """Hears the numbers in sound, and where they are. Of a word that is cut it hears another."""

    places_words = True

    def recognise(self, utterance: Utterance) -> Recognition:
        self.asked.append(utterance)
        levels = np.rint(utterance.samples * 128).astype(int)
        (changes,) = np.nonzero(np.diff(levels))
        edges = [0, *(changes + 1), len(levels)]
        words = []
        for begin, end in zip(edges, edges[1:]):
            if levels[begin]:
                is_cut = end - begin < _WORD_SECONDS * 16000 - 1
                text = f"x{levels[begin]}" if is_cut else f"n{levels[begin]}"
                words.append(Word(text, begin / 16000, end / 16000))
        text = " ".join(word.text for word in words)
        return Recognition(text, self.language, words=tuple(words) if self.places_words else ())


class SessionCutsTest(SessionCase):
    def setUp(self) -> None:
        super().setUp()
        self.recogniser = WordRecogniser()
        self.recognisers = [self.recogniser]

    async def said(self, *chunks: bytes) -> list[str]:
        async with self.client({}, find_speech=find_speech) as client:
            for pcm in chunks:
                await client.audio(pcm, 16000)
            return [text for text, _ in results(await client.flush())]

    async def test_a_word_at_a_cut_is_neither_lost_nor_doubled(self) -> None:
        for cut_at in (0.0, 0.1, 0.25, 0.4, 0.45):
            whole = spoken(1, 30)
            cut = len(spoken(1, 16, cut_at=cut_at))
            texts = await self.said(whole[:cut], whole[cut:] + quiet())
            self.assertEqual(len(texts), 2)
            expected = " ".join(f"n{number}" for number in range(1, 31))
            self.assertEqual(" ".join(texts), expected, f"cut {cut_at} s before the word's end")

    async def test_many_cuts_in_a_row(self) -> None:
        whole = spoken(1, 90) + quiet()
        step = 2 * int(3.3 * 16000)
        texts = await self.said(*(whole[at : at + step] for at in range(0, len(whole), step)))
        self.assertEqual(" ".join(texts), " ".join(f"n{number}" for number in range(1, 91)))

    async def test_what_is_held_back_is_shown_when_silence_follows(self) -> None:
        texts = await self.said(spoken(1, 16), quiet(1.0))
        self.assertEqual(" ".join(texts), " ".join(f"n{number}" for number in range(1, 17)))

    async def test_what_is_held_back_is_shown_before_a_flush_is_confirmed(self) -> None:
        texts = await self.said(spoken(1, 16))
        self.assertEqual(" ".join(texts), " ".join(f"n{number}" for number in range(1, 17)))

    async def test_what_is_held_back_is_shown_when_nothing_follows(self) -> None:
        async with self.client({}, find_speech=find_speech, hold_seconds=0.05) as client:
            await client.audio(spoken(1, 16), 16000)
            first = await client.until("translation")
            second = await client.until("translation")
        texts = [text for text, _ in results(first + second)]
        self.assertEqual(" ".join(texts), " ".join(f"n{number}" for number in range(1, 17)))

    async def test_what_was_heard_with_its_sentence_is_not_heard_again_alone(self) -> None:
        for after in (quiet(1.0), None):
            self.recogniser.asked.clear()
            await self.said(spoken(1, 16), *([after] if after else []))
            self.assertEqual(len(self.recogniser.asked), 1)

    async def test_a_sentence_that_ended_is_shown_at_once(self) -> None:
        self.assertEqual(await self.said(spoken(1, 4) + quiet()), ["n1 n2 n3 n4"])
        self.assertEqual(len(self.recogniser.asked), 1)

    async def test_a_new_config_does_not_lose_what_is_held_back(self) -> None:
        async with self.client({}, find_speech=find_speech) as client:
            await client.audio(spoken(1, 16), 16000)
            await client.config(targetLang="fr")
            texts = [text for text, _ in results(await client.flush())]
        self.assertEqual(" ".join(texts), " ".join(f"n{number}" for number in range(1, 17)))

    async def test_without_places_of_words_the_cut_moves_to_the_quietest_place(self) -> None:
        self.recogniser.places_words = False
        pause = np.full(3200, 1, "<i2").tobytes()
        first, second = spoken(1, 12) + pause + spoken(13, 16, cut_at=0.2), spoken(16, 20)[6400:]
        beginning = spoken(21, 22) + quiet()
        texts = await self.said(beginning, first, second + quiet())
        self.assertEqual(texts[1], " ".join(f"n{number}" for number in range(1, 13)))
        self.assertTrue(texts[2].startswith("n13 n14 n15"), texts)


class SessionLanguagesTest(SessionCase):
    async def test_a_language_that_one_chunk_suggests_is_not_taken_over(self) -> None:
        recogniser = _Polyglot()
        self.recognisers = [recogniser]
        wishes = {"sourceLang": "auto", "targetLang": "es"}
        async with self.client(wishes, find_speech=find_speech) as client:
            for language, certainty in (("en", 0.9), ("cy", 0.5), ("fr", 0.9), ("en", 0.9)):
                recogniser.hears = language, certainty
                await client.audio(spoken(1, 4) + quiet(), 16000)
                await client.flush()
            self.assertEqual({source for source, _ in self.chosen}, {"en"})
            asked = [utterance.language for utterance in recogniser.asked]
            self.assertEqual(asked, ["auto", "auto", "en", "auto", "en", "auto"])

    async def test_a_language_that_two_chunks_are_sure_of_is(self) -> None:
        recogniser = _Polyglot()
        self.recognisers = [recogniser]
        wishes = {"sourceLang": "auto", "targetLang": "es"}
        async with self.client(wishes, find_speech=find_speech) as client:
            for language in ("en", "fr", "fr"):
                recogniser.hears = language, 0.95
                await client.audio(spoken(1, 4) + quiet(), 16000)
                await client.flush()
        self.assertEqual([source for source, _ in self.chosen], ["en", "fr"])

    async def test_earlier_words_go_with_the_next_ones(self) -> None:
        recogniser = WordRecogniser()
        self.recognisers = [recogniser]
        async with self.client({"targetLang": "es"}, find_speech=find_speech) as client:
            for number in (1, 3, 5, 7):
                await client.audio(spoken(number, number + 1) + quiet(), 16000)
                await client.flush()
            self.now += 60.0
            await client.audio(spoken(9, 10) + quiet(), 16000)
            await client.flush()
        contexts = [utterance.context for utterance in recogniser.asked]
        self.assertEqual(contexts, ["", "n1 n2", "n1 n2 n3 n4", "n1 n2 n3 n4 n5 n6", ""])
        self.assertEqual(
            [passage.context for passage in self.translator.asked],
            [(), ("n1 n2",), ("n1 n2", "n3 n4"), ("n3 n4", "n5 n6"), ()],
        )


class _Polyglot(WordRecogniser):
    hears: tuple[str, Optional[float]] = ("en", 0.9)

    def recognise(self, utterance: Utterance) -> Recognition:
        heard = super().recognise(utterance)
        if utterance.language != "auto":
            return Recognition(heard.text, utterance.language)
        return Recognition(heard.text, *self.hears)


if __name__ == "__main__":
    unittest.main()
