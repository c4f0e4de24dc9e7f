"""A stand-in of the client of Google's Speech-to-Text, version 2: streaming recognition alone.

It hears the language of sounds. `standin.control` says how the service is.
"""

import sys
from pathlib import Path

_COMMON = str(Path(__file__).resolve().parents[4] / "common")
if _COMMON not in sys.path:
    sys.path.append(_COMMON)

from . import types as types  # noqa: E402
from .client import SpeechClient as SpeechClient  # noqa: E402
from .types import *  # noqa: E402,F401,F403

__version__ = "2.34.0"
