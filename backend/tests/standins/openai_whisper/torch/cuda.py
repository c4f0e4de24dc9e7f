"""There is no graphics processor."""


def is_available() -> bool:
    """Never."""
    return False


def device_count() -> int:
    """None."""
    return 0
