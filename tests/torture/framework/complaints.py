"""What a program says about trouble, on its standard output and error."""

import re

_TROUBLE = re.compile(r"❌|⚠️|fehlgeschlagen|\bFehler\b|failed|\berror\b|cannot|unable|terminate called",
                      re.IGNORECASE)


def _pattern(line):
    """A line without what differs from run to run."""
    return re.sub(r"/\S+", "/…", re.sub(r"[0-9]+(\.[0-9]+)?", "0", line))


def complaints(lines):
    """The lines that tell of trouble, without what differs from run to run."""
    return {_pattern(line) for line in lines if _TROUBLE.search(line)}
