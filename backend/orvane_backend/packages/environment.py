"""The server's Python environment: a copy beside it, the proof that one works, the exchange."""

import ctypes
import errno
import os
import shutil
from pathlib import Path

from . import PackageError
from .children import Child

_AT_FDCWD = -100
_RENAME_EXCHANGE = 2
# For a computer that has much else to do.
_PROOF_SECONDS = 300.0
_LISTENS = "✓ Backend lauscht"

_libc = ctypes.CDLL(None, use_errno=True)


class Environment:
    """`venv` below the folder of the server, and what stands beside it while it is changed.

    `.venv.new` is made and proven, then the two change names in one step. What is left of either
    after a cut is of no use to anybody.
    """

    def __init__(self, folder: Path, server: Path) -> None:
        self.path = folder / "venv"
        self.staged = folder / ".venv.new"
        self._server = server

    def stage(self) -> None:
        """Makes a copy. The files are the same ones, as far as nobody writes into them: pip puts
        others in their place."""
        self.clear()
        try:
            self.staged.mkdir()
            for entry in self.path.iterdir():
                copied = self.staged / entry.name
                if entry.is_symlink() or not entry.is_dir():
                    shutil.copy2(entry, copied, follow_symlinks=False)
                else:
                    copy = _same_or_copy if entry.name == "lib" else _copy
                    shutil.copytree(entry, copied, symlinks=True, copy_function=copy)
        except shutil.Error as error:
            raise PackageError(
                f"The environment cannot be copied: {error.args[0][0][2]}"
            ) from error
        except OSError as error:
            raise PackageError(f"The environment cannot be copied: {error}") from error

    def clear(self) -> None:
        """Removes what stands beside the environment."""
        shutil.rmtree(self.staged, ignore_errors=True)

    def settle(self) -> None:
        """Has the commands of the copy name the place that it is going to have."""
        before, after = os.fsencode(self.staged), os.fsencode(self.path)
        for file in [self.staged / "pyvenv.cfg", *(self.staged / "bin").iterdir()]:
            if file.is_symlink() or not file.is_file():
                continue
            content = file.read_bytes()
            if before in content:
                fresh = file.with_name(f".{file.name}.new")
                fresh.write_bytes(content.replace(before, after))
                shutil.copymode(file, fresh)
                os.replace(fresh, file)

    def prove(self, path: Path, statement: str) -> None:
        """Runs a statement and the server with an environment. Raises PackageError."""
        python = str(path / "bin" / "python3")
        with Child([python, "-B", "-c", statement]) as child:
            lines = list(child.lines(_nothing, _PROOF_SECONDS))
            child_status = child.ended()
        if child_status != 0:
            said = next((line.strip() for line in reversed(lines) if line.strip()), "")
            raise PackageError(f"What was installed does not work: {said or child_status}"[:300])
        environment = {**os.environ, "ORV_PORT": "0", "ORV_BIND_HOST": "localhost"}
        with Child([python, "-B", "-u", str(self._server)], environment) as child:
            lines = []
            for line in child.lines(_nothing, _PROOF_SECONDS):
                if _LISTENS in line:
                    return
                lines.append(line)
        said = next((line.strip() for line in reversed(lines) if line.strip()), "no word")
        raise PackageError(f"The server does not start with it: {said}"[:300])

    def exchange(self) -> None:
        """Puts the copy in the environment's place and the other way round; at no time is there
        none, or half of one."""
        names = os.fsencode(self.staged), os.fsencode(self.path)
        if _libc.renameat2(_AT_FDCWD, names[0], _AT_FDCWD, names[1], _RENAME_EXCHANGE) == 0:
            return
        number = ctypes.get_errno()
        if number not in (errno.EINVAL, errno.ENOSYS):
            raise PackageError(f"{self.path}: {os.strerror(number)}")
        # A disk that cannot: the installer puts it back, should this be cut off in between.
        old = self.path.with_name(".venv.old")
        os.rename(self.path, old)
        os.rename(self.staged, self.path)
        os.rename(old, self.staged)


def _same_or_copy(source: str, target: str) -> None:
    try:
        os.link(source, target)
    except OSError:  # a disk that has no second names
        _copy(source, target)


def _copy(source: str, target: str) -> None:
    shutil.copy2(source, target)


def _nothing() -> None:
    pass
