"""Brings the bytes of one address into a part, over as many connections as it takes."""

import http.client
import os
import re
import time
import urllib.error
import urllib.request
from dataclasses import dataclass
from typing import Callable, Optional, Sequence

from . import DownloadError
from .part import Part, Source

_PIECE = 1 << 18
_MEGABYTE = 1_000_000
_RANGE = re.compile(r"bytes (\d+)-(\d+)/(\d+)", re.ASCII)
# A server that answers so may do better a moment later.
_PASSING = (408, 425, 429, 500, 502, 503, 504)


@dataclass(frozen=True)
class Patience:
    """How long a download puts up with a connection, and how often it tries another."""

    # Seconds before each further try; from the beginning again once more has come than ever before.
    pauses: Sequence[float] = (1, 2, 4, 8, 16)
    # Seconds without a byte after which a connection counts as lost.
    silence: float = 60
    sleep: Callable[[float], None] = time.sleep


class _Lost(Exception):
    """The connection is gone; another may bring the rest."""


class _StartOver(Exception):
    """What is there already is of no use for the server's answer."""


class Transfer:
    """One download. `progress` gets each new whole percentage, `note` a line for the log."""

    def __init__(
        self,
        address: str,
        part: Part,
        patience: Patience,
        progress: Callable[[int], None],
        note: Callable[[str], None],
    ) -> None:
        self._address = address
        self._part = part
        self._patience = patience
        self._progress = progress
        self._note = note
        self._percent = -1

    def run(self) -> None:
        """Returns when the part is as long as the file is. Raises DownloadError."""
        pauses = iter(self._patience.pauses)
        furthest = self._part.length
        while not self._is_complete():
            if not self._can_go_on():
                self._part.forget()
            try:
                if self._ask():
                    return
            except _StartOver as error:
                # Asked for the whole, a server has no reason to say this again.
                self._note(f"beginnt von vorn: {error}")
                self._part.forget()
            except _Lost as error:
                if self._part.length > furthest:
                    furthest = self._part.length
                    pauses = iter(self._patience.pauses)
                pause = next(pauses, None)
                if pause is None:
                    raise DownloadError(f"Verbindung verloren: {error}") from error
                self._note(f"Verbindung verloren ({error}), nächster Versuch in {pause} s")
                self._patience.sleep(pause)

    def _is_complete(self) -> bool:
        self._report()
        return self._can_go_on() and self._part.length == self._total()

    def _can_go_on(self) -> bool:
        """Whether what is there is the beginning of this file, and how long that is to become."""
        source = self._part.source
        return source is not None and source.address == self._address and source.total is not None

    def _total(self) -> Optional[int]:
        return self._part.source.total if self._part.source is not None else None

    def _ask(self) -> bool:
        """Takes one answer; True when nothing is missing after it."""
        try:
            answer = urllib.request.urlopen(self._request(), timeout=self._patience.silence)
        except urllib.error.HTTPError as error:
            error.close()
            raise self._refusal(error) from None
        except (OSError, http.client.HTTPException) as error:
            raise _Lost(_reason(error)) from error
        with answer:
            expected = self._check(answer)
            self._take(answer, expected)
        return expected is None

    def _request(self) -> urllib.request.Request:
        headers = {}
        source = self._part.source
        if source is not None and self._part.length > 0:
            headers["Range"] = f"bytes={self._part.length}-"
            # Without an entity tag that compares byte for byte the total and, in the end, the
            # digest tell whether the pieces belong together.
            if source.etag and not source.etag.startswith("W/"):
                headers["If-Range"] = source.etag
        return urllib.request.Request(self._address, headers=headers)

    def _refusal(self, error: urllib.error.HTTPError) -> Exception:
        if error.code == http.client.REQUESTED_RANGE_NOT_SATISFIABLE and self._part.length > 0:
            return _StartOver("der Server kennt keine Fortsetzung")
        answer = f"der Server antwortet mit {error.code} {error.reason}"
        return _Lost(answer) if error.code in _PASSING else DownloadError(answer)

    def _check(self, answer: http.client.HTTPResponse) -> Optional[int]:
        """Readies the part for what follows; returns how many bytes do, None when nobody knows."""
        etag = answer.headers.get("ETag", "")
        if answer.status == http.client.OK:
            if self._part.length > 0:
                self._note("beginnt von vorn: der Server schickt alles")
            total = _number(answer.headers.get("Content-Length"))
            self._check_space(total)
            self._part.begin(Source(self._address, etag, total))
            return total
        if answer.status != http.client.PARTIAL_CONTENT or self._part.length == 0:
            raise DownloadError(f"unerwartete Antwort {answer.status} des Servers")
        found = _RANGE.fullmatch(answer.headers.get("Content-Range", "").strip())
        first, last, total = map(int, found.groups()) if found else (-1, -1, -1)
        source = self._part.source
        assert source is not None
        if first != self._part.length or not first <= last < total:
            raise _StartOver("die Fortsetzung passt nicht")
        if source.total != total:
            raise _StartOver(f"die Datei hat {total} statt {source.total} Bytes")
        if source.etag and etag and source.etag != etag:
            raise _StartOver("die Datei ist eine andere")
        self._check_space(total)
        return last - first + 1

    def _take(self, answer: http.client.HTTPResponse, expected: Optional[int]) -> None:
        self._report()
        left = expected
        while left is None or left > 0:
            try:
                data = answer.read1(_PIECE if left is None else min(left, _PIECE))
            except (OSError, http.client.HTTPException) as error:
                raise _Lost(_reason(error)) from error
            if not data:
                break
            self._part.append(data)
            self._report()
            left = None if left is None else left - len(data)
        if left:
            raise _Lost("der Server hat zu früh geschlossen")

    def _check_space(self, total: Optional[int]) -> None:
        if total is None:
            return
        found = os.statvfs(self._part.path.parent)
        missing, free = total - self._part.length, found.f_bavail * found.f_frsize
        if missing > free:
            raise DownloadError(
                f"Kein Platz auf dem Datenträger: {_megabytes(missing)} fehlen noch,"
                f" {_megabytes(free)} sind frei: {self._part.path.parent}"
            )

    def _report(self) -> None:
        total = self._total()
        if total:
            percent = self._part.length * 100 // total
            if percent != self._percent:
                self._percent = percent
                self._progress(percent)


def _number(text: Optional[str]) -> Optional[int]:
    return int(text) if text is not None and text.isascii() and text.isdigit() else None


def _megabytes(count: int) -> str:
    return f"{-(-count // _MEGABYTE)} MB"


def _reason(error: Exception) -> str:
    reason = error.reason if isinstance(error, urllib.error.URLError) else error
    if isinstance(reason, TimeoutError):
        return "der Server schweigt"
    return getattr(reason, "strerror", None) or str(reason) or type(reason).__name__
