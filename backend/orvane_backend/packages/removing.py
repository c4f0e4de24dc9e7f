"""The way of one package out of the server's environment."""

import shutil
from contextlib import suppress
from pathlib import Path

from . import Package, PackageError
from .adding import change
from .belongings import Belongings
from .environment import Environment
from .pip import Pip
from .progress import say

_PLAIN_PROOF = "import websockets, numpy"


def remove(package: Package, folder: Path, environment: Environment) -> None:
    """Takes a package out, and what came with it for it alone. Raises PackageError."""
    names = Belongings(environment.path).only_for(package.name)
    if package.name not in names:
        raise PackageError(f"{package.name} stands elsewhere and stays: it did not come from here")
    say(f"[4/5] Removing {', '.join(names)}")
    environment.stage()
    pip = Pip(environment.staged / "bin" / "python3", folder / ".packages", lambda: None)
    pip.uninstall(names)
    shutil.rmtree(pip.scratch, ignore_errors=True)
    with suppress(OSError):  # a download that was broken off is kept there
        pip.scratch.parent.rmdir()
    Belongings(environment.staged).forget(package.name, names)
    say("[5/5] Trying the server without it")
    change(environment, _PLAIN_PROOF)
    say(f"{package.name} is removed.")
