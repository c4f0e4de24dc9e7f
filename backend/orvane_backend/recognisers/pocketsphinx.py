"""PocketSphinx with its US English model: needs no network and no download."""

import re

from ..audio import Samples, encode_pcm
from . import Recogniser, RecogniserError, Recognition

_MODEL = "/usr/share/pocketsphinx/model/en-us"

# Chosen by `backend/measure`; the README has the figures. A second pass over the lexicon tree costs
# a third of the time and loses words; eight Gaussians a frame and a light language weight win some.
_STRINGS = {
    "-hmm": f"{_MODEL}/en-us",
    "-lm": f"{_MODEL}/en-us.lm.bin",
    "-dict": f"{_MODEL}/cmudict-en-us.dict",
    "-logfn": "/dev/null",
}
_INTEGERS = {"-topn": 8, "-maxhmmpf": 6000, "-maxwpf": 20}
_FLOATS = {"-lw": 6.0}
_FLAGS = {"-fwdflat": False}

_VARIANT = re.compile(r"\(\d+\)$")
_CAPITAL_I = re.compile(r"\bi\b")


class PocketSphinxRecogniser(Recogniser):
    """The recogniser that is always there. It knows English only."""

    name = "PocketSphinx (Englisch)"
    only_language = "en"

    def load(self) -> None:
        try:
            import pocketsphinx
        except ImportError:
            raise RecogniserError("PocketSphinx ist nicht installiert") from None
        config = pocketsphinx.Decoder.default_config()
        for key, text in _STRINGS.items():
            config.set_string(key, text)
        for key, integer in _INTEGERS.items():
            config.set_int(key, integer)
        for key, number in _FLOATS.items():
            config.set_float(key, number)
        for key, flag in _FLAGS.items():
            config.set_boolean(key, flag)
        try:
            self._decoder = pocketsphinx.Decoder(config)
        except RuntimeError:
            raise RecogniserError("PocketSphinx: das englische Modell fehlt") from None

    def recognise(self, samples: Samples, language: str) -> Recognition:
        try:
            self._decoder.start_utt()
            # The whole utterance at once: its mean is then its own, not that of what came before.
            self._decoder.process_raw(encode_pcm(samples), False, True)
            self._decoder.end_utt()
        except RuntimeError as error:
            raise RecogniserError(f"PocketSphinx: {error}") from error
        hypothesis = self._decoder.hyp()
        return Recognition(readable(hypothesis.hypstr) if hypothesis else "", "en")


def readable(hypothesis: str) -> str:
    """The words alone, without variant numbers and fillers; "i" as one writes it."""
    words = (_VARIANT.sub("", word) for word in hypothesis.split())
    return _CAPITAL_I.sub("I", " ".join(word for word in words if word[0] not in "<["))
