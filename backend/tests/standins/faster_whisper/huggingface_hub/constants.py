"""Where the cache is; read from the environment."""

import os

HF_HUB_OFFLINE = os.environ.get("HF_HUB_OFFLINE", "").upper() in ("1", "ON", "YES", "TRUE")


def hub_cache() -> str:
    """The folder of all repositories. Unlike the real one it is looked up at each call."""
    cache = os.environ.get("XDG_CACHE_HOME", os.path.join(os.path.expanduser("~"), ".cache"))
    home = os.environ.get("HF_HOME", os.path.join(cache, "huggingface"))
    return os.environ.get("HF_HUB_CACHE", os.path.join(home, "hub"))


HF_HUB_CACHE = hub_cache()
