"""The request that carries an utterance: a form with a WAV file in it."""

import struct
from typing import Mapping

from ...audio import RECOGNITION_RATE, Samples, encode_pcm

_SAMPLE_BYTES = 2


def wav(samples: Samples) -> bytes:
    """A WAV file: 16 kHz, one channel, signed 16-bit, which every server reads."""
    pcm = encode_pcm(samples)
    rate = RECOGNITION_RATE
    form = struct.pack("<HHIIHH", 1, 1, rate, rate * _SAMPLE_BYTES, _SAMPLE_BYTES, 16)
    chunks = b"fmt " + struct.pack("<I", len(form)) + form
    chunks += b"data" + struct.pack("<I", len(pcm)) + pcm
    return b"RIFF" + struct.pack("<I", len(chunks) + 4) + b"WAVE" + chunks


def encode_form(fields: Mapping[str, str], file: bytes, boundary: str) -> bytes:
    """The body of a form with these fields and, as "file", a WAV file; none when that is empty.

    Names of fields are plain words. Raises ValueError when the boundary is part of a content.
    """
    parts = [
        _part(f'name="{name}"', value.encode("utf-8", "replace")) for name, value in fields.items()
    ]
    if file:
        head = 'name="file"; filename="speech.wav"\r\nContent-Type: audio/wav'
        parts.append(_part(head, file))
    mark = b"--" + boundary.encode()
    if any(mark in part for part in parts):
        raise ValueError("the boundary is part of a content")
    return b"".join(mark + b"\r\n" + part for part in parts) + mark + b"--\r\n"


def form_type(boundary: str) -> str:
    """The form's content type."""
    return f"multipart/form-data; boundary={boundary}"


def _part(head: str, content: bytes) -> bytes:
    return b"Content-Disposition: form-data; " + head.encode() + b"\r\n\r\n" + content + b"\r\n"
