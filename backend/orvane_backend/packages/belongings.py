"""Which distributions came with which package, so that they can go with it."""

import json
import re
from importlib.metadata import Distribution, distributions
from pathlib import Path
from typing import Optional

from . import plain


class Belongings:
    """A note in the environment itself: it goes where that goes."""

    def __init__(self, environment: Path) -> None:
        self._environment = environment
        self._file = environment / "orvane-packages.json"

    def note(self, package: str, names: list[str]) -> None:
        """A package has come with these distributions."""
        self._write({**self._read(), package: sorted(set(names) | {package})})

    def forget(self, package: str, gone: list[str]) -> None:
        """A package has gone with these; what has stayed belongs to the others now."""
        noted = self._read()
        stays = set(noted.pop(package, [])) - set(gone)
        self._write({name: sorted(stays.union(names)) for name, names in noted.items()})

    def only_for(self, package: str) -> list[str]:
        """What can go with a package: what came with it, and nothing that remains asks for.

        A distribution that another might ask for under some condition stays.
        """
        noted = self._read()
        there = {plain(found.name): found for found in self._distributions() if found.name}
        going = {package, *noted.pop(package, [])} & there.keys()
        going -= {plain(name) for names in noted.values() for name in names}
        going -= noted.keys()
        while True:
            asked_for = {
                name
                for remaining in there.keys() - going
                for name in _requirements(there[remaining])
            }
            if not (kept := going & asked_for - {package}):
                return sorted(going)
            going -= kept

    def version(self, package: str) -> Optional[str]:
        """The version of a package that is in the environment itself; none when it is not."""
        found = (one for one in self._distributions() if plain(one.name or "") == package)
        return next((one.version for one in found), None)

    def _distributions(self) -> list[Distribution]:
        places = [str(path) for path in self._environment.glob("lib/python3*/site-packages")]
        return list(distributions(path=places))

    def _read(self) -> dict[str, list[str]]:
        try:
            told = json.loads(self._file.read_text("utf-8"))
            return {str(name): [str(one) for one in names] for name, names in told.items()}
        except (OSError, ValueError, AttributeError, TypeError):
            return {}

    def _write(self, noted: dict[str, list[str]]) -> None:
        # Never into the file that is there: it may be the very one of the environment in use.
        fresh = self._file.with_name(self._file.name + ".new")
        fresh.write_text(json.dumps(noted, indent=1, sort_keys=True), "utf-8")
        fresh.replace(self._file)


def _requirements(distribution: Distribution) -> set[str]:
    names = (re.match(r"[\w.-]+", text) for text in distribution.requires or ())
    return {plain(found.group()) for found in names if found is not None}
