"""Forms with files, read strictly."""

import re
from dataclasses import dataclass, field
from typing import Optional

_BOUNDARY = re.compile(
    r"multipart/form-data\s*;\s*boundary=(?:\"([^\"]{1,70})\"|([0-9A-Za-z'()+_,./:=?-]{1,70}))\Z",
    re.IGNORECASE,
)
_DISPOSITION = re.compile(r'form-data; name="([^"]+)"(?:; filename="([^"]*)")?\Z')


class BadForm(Exception):
    """Not a form; the text says why."""


@dataclass(frozen=True)
class File:
    name: str
    content_type: Optional[str]
    content: bytes


@dataclass(frozen=True)
class Form:
    fields: dict[str, str] = field(default_factory=dict)
    files: dict[str, File] = field(default_factory=dict)


def read_form(content_type: Optional[str], body: bytes) -> Form:
    """Fails with BadForm."""
    found = _BOUNDARY.match((content_type or "").strip())
    if not found:
        raise BadForm("no multipart/form-data with a boundary")
    delimiter = b"--" + (found[1] or found[2]).encode()
    pieces = (b"\r\n" + body).split(b"\r\n" + delimiter)
    if pieces[0]:
        raise BadForm("does not begin with its boundary")
    if pieces[-1] not in (b"--", b"--\r\n"):
        raise BadForm("does not end with its boundary")
    form = Form()
    for piece in pieces[1:-1]:
        _take_part(form, piece)
    return form


def _take_part(form: Form, piece: bytes) -> None:
    head, blank, content = piece.partition(b"\r\n\r\n")
    if not blank or not head.startswith(b"\r\n"):
        raise BadForm("a part without headers")
    headers = _headers(head[2:])
    found = _DISPOSITION.match(headers.get("content-disposition", ""))
    if not found:
        raise BadForm("a part without a name")
    name, file_name = found.groups()
    if name in form.fields or name in form.files:
        raise BadForm(f"{name} twice")
    if file_name is not None:
        form.files[name] = File(file_name, headers.get("content-type"), content)
        return
    try:
        form.fields[name] = content.decode()
    except UnicodeDecodeError:
        raise BadForm(f"{name} is not UTF-8") from None


def _headers(head: bytes) -> dict[str, str]:
    headers = {}
    for line in head.decode("utf-8", "replace").split("\r\n"):
        name, colon, value = line.partition(":")
        if not colon or "\n" in line or "\r" in line:
            raise BadForm("a header without a colon")
        headers[name.strip().lower()] = value.strip()
    return headers
