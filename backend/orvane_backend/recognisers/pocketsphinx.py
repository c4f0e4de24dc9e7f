"""PocketSphinx with its US English model: needs no network and no download."""

import re
from math import exp
from typing import Optional, Sequence

from ..audio import Samples, encode_pcm, is_silent
from ..languages import AUTO, short
from ..notices import Notice, notice
from . import Evidence, Recogniser, RecogniserError, Recognition, Utterance, Word
from .sphinx_library import Decoder, DecoderError, LibraryMissing, Segment

_MODEL = "/usr/share/pocketsphinx/model/en-us"

# Chosen by `backend/measure`; the README has the figures. A second pass over the lexicon tree costs
# a third of the time and loses words; eight Gaussians a frame and a light language weight win some.
_OPTIONS = {
    "-hmm": f"{_MODEL}/en-us",
    "-lm": f"{_MODEL}/en-us.lm.bin",
    "-dict": f"{_MODEL}/cmudict-en-us.dict",
    "-topn": "8",
    "-maxhmmpf": "6000",
    "-maxwpf": "20",
    "-lw": "6.0",
    "-fwdflat": "no",
    # Left to itself it leaves pauses away, and every word's place after one is wrong.
    "-remove_silence": "no",
}

# Where the first pass has no words at all a second one over the lexicon may find some.
_SECOND_PASS = {**_OPTIONS, "-fwdflat": "yes"}

_FRAMES_PER_SECOND = 100
_VARIANT = re.compile(r"\(\d+\)$")
_CAPITAL_I = re.compile(r"^i\b")

# By how much each figure speaks for English words, fitted to recorded and synthetic English against
# other languages, music and noise; `backend/measure_gate` prints what they tell apart.
_BY_PROBABILITY = 3.07
_BY_ACOUSTIC = 0.074
_BY_FRAMES_A_WORD = -0.146
_BY_COVERAGE = 4.09
_BY_LANGUAGE = -0.0076
_BY_WORDS = -0.089
_BIAS = 0.81
_MOST_FRAMES_A_WORD, _MOST_WORDS = 150, 8
# What the words of the first search, which have no probability, are taken to have.
_USUAL_PROBABILITY = 0.66


class PocketSphinxRecogniser(Recogniser):
    """The recogniser that is always there. It knows English only."""

    name = "PocketSphinx"
    only_language = "en"

    def __init__(self) -> None:
        self._second_pass: Optional[Decoder] = None

    def load(self) -> None:
        self._decoder = _decoder(_OPTIONS)

    def refusal(self, language: str) -> Optional[Notice]:
        if short(language) in (AUTO, self.only_language):
            return None
        return notice("recognition.language_unknown", engine=self.name, language=short(language))

    def recognise(self, utterance: Utterance) -> Recognition:
        try:
            segments = self._heard(utterance.samples)
        except DecoderError as error:
            raise RecogniserError(
                notice("recognition.failed", engine="PocketSphinx", reason=str(error))
            ) from error
        if not segments:
            return Recognition("", "en")
        frames = len(utterance.samples) * _FRAMES_PER_SECOND / 16000
        words = tuple(_word(segment) for segment in segments)
        text = " ".join(word.text for word in words)
        return Recognition(
            text, "en", evidence=Evidence(confidence=confidence(segments, frames)), words=words
        )

    def _heard(self, samples: Samples) -> list[Segment]:
        """The words of the best path; where there is none, those that come next best."""
        # Out of perfect silence the decoder makes words.
        if is_silent(samples):
            return []
        pcm = encode_pcm(samples)
        heard = self._decoder.decode(pcm)
        # Some cuts of speech end where no path leads to, and the best path is then none at all.
        segments = spoken(heard.best_path) or spoken(heard.first_search)
        if not segments:
            if self._second_pass is None:
                self._second_pass = _decoder(_SECOND_PASS)
            heard = self._second_pass.decode(pcm)
            segments = spoken(heard.best_path) or spoken(heard.first_search)
        return segments


def _decoder(options: dict[str, str]) -> Decoder:
    try:
        return Decoder(options)
    except LibraryMissing:
        raise RecogniserError(notice("recognition.not_installed", engine="PocketSphinx")) from None
    except DecoderError:
        reason = "das englische Modell fehlt"
        raise RecogniserError(
            notice("recognition.failed", engine="PocketSphinx", reason=reason)
        ) from None


def spoken(segments: Sequence[Segment]) -> list[Segment]:
    """The words alone, without fillers and the marks of beginning and end."""
    return [segment for segment in segments if segment.word[0] not in "<["]


def confidence(segments: Sequence[Segment], frames: float) -> float:
    """How likely it is, 0 to 1, that an utterance of so many frames holds these English words.

    Nonsense out of noise and music has few words that last long, stand apart, and compete with many
    others. A voice that the model does not know sounds as strange to it as another language does, so
    other languages are told only where they fit very badly.
    """
    lengths = [segment.last - segment.first + 1 for segment in segments]
    covered, count = sum(lengths), len(segments)
    sure = [segment.probability for segment in segments if segment.probability is not None]
    # A word's own score is that of one frame.
    acoustic = sum(one.acoustic * length for one, length in zip(segments, lengths)) / covered
    score = (
        _BIAS
        + _BY_PROBABILITY * (sum(sure) / len(sure) if sure else _USUAL_PROBABILITY)
        + _BY_ACOUSTIC * acoustic
        + _BY_FRAMES_A_WORD * min(covered / count, _MOST_FRAMES_A_WORD)
        + _BY_COVERAGE * min(covered / frames, 1)
        + _BY_LANGUAGE * sum(segment.language for segment in segments) / count
        + _BY_WORDS * min(count, _MOST_WORDS)
    )
    return 1 / (1 + exp(-score))


def _word(segment: Segment) -> Word:
    begin, end = segment.first, segment.last + 1
    return Word(readable(segment.word), begin / _FRAMES_PER_SECOND, end / _FRAMES_PER_SECOND)


def readable(word: str) -> str:
    """Without the variant's number; "i" as one writes it."""
    return _CAPITAL_I.sub("I", _VARIANT.sub("", word))
