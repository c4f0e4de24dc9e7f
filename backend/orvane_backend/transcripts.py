"""Transcript and subtitle files of one session, complete after every entry."""

import os
from datetime import datetime, timezone
from pathlib import Path
from typing import NamedTuple, Optional, Sequence

from .log import log

# A subtitle stays for at least this long, and as long as one reads, as far as nobody speaks yet.
_LEAST_CUE_SECONDS = 1.0
_LETTERS_A_SECOND = 17.0
_MOST_READING_SECONDS = 7.0
# What came so fast that the one before it is still there, is shown for this long.
_SHORTEST_CUE_SECONDS = 0.3


def output_folder() -> Path:
    """Where the files go, from the home directory as the environment gives it."""
    return Path.home() / "Library" / "Application Support" / "Orvane" / "output"


def header(start: datetime, source: str, target: str) -> str:
    """The head of a transcript; `start` is shown in local time."""
    return (
        f"Live Audio Translation\nSession: {start.astimezone():%Y-%m-%d %H:%M:%S}\n"
        f"Source: {source}\nTarget: {target}\n{'=' * 60}\n\n"
    )


def entry(moment: datetime, original: str, translated: str) -> str:
    """One result in a transcript, stamped in UTC."""
    utc = moment.astimezone(timezone.utc)
    stamp = f"{utc:%Y-%m-%dT%H:%M:%S}.{utc.microsecond // 1000:03d}Z"
    return f"[{stamp}]\nOriginal: {original}\nTranslation: {translated}\n\n"


def cue(number: int, begin: float, end: float, lines: Sequence[str]) -> str:
    """One subtitle from `begin` to `end`, in seconds of the session.

    Lines that a player would take for the end of the subtitle are left away.
    """
    shown = "\n".join(" ".join(line.split()) for line in lines if line.strip())
    return f"{number}\n{srt_time(begin)} --> {srt_time(end)}\n{shown}\n\n"


class Spoken(NamedTuple):
    """When something was said, and until when surely nothing else: seconds of the session."""

    begin: float
    end: float
    quiet_until: float


def cue_times(spoken: Spoken, letters: int, last_end: float) -> tuple[float, float]:
    """When a subtitle comes and goes.

    It comes when the one before it has gone. It stays for as long as one reads it, but no longer
    than until somebody may have spoken again.
    """
    begin = max(spoken.begin, last_end, 0.0)
    reading = min(letters / _LETTERS_A_SECOND, _MOST_READING_SECONDS)
    wanted = begin + max(reading, _LEAST_CUE_SECONDS)
    return begin, max(spoken.end, min(wanted, spoken.quiet_until), begin + _SHORTEST_CUE_SECONDS)


def srt_time(seconds: float) -> str:
    """Hours, minutes, seconds and milliseconds, truncated; negative counts as zero."""
    # Rounded to the microsecond first, so that 0.3 is not 0.299999.
    total = int(round(max(seconds, 0.0) * 1e6)) // 1000
    whole, milliseconds = divmod(total, 1000)
    return f"{whole // 3600:02d}:{whole % 3600 // 60:02d}:{whole % 60:02d},{milliseconds:03d}"


class AppendOnlyFile:
    """A new file that grows by whole texts: one that does not fit on the disk leaves no part."""

    def __init__(self, path: Path) -> None:
        """Creates the file. Raises FileExistsError rather than touch another session's."""
        self.path = path
        self._length = 0
        self._descriptor = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_EXCL | os.O_CLOEXEC, 0o644)

    def append(self, text: str) -> None:
        """Writes the text at the end. Raises OSError, with the file as it was before."""
        data = text.encode("utf-8", "replace")
        written = 0
        try:
            while written < len(data):
                written += os.pwrite(self._descriptor, data[written:], self._length + written)
        except OSError:
            os.ftruncate(self._descriptor, self._length)
            raise
        self._length += written

    def close(self) -> None:
        """Ends writing; can be called once."""
        os.close(self._descriptor)


class TranscriptWriter:
    """The files of one session. A disk that refuses costs a log line, never the session."""

    def __init__(
        self,
        transcript: Optional[AppendOnlyFile],
        subtitles: Optional[AppendOnlyFile],
        *,
        with_original: bool,
    ) -> None:
        self._transcript = transcript
        self._subtitles = subtitles
        self._with_original = with_original
        self._cues = 0
        self._last_end = 0.0

    @classmethod
    def open(
        cls,
        folder: Path,
        start: datetime,
        languages: tuple[str, str],
        *,
        transcript: bool,
        subtitles: bool,
        with_original: bool,
    ) -> Optional["TranscriptWriter"]:
        """Creates the files asked for, named by `start` in local time; none when that fails.

        Subtitles hold the translation, and above it, if wished, the original.
        """
        stamp = f"{start.astimezone():%Y%m%d_%H%M%S}"
        files: list[AppendOnlyFile] = []
        try:
            folder.mkdir(parents=True, exist_ok=True)
            txt = _create(folder, f"transcript_{stamp}", ".txt", files) if transcript else None
            srt = _create(folder, f"subtitles_{stamp}", ".srt", files) if subtitles else None
            if txt is not None:
                txt.append(header(start, *languages))
        except OSError as error:
            log(f"❌ Transkript konnte nicht angelegt werden: {error}")
            for file in files:
                file.close()
            return None
        log("💾 Transkript: " + ", ".join(str(file.path) for file in files))
        return cls(txt, srt, with_original=with_original)

    def append(self, moment: datetime, spoken: Spoken, original: str, translated: str) -> None:
        """Adds one result. `moment`, aware, is when it was begun to be said."""
        try:
            if self._transcript is not None:
                self._transcript.append(entry(moment, original, translated))
            if self._subtitles is not None:
                self._append_cue(self._subtitles, spoken, original, translated)
        except OSError as error:
            log(f"❌ Transkript konnte nicht geschrieben werden: {error}")

    def _append_cue(
        self, file: AppendOnlyFile, spoken: Spoken, original: str, translated: str
    ) -> None:
        lines = [translated or original]
        if self._with_original and original != lines[0]:
            lines.insert(0, original)
        begin, end = cue_times(spoken, max(map(len, lines)), self._last_end)
        file.append(cue(self._cues + 1, begin, end, lines))
        self._cues += 1
        self._last_end = end

    def close(self) -> None:
        """Closes the files; can be called once."""
        for file in (self._transcript, self._subtitles):
            if file is not None:
                file.close()


def _create(folder: Path, stem: str, suffix: str, files: list[AppendOnlyFile]) -> AppendOnlyFile:
    """A new file; a number goes behind its name when another session has begun the same second."""
    number = 1
    while True:
        path = folder / (f"{stem}{suffix}" if number == 1 else f"{stem}_{number}{suffix}")
        try:
            file = AppendOnlyFile(path)
        except FileExistsError:
            number += 1
        else:
            files.append(file)
            return file
