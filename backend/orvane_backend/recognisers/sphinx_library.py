"""The C library of PocketSphinx, met here alone.

Both Debians have the same one, 0.8 with its companion libsphinxbase. A call lets go of the
interpreter lock while the library works.
"""

import weakref
from ctypes import CDLL, POINTER, byref, c_char_p, c_int, c_int32, c_size_t, c_void_p
from functools import lru_cache
from math import exp, log
from typing import Any, Mapping, NamedTuple, Optional

_DECODER_LIBRARY = "libpocketsphinx.so.3"
_OPTIONS_LIBRARY = "libsphinxbase.so.3"

# The library counts logarithms in these, and the best path's acoustic ones in shares of them.
_LOG_UNIT = log(1.0001)
_ACOUSTIC_SCALE = 1024


class LibraryMissing(Exception):
    """The library is not installed, or is another one."""


class DecoderError(Exception):
    """A decoder that cannot be made from its options, or that failed on an utterance."""


class Segment(NamedTuple):
    """A word as the library writes it, fillers among them, and its frames of 10 ms, the last included.

    `probability` is that of the word among all that the decoder thought of; none before the best
    path is known. `acoustic` is how far the sound is from the best the model knows, in each frame, and
    `language` how far the word is from what is usually said here; both are 0 at best.
    """

    word: str
    first: int
    last: int
    probability: Optional[float]
    acoustic: float
    language: float


class Heard(NamedTuple):
    """The words in an utterance, none where the library has none.

    `best_path` are those of the whole decoding. `first_search` are those that its first search
    ended with by itself, which may miss a word in the last 50 ms.
    """

    best_path: tuple[Segment, ...]
    first_search: tuple[Segment, ...]


class Decoder:
    """One decoder with its models in memory, which go with it.

    It may be used from any thread, by one at a time.
    """

    def __init__(self, options: Mapping[str, str]) -> None:
        """Takes the library's options by their names, with the dash.

        Raises LibraryMissing, and DecoderError when an option is unknown or a model is missing.
        """
        self._library = _library()
        words = [word.encode() for option in options.items() for word in option]
        # The library points into the words for as long as the decoder lives.
        arguments = (c_char_p * len(words))(*words)
        config = self._library.cmd_ln_parse_r(
            None, self._library.ps_args(), len(words), arguments, True
        )
        if not config:
            raise DecoderError("options not understood")
        self._handle = self._library.ps_init(config)
        self._library.cmd_ln_free_r(config)
        if not self._handle:
            raise DecoderError("no decoder with these models")
        self._release = weakref.finalize(self, _release, self._library, self._handle, arguments)
        # At the end of the process a thread may still decode, and the memory goes anyway.
        self._release.atexit = False

    def decode(self, pcm: bytes) -> Heard:
        """Decodes one utterance of 16-bit PCM at the model's rate. Raises DecoderError."""
        if self._library.ps_start_utt(self._handle) < 0:
            raise DecoderError("utterance not begun")
        # The whole utterance at once: its mean is then its own, not that of what came before.
        frames = self._library.ps_process_raw(self._handle, pcm, len(pcm) // 2, False, True)
        # Before its end an utterance has the words of the first search, after it the best path's.
        first_search = self._segments(1, False)
        if self._library.ps_end_utt(self._handle) < 0 or frames < 0:
            raise DecoderError("utterance not decoded")
        return Heard(self._segments(_ACOUSTIC_SCALE, True), first_search)

    def _segments(self, scale: int, has_probability: bool) -> tuple[Segment, ...]:
        library, found = self._library, []
        first, last = c_int(), c_int()
        acoustic, language, back_off = c_int32(), c_int32(), c_int32()
        segment = library.ps_seg_iter(self._handle)
        while segment:
            library.ps_seg_frames(segment, byref(first), byref(last))
            posterior = library.ps_seg_prob(
                segment, byref(acoustic), byref(language), byref(back_off)
            )
            found.append(
                Segment(
                    library.ps_seg_word(segment).decode("utf-8", "replace"),
                    first.value,
                    last.value,
                    exp(min(posterior, 0) * _LOG_UNIT) if has_probability else None,
                    acoustic.value / scale / max(last.value - first.value + 1, 1),
                    float(language.value),
                )
            )
            segment = library.ps_seg_next(segment)
        return tuple(found)

    def close(self) -> None:
        """Frees the decoder now instead of with the object; it cannot be used any more."""
        self._release()


def _release(library: "_Library", handle: int, _arguments: object) -> None:
    library.ps_free(handle)


class _Library:
    """The functions of both libraries with their types."""

    def __init__(self) -> None:
        decoder, options = CDLL(_DECODER_LIBRARY), CDLL(_OPTIONS_LIBRARY)
        pointer = c_void_p
        self.ps_args = _typed(decoder.ps_args, pointer)
        self.ps_init = _typed(decoder.ps_init, pointer, pointer)
        self.ps_free = _typed(decoder.ps_free, c_int, pointer)
        self.ps_start_utt = _typed(decoder.ps_start_utt, c_int, pointer)
        self.ps_process_raw = _typed(
            decoder.ps_process_raw, c_int, pointer, pointer, c_size_t, c_int, c_int
        )
        self.ps_end_utt = _typed(decoder.ps_end_utt, c_int, pointer)
        self.ps_seg_iter = _typed(decoder.ps_seg_iter, pointer, pointer)
        self.ps_seg_next = _typed(decoder.ps_seg_next, pointer, pointer)
        self.ps_seg_word = _typed(decoder.ps_seg_word, c_char_p, pointer)
        frame, score = POINTER(c_int), POINTER(c_int32)
        self.ps_seg_frames = _typed(decoder.ps_seg_frames, None, pointer, frame, frame)
        self.ps_seg_prob = _typed(decoder.ps_seg_prob, c_int32, pointer, score, score, score)
        self.cmd_ln_parse_r = _typed(
            options.cmd_ln_parse_r, pointer, pointer, pointer, c_int32, POINTER(c_char_p), c_int32
        )
        self.cmd_ln_free_r = _typed(options.cmd_ln_free_r, c_int, pointer)
        # Its log goes nowhere: otherwise it fills standard error.
        _typed(options.err_set_logfp, None, pointer)(None)


@lru_cache(maxsize=1)
def _library() -> _Library:
    try:
        return _Library()
    except (OSError, AttributeError) as error:
        raise LibraryMissing(str(error)) from error


def _typed(function: Any, result: Any, *arguments: Any) -> Any:
    function.restype = result
    function.argtypes = arguments
    return function
