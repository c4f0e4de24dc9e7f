"""What there is of Whisper on this machine, for the program's settings window.

Unlike `whisper_models`, this tries the packages, each in a process of its own: one that ends the whole
process on this processor is told like any other failure.
"""

import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from importlib import metadata
from pathlib import Path
from typing import Any, Optional

from ..downloads.hub import hub_bytes
from ..notices import Notice, notice
from ..packages import PACKAGES, Package
from . import whisper_models as models
from .whisper_languages import is_english_only
from .whisper_models import FASTER, OPENAI, Installed
from .whisper_sizes import download_size

_PROOF_SECONDS = 120.0
_NAMES = {package.module: package.name for package in PACKAGES}
Record = dict[str, Any]


def status(wanted: Optional[str]) -> Record:
    """One object; see the README for its shape. Takes seconds where packages or models are large."""
    with ThreadPoolExecutor(len(PACKAGES)) as pool:
        packages = list(pool.map(_package, PACKAGES))
    usable = [told["module"] for told in packages if told["state"] == "there"]
    whole = {
        (one.model, package): one
        for package in usable
        for one in models.installed_models(package)
        if models.is_whole(one)
    }
    listed = [model for model in models.all_models() if models.knows(OPENAI, model)]
    return {
        "packages": packages,
        "serves": _NAMES[usable[0]] if usable else None,
        "models": [_model(model, usable, whole) for model in listed],
        "used": _used(wanted, usable, whole) if wanted is not None else None,
    }


def _package(package: Package) -> Record:
    told: Record = {
        "package": package.name,
        "module": package.module,
        "state": "missing",
        "version": None,
        "why": None,
        "download_bytes": package.download,
        "disk_bytes": package.room,
    }
    if not models.is_installed(package.module):
        return told
    try:
        told["version"] = metadata.version(package.name)
    except metadata.PackageNotFoundError:
        pass
    problem = _problem(package)
    told["state"] = "unusable" if problem else "there"
    if problem:
        told["why"] = _why(notice("recognition.not_loaded", engine=package.name, reason=problem))
    return told


def _problem(package: Package) -> str:
    """Why a package does not work; empty when it does."""
    try:
        ended = subprocess.run(
            [sys.executable, "-B", "-c", package.proof], timeout=_PROOF_SECONDS,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
        )  # fmt: skip
    except subprocess.TimeoutExpired:
        return f"{_PROOF_SECONDS:.0f} s"
    lines = ended.stderr.decode("utf-8", "replace").strip().splitlines()
    if ended.returncode == 0:
        return ""
    return lines[-1][:200] if lines and ended.returncode > 0 else f"Signal {-ended.returncode}"


def _model(model: str, usable: list[str], whole: dict[tuple[str, str], Installed]) -> Record:
    told: Record = {
        "model": model,
        "english_only": is_english_only(model),
        "state": "missing",
        "bytes": 0,
        "size": download_size(model),
        "package": None,
        "can_fetch": False,
        "why": None,
    }
    for package in usable:
        if (found := whole.get((model, package))) is not None:
            told.update(state="there", bytes=_size(found.path), package=_NAMES[package])
            return told
    told["can_fetch"] = bool(usable)
    for package in usable or models.PACKAGES:
        path = models.path_of(package, model)
        if path is not None:  # whole by its looks, and yet of no use
            title = _NAMES[package]
            why = (
                notice("recognition.model_damaged", engine=title, model=model)
                if usable
                else notice("recognition.not_installed", engine=title)
            )
            told.update(state="unusable", bytes=_size(path), package=title, why=_why(why))
            return told
    for package in usable or models.PACKAGES:
        if (there := _bytes_of_part(package, model)) > 0:
            told.update(state="partial", bytes=there, package=_NAMES[package])
            return told
    return told


def _used(wanted: str, usable: list[str], whole: dict[tuple[str, str], Installed]) -> Record:
    """What would serve a wish; `model` is none when nothing would."""
    told: Record = {"wanted": wanted, "model": None, "package": None, "why": None}
    name = models.full_name(wanted)
    title = _NAMES[usable[0]] if usable else "Whisper"
    if name is None:
        told["why"] = _why(notice("recognition.model_unknown", engine=title, model=wanted))
        return told
    if not usable:
        told["why"] = _why(notice("recognition.not_installed", engine=title))
        return told
    for model in models.replacements(name):
        for package in usable:
            if (model, package) in whole:
                told.update(model=model, package=_NAMES[package])
                if model != name:
                    why = notice(
                        "recognition.model_replaced", engine=title, model=wanted, used=model
                    )
                    told["why"] = _why(why)
                return told
    told["why"] = _why(notice("recognition.model_missing", engine=title, model=wanted))
    return told


def _bytes_of_part(package: str, model: str) -> int:
    if package == FASTER:
        return max(hub_bytes(project) for project in models.hub_projects(model))
    part = models.openai_file(model).with_suffix(".pt.part")
    try:
        return part.stat().st_size
    except OSError:
        return 0


def _size(path: Path) -> int:
    files = path.iterdir() if path.is_dir() else [path]
    return sum(file.stat().st_size for file in files if file.is_file())


def _why(told: Notice) -> Record:
    return {**told.record(), "message": told.german}
