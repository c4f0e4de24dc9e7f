"""About how many bytes Whisper's models are, as they come: the same for both packages."""

_MILLIONS = {
    "tiny": 75, "tiny.en": 75, "base": 145, "base.en": 145, "small": 484, "small.en": 484,
    "medium": 1530, "medium.en": 1530, "large-v1": 3090, "large-v2": 3090, "large-v3": 3090,
    "large-v3-turbo": 1620, "distil-small.en": 330, "distil-medium.en": 790,
    "distil-large-v2": 1510, "distil-large-v3": 1510, "distil-large-v3.5": 1510,
}  # fmt: skip


def download_size(model: str) -> int:
    """For a full name; zero for what is no model."""
    return _MILLIONS.get(model, 0) * 1_000_000
