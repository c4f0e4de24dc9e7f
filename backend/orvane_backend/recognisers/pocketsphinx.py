"""PocketSphinx with its US English model: needs no network and no download."""

import re
from ..audio import Samples, encode_pcm
from . import Recogniser, RecogniserError, Recognition
from .sphinx_library import Decoder, DecoderError, LibraryMissing

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
}

_VARIANT = re.compile(r"\(\d+\)$")
_CAPITAL_I = re.compile(r"\bi\b")


class PocketSphinxRecogniser(Recogniser):
    """The recogniser that is always there. It knows English only."""

    name = "PocketSphinx (Englisch)"
    only_language = "en"

    def load(self) -> None:
        try:
            self._decoder = Decoder(_OPTIONS)
        except LibraryMissing:
            raise RecogniserError("PocketSphinx ist nicht installiert") from None
        except DecoderError:
            raise RecogniserError("PocketSphinx: das englische Modell fehlt") from None

    def recognise(self, samples: Samples, language: str) -> Recognition:
        try:
            heard = self._decoder.decode(encode_pcm(samples))
        except DecoderError as error:
            raise RecogniserError(f"PocketSphinx: {error}") from error
        # Some cuts of speech end where no path leads to, and the best path is then none at all.
        return Recognition(readable(heard.best_path) or readable(heard.first_search), "en")


def readable(hypothesis: str) -> str:
    """The words alone, without variant numbers and fillers; "i" as one writes it."""
    words = (_VARIANT.sub("", word) for word in hypothesis.split())
    return _CAPITAL_I.sub("I", " ".join(word for word in words if word[0] not in "<["))
