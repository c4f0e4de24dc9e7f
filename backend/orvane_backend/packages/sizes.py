"""Roughly how large the files are that pip brings, where nobody tells beforehand.

What the index offers changes with each release and processor, so these serve for progress and for a
word about the amount, and nothing else.
"""

from . import MEGABYTE, plain

# Millions of bytes.
_ROUGH = {
    "av": 40, "ctranslate2": 40, "onnxruntime": 18, "numpy": 18, "tokenizers": 4, "hf-xet": 4,
    "sympy": 6, "torch": 850, "triton": 200, "llvmlite": 45, "numba": 4, "nvidia-cublas": 500,
    "nvidia-cudnn": 700, "nvidia-cufft": 200, "nvidia-cusparse": 250, "nvidia-cusparselt": 250,
    "nvidia-cusolver": 200, "nvidia-nccl": 300, "nvidia-curand": 60, "nvidia-nvjitlink": 40,
    "nvidia-cuda-nvrtc": 80,
}  # fmt: skip
_OTHERS = 1
# Compressed files grow about this much.
UNPACKED = 2


def rough_size(name: str) -> int:
    """Bytes of the file of one distribution."""
    # The libraries for graphics processors bear the version of what they are built for: "-cu12".
    base = plain(name)
    if base.startswith("nvidia-"):
        base = base.split("-cu1")[0]
    return _ROUGH.get(base, _OTHERS) * MEGABYTE
