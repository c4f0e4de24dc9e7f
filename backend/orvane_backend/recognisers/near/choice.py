"""The recognisers near by as candidates for the order of choice."""

from ...settings_file import Settings
from .. import Candidate
from . import LISTEN, SHERPA, TRANSCRIPTIONS
from .catalogue import catalogue
from .http import TranscriptionsRecogniser
from .listen import ListenRecogniser
from .named import Named, NearRecogniser, Timings
from .sherpa import SherpaRecogniser

_CLASSES: dict[str, type[NearRecogniser]] = {
    TRANSCRIPTIONS: TranscriptionsRecogniser,
    LISTEN: ListenRecogniser,
    SHERPA: SherpaRecogniser,
}


def recogniser_of(named: Named, timings: Timings = Timings()) -> NearRecogniser:
    """The recogniser that the person named."""
    return _CLASSES[named.kind](named, timings)


def candidates_near(settings: Settings) -> list[Candidate]:
    """One for each recogniser that is named and can be used, in the file's order.

    They come before the package in the engine "whisper". Which of them serves and why stands in its
    `remarks` once it is loaded; what is wrong with others, in the catalogue's notices.
    """
    return [_candidate(named) for named in catalogue(settings).named]


def _candidate(named: Named) -> Candidate:
    return Candidate(("near", named), lambda: recogniser_of(named))
