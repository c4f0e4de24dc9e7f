"""Whisper's models: their names, which of them are on this machine, and what replaces one that is not.

Nothing here fetches anything, and nothing imports the packages, which takes seconds and much memory.
"""

import os
import shutil
from dataclasses import dataclass
from importlib.util import find_spec
from pathlib import Path
from typing import Optional

from ..downloads import DownloadError
from ..downloads.catalogue import cache_folder, model_file
from ..downloads.part import digest_of
from .whisper_languages import is_english_only

FASTER = "faster_whisper"
OPENAI = "whisper"
# The better one first: it takes a quarter of the time for the same text.
PACKAGES = (FASTER, OPENAI)

# Millions of parameters; what costs more time stands first.
_SIZES = {
    "large-v3": 1550, "large-v2": 1550, "large-v1": 1550, "large-v3-turbo": 809,
    "medium": 769, "medium.en": 769, "small": 244, "small.en": 244,
    "base": 74, "base.en": 74, "tiny": 39, "tiny.en": 39,
    "distil-large-v3.5": 756, "distil-large-v3": 756, "distil-large-v2": 756,
    "distil-medium.en": 394, "distil-small.en": 166,
}  # fmt: skip
_LARGE = ("large-v1", "large-v2", "large-v3")
_OTHER_NAMES = {"large": "large-v3", "turbo": "large-v3-turbo"}

# Where the models of faster-whisper are on the hub, if not in the maker's usual place. A project
# that was renamed there is found in the cache under the name it was fetched by.
_PROJECTS = {
    "large-v3-turbo": (
        "mobiuslabsgmbh/faster-whisper-large-v3-turbo",
        "dropbox-dash/faster-whisper-large-v3-turbo",
    ),
    "distil-large-v3.5": ("distil-whisper/distil-large-v3.5-ct2",),
}
# Without its tokenizer the package would go and fetch one. Without the preprocessor's settings it
# takes every model for one with 80 bands, which these are not.
_NEEDED = ("config.json", "model.bin", "tokenizer.json")
_MANY_BANDS = ("large-v3", "large-v3-turbo", "distil-large-v3", "distil-large-v3.5")


@dataclass(frozen=True)
class Installed:
    """A model on this machine: for which package, its full name, and its file or folder."""

    package: str
    model: str
    path: Path


@dataclass(frozen=True)
class Status:
    """What this machine has of Whisper.

    `models` are whole. `damaged` are there and cannot be used. `used` would serve the wish, and is
    none when nothing can.
    """

    packages: tuple[str, ...]
    models: tuple[Installed, ...]
    damaged: tuple[Installed, ...]
    used: Optional[Installed]


def full_name(model: str) -> Optional[str]:
    """The name without ambiguity: "large" gives "large-v3". None for what is no model."""
    name = _OTHER_NAMES.get(model, model)
    return name if name in _SIZES else None


def all_models() -> list[str]:
    """All full names, the smallest first."""
    return sorted(_SIZES, key=lambda name: _SIZES[name])


def knows(package: str, model: str) -> bool:
    """Whether a package has a model of this full name."""
    return package == FASTER or not model.startswith("distil-")


def replacements(model: str) -> list[str]:
    """A model and what may serve in its place, the nearest first, none larger than it.

    English alone is replaced by anything, everything else by what knows all languages.
    """
    size, english = _SIZES[model], is_english_only(model)
    fitting = [
        name
        for name in _SIZES
        if name != model and _SIZES[name] <= size and (english or not is_english_only(name))
    ]
    # The sort is stable: what is as large keeps the table's order, unless English was meant.
    fitting.sort(key=lambda name: (-_SIZES[name], english and not is_english_only(name)))
    return [model, *fitting]


def is_installed(package: str) -> bool:
    """Whether a package can be found; it is not imported."""
    try:
        return find_spec(package) is not None
    except (ImportError, ValueError):  # ValueError: somebody put it there without a description
        return False


def installed_packages() -> tuple[str, ...]:
    """The packages that are there, the better one first."""
    return tuple(package for package in PACKAGES if is_installed(package))


def installed_models(package: str) -> list[Installed]:
    """The models that are there for a package, the largest first.

    For openai-whisper a file that another program broke off is among them: only its content tells,
    see `is_whole`.
    """
    found = []
    for model in sorted(_SIZES, key=lambda name: -_SIZES[name]):
        path = path_of(package, model) if knows(package, model) else None
        if path is not None:
            found.append(Installed(package, model, path))
    return found


def is_whole(installed: Installed) -> bool:
    """Whether a model is what its maker published; reads a file of openai-whisper to its end.

    Imports openai-whisper for the digest. Without one the file is believed.
    """
    if installed.package == FASTER:
        return True
    try:
        known = model_file(installed.model)
        return known is None or digest_of(installed.path) == known.digest
    except DownloadError:
        return False


def nearest(package: str, model: str) -> list[Installed]:
    """What a package has for a wanted full name: that model or smaller ones, the nearest first."""
    there = {one.model: one for one in installed_models(package)}
    return [there[name] for name in replacements(model) if name in there]


def packages_for(model: str) -> list[str]:
    """The packages that are there, the one with the nearest model for a wanted full name first."""
    order = replacements(model) if model in _SIZES else []

    def distance(package: str) -> int:
        found = nearest(package, model)[:1] if order else []
        return order.index(found[0].model) if found else len(order)

    # The sort is stable: of two that have the same the better package stays first.
    return sorted(installed_packages(), key=distance)


def status(wanted: str) -> Status:
    """All there is to know. Takes seconds where large models are."""
    packages = installed_packages()
    everything = [one for package in packages for one in installed_models(package)]
    whole = [one for one in everything if is_whole(one)]
    model = full_name(wanted)
    order = replacements(model) if model is not None else []
    # The nearest first; of two that are the same model, the better package's.
    fitting = [one for name in order for one in whole if one.model == name]
    return Status(
        packages,
        tuple(whole),
        tuple(one for one in everything if one not in whole),
        fitting[0] if fitting else None,
    )


def hub_folder() -> Path:
    """Where the hub's package keeps what it fetched."""
    for name in ("HF_HUB_CACHE", "HUGGINGFACE_HUB_CACHE"):
        if folder := os.environ.get(name):
            return Path(folder).expanduser()
    cache = os.environ.get("XDG_CACHE_HOME")
    home = os.environ.get("HF_HOME")
    if not home:
        home = str((Path(cache) if cache else Path.home() / ".cache") / "huggingface")
    return Path(home).expanduser() / "hub"


def hub_projects(model: str) -> list[Path]:
    """The folders that the hub's cache has, or would have, for a model; the usual one first."""
    return [hub_folder() / f"models--{name.replace('/', '--')}" for name in _projects(model)]


def openai_file(model: str) -> Path:
    """Where openai-whisper has a model, or would have it."""
    return cache_folder() / f"{model}.pt"


def path_of(package: str, model: str) -> Optional[Path]:
    """The file or folder of a model, by its full name; none while it is not there as a whole."""
    if package == OPENAI:
        path = openai_file(model)
        # Beside a part nothing is whole: the part replaces it when it is.
        return path if path.is_file() and not Path(f"{path}.part").exists() else None
    for project in hub_projects(model):
        for snapshot in _newest_first(project / "snapshots"):
            if _is_whole_snapshot(snapshot, model):
                return snapshot
    return None


def delete(model: str) -> None:
    """Removes what there is of a model, begun downloads included; "large" means each of its versions.

    Raises KeyError for what is no model, OSError for what cannot be removed.
    """
    name = full_name(model)
    if name is None:
        raise KeyError(model)
    for name in _LARGE if model == "large" else (name,):
        for project in hub_projects(name):
            if project.is_dir():
                shutil.rmtree(project)
        file = openai_file(name)
        for part in (file, Path(f"{file}.part"), Path(f"{file}.part.source")):
            part.unlink(missing_ok=True)


def _projects(model: str) -> tuple[str, ...]:
    kind = "distil-whisper" if model.startswith("distil-") else "whisper"
    usual = f"Systran/faster-{kind}-{model.removeprefix('distil-')}"
    return _PROJECTS.get(model, (usual,))


def _newest_first(snapshots: Path) -> list[Path]:
    try:
        current = (snapshots.parent / "refs" / "main").read_text("utf-8").strip()
    except (OSError, ValueError):
        current = ""
    try:
        found = sorted(snapshots.iterdir())
    except OSError:
        return []
    return sorted(found, key=lambda folder: folder.name != current)


def _is_whole_snapshot(folder: Path, model: str) -> bool:
    """Files get their names there when they are whole; those that are missing did not come yet."""
    needed = [*_NEEDED, *(["preprocessor_config.json"] if model in _MANY_BANDS else [])]
    return all(_has_content(folder / name) for name in needed) and any(
        _has_content(path) for path in folder.glob("vocabulary.*")
    )


def _has_content(path: Path) -> bool:
    try:
        return path.is_file() and path.stat().st_size > 0
    except OSError:
        return False
