"""The client."""

from typing import Any, Iterator, Optional, Union

import google.auth
from google.api_core import client_options as options_module
from google.api_core.client_options import ClientOptions
from google.api_core.exceptions import Unauthenticated
from google.oauth2 import service_account

from .standin_stream import Stream

_DEFAULT = object()


class _Transport:
    def __init__(self) -> None:
        self.closed = False

    def close(self) -> None:
        """No more calls."""
        self.closed = True


class SpeechClient:
    """Finds its account at once, reaches the service with the first call only."""

    DEFAULT_ENDPOINT = "speech.googleapis.com"

    def __init__(
        self,
        *,
        credentials: Any = None,
        transport: Any = None,
        client_options: Optional[Union[ClientOptions, dict[str, Any]]] = None,
        client_info: Any = None,
    ) -> None:
        if isinstance(client_options, dict):
            client_options = options_module.from_dict(client_options)
        options = client_options or ClientOptions()
        if options.api_key and credentials:
            raise ValueError("client_options.api_key and credentials are mutually exclusive")
        self._key = options.api_key
        if credentials is None and not self._key:
            if options.credentials_file:
                credentials, _ = google.auth.load_credentials_from_file(options.credentials_file)
            else:
                credentials, _ = google.auth.default()
        if not self._key and not isinstance(credentials, service_account.Credentials):
            raise TypeError(f"these are no credentials: {credentials!r}")
        self.standin_endpoint = options.api_endpoint or self.DEFAULT_ENDPOINT
        self.transport = _Transport()

    @classmethod
    def from_service_account_file(cls, filename: str, *args: Any, **kwargs: Any) -> "SpeechClient":
        """With the account in a file."""
        kwargs["credentials"] = service_account.Credentials.from_service_account_file(filename)
        return cls(*args, **kwargs)

    from_service_account_json = from_service_account_file

    @classmethod
    def from_service_account_info(
        cls, info: dict[str, Any], *args: Any, **kwargs: Any
    ) -> "SpeechClient":
        """With an account as it is in such a file."""
        kwargs["credentials"] = service_account.Credentials.from_service_account_info(info)
        return cls(*args, **kwargs)

    @staticmethod
    def recognizer_path(project: str, location: str, recognizer: str) -> str:
        """The name of a recognizer; "_" is none that is stored."""
        return f"projects/{project}/locations/{location}/recognizers/{recognizer}"

    @property
    def api_endpoint(self) -> str:
        """The host."""
        return self.standin_endpoint

    def streaming_recognize(
        self,
        requests: Optional[Iterator[Any]] = None,
        *,
        retry: Any = _DEFAULT,
        timeout: Any = _DEFAULT,
        metadata: Any = (),
    ) -> Stream:
        """Comes back with the first answer or fails with the first error, and not before."""
        if self.transport.closed:
            raise ValueError("Cannot invoke RPC on closed channel!")
        return Stream(
            self,
            iter(requests if requests is not None else ()),
            timeout if isinstance(timeout, (int, float)) else None,
        )

    def standin_authenticate(self) -> None:
        """The service takes accounts, no keys."""
        if self._key:
            raise Unauthenticated(
                "API keys are not supported by this API. Expected OAuth2 access token or other"
                " authentication credentials that assert a principal.",
                error_info={"reason": "CREDENTIALS_MISSING", "domain": "googleapis.com"},
            )

    def __enter__(self) -> "SpeechClient":
        return self

    def __exit__(self, *_: object) -> None:
        self.transport.close()
