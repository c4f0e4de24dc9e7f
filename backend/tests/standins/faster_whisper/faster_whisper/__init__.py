"""A stand-in of faster-whisper. It hears the language of sounds, and makes things up elsewhere.

`standin_install(size)` puts a model into the hub's cache, or into the folder named.
"""

import sys
from pathlib import Path

_COMMON = str(Path(__file__).resolve().parents[2] / "common")
if _COMMON not in sys.path:
    sys.path.append(_COMMON)

from .transcribe import WhisperModel as WhisperModel  # noqa: E402
from .utils import available_models as available_models  # noqa: E402
from .utils import download_model as download_model  # noqa: E402
from .utils import standin_install as standin_install  # noqa: E402

__version__ = "1.2.1"
