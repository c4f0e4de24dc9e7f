"""Transcript and subtitle files of one session, complete after every entry."""

import os
from datetime import datetime, timezone
from pathlib import Path
from typing import Optional

from .log import log

_CUE_SECONDS = 3.0


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


def cue(number: int, seconds: float, original: str, translated: str) -> str:
    """One subtitle that begins `seconds` after the session and stays for three."""
    begin, end = srt_time(seconds), srt_time(seconds + _CUE_SECONDS)
    return f"{number}\n{begin} --> {end}\n{original}\n{translated}\n\n"


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
        start: datetime,
        transcript: Optional[AppendOnlyFile],
        subtitles: Optional[AppendOnlyFile],
    ) -> None:
        self._start = start
        self._transcript = transcript
        self._subtitles = subtitles
        self._cues = 0

    @classmethod
    def open(
        cls,
        folder: Path,
        start: datetime,
        languages: tuple[str, str],
        *,
        transcript: bool,
        subtitles: bool,
    ) -> Optional["TranscriptWriter"]:
        """Creates the files asked for, named by `start` in local time; none when that fails."""
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
        return cls(start, txt, srt)

    def append(self, moment: datetime, original: str, translated: str) -> None:
        """Adds one result, delivered at `moment` (aware or local time, like `start`).

        Only aware times outlast a change of the time zone in mid-session.
        """
        try:
            if self._transcript is not None:
                self._transcript.append(entry(moment, original, translated))
            if self._subtitles is not None:
                seconds = (moment - self._start).total_seconds()
                self._subtitles.append(cue(self._cues + 1, seconds, original, translated))
                self._cues += 1
        except OSError as error:
            log(f"❌ Transkript konnte nicht geschrieben werden: {error}")

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
