"""Saying yes to a recogniser, and taking that back: tables in the person's file.

What the person wrote stays as it is, byte for byte: a table is added behind it, and only such a one
is ever removed. The file is replaced as a whole, so that nobody reads half of it.
"""

import fcntl
import io
import json
import os
import tempfile
import tomllib
from contextlib import contextmanager, suppress
from pathlib import Path
from typing import Any, Callable, Iterator, Optional

from ...notices import Problem, notice
from ...settings_file import settings_path
from . import KINDS
from .catalogue import TABLE
from .discovery import Found
from .named import written

_MARK = "# Angenommen; `recognisers.py forget` nimmt die Tabelle wieder heraus.\n"
_PRIVATE = 0o600


class FileProblem(Problem):
    """A change that was not made."""


def accept(found: Found, path: Optional[Path] = None) -> str:
    """Adds the recogniser to the file, and returns the name under which it stands there.

    One that is there already stays as it is. Raises FileProblem.
    """
    if found.kind not in KINDS:
        raise FileProblem(notice("recognition.near_kind", kind=found.kind))
    shown: list[str] = []

    def add(content: str, tables: list[Any]) -> str:
        known = _same(tables, found)
        if known is not None:
            shown.append(known)
            return content
        shown.append(_free_name(tables, found))
        begin = "" if content.endswith("\n") or not content else "\n"
        gap = "\n" if content else ""
        return f"{content}{begin}{gap}{_table(found, shown[0])}"

    _change(path or settings_path(), add)
    return shown[0]


def forget(name: str, path: Optional[Path] = None) -> None:
    """Removes the table of this name that `accept` added. Raises FileProblem."""

    def remove(content: str, tables: list[Any]) -> str:
        if not any(_name(table) == name for table in tables):
            raise FileProblem(notice("recognition.near_not_named", entry=name))
        shorter = _without(content, name)
        if shorter is None:
            raise FileProblem(notice("recognition.near_not_added", entry=name))
        return shorter

    _change(path or settings_path(), remove)


def _table(found: Found, name: str) -> str:
    values = {"name": name, "kind": found.kind, "address": written(found.kind, found.address)}
    if found.model:
        values["model"] = found.model
    lines = "".join(f"{key} = {_quoted(value)}\n" for key, value in values.items())
    return f"{_MARK}[[{TABLE}]]\n{lines}"


def _quoted(value: str) -> str:
    # A basic string has the escapes of JSON's, but may not hold this one character.
    return json.dumps(value, ensure_ascii=False).replace("\x7f", "\\u007f")


def _same(tables: list[Any], found: Found) -> Optional[str]:
    for table in tables:
        if (
            isinstance(table, dict)
            and table.get("kind") == found.kind
            and table.get("address") == written(found.kind, found.address)
            and table.get("model", "") == found.model
        ):
            return _name(table)
    return None


def _free_name(tables: list[Any], found: Found) -> str:
    taken = {_name(table) for table in tables}
    first = found.shown()
    if found.model and first in taken:
        first = f"{first} {found.model}"
    number, name = 1, first
    while name in taken:
        number += 1
        name = f"{first} {number}"
    return name


def _name(table: Any) -> str:
    return str(table.get("name", "")) if isinstance(table, dict) else ""


def _without(content: str, name: str) -> Optional[str]:
    """The content without the added table of this name; none when there is none.

    Where it ends is found by what is left: everything else, and nothing but that. So lines that the
    person has put into it go with it, and lines behind it stay.
    """
    record, tables = _tables(content)
    wanted = record, [table for table in tables if _name(table) != name]
    lines = list(io.StringIO(content, newline="\n"))
    for mark in (number for number, line in enumerate(lines) if line == _MARK):
        begin = mark - 1 if mark and lines[mark - 1] == "\n" else mark
        for end in range(mark + 2, len(lines) + 1):
            rest = "".join(lines[:begin] + lines[end:])
            with suppress(ValueError):
                if _tables(rest) == wanted:
                    return rest
            if lines[end : end + 1] and lines[end].startswith("["):
                break
    return None


def _tables(content: str) -> tuple[dict[str, Any], list[Any]]:
    """Everything else in the file, and its recognisers. Raises ValueError."""
    record = tomllib.loads(content.removeprefix("\ufeff").replace("\r\n", "\n"))
    tables = record.pop(TABLE, [])
    if not isinstance(tables, list):
        raise ValueError(f"„{TABLE}“")
    return record, tables


def _change(path: Path, change: Callable[[str, list[Any]], str]) -> None:
    """Replaces the file's content; `change` gets it with the recognisers that are in it."""
    try:
        with _alone(path):
            # A link stays one: the file that it names is replaced.
            path = path.resolve()
            data = path.read_bytes() if path.exists() else b""
            content = data.decode("utf-8")
            changed = change(content, _tables(content)[1])
            if changed == content:
                return
            # What cannot be read afterwards is not written.
            _tables(changed)
            _replace(path, changed.encode("utf-8"))
    except OSError as error:
        reason = error.strerror or str(error)
        raise FileProblem(notice("recognition.near_file", path=str(path), reason=reason)) from error
    except (ValueError, RecursionError) as error:
        told = notice("recognition.near_file_damaged", path=str(path), reason=str(error))
        raise FileProblem(told) from error


@contextmanager
def _alone(path: Path) -> Iterator[None]:
    """Keeps others who change the file away; the lock goes with the process."""
    path.parent.mkdir(parents=True, exist_ok=True)
    folder = os.open(path.parent, os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
    try:
        fcntl.flock(folder, fcntl.LOCK_EX)
        yield
    finally:
        os.close(folder)


def _replace(path: Path, data: bytes) -> None:
    mode = path.stat().st_mode & 0o7777 if path.exists() else _PRIVATE
    descriptor, name = tempfile.mkstemp(prefix=f".{path.name}.", dir=path.parent)
    try:
        with os.fdopen(descriptor, "wb") as file:
            file.write(data)
            file.flush()
            os.fchmod(file.fileno(), mode)
            os.fsync(file.fileno())
        os.replace(name, path)
    except BaseException:
        with suppress(OSError):
            os.unlink(name)
        raise
