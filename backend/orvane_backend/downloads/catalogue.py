"""Where Whisper's models come from and where they belong."""

import os
import re
from dataclasses import dataclass
from importlib import import_module
from pathlib import Path
from typing import Any, Optional

from . import PackageProblem

NOT_INSTALLED = "Whisper ist noch nicht installiert; installieren lässt es sich in den Einstellungen unter Whisper"

# The package's addresses end in the file's SHA-256 and its name.
_ADDRESS = re.compile(r"https?://[^?#]*/([0-9a-f]{64})/([\w][\w.-]*\.pt)", re.ASCII)


@dataclass(frozen=True)
class ModelFile:
    """One model: its address, its name in the cache, and the SHA-256 that its content must have."""

    address: str
    name: str
    digest: str


def model_file(model: str) -> Optional[ModelFile]:
    """What the installed package `whisper` says about `model`, which may be an alias.

    None when it says nothing that can be used: then only the package itself can fetch the model.
    Raises DownloadError when there is no package that works.
    """
    whisper = imported("whisper")
    addresses = getattr(whisper, "_MODELS", None)
    address = addresses.get(model) if isinstance(addresses, dict) else None
    return described(address) if isinstance(address, str) else None


def imported(module: str) -> Any:
    """One of Whisper's packages. Raises DownloadError when there is none that works."""
    try:
        return import_module(module)
    except ModuleNotFoundError as error:
        if error.name == module:
            raise PackageProblem(NOT_INSTALLED) from None
        raise PackageProblem(f"Whisper lässt sich nicht laden: {error.name} fehlt") from error
    except Exception as error:  # what the package is built on lets everything through
        said = (str(error).strip().splitlines() or [type(error).__name__])[0]
        raise PackageProblem(f"Whisper lässt sich nicht laden: {said}") from error


def described(address: str) -> Optional[ModelFile]:
    """What an address tells by itself; None when it has another shape."""
    found = _ADDRESS.fullmatch(address)
    return ModelFile(address, found.group(2), found.group(1)) if found else None


def cache_folder() -> Path:
    """Where the package looks for its models."""
    cache = os.environ.get("XDG_CACHE_HOME")
    return (Path(cache) if cache else Path.home() / ".cache") / "whisper"
