"""A stand-in of Google's authentication: the account that the environment names, or none."""

import json
import os
from typing import Any

from . import exceptions as exceptions

_TYPES = (
    "authorized_user", "service_account", "external_account", "external_account_authorized_user",
    "impersonated_service_account", "gdch_service_account",
)  # fmt: skip


def default(scopes: Any = None, **_: Any) -> tuple[Any, Any]:
    """Credentials and project."""
    path = os.environ.get("GOOGLE_APPLICATION_CREDENTIALS")
    if not path:
        raise exceptions.DefaultCredentialsError(
            "Your default credentials were not found. To set up Application Default Credentials,"
            " see https://cloud.google.com/docs/authentication/external/set-up-adc for more"
            " information."
        )
    return load_credentials_from_file(path)


def load_credentials_from_file(filename: str, **_: Any) -> tuple[Any, Any]:
    """The account in a file."""
    from google.oauth2 import service_account

    if not os.path.exists(filename):
        raise exceptions.DefaultCredentialsError(f"File {filename} was not found.")
    with open(filename, encoding="utf-8") as file:
        try:
            info = json.load(file)
        except ValueError as error:
            message = f"File {filename} is not a valid json file."
            raise exceptions.DefaultCredentialsError(message, error) from error
    kind = info.get("type")
    if kind not in _TYPES:
        raise exceptions.DefaultCredentialsError(
            f"The file {filename} does not have a valid type. Type is {kind}, expected one of"
            f" {_TYPES}."
        )
    if kind != "service_account":
        raise NotImplementedError(f"this stand-in knows service accounts, no {kind}")
    try:
        made = service_account.Credentials.from_service_account_info(info)
    except ValueError as error:
        message = f"Failed to load service account credentials from {filename}"
        raise exceptions.DefaultCredentialsError(message, error) from error
    return made, info.get("project_id")
