"""The way of one package, and of all it needs, into the server's environment."""

import os
import shutil
from pathlib import Path

from . import Package, PackageError, amount
from .belongings import Belongings
from .children import ignore_signals
from .environment import Environment
from .pip import Item, Pip
from .progress import Amount, say
from .sizes import UNPACKED
from .store import Store, unpacked_size

_FIRST_STEP = 4
_STEPS = 7
# For what a running environment writes by itself, and so that others have some room left.
_RESERVE = 20_000_000


def add(package: Package, folder: Path, environment: Environment) -> None:
    """Puts a package into the environment. Raises PackageError; the environment is as before then."""
    store = Store(folder / ".packages")
    _step(0, f"Looking what {package.name} needs (about {amount(package.download)} will come)")
    _check_room(folder, package.least, f"{package.name} takes about {amount(package.room)}")
    store.open()
    there = Amount(package.download)
    pip = Pip(environment.path / "bin" / "python3", store.folder, lambda: there.look(pip))
    items = pip.lacking(package.name)
    if not items:
        # pip finds nothing to do, and yet it does not work: the reason is all there is to say.
        environment.prove(environment.path, package.proof)
    missing = [item for item in items if store.wheel(item) is None]
    _tell_amount(items, missing)
    rough = sum(item.size for item in missing) + UNPACKED * sum(item.size for item in items)
    _check_room(folder, rough, f"{package.name} takes about {amount(rough)}")
    shutil.rmtree(pip.scratch, ignore_errors=True)
    there.begin(sum(item.size for item in items))
    wheels = _fetched(items, store, pip, there)
    size = unpacked_size(wheels)
    _check_room(folder, size + _RESERVE, f"{package.name} takes {amount(size)}")
    _step(2, f"Installing {package.name} beside the environment")
    environment.stage()
    Pip(environment.staged / "bin" / "python3", store.folder, lambda: None).install(wheels)
    belongings = Belongings(environment.staged)
    belongings.note(package.name, [item.name for item in items])
    _step(3, f"Trying {package.name}")
    change(environment, package.proof)
    store.close()
    say(f"{package.name} is installed.")


def change(environment: Environment, proof: str) -> None:
    """Proves the copy, puts it in the environment's place, and proves it there."""
    environment.settle()
    environment.prove(environment.staged, proof)
    ignore_signals()
    environment.exchange()
    try:
        environment.prove(environment.path, proof)
    except PackageError:
        environment.exchange()
        raise
    environment.clear()


def _fetched(items: list[Item], store: Store, pip: Pip, there: Amount) -> list[Path]:
    wheels = []
    for item in items:
        wheels.append(store.wheel(item) or store.fetch(item, pip))
        there.has(item)
    there.complete()
    return wheels


def _tell_amount(items: list[Item], missing: list[Item]) -> None:
    size = sum(item.size for item in missing)
    kept = len(items) - len(missing)
    rest = f", {kept} are there from before" if kept else ""
    _step(1, f"Downloading {len(missing)} packages, about {amount(size)}{rest}")
    if missing:
        say("These come: " + ", ".join(map(str, missing)))


def _check_room(folder: Path, needed: int, what: str) -> None:
    told = os.statvfs(folder)
    free = told.f_bavail * told.f_frsize
    if free < needed:
        raise PackageError(
            f"Not enough room on the disk: {what}, {amount(free)} are free in {folder}"
        )


def _step(number: int, title: str) -> None:
    say(f"[{_FIRST_STEP + number}/{_STEPS}] {title}")
