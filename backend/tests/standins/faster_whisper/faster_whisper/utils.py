"""Models: their names, their repositories, and how they come onto the disk."""

import logging
import re
from pathlib import Path
from typing import Any, Optional

import huggingface_hub
from ctranslate2.models import MARK
from huggingface_hub import constants

_TURBO = "mobiuslabsgmbh/faster-whisper-large-v3-turbo"
_PLAIN = (
    "tiny.en", "tiny", "base.en", "base", "small.en", "small", "medium.en", "medium",
    "large-v1", "large-v2", "large-v3",
)  # fmt: skip
_MODELS = {
    **{name: f"Systran/faster-whisper-{name}" for name in _PLAIN},
    "large": "Systran/faster-whisper-large-v3",
    "distil-large-v2": "Systran/faster-distil-whisper-large-v2",
    "distil-medium.en": "Systran/faster-distil-whisper-medium.en",
    "distil-small.en": "Systran/faster-distil-whisper-small.en",
    "distil-large-v3": "Systran/faster-distil-whisper-large-v3",
    "distil-large-v3.5": "distil-whisper/distil-large-v3.5-ct2",
    "large-v3-turbo": _TURBO,
    "turbo": _TURBO,
}
_REVISION = "0123456789abcdef0123456789abcdef01234567"


def available_models() -> list[str]:
    """The names of all models."""
    return list(_MODELS)


def get_logger() -> logging.Logger:
    """Where warnings go."""
    return logging.getLogger("faster_whisper")


def download_model(
    size_or_id: str,
    output_dir: Optional[str] = None,
    local_files_only: bool = False,
    cache_dir: Optional[str] = None,
    revision: Optional[str] = None,
    use_auth_token: Any = None,
) -> str:
    """The folder of a model; without a network only what is there already."""
    repository = size_or_id if "/" in size_or_id else _MODELS.get(size_or_id)
    if repository is None:
        names = ", ".join(_MODELS)
        raise ValueError(f"Invalid model size '{size_or_id}', expected one of: {names}")
    return huggingface_hub.snapshot_download(
        repository, revision=revision, cache_dir=cache_dir, local_dir=output_dir,
        local_files_only=local_files_only, token=use_auth_token,
    )  # fmt: skip


def standin_install(size: str, download_root: Any = None, leave_out: str = "") -> Path:
    """For tests: puts a model where the hub's cache has it, but for the files that match."""
    root = Path(download_root or constants.hub_cache())
    base = root / f"models--{_MODELS[size].replace('/', '--')}"
    folder = base / "snapshots" / _REVISION
    folder.mkdir(parents=True)
    (base / "refs").mkdir()
    (base / "refs" / "main").write_text(_REVISION)
    files = {
        "config.json": b"{}", "model.bin": MARK + size.encode(), "tokenizer.json": b"{}",
        "vocabulary.txt": b"standin\n",
    }  # fmt: skip
    for name, content in files.items():
        if not leave_out or not re.search(leave_out, name):
            (folder / name).write_bytes(content)
    return folder
