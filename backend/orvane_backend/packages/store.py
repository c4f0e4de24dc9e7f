"""The wheels that have come, kept until all of them are installed."""

import os
import shutil
import zipfile
from pathlib import Path
from typing import Iterable, Optional

from . import PackageError, plain
from .pip import Item, Pip


class Store:
    """A folder of wheels. One that bears its final name is whole."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder
        self._wheels = folder / "wheels"
        # pip writes to the final name from the start, so it does elsewhere.
        self._incoming = folder / "incoming"

    def open(self) -> None:
        """Makes the folders; what an earlier run was in the middle of goes."""
        for name in ("tmp", "incoming"):
            shutil.rmtree(self.folder / name, ignore_errors=True)
        self._wheels.mkdir(parents=True, exist_ok=True)

    def close(self) -> None:
        """Removes everything."""
        shutil.rmtree(self.folder, ignore_errors=True)

    def wheel(self, item: Item) -> Optional[Path]:
        """The file of a distribution; none while it has not come."""
        for path in sorted(self._wheels.glob("*.whl")):
            version = (path.name.split("-") + [""])[1]
            if path.name == item.file or (_name_of(path), version) == (item.name, item.version):
                return path
        return None

    def fetch(self, item: Item, pip: Pip) -> Path:
        """Gets one distribution. Raises PackageError."""
        shutil.rmtree(self._incoming, ignore_errors=True)
        self._incoming.mkdir()
        pip.fetch(item, self._incoming)
        come = [one for one in self._incoming.glob("*.whl") if _name_of(one) == item.name]
        if not come:
            raise PackageError(f"{item} is missing, pip has brought something else")
        wheel = self._wheels / come[0].name
        os.replace(come[0], wheel)
        shutil.rmtree(self._incoming)
        shutil.rmtree(pip.scratch, ignore_errors=True)
        return wheel


def _name_of(wheel: Path) -> str:
    return plain(wheel.name.split("-")[0])


def unpacked_size(wheels: Iterable[Path]) -> int:
    """What wheels take once they are installed. Raises PackageError when one is damaged."""
    total = 0
    for wheel in wheels:
        try:
            with zipfile.ZipFile(wheel) as archive:
                total += sum(entry.file_size for entry in archive.infolist())
        except (OSError, zipfile.BadZipFile) as error:
            wheel.unlink(missing_ok=True)  # another try fetches it anew
            raise PackageError(f"{wheel.name} is damaged: {error}") from error
    return total
