"""`change_packages.py add|remove NAME FOLDER`: run by the installer, which holds its lock.

FOLDER is the one with "venv" and "backend". What is printed has the installer's form: "==> ..." for the
log, steps as "[5/7]", "37 % ..." of a download, and "error: ..." as the last line of a failure.
"""

import shutil
import sys
from pathlib import Path
from typing import Sequence

from . import Interrupted, Package, PackageError, package_called
from .adding import add
from .belongings import Belongings
from .children import Child, end_on_signals
from .environment import Environment
from .progress import fail, say
from .removing import remove

_LOOK_SECONDS = 300.0


def main(arguments: Sequence[str]) -> int:
    """The exit status: 0 when the environment is as it was wished for."""
    package = package_called(arguments[1]) if len(arguments) == 3 else None
    if package is None or arguments[0] not in ("add", "remove"):
        fail("Usage: change_packages.py add|remove NAME FOLDER")
        return 2
    folder = Path(arguments[2])
    environment = Environment(folder, folder / "backend" / "server.py")
    try:
        end_on_signals()
        return _change(arguments[0], package, folder, environment)
    except PackageError as error:
        reason, status = str(error), 1
    except OSError as error:
        reason, status = f"{error.strerror or error}: {error.filename or folder}", 1
    except Interrupted as error:
        reason, status = "Broken off; what has come is kept for the next time", 128 + error.number
    environment.clear()
    shutil.rmtree(folder / ".packages" / "tmp", ignore_errors=True)
    fail(reason)
    return status


def _change(wish: str, package: Package, folder: Path, environment: Environment) -> int:
    is_there = _works(package, environment)
    if wish == "add":
        if is_there:
            version = Belongings(environment.path).version(package.name)
            say(f"{package.name} {version or ''}".rstrip() + " is there already.")
        else:
            add(package, folder, environment)
    elif Belongings(environment.path).version(package.name) is None and not is_there:
        say(f"{package.name} is not there.")
    else:
        remove(package, folder, environment)
    sys.stdout.flush()
    return 0


def _works(package: Package, environment: Environment) -> bool:
    python = str(environment.path / "bin" / "python3")
    with Child([python, "-B", "-c", package.proof]) as child:
        for _ in child.lines(lambda: None, _LOOK_SECONDS):
            pass
        return child.ended() == 0
