"""When a session's transcript and subtitle files begin and end."""

from datetime import datetime, timedelta, timezone
from pathlib import Path
from typing import Callable, Optional

from .hearing import Heard
from .protocol import Config
from .transcripts import Spoken, TranscriptWriter


class SessionFiles:
    """The files of one session. They begin with the first result, so that a run without a word
    leaves none, and go on through configurations that change neither languages nor wishes."""

    def __init__(self, folder: Callable[[], Path], now: Callable[[], float]) -> None:
        self._folder = folder
        self._now = now
        self._wish: Optional[tuple[object, ...]] = None
        self._config = Config()
        self._start = datetime.now(timezone.utc)
        self._start_time = now()
        self._writer: Optional[TranscriptWriter] = None
        self._was_tried = False

    def configure(self, config: Config) -> None:
        """Takes the wishes for all that follows."""
        wish = (
            config.sourceLang, config.targetLang,
            config.saveTranscript, config.saveSRT, config.showOriginal,
        )  # fmt: skip
        if wish != self._wish:
            self.close()
            self._wish, self._config = wish, config
            self._start = datetime.now(timezone.utc)
            self._start_time = self._now()

    def append(self, heard: Heard, translated: str) -> None:
        """Adds one result, at the time when it was said."""
        if self._wish is None or not (self._config.saveTranscript or self._config.saveSRT):
            return
        if not self._was_tried:
            self._was_tried = True
            self._writer = self._open()
        if self._writer is not None:
            times = (heard.begin, heard.end, heard.quiet_until)
            spoken = Spoken(*(moment - self._start_time for moment in times))
            moment = self._start + timedelta(seconds=max(spoken.begin, 0.0))
            self._writer.append(moment, spoken, heard.text, translated)

    def close(self) -> None:
        """Ends the files; wishes that come again begin new ones."""
        if self._writer is not None:
            self._writer.close()
        self._writer = None
        self._wish = None
        self._was_tried = False

    def _open(self) -> Optional[TranscriptWriter]:
        config = self._config
        return TranscriptWriter.open(
            self._folder(),
            self._start,
            (config.sourceLang, config.targetLang),
            transcript=config.saveTranscript,
            subtitles=config.saveSRT,
            with_original=config.showOriginal,
        )
