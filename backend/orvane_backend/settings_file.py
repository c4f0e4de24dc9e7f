"""The server's own settings: a TOML file that a person writes.

It is looked up again when it has changed. While it is damaged the last values that could be read
hold, and a notice says where the damage is. Without the file there are no values and no notices.
"""

import os
import re
import stat
import threading
import tomllib
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Mapping, Optional

from .notices import Notice, notice

# Names another file than the one beside the server's program.
VARIABLE = "ORV_SETTINGS_FILE"
_LARGEST = 1 << 20


@dataclass(frozen=True)
class Table:
    """The keys that a table may have, and the type of each; `repeated` is written [[name]]."""

    keys: Mapping[str, type]
    repeated: bool = False


# Every table there is. What is not listed here is told as unknown.
TABLES: dict[str, Table] = {
    "translation": Table(
        {
            "chat": str,
            "model": str,
            "key": str,
            "libretranslate": str,
            "libretranslate_key": str,
        }
    ),
    "recogniser": Table(
        {
            "name": str,
            "kind": str,
            "address": str,
            "model": str,
            "key": str,
            "languages": list,
        },
        repeated=True,
    ),
}


@dataclass(frozen=True)
class Settings:
    """What the file says, with what is to be told about it. Only listed keys of their types."""

    tables: Mapping[str, tuple[Mapping[str, Any], ...]] = field(default_factory=dict)
    notices: tuple[Notice, ...] = ()

    def table(self, name: str) -> Mapping[str, Any]:
        """A table that is there once; empty when the file lacks it."""
        return next(iter(self.tables.get(name, ())), {})

    def repeated(self, name: str) -> tuple[Mapping[str, Any], ...]:
        """All tables of a name, in the file's order."""
        return self.tables.get(name, ())

    def text(self, table: str, key: str) -> str:
        """One text without spaces around it; empty when the file lacks it."""
        return str(self.table(table).get(key, "")).strip()


class SettingsFile:
    """One file. `read` may be called from any thread, and often."""

    def __init__(self, path: Path, tables: Mapping[str, Table]) -> None:
        self._path = path
        self._tables = tables
        self._lock = threading.Lock()
        self._stamp: Optional[tuple[int, ...]] = None
        self._settings = Settings()

    def read(self) -> Settings:
        """What the file says now. Never raises."""
        with self._lock:
            stamp = self._look()
            if stamp is None:
                self._settings = Settings()
            elif stamp != self._stamp:
                self._settings = self._renewed()
            self._stamp = stamp
            return self._settings

    def _look(self) -> Optional[tuple[int, ...]]:
        """What changes with the file; none when there is no file."""
        try:
            found = os.stat(self._path)
        except (FileNotFoundError, NotADirectoryError):
            return None
        except OSError as error:
            return (-1, error.errno or 0)
        # The mode, because a file that becomes readable changes nothing else but ctime.
        return (found.st_mtime_ns, found.st_size, found.st_ino, found.st_mode, found.st_ctime_ns)

    def _renewed(self) -> Settings:
        name = self._path.name
        try:
            content = _content(self._path)
        except OSError as error:
            told = notice("settings.unreadable", file=name, reason=error.strerror or str(error))
            return Settings(self._settings.tables, (told,))
        try:
            record = tomllib.loads(content.decode("utf-8-sig").replace("\r\n", "\n"))
        except UnicodeDecodeError as error:
            line = content[: error.start].count(b"\n") + 1
            told = notice("settings.damaged", file=name, line=line, reason="no UTF-8")
            return Settings(self._settings.tables, (told,))
        except (tomllib.TOMLDecodeError, RecursionError) as error:
            line, reason = _place(str(error), content)
            told = notice("settings.damaged", file=name, line=line, reason=reason)
            return Settings(self._settings.tables, (told,))
        return _checked(record, self._tables, name)


def _content(path: Path) -> bytes:
    # Not blocking: what stands there might be a pipe.
    descriptor = os.open(path, os.O_RDONLY | os.O_NONBLOCK | os.O_CLOEXEC)
    with os.fdopen(descriptor, "rb") as file:
        if not stat.S_ISREG(os.fstat(descriptor).st_mode):
            raise OSError(0, "no regular file")
        content = file.read(_LARGEST + 1)
    if len(content) > _LARGEST:
        raise OSError(0, "larger than 1 MB")
    return content


def _place(message: str, content: bytes) -> tuple[int, str]:
    """The line of a parser's message, and the message without it."""
    found = re.search(r"\s*\((?:at line (\d+), column \d+|at end of document)\)$", message)
    if found is None:
        return 1, message
    line = int(found.group(1)) if found.group(1) else content.rstrip().count(b"\n") + 1
    return line, message[: found.start()]


def _checked(record: Mapping[str, Any], tables: Mapping[str, Table], file: str) -> Settings:
    kept: dict[str, tuple[Mapping[str, Any], ...]] = {}
    notices: list[Notice] = []
    for name, value in record.items():
        table = tables.get(name)
        if table is None:
            notices.append(notice("settings.unknown", file=file, key=name))
            continue
        parts = value if table.repeated and isinstance(value, list) else [value]
        if isinstance(value, list) != table.repeated or not all(
            isinstance(part, dict) for part in parts
        ):
            notices.append(notice("settings.wrong_type", file=file, key=name))
            continue
        kept[name] = tuple(_known(part, name, table, file, notices) for part in parts)
    return Settings(kept, tuple(notices))


def _known(
    part: Mapping[str, Any], name: str, table: Table, file: str, notices: list[Notice]
) -> Mapping[str, Any]:
    kept: dict[str, Any] = {}
    for key, value in part.items():
        wanted = table.keys.get(key)
        if wanted is None:
            notices.append(notice("settings.unknown", file=file, key=f"{name}.{key}"))
        elif type(value) is not wanted and not (wanted is float and type(value) is int):
            notices.append(notice("settings.wrong_type", file=file, key=f"{name}.{key}"))
        else:
            kept[key] = value
    return kept


_files: dict[Path, SettingsFile] = {}
_files_lock = threading.Lock()


def settings_path() -> Path:
    """Where the file is: beside the server's program, or where the variable says."""
    named = os.environ.get(VARIABLE)
    return Path(named) if named else Path(__file__).parent.parent / "recognisers.toml"


def settings() -> Settings:
    """What the server's file says now. Never raises; looks at the file, so not for the event loop's
    thread while a disk may be slow."""
    path = settings_path()
    with _files_lock:
        file = _files.setdefault(path, SettingsFile(path, TABLES))
    return file.read()
