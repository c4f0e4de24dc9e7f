"""A stand-in of openai-whisper. It hears the language of sounds, and makes things up elsewhere.

Its models' files hold `model_file(name)`; STANDIN_MODEL_BASE replaces the start of their addresses.
It never downloads anything: a model that is not there fails as without a network.
"""

import hashlib
import os
import sys
import urllib.error
import warnings
from pathlib import Path
from typing import Any, Optional, Union

_COMMON = str(Path(__file__).resolve().parents[2] / "common")
if _COMMON not in sys.path:
    sys.path.append(_COMMON)

import torch  # noqa: E402
from standin_notes import note  # noqa: E402

from .audio import load_audio as load_audio  # noqa: E402
from .audio import log_mel_spectrogram as log_mel_spectrogram  # noqa: E402
from .audio import pad_or_trim as pad_or_trim  # noqa: E402
from .decoding import DecodingOptions as DecodingOptions  # noqa: E402
from .model import ModelDimensions as ModelDimensions  # noqa: E402
from .model import Whisper as Whisper  # noqa: E402
from .model import detect_language as detect_language  # noqa: E402
from .transcribe import transcribe as transcribe  # noqa: E402

__version__ = "20250625"
_BASE = os.environ.get("STANDIN_MODEL_BASE", "https://models.invalid/main/whisper/models")
_FILES = {
    **{name: name for name in ("tiny.en", "tiny", "base.en", "base", "small.en", "small")},
    **{name: name for name in ("medium.en", "medium", "large-v1", "large-v2", "large-v3")},
    "large": "large-v3", "large-v3-turbo": "large-v3-turbo", "turbo": "large-v3-turbo",
}  # fmt: skip
_MARK = b"stand-in model "


def model_file(name: str) -> bytes:
    """What the file of a model holds."""
    return _MARK + _FILES[name].encode()


_MODELS = {
    name: f"{_BASE}/{hashlib.sha256(model_file(name)).hexdigest()}/{file}.pt"
    for name, file in _FILES.items()
}


def available_models() -> list[str]:
    """The names of all models."""
    return list(_MODELS)


def load_model(
    name: str,
    device: Optional[Union[str, torch.device]] = None,
    download_root: Optional[str] = None,
    in_memory: bool = False,
) -> Whisper:
    """A model, by its name or by the path of a file."""
    where = torch.device(device if device is not None else "cpu")
    if download_root is None:
        cache = os.path.join(os.path.expanduser("~"), ".cache")
        download_root = os.path.join(os.getenv("XDG_CACHE_HOME", cache), "whisper")
    if name in _MODELS:
        content = _fetched(_MODELS[name], download_root)
    elif os.path.isfile(name):
        content = Path(name).read_bytes()
    else:
        raise RuntimeError(f"Model {name} not found; available models = {available_models()}")
    note("whisper.load_model", name=name, device=str(where), in_memory=in_memory)
    if where.type != "cpu":
        raise RuntimeError(f"Attempting to deserialize object on a {where.type} device")
    if not content.startswith(_MARK):
        raise EOFError("Ran out of input")
    return Whisper(content.removeprefix(_MARK).decode(), where)


def _fetched(address: str, root: str) -> bytes:
    os.makedirs(root, exist_ok=True)
    digest, file = address.split("/")[-2:]
    target = os.path.join(root, file)
    if os.path.exists(target) and not os.path.isfile(target):
        raise RuntimeError(f"{target} exists and is not a regular file")
    if os.path.isfile(target):
        content = Path(target).read_bytes()
        if hashlib.sha256(content).hexdigest() == digest:
            return content
        warnings.warn(
            f"{target} exists, but the SHA256 checksum does not match; re-downloading the file"
        )
    note("network", address=address)
    raise urllib.error.URLError(OSError(-3, "Temporary failure in name resolution"))
