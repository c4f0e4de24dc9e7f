"""A stand-in of CTranslate2: what a processor without a graphics card offers."""

from . import models as models
from .models import check_compute_type as _check

__version__ = "4.6.0"


def get_cuda_device_count() -> int:
    """None."""
    return 0


def get_supported_compute_types(device: str, device_index: int = 0) -> set[str]:
    """What the processor can calculate with."""
    if device == "cuda":
        raise RuntimeError("CUDA failed with error no CUDA-capable device is detected")
    if device not in ("cpu", "auto"):
        raise ValueError(f"unsupported device {device}")
    _check("default")
    return {"float32", "int8", "int8_float32", "int16"}
