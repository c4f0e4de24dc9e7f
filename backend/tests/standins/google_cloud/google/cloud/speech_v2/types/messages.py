"""Messages as the real ones are: fields of fixed types, unknown ones refused, unset ones empty."""

import datetime
import enum
from dataclasses import dataclass
from typing import Any, Optional


@dataclass(frozen=True)
class Field:
    """A field's type: a Python type, a class of messages or an enumeration."""

    kind: Any
    repeated: bool = False
    one_of: str = ""


class Message:
    """Derived classes name their fields in `FIELDS`."""

    FIELDS: dict[str, Field] = {}

    def __init__(
        self, mapping: Any = None, *, ignore_unknown_fields: bool = False, **values: Any
    ) -> None:
        object.__setattr__(self, "_values", {})
        object.__setattr__(self, "_looked_at", {})
        if isinstance(mapping, type(self)):
            given = {**mapping._looked_at, **mapping._values}
        elif isinstance(mapping, dict):
            given = dict(mapping)
        elif mapping is None:
            given = {}
        else:
            raise TypeError(f"Invalid constructor input for {type(self).__name__}: {mapping!r}")
        for name, value in {**given, **values}.items():
            if name in self.FIELDS:
                setattr(self, name, value)
            elif not ignore_unknown_fields:
                raise ValueError(f"Unknown field for {type(self).__name__}: {name}")

    def __getattr__(self, name: str) -> Any:
        if name.startswith("__") or name not in self.FIELDS:
            raise AttributeError(f"Unknown field for {type(self).__name__}: {name}")
        value = self._found(name)
        if value is None:
            field = self.FIELDS[name]
            value = [] if field.repeated else _empty(field.kind)
            if isinstance(value, (list, Message)):
                # What is written into it later counts; looking at it alone does not.
                self._looked_at[name] = value
        return value

    def __setattr__(self, name: str, value: Any) -> None:
        if name not in self.FIELDS:
            raise AttributeError(f"Unknown field for {type(self).__name__}: {name}")
        field = self.FIELDS[name]
        if value is None:
            self._forget(name)
            return
        if field.repeated:
            # A text in place of a list is taken for a list of its letters.
            made: Any = [_converted(field.kind, item) for item in value]
        else:
            made = _converted(field.kind, value)
        if field.one_of:
            # The last one set is the one that is left.
            for other, its in self.FIELDS.items():
                if its.one_of == field.one_of:
                    self._forget(other)
        self._forget(name)
        self._values[name] = made

    def _forget(self, name: str) -> None:
        self._values.pop(name, None)
        self._looked_at.pop(name, None)

    def __contains__(self, name: str) -> bool:
        if name not in self.FIELDS:
            raise ValueError(f"Protocol message {type(self).__name__} has no {name!r} field.")
        if name in self._values and isinstance(self._values[name], Message):
            return True
        return bool(self._found(name))

    def _found(self, name: str) -> Any:
        return self._values.get(name, self._looked_at.get(name))

    def __bool__(self) -> bool:
        return any(name in self for name in self.FIELDS)

    def __eq__(self, other: object) -> bool:
        return type(self) is type(other) and repr(self) == repr(other)

    def __repr__(self) -> str:
        shown = ", ".join(f"{name}={self._found(name)!r}" for name in self.FIELDS if name in self)
        return f"{type(self).__name__}({shown})"

    def standin_which(self, one_of: str) -> Optional[str]:
        """The field of a group of which one can be set."""
        names = [name for name, field in self.FIELDS.items() if field.one_of == one_of]
        return next((name for name in names if name in self._values or name in self), None)


def _empty(kind: Any) -> Any:
    if isinstance(kind, type) and issubclass(kind, enum.Enum):
        return kind(0)
    return datetime.timedelta() if kind is datetime.timedelta else kind()


def _converted(kind: Any, value: Any) -> Any:
    if issubclass(kind, Message):
        if not isinstance(value, (kind, dict)):
            raise TypeError(f"{value!r} has type {type(value).__name__}, expected {kind.__name__}")
        return value if isinstance(value, kind) else kind(value)
    if issubclass(kind, enum.Enum):
        return kind[value] if isinstance(value, str) else kind(value)
    if kind is float and isinstance(value, (int, float)):
        return float(value)
    if kind in (int, bool) and isinstance(value, int):
        return kind(value)
    if not isinstance(value, kind):
        raise TypeError(
            f"{value!r} has type {type(value).__name__}, but expected one of: {kind.__name__}"
        )
    return value
