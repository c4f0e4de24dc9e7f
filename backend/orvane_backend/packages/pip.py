"""Python's own installer, in the person's usual configuration: which index, which certificates."""

import json
import os
import re
from dataclasses import dataclass
from pathlib import Path
from typing import Any, Callable, Optional
from urllib.parse import unquote, urlsplit

from . import PackageError, plain
from .children import Child
from .sizes import rough_size

# At this length it tells why an index did not answer.
_OPTIONS = ("--no-input", "--disable-pip-version-check", "--no-color", "-vv")
# What pip says when it does not get through to the index.
_UNREACHED = re.compile(
    r"(Temporary failure in name resolution|Name or service not known|Connection refused"
    r"|Network is unreachable|No route to host|timed out|CERTIFICATE_VERIFY_FAILED"
    r"|Connection broken|Connection reset|RemoteDisconnected|Tunnel connection failed"
    r"|Cannot connect to proxy)"
)
_FULL = re.compile(r"No space left on device|Disk quota exceeded", re.IGNORECASE)
_MISSING = re.compile(r"No matching distribution found for (.+)")
_LONGEST = 300


@dataclass(frozen=True)
class Item:
    """One distribution that is to come. `size` is rough unless the file is on this machine."""

    name: str
    version: str
    file: str
    size: int

    def __str__(self) -> str:
        return f"{self.name} {self.version}"


class Pip:
    """pip of one environment. `folder` is for what it keeps meanwhile; `look` is called every now
    and then while it works."""

    def __init__(self, python: Path, folder: Path, look: Callable[[], None]) -> None:
        self._python = python
        self._look = look
        # Not /tmp, which may be a part of the memory.
        self.scratch = folder / "tmp"
        self._report = folder / "report.json"

    def lacking(self, package: str) -> list[Item]:
        """What the environment lacks for a package, that included. Raises PackageError."""
        self._report.unlink(missing_ok=True)
        self._run(
            package, "install", "--no-user", "--dry-run", "--report", str(self._report), package
        )
        try:
            report = json.loads(self._report.read_text("utf-8"))
            return [_item(told) for told in report["install"]]
        except (OSError, ValueError, KeyError, TypeError, AttributeError) as error:
            raise PackageError(f"pip's report cannot be read: {error}") from error

    def fetch(self, item: Item, folder: Path) -> None:
        """Puts the wheel of one distribution into a folder; makes it, where only source is offered."""
        wanted = f"{item.name}=={item.version}"
        self._run(item.name, "wheel", "--no-deps", "--wheel-dir", str(folder), wanted)

    def install(self, wheels: list[Path]) -> None:
        """Installs these files and nothing else, from this machine alone."""
        files = [str(wheel) for wheel in wheels]
        self._run(
            "It", "--isolated", "install", "--no-user", "--no-index", "--no-deps",
            "--force-reinstall", *files, configured=False,
        )  # fmt: skip

    def uninstall(self, names: list[str]) -> None:
        """Takes distributions out."""
        self._run("It", "--isolated", "uninstall", "--yes", *names, configured=False)

    def _run(self, subject: str, *arguments: str, configured: bool = True) -> None:
        self.scratch.mkdir(parents=True, exist_ok=True)
        environment = {**os.environ, "TMPDIR": str(self.scratch), "PYTHONUNBUFFERED": "1"}
        if not configured:
            environment["PIP_CONFIG_FILE"] = os.devnull
        command = [str(self._python), "-m", "pip", *_OPTIONS, *arguments]
        with Child(command, environment) as child:
            lines = list(child.lines(self._look))
            status = child.ended()
        if status != 0:
            raise PackageError(_reason(subject, lines, status))


def _item(told: Any) -> Item:
    name, version = told["metadata"]["name"], told["metadata"]["version"]
    address = urlsplit(told["download_info"]["url"])
    path = Path(unquote(address.path))
    size = path.stat().st_size if address.scheme == "file" else rough_size(name)
    return Item(plain(name), version, path.name, size)


def _reason(subject: str, lines: list[str], status: int) -> str:
    """One line of all that pip has said, with what is missing first."""
    said = "\n".join(lines)
    if _FULL.search(said):
        return "No room is left on the disk"
    if (lacking := _MISSING.search(said)) is not None:
        wanted = lacking.group(1).strip()
        if (unreached := _UNREACHED.search(said)) is not None:
            return _short(f"The package index cannot be reached for {wanted}: {unreached.group(1)}")
        return _short(f"{subject} cannot be installed: {wanted} is missing, pip does not find it")
    return _short(
        f"{subject} cannot be installed: {_last_error(lines) or f'pip ended with {status}'}"
    )


def _last_error(lines: list[str]) -> Optional[str]:
    errors = [line.strip() for line in lines if line.strip().startswith("ERROR: ")]
    if errors:
        return errors[-1].removeprefix("ERROR: ")
    return next((line.strip() for line in reversed(lines) if line.strip()), None)


def _short(text: str) -> str:
    return text if len(text) <= _LONGEST else text[: _LONGEST - 1] + "…"
