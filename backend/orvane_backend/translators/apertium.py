"""Apertium's installed language pairs, through its command.

One process per sentence: it takes an eighth of a second. The command's mode for many sentences over
one pipe holds answers back and swallows the mark of unknown words' ends, so it is not used.
"""

import os
import signal
import subprocess
from typing import Optional

from ..languages import long, short
from . import Translator, TranslatorError

_COMMAND = "apertium"
_SECONDS = 10.0


class ApertiumTranslator(Translator):
    """One installed direction, such as "eng-spa"."""

    def __init__(self, direction: str) -> None:
        self._direction = direction
        self.name = f"Apertium {direction}"

    def translate(self, text: str) -> str:
        # -u: unknown words are kept without a mark.
        translated = _run("-u", self._direction, text=" ".join(text.split()) + "\n")
        if not translated:
            raise TranslatorError("Apertium: leere Antwort")
        return " ".join(translated.split())


def installed_direction(source: str, target: str) -> Optional[str]:
    """The installed direction between two languages; none when there is none."""
    try:
        installed = _run("-l", text="").split()
    except TranslatorError:
        return None
    for pair in ((long(source), long(target)), (short(source), short(target))):
        if "-".join(pair) in installed:
            return "-".join(pair)
    return None


def _run(*arguments: str, text: str) -> str:
    # A session of its own, so that a time-out ends the whole pipeline and not only its shell.
    try:
        process = subprocess.Popen(
            (_COMMAND, *arguments),
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            start_new_session=True, env={**os.environ, "LC_ALL": "C.UTF-8"},
        )  # fmt: skip
    except OSError as error:
        raise TranslatorError(f"Apertium: {error}") from error
    with process:
        try:
            output, _ = process.communicate(text.encode("utf-8", "replace"), _SECONDS)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            raise TranslatorError("Apertium: keine Antwort") from None
    if process.returncode != 0:
        raise TranslatorError(f"Apertium: Fehler {process.returncode}")
    return output.decode("utf-8", "replace").strip()
