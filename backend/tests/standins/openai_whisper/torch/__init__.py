"""A stand-in of torch as far as Whisper's users touch it: threads, devices. Notes what was set."""

import os
import sys
from pathlib import Path
from typing import Any

_COMMON = str(Path(__file__).resolve().parents[2] / "common")
if _COMMON not in sys.path:
    sys.path.append(_COMMON)

from standin_notes import note  # noqa: E402

from . import cuda as cuda  # noqa: E402

__version__ = "2.8.0+standin"
_threads = {"inside": os.cpu_count() or 1, "between": os.cpu_count() or 1}
_between_is_set = False


class device:  # noqa: N801
    """Where a model is: "cpu" or "cuda", perhaps with a number."""

    def __init__(self, kind: Any = "cpu") -> None:
        name = kind.type if isinstance(kind, device) else kind
        if not isinstance(name, str):
            raise TypeError(f"device(): argument 'type' must be str, not {type(name).__name__}")
        self.type, _, number = name.partition(":")
        if self.type not in ("cpu", "cuda", "mps", "meta"):
            raise RuntimeError(f"Expected one of cpu, cuda, mps device type: {name}")
        self.index = int(number) if number else None

    def __eq__(self, other: object) -> bool:
        return isinstance(other, device) and (self.type, self.index) == (other.type, other.index)

    def __hash__(self) -> int:
        return hash((self.type, self.index))

    def __str__(self) -> str:
        return self.type if self.index is None else f"{self.type}:{self.index}"

    def __repr__(self) -> str:
        return f"device(type={self.type!r})"


def set_num_threads(count: int) -> None:
    """How many threads one calculation uses."""
    _threads["inside"] = _checked(count, "set_num_threads")
    note("torch.set_num_threads", threads=count)


def get_num_threads() -> int:
    """What was set, else as many as there are processors."""
    return _threads["inside"]


def set_num_interop_threads(count: int) -> None:
    """How many calculations run beside each other. Once only."""
    global _between_is_set
    if _between_is_set:
        raise RuntimeError(
            "Error: cannot set number of interop threads after parallel work has started or"
            " set_num_interop_threads called"
        )
    _threads["between"] = _checked(count, "set_num_interop_threads")
    _between_is_set = True
    note("torch.set_num_interop_threads", threads=count)


def get_num_interop_threads() -> int:
    """What was set, else as many as there are processors."""
    return _threads["between"]


def _checked(count: Any, name: str) -> int:
    if isinstance(count, bool) or not isinstance(count, int):
        raise TypeError(f"{name} expects an int, but got {type(count).__name__}")
    if count <= 0:
        raise RuntimeError(f"{name} expects a positive integer")
    return count
