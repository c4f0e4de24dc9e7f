"""The options of a client."""

from typing import Any, Optional


class ClientOptions:
    """Exactly these; another name is a TypeError."""

    def __init__(
        self,
        api_endpoint: Optional[str] = None,
        client_cert_source: Any = None,
        client_encrypted_cert_source: Any = None,
        quota_project_id: Optional[str] = None,
        credentials_file: Optional[str] = None,
        scopes: Any = None,
        api_key: Optional[str] = None,
        api_audience: Optional[str] = None,
        universe_domain: Optional[str] = None,
    ) -> None:
        if client_cert_source and client_encrypted_cert_source:
            raise ValueError(
                "client_cert_source and client_encrypted_cert_source are mutually exclusive"
            )
        if api_key and credentials_file:
            raise ValueError("api_key and credentials_file are mutually exclusive")
        self.api_endpoint = api_endpoint
        self.client_cert_source = client_cert_source
        self.client_encrypted_cert_source = client_encrypted_cert_source
        self.quota_project_id = quota_project_id
        self.credentials_file = credentials_file
        self.scopes = scopes
        self.api_key = api_key
        self.api_audience = api_audience
        self.universe_domain = universe_domain


def from_dict(options: dict[str, Any]) -> ClientOptions:
    """The same of a dictionary."""
    made = ClientOptions()
    for name, value in options.items():
        if not hasattr(made, name):
            raise ValueError(f"ClientOptions does not accept an option '{name}'")
        setattr(made, name, value)
    return made
