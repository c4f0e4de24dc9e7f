"""Where older code finds the errors."""

from .errors import EntryNotFoundError as EntryNotFoundError
from .errors import HFValidationError as HFValidationError
from .errors import LocalEntryNotFoundError as LocalEntryNotFoundError
