"""A stand-in of the kinds of credentials."""
