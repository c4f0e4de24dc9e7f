"""The model as the library loads it from a folder."""

import json
import os
import re
from typing import Any

_TYPES = (
    "default", "auto", "int8", "int8_float32", "int8_float16", "int8_bfloat16", "int16",
    "float16", "bfloat16", "float32",
)  # fmt: skip


def check_compute_type(kind: str) -> None:
    """Refuses what is no type, and what a processor cannot do well."""
    if kind not in _TYPES:
        raise ValueError(f"Invalid compute type: {kind}")
    if kind.endswith("float16"):
        raise ValueError(
            f"Requested {kind} compute type, but the target device or backend do not support"
            f" efficient {kind} computation."
        )


class Whisper:
    """Refuses a folder that lacks a file."""

    def __init__(
        self,
        model_path: str,
        device: str = "cpu",
        *,
        device_index: Any = 0,
        compute_type: str = "default",
        inter_threads: int = 1,
        intra_threads: int = 0,
        max_queued_batches: int = 0,
        flash_attention: bool = False,
        tensor_parallel: bool = False,
        files: Any = None,
    ) -> None:
        if device == "cuda":
            raise RuntimeError("CUDA failed with error no CUDA-capable device is detected")
        if device not in ("cpu", "auto"):
            raise ValueError(f"unsupported device {device}")
        check_compute_type(compute_type)
        if inter_threads < 1:
            raise ValueError("num_workers must be at least 1")
        binary = os.path.join(model_path, "model.bin")
        if not os.path.isfile(binary):
            raise RuntimeError(f"Unable to open file 'model.bin' in model '{model_path}'")
        if not any(os.path.isfile(os.path.join(model_path, f"vocabulary.{x}")) for x in _ENDS):
            raise RuntimeError("Cannot load the vocabulary from the model directory")
        with open(binary, "rb") as file:
            content = file.read()
        if not content.startswith(MARK):
            raise RuntimeError(f"File model.bin is incomplete: failed to read '{model_path}'")
        config = os.path.join(model_path, "config.json")
        if os.path.isfile(config):
            with open(config, encoding="utf-8") as text:
                json.load(text)
        self.device = "cpu"
        self.name = content.removeprefix(MARK).decode()
        self.is_multilingual = not self.name.endswith(".en")
        self.num_languages = 100 if re.search("large-v3|large$|turbo", self.name) else 99


_ENDS = ("json", "txt")
MARK = b"stand-in CTranslate2 "
