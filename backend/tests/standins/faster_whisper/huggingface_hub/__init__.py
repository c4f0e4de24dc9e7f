"""A stand-in of the hub's client: its cache on the disk, and no network."""

import os
import re
import sys
from pathlib import Path
from typing import Any, Iterable, Optional

_COMMON = str(Path(__file__).resolve().parents[2] / "common")
if _COMMON not in sys.path:
    sys.path.append(_COMMON)

from standin_notes import note  # noqa: E402

from . import constants as constants  # noqa: E402
from . import errors as errors  # noqa: E402
from .errors import LocalEntryNotFoundError  # noqa: E402

__version__ = "0.35.0"


def snapshot_download(
    repo_id: str,
    *,
    revision: Optional[str] = None,
    cache_dir: Any = None,
    local_dir: Any = None,
    local_files_only: bool = False,
    allow_patterns: Optional[Iterable[str]] = None,
    token: Any = None,
    **_: Any,
) -> str:
    """The folder of a snapshot in the cache. Which files are in it is not looked at."""
    if not re.fullmatch(r"[\w.-]+(/[\w.-]+)?", repo_id):
        raise errors.HFValidationError(
            f"Repo id must be in the form 'namespace/repo_name': {repo_id}"
        )
    if not local_files_only and not constants.HF_HUB_OFFLINE:
        note("network", repository=repo_id)
    if local_dir is not None and os.path.isdir(local_dir) and os.listdir(local_dir):
        return str(local_dir)
    base = Path(cache_dir or constants.hub_cache()) / f"models--{repo_id.replace('/', '--')}"
    name = revision or "main"
    reference = base / "refs" / name
    found = base / "snapshots" / (reference.read_text() if reference.is_file() else name)
    if found.is_dir():
        return str(found)
    if local_files_only or constants.HF_HUB_OFFLINE:
        raise LocalEntryNotFoundError(
            "Cannot find an appropriate cached snapshot folder for the specified revision on the"
            " local disk and outgoing traffic has been disabled. To enable repo look-ups and"
            " downloads online, pass 'local_files_only=False' as input."
        )
    raise LocalEntryNotFoundError(
        "An error happened while trying to locate the files on the Hub and we cannot find the"
        " appropriate snapshot folder for the specified revision on the local disk. Please check"
        " your internet connection and try again."
    )


def try_to_load_from_cache(
    repo_id: str, filename: str, cache_dir: Any = None, revision: Optional[str] = None
) -> Optional[str]:
    """The file of a repository, if it is there."""
    try:
        folder = snapshot_download(
            repo_id, revision=revision, cache_dir=cache_dir, local_files_only=True
        )
    except LocalEntryNotFoundError:
        return None
    path = os.path.join(folder, filename)
    return path if os.path.isfile(path) else None
