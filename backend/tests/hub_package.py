"""Stands for `faster_whisper` where a test puts it: its `download_model` brings a model from a server of
the test into the hub's cache, in the steps that the hub's own client takes.

A file grows as `blobs/NAME.incomplete`, is called `blobs/NAME` when it is whole, NAME being the SHA-256
of a large one, and then gets a link in the snapshot. What has come is gone on with.
"""

import hashlib
import json
import logging
import os
import urllib.request
from pathlib import Path

from orvane_backend.downloads import hub
from orvane_backend.recognisers import whisper_models, whisper_sizes

_told = json.loads(os.environ["TEST_HUB"])
# The model is as large as the test's server has it.
hub._EXTRA_BYTES = 0
whisper_sizes._MILLIONS["tiny"] = _told["size"] / 1e6
_SMALL = {"config.json": b"{}", "tokenizer.json": b"{}", "vocabulary.txt": b"a\n"}


def download_model(model: str) -> str:
    with open(_told["calls"], "a") as calls:
        calls.write(f"{model}\n")
    if "raises" in _told:
        raise OSError(_told["raises"])
    project = whisper_models.hub_projects(model)[0]
    snapshot = project / "snapshots" / "1234"
    blobs = project / "blobs"
    for folder in (snapshot, blobs, project / "refs"):
        folder.mkdir(parents=True, exist_ok=True)
    (project / "refs" / "main").write_text("1234")
    for name, content in _SMALL.items():
        if name not in _told["leave_out"]:
            blob = blobs / hashlib.sha1(content).hexdigest()
            blob.write_bytes(content)
            _link(blob, snapshot / name)
    if not (snapshot / "model.bin").exists():
        _fetch(blobs / _told["digest"])
        _link(blobs / _told["digest"], snapshot / "model.bin")
    logging.getLogger("faster_whisper").warning("all is well\nor so")
    return str(snapshot)


def _link(blob: Path, link: Path) -> None:
    if not link.is_symlink():
        link.symlink_to(os.path.relpath(blob, link.parent))


def _fetch(blob: Path) -> None:
    part = blob.with_name(blob.name + ".incomplete")
    there = part.stat().st_size if part.exists() else 0
    headers = {"Range": f"bytes={there}-"} if there else {}
    request = urllib.request.Request(_told["address"], headers=headers)
    with urllib.request.urlopen(request) as answer, part.open("ab", buffering=0) as file:
        while piece := answer.read1(1 << 16):
            file.write(piece)
    if part.stat().st_size != _told["size"]:
        raise ConnectionError("connection broken\nin the middle")
    part.rename(blob)
