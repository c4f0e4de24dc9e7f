"""Apertium's installed language pairs, through its command.

One process per sentence and direction: it takes an eighth of a second. The command's mode for many
sentences over one pipe holds answers back and swallows the mark of unknown words' ends, so it is
not used.
"""

import os
import re
import signal
import subprocess
import threading
import time
from pathlib import Path
from typing import Optional

from ..notices import notice
from . import Passage, Translator, TranslatorError, one_line
from .directions import Path as Way
from .directions import find_path

_COMMAND = "apertium"
# For one sentence, over all directions of its way.
_SECONDS = 10.0
# The list is short, and a disk that is asleep answers in this time.
_LIST_SECONDS = 5.0
_LIST_AGE = 60.0

# A word without a counterpart leaves both of its blanks behind.
_BLANKS = re.compile(" {2,}")

KEY = ("apertium",)


class ApertiumTranslator(Translator):
    """One way over installed directions, such as "eng-spa" and then "spa-cat"."""

    name = "Apertium"
    key = KEY

    def __init__(self, way: Way) -> None:
        self.way = way

    def translate(self, passage: Passage) -> str:
        text = one_line(passage.text)
        end = time.monotonic() + _SECONDS
        for direction in self.way:
            # -u: unknown words are kept without a mark.
            answer = _run("-u", direction, text=text + "\n", end=end)
            text = _BLANKS.sub(" ", one_line(answer))
            if not text:
                raise _failed("leere Antwort")
        return text


class _List:
    """The installed directions, looked up again when their folder has changed or a while is past."""

    def __init__(self) -> None:
        self._lock = threading.Lock()
        self._stamp: Optional[int] = None
        self._until = 0.0
        self._names: tuple[str, ...] = ()

    def names(self) -> tuple[str, ...]:
        """Every installed direction; none without Apertium."""
        with self._lock:
            now, stamp = time.monotonic(), _folder_stamp()
            if now >= self._until or stamp != self._stamp:
                try:
                    self._names = tuple(_run("-l", end=now + _LIST_SECONDS).split())
                except TranslatorError:
                    self._names = ()
                self._stamp, self._until = stamp, now + _LIST_AGE
            return self._names

    def forget(self) -> None:
        """The next call looks it up."""
        with self._lock:
            self._until = 0.0


_list = _List()


def installed() -> tuple[str, ...]:
    """The names of all installed directions; none without Apertium."""
    return _list.names()


def forget_installed() -> None:
    """Looks them up at the next call."""
    _list.forget()


def find(source: str, target: str) -> Optional[ApertiumTranslator]:
    """What translates between two languages with what is installed; none when nothing does."""
    way = find_path(source, target, installed())
    return ApertiumTranslator(way) if way else None


def _folder_stamp() -> int:
    folder = Path(os.environ.get("APERTIUM_DATADIR", "/usr/share/apertium"), "modes")
    try:
        return folder.stat().st_mtime_ns
    except OSError:
        return 0


def _failed(reason: str, is_passing: bool = False) -> TranslatorError:
    told = notice("translation.failed", translator=ApertiumTranslator.name, reason=reason)
    return TranslatorError(told, is_passing)


def _run(*arguments: str, end: float, text: str = "") -> str:
    # A session of its own, so that a time-out ends the whole pipeline and not only its shell.
    try:
        process = subprocess.Popen(
            (_COMMAND, *arguments),
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            start_new_session=True, env={**os.environ, "LC_ALL": "C.UTF-8"},
        )  # fmt: skip
    except OSError as error:
        raise _failed(error.strerror or str(error)) from error
    with process:
        try:
            seconds = max(end - time.monotonic(), 0.0)
            output, _ = process.communicate(text.encode("utf-8", "replace"), seconds)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            raise _failed("keine Antwort", is_passing=True) from None
    if process.returncode != 0:
        raise _failed(f"Fehler {process.returncode}")
    return output.decode("utf-8", "replace")
