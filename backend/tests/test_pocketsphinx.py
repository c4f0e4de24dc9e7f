"""The built-in recogniser: what becomes of its library's answers, and the library for real."""

import os
import subprocess
import sys
import unittest
import weakref
from pathlib import Path
from unittest import mock

import numpy as np

from orvane_backend.audio import decode_pcm, encode_pcm
from orvane_backend.recognisers import RecogniserError, Recognition
from orvane_backend.recognisers import pocketsphinx, sphinx_library
from orvane_backend.recognisers.pocketsphinx import _OPTIONS as OPTIONS
from orvane_backend.recognisers.pocketsphinx import PocketSphinxRecogniser
from orvane_backend.recognisers.sphinx_library import Decoder, DecoderError, Heard
from tests.recordings import cuts_by_beginning, recordings

SECOND = np.full(16000, 0.25, np.float32)


class AnswerTest(unittest.TestCase):
    def heard(self, best_path: str, first_search: str) -> str:
        recogniser = PocketSphinxRecogniser()
        recogniser._decoder = mock.Mock(decode=lambda pcm: Heard(best_path, first_search))
        return recogniser.recognise(SECOND, "en").text

    def test_the_best_path_is_the_answer(self) -> None:
        self.assertEqual(self.heard("i see", "i sea"), "I see")

    def test_without_a_best_path_the_first_search_is_the_answer(self) -> None:
        self.assertEqual(self.heard("", "<s> i sea </s>"), "I sea")

    def test_fillers_are_no_best_path(self) -> None:
        self.assertEqual(self.heard("<sil> [NOISE]", "i sea"), "I sea")

    def test_nothing_in_both_is_nothing(self) -> None:
        self.assertEqual(self.heard("", "<sil>"), "")

    def test_a_failure_in_the_middle_is_told(self) -> None:
        recogniser = PocketSphinxRecogniser()
        recogniser._decoder = mock.Mock(decode=mock.Mock(side_effect=DecoderError("utterance")))
        with self.assertRaisesRegex(RecogniserError, "^PocketSphinx: utterance"):
            recogniser.recognise(SECOND, "en")

    def test_words_are_made_readable(self) -> None:
        self.assertEqual(
            pocketsphinx.readable("<s> i was(2) <sil> [NOISE] i'm in it </s>"), "I was I'm in it"
        )


class PocketSphinxTest(unittest.TestCase):
    """With the library and its model."""

    recogniser: PocketSphinxRecogniser

    @classmethod
    def setUpClass(cls) -> None:
        cls.recogniser = PocketSphinxRecogniser()
        cls.recogniser.load()

    def test_a_recorded_sentence_is_understood(self) -> None:
        sentence = recordings()[4]
        heard = self.recogniser.recognise(decode_pcm(sentence.pcm), "en")
        self.assertEqual(heard, Recognition(sentence.words, "en"))

    def test_noise_hum_and_next_to_nothing_hold_no_words(self) -> None:
        random = np.random.default_rng(5)
        hum = 0.1 * np.sin(2 * np.pi * 50 * np.arange(48000) / 16000)
        for samples in (
            random.normal(0, 0.05, 48000), random.normal(0, 0.003, 48000), hum,
            np.zeros(16000), np.full(1, 0.5), np.full(200, 0.5), np.zeros(0),
        ):  # fmt: skip
            self.assertEqual(self.recogniser.recognise(samples.astype(np.float32), "en").text, "")

    def test_a_sentence_is_heard_the_same_after_another(self) -> None:
        first, second = (decode_pcm(one.pcm) for one in recordings()[3:5])
        alone = self.recogniser.recognise(second, "en")
        self.recogniser.recognise(first * np.float32(3), "en")
        self.assertEqual(self.recogniser.recognise(second, "en"), alone)

    def test_a_cut_that_has_no_best_path_has_words_nevertheless(self) -> None:
        cut = next(
            (cut for cut in cuts_by_beginning(recordings()[0]) if not self.best_path(cut)), None
        )
        assert cut is not None, "every cut has a best path"
        words = self.recogniser.recognise(decode_pcm(cut), "en").text.split()
        self.assertGreaterEqual(len(set(words) & set(recordings()[0].words.split())), 3, words)

    def best_path(self, pcm: bytes) -> str:
        return pocketsphinx.readable(self.recogniser._decoder.decode(pcm).best_path)


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
