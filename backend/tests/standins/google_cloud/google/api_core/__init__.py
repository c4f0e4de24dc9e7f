"""A stand-in of what all of Google's clients share."""
