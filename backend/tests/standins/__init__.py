"""Stand-ins, for tests only, of what the speech server talks to: packages and servers of others.

They refuse what the real ones refuse and answer oddly where those do. Each folder that is no
package itself holds packages under their real names; `added` puts folders on this process's path,
and `python_path` says what a child's PYTHONPATH has to be.
"""

import os
import sys
from contextlib import contextmanager
from pathlib import Path
from typing import Iterator

_HERE = Path(__file__).resolve().parent
_COMMON = str(_HERE / "common")
# At the end: only modules named standin_... are there, and all stand-ins share them.
if _COMMON not in sys.path:
    sys.path.append(_COMMON)


def folder(name: str) -> Path:
    """The folder to be put on a path for the packages in it, such as "openai_whisper"."""
    found = _HERE / name
    if not found.is_dir():
        raise ValueError(f"there is no stand-in {name}")
    return found


def python_path(*names: str) -> str:
    """PYTHONPATH of a process that finds these stand-ins."""
    return os.pathsep.join(str(folder(name)) for name in names)


@contextmanager
def added(*names: str) -> Iterator[None]:
    """Within it the packages of these folders can be imported. Afterwards they are forgotten."""
    folders = [str(folder(name)) for name in names]
    before = dict(sys.modules)
    sys.path[:0] = folders
    try:
        yield
    finally:
        for path in folders:
            sys.path.remove(path)
        for name in _loaded_from(folders):
            del sys.modules[name]
            if name in before:
                sys.modules[name] = before[name]


def _loaded_from(folders: list[str]) -> list[str]:
    found = []
    for name, module in list(sys.modules.items()):
        places = [getattr(module, "__file__", None) or "", *getattr(module, "__path__", [])]
        if any(place.startswith(path + os.sep) for place in places for path in folders):
            found.append(name)
    return found
