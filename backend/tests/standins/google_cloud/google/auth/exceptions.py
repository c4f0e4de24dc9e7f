"""The errors of authentication."""


class GoogleAuthError(Exception):
    """Whatever goes wrong."""


class TransportError(GoogleAuthError):
    """The service that gives tokens cannot be reached."""


class RefreshError(GoogleAuthError):
    """It gives no token."""


class DefaultCredentialsError(GoogleAuthError):
    """No account can be found or read."""


class MalformedError(DefaultCredentialsError, ValueError):
    """What should be an account is none."""
