"""The messages of the service."""

from .cloud_speech import *  # noqa: F401,F403
from .cloud_speech import __all__ as __all__
