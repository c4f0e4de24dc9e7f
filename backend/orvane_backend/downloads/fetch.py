"""The way of one model onto this computer.

What is printed is read by the program that runs this: "progress 37" for each new percentage, where
100 means that every byte is there and is being checked, and "note ..." for its log. Any other line
is the reason of a failure, the last one counts.
"""

import io
import sys
from pathlib import Path
from typing import Sequence

from ..recognisers.whisper_models import FASTER, full_name, knows, packages_for
from . import DownloadError, PackageProblem, disk_error
from .catalogue import NOT_INSTALLED, ModelFile, cache_folder, model_file
from .hub import HubFetch
from .part import Part, digest_of
from .transfer import Patience, Transfer


def main(arguments: Sequence[str]) -> int:
    """The exit status: 0 when the model is there, or can be fetched by the package alone."""
    if isinstance(sys.stdout, io.TextIOWrapper):
        sys.stdout.reconfigure(encoding="utf-8", errors="backslashreplace")
    if len(arguments) != 1:
        _say("Usage: fetch_model.py MODEL")
        return 2
    try:
        _fetch_for_the_one_that_serves(arguments[0])
    except DownloadError as error:
        _say(str(error))
        return 1
    return 0


def _fetch_for_the_one_that_serves(model: str) -> None:
    """By the package that the server would take; by the other one where that cannot be loaded."""
    name = full_name(model) or model
    packages = packages_for(name)
    if not packages:
        raise DownloadError(NOT_INSTALLED)
    able = [package for package in packages if knows(package, name)]
    if not able:
        raise DownloadError(f"Das Modell „{model}“ gibt es nur für faster-whisper")
    for package in able:
        try:
            if package == FASTER:
                return HubFetch(name, _progress, _note).run()
            return _fetch_for_openai(model)
        except PackageProblem as error:
            if package == able[-1]:
                raise
            _note(str(error))


def _fetch_for_openai(model: str) -> None:
    file = model_file(model)
    if file is None:
        _note(f"{model}: keine Adresse bekannt, Whisper lädt selbst")
    else:
        fetch(file, cache_folder(), Patience())


def fetch(file: ModelFile, folder: Path, patience: Patience) -> None:
    """Returns when the model is in `folder` under its final name. Raises DownloadError.

    A file that bears this name already stays if its digest is right; otherwise it is removed before
    the download begins, so that nobody takes it for the model meanwhile.
    """
    target = folder / file.name
    try:
        folder.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise disk_error(error, folder) from error
    with Part(target, lambda: _note(f"{file.name} wird schon geladen, wartet")) as part:
        if target.exists():
            _progress(100)
            if digest_of(target) == file.digest:
                part.discard()
                return
            _note(f"{file.name} ist unvollständig oder beschädigt und wird neu geladen")
            _remove(target)
        Transfer(file.address, part, patience, _progress, _note).run()
        _progress(100)
        if part.digest() != file.digest:
            part.discard()
            raise DownloadError(
                f"Die Prüfsumme von {file.name} ist falsch; das Geladene wurde gelöscht"
            )
        part.finish()


def _remove(target: Path) -> None:
    try:
        target.unlink()
    except OSError as error:
        raise disk_error(error, target) from error


def _progress(percent: int) -> None:
    _say(f"progress {percent}")


def _note(line: str) -> None:
    _say(f"note {line}")


def _say(line: str) -> None:
    print(line, flush=True)
