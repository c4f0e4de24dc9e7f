"""The built-in recogniser: what becomes of its library's answers, and the library for real."""

import os
import subprocess
import sys
import unittest
import weakref
from pathlib import Path
from typing import Optional
from unittest import mock

import numpy as np

from orvane_backend.audio import Samples, decode_pcm, encode_pcm
from orvane_backend.invented import LEAST_CONFIDENCE
from orvane_backend.recognisers import RecogniserError, Recognition, Utterance, Word
from orvane_backend.recognisers import pocketsphinx, sphinx_library
from orvane_backend.recognisers.pocketsphinx import _OPTIONS as OPTIONS
from orvane_backend.recognisers.pocketsphinx import PocketSphinxRecogniser, confidence
from orvane_backend.recognisers.sphinx_library import Decoder, DecoderError, Heard, Segment
from tests.music import MUSIC
from tests.recordings import cuts_by_beginning, recordings

SECOND = np.full(16000, 0.25, np.float32)

Segments = tuple[Segment, ...]


def segments(words: str, probability: Optional[float] = 0.8, frames: int = 30) -> Segments:
    """Words one after another, each as long, with usual scores."""
    return tuple(
        Segment(word, place * frames, place * frames + frames - 1, probability, -28.0, -380.0)
        for place, word in enumerate(words.split())
    )


def decoder(best_path: str = "", first_search: str = "") -> mock.Mock:
    """One that hears this, whatever is said."""
    heard = Heard(segments(best_path), segments(first_search, None))
    return mock.Mock(decode=mock.Mock(return_value=heard))


class AnswerTest(unittest.TestCase):
    def heard(self, best_path: str, first_search: str, second_pass: str = "") -> Recognition:
        recogniser = PocketSphinxRecogniser()
        recogniser._decoder = decoder(best_path, first_search)
        self.second_pass = decoder(second_pass)
        recogniser._second_pass = self.second_pass
        return recogniser.recognise(Utterance(SECOND, "en"))

    def test_the_best_path_is_the_answer(self) -> None:
        self.assertEqual(self.heard("i see", "i sea").text, "I see")

    def test_without_a_best_path_the_first_search_is_the_answer(self) -> None:
        self.assertEqual(self.heard("", "<s> i sea </s>").text, "I sea")
        self.second_pass.decode.assert_not_called()

    def test_fillers_are_no_best_path(self) -> None:
        self.assertEqual(self.heard("<sil> [NOISE]", "i sea").text, "I sea")

    def test_without_any_word_a_second_pass_is_made(self) -> None:
        self.assertEqual(self.heard("", "<sil>", "<s> i see").text, "I see")

    def test_nothing_in_all_is_nothing(self) -> None:
        self.assertEqual(self.heard("", "<sil>"), Recognition("", "en"))

    def test_the_second_pass_is_made_ready_once_and_only_when_it_is_needed(self) -> None:
        recogniser = PocketSphinxRecogniser()
        with mock.patch.object(pocketsphinx, "Decoder", return_value=decoder("see")) as made:
            recogniser.load()
            recogniser.recognise(Utterance(SECOND, "en"))
            self.assertEqual(made.call_count, 1)
            recogniser._decoder = decoder()
            for _ in range(2):
                self.assertEqual(recogniser.recognise(Utterance(SECOND, "en")).text, "see")
        self.assertEqual(made.call_count, 2)
        self.assertEqual(made.call_args.args[0]["-fwdflat"], "yes")

    def test_a_failure_in_the_middle_is_told(self) -> None:
        recogniser = PocketSphinxRecogniser()
        recogniser._decoder = mock.Mock(decode=mock.Mock(side_effect=DecoderError("utterance")))
        with self.assertRaisesRegex(RecogniserError, "^PocketSphinx: utterance"):
            recogniser.recognise(Utterance(SECOND, "en"))

    def test_words_have_places_and_are_made_readable(self) -> None:
        heard = self.heard("<s> i was(2) <sil> [NOISE] i'm in it </s>", "")
        self.assertEqual(heard.text, "I was I'm in it")
        self.assertEqual(heard.words[:2], (Word("I", 0.3, 0.6), Word("was", 0.6, 0.9)))

    def test_it_refuses_everything_but_english(self) -> None:
        recogniser = PocketSphinxRecogniser()
        for language in ("en", "en-GB", "auto"):
            self.assertIsNone(recogniser.refusal(language))
        refused = recogniser.refusal("de-AT")
        assert refused is not None
        self.assertEqual(refused.code, "recognition.language_unknown")
        self.assertEqual(refused.parameters["language"], "de")

    def test_confidence_falls_with_each_sign_of_nonsense(self) -> None:
        usual = segments("we see him now")
        sure = confidence(usual, 140)
        self.assertGreater(sure, 0.7)
        for words, frames in (
            (segments("we see him now", 0.1), 140),
            (segments("we see him now", 0.8, 120), 500),
            (usual, 700),
            (tuple(one._replace(acoustic=-60.0) for one in usual), 140),
        ):
            self.assertLess(confidence(words, frames), sure - 0.1)


class PocketSphinxTest(unittest.TestCase):
    """With the library and its model."""

    recogniser: PocketSphinxRecogniser

    @classmethod
    def setUpClass(cls) -> None:
        cls.recogniser = PocketSphinxRecogniser()
        cls.recogniser.load()

    def heard(self, samples: Samples) -> Recognition:
        return self.recogniser.recognise(Utterance(samples, "en"))

    def test_a_recorded_sentence_is_understood(self) -> None:
        sentence = recordings()[4]
        heard = self.heard(decode_pcm(sentence.pcm))
        self.assertEqual((heard.text, heard.language), (sentence.words, "en"))
        assert heard.evidence.confidence is not None
        self.assertGreater(heard.evidence.confidence, 0.6)

    def test_the_words_places_follow_each_other_within_the_utterance(self) -> None:
        sentence = recordings()[4]
        heard = self.heard(decode_pcm(sentence.pcm))
        self.assertEqual(" ".join(word.text for word in heard.words), heard.text)
        places = [place for word in heard.words for place in (word.begin, word.end)]
        self.assertEqual(places, sorted(places))
        self.assertLess(places[-1], sentence.seconds)
        self.assertGreater(places[-1], 0.7 * sentence.seconds)
        # With half a second before it everything is half a second later.
        later = self.heard(np.concatenate([np.zeros(8000, np.float32), decode_pcm(sentence.pcm)]))
        moved = {word.text: word.begin for word in later.words}
        for word in heard.words:
            if word.text in moved and len(word.text) > 5:
                self.assertAlmostEqual(moved[word.text], word.begin + 0.5, delta=0.1)

    def test_what_it_makes_of_music_has_no_confidence(self) -> None:
        for name in ("piano, chords", "organ, chords", "strings, chords"):
            heard = self.heard(MUSIC[name](4.0))
            if heard.text:
                assert heard.evidence.confidence is not None
                self.assertLess(heard.evidence.confidence, LEAST_CONFIDENCE, name)

    def test_no_cut_of_speech_falls_below_the_least_confidence(self) -> None:
        for cut in cuts_by_beginning(recordings()[1])[::7]:
            heard = self.heard(decode_pcm(cut))
            assert heard.evidence.confidence is not None
            self.assertGreater(heard.evidence.confidence, LEAST_CONFIDENCE, heard.text)

    def test_noise_hum_and_next_to_nothing_hold_no_words_to_rely_on(self) -> None:
        random = np.random.default_rng(5)
        hum = 0.1 * np.sin(2 * np.pi * 50 * np.arange(48000) / 16000)
        for samples in (
            random.normal(0, 0.05, 48000), random.normal(0, 0.003, 48000), hum,
            np.zeros(16000), np.full(1, 0.5), np.full(200, 0.5), np.zeros(0),
        ):  # fmt: skip
            heard = self.heard(samples.astype(np.float32))
            confidence = heard.evidence.confidence
            self.assertTrue(heard.text == "" or (confidence or 0) < LEAST_CONFIDENCE, heard)

    def test_perfect_silence_holds_no_word(self) -> None:
        self.assertEqual(self.heard(np.zeros(48000, np.float32)), Recognition("", "en"))

    def test_a_sentence_is_heard_the_same_after_another(self) -> None:
        first, second = (decode_pcm(one.pcm) for one in recordings()[3:5])
        alone = self.heard(second)
        self.heard(first * np.float32(3))
        again = self.heard(second)
        self.assertEqual(again.text, alone.text)
        for word, before in zip(again.words, alone.words):
            self.assertAlmostEqual(word.begin, before.begin, delta=0.05)

    def test_a_cut_that_has_no_best_path_has_words_nevertheless(self) -> None:
        cut = next(
            (cut for cut in cuts_by_beginning(recordings()[0]) if not self.best_path(cut)), None
        )
        assert cut is not None, "every cut has a best path"
        words = self.heard(decode_pcm(cut)).text.split()
        self.assertGreaterEqual(len(set(words) & set(recordings()[0].words.split())), 3, words)

    def best_path(self, pcm: bytes) -> list[Segment]:
        return pocketsphinx.spoken(self.recogniser._decoder.decode(pcm).best_path)


class LibraryTest(unittest.TestCase):
    def test_without_the_library_it_says_so(self) -> None:
        with mock.patch.object(sphinx_library, "_DECODER_LIBRARY", "libnowhere.so.3"):
            sphinx_library._library.cache_clear()
            self.addCleanup(sphinx_library._library.cache_clear)
            with self.assertRaisesRegex(RecogniserError, "nicht installiert"):
                PocketSphinxRecogniser().load()

    def test_a_library_that_is_another_one_is_told(self) -> None:
        with mock.patch.object(sphinx_library, "_DECODER_LIBRARY", "libc.so.6"):
            sphinx_library._library.cache_clear()
            self.addCleanup(sphinx_library._library.cache_clear)
            with self.assertRaisesRegex(RecogniserError, "nicht installiert"):
                PocketSphinxRecogniser().load()

    def test_without_the_model_it_says_so(self) -> None:
        for option in ("-hmm", "-lm", "-dict"):
            with mock.patch.dict(OPTIONS, {option: "/nowhere"}):
                with self.assertRaisesRegex(RecogniserError, "Modell fehlt"):
                    PocketSphinxRecogniser().load()

    def test_options_that_it_does_not_know_are_told(self) -> None:
        with self.assertRaises(DecoderError):
            Decoder({**OPTIONS, "-nonsense": "1"})

    def test_a_decoder_that_failed_says_so(self) -> None:
        decoder = Decoder(OPTIONS)
        library = mock.Mock(wraps=decoder._library)
        decoder._library = library
        library.ps_process_raw = mock.Mock(return_value=-1)
        with self.assertRaisesRegex(DecoderError, "not decoded"):
            decoder.decode(encode_pcm(SECOND))
        library.ps_start_utt = mock.Mock(return_value=-1)
        with self.assertRaisesRegex(DecoderError, "not begun"):
            decoder.decode(encode_pcm(SECOND))

    def test_a_decoder_goes_with_its_object_or_when_it_is_closed(self) -> None:
        freed = mock.Mock()
        library = mock.Mock(ps_free=freed)
        with mock.patch.object(sphinx_library, "_library", return_value=library):
            closed, dropped = Decoder({}), Decoder({})
        closed.close()
        closed.close()
        freed.assert_called_once()
        gone = weakref.ref(dropped)
        del dropped
        self.assertIsNone(gone())
        self.assertEqual(freed.call_count, 2)

    def test_it_writes_nothing_to_the_terminal(self) -> None:
        program = (
            "import threading\n"
            "from orvane_backend.recognisers.pocketsphinx import _OPTIONS\n"
            "from orvane_backend.recognisers.sphinx_library import Decoder, DecoderError\n"
            "def work():\n"
            "    Decoder(_OPTIONS).decode(bytes(32000))\n"
            "    try: Decoder({**_OPTIONS, '-lm': '/nowhere'})\n"
            "    except DecoderError: print('done')\n"
            "work()\n"
            "thread = threading.Thread(target=work); thread.start(); thread.join()\n"
        )
        ended = subprocess.run(
            [sys.executable, "-c", program], cwd=Path(__file__).resolve().parents[1],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", env=os.environ,
        )  # fmt: skip
        self.assertEqual((ended.returncode, ended.stdout), (0, "done\ndone\n"))


if __name__ == "__main__":
    unittest.main()
