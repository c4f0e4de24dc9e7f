"""The errors of the hub's client."""


class HFValidationError(ValueError):
    """A name that cannot be."""


class EntryNotFoundError(Exception):
    """Something is not in the repository."""


class LocalEntryNotFoundError(EntryNotFoundError, FileNotFoundError, ValueError):
    """Something is not in the cache, and the network is not to be used or not there."""
