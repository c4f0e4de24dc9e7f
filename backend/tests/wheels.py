"""Wheels made of the stand-ins, in a folder that pip is told to take them from."""

import base64
import hashlib
import io
import tarfile
import zipfile
from pathlib import Path
from typing import Mapping, Optional, Sequence

from tests import standins

_TAG = "py3-none-any"


def make_wheel(
    folder: Path,
    name: str,
    version: str,
    files: Mapping[str, bytes],
    needs: Sequence[str] = (),
    command: str = "",
) -> Path:
    """A wheel of these files, by their paths below the folder of packages; `command` is a program that
    comes with it, as "name = module:function"."""
    stem = f"{name.replace('-', '_')}-{version}"
    info = f"{stem}.dist-info"
    metadata = [f"Metadata-Version: 2.1\nName: {name}\nVersion: {version}"]
    metadata += [f"Requires-Dist: {need}" for need in needs]
    wheel = f"Wheel-Version: 1.0\nGenerator: test\nRoot-Is-Purelib: true\nTag: {_TAG}\n"
    content = {
        **files,
        f"{info}/METADATA": ("\n".join(metadata) + "\n").encode(),
        f"{info}/WHEEL": wheel.encode(),
    }
    if command:
        content[f"{info}/entry_points.txt"] = f"[console_scripts]\n{command}\n".encode()
    record = [f"{path},{_hash(data)},{len(data)}" for path, data in content.items()]
    content[f"{info}/RECORD"] = ("\n".join([*record, f"{info}/RECORD,,"]) + "\n").encode()
    path = folder / f"{stem}-{_TAG}.whl"
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        for inner, data in content.items():
            archive.writestr(inner, data)
    return path


def make_source(folder: Path, wheel: Path) -> None:
    """Has a wheel's project offer its source alone; what is built from it is that wheel. Nothing else
    is needed for that, unlike with most projects."""
    name, version = wheel.name.split("-")[:2]
    # What is looked for in a source: how it is built, who it is, and the program that builds it.
    build = f"""
import shutil
def build_wheel(folder, *_):
    shutil.copy({wheel.name!r}, folder)
    return {wheel.name!r}
"""
    files = {
        "pyproject.toml": b"[build-system]\nrequires = []\nbuild-backend = 'maker'\n"
        b"backend-path = ['.']\n",
        "PKG-INFO": f"Metadata-Version: 2.1\nName: {name}\nVersion: {version}\n".encode(),
        "maker.py": build.encode(),
        wheel.name: wheel.read_bytes(),
    }
    with tarfile.open(folder / f"{name}-{version}.tar.gz", "w:gz") as archive:
        for inner, content in files.items():
            entry = tarfile.TarInfo(f"{name}-{version}/{inner}")
            entry.size = len(content)
            archive.addfile(entry, io.BytesIO(content))
    wheel.unlink()


def module(folder: str, name: str) -> dict[str, bytes]:
    """The files of one package, or of the modules, in a folder of the stand-ins."""
    root = standins.folder(folder)
    found = sorted((root / name).rglob("*.py")) if name else sorted(root.glob("*.py"))
    return {str(path.relative_to(root)): path.read_bytes() for path in found}


def make_faster_whisper(
    folder: Path, leave_out: str = "", package: Optional[Mapping[str, bytes]] = None
) -> None:
    """faster-whisper with all it needs, but for one; `package` holds other files for itself."""
    _common(folder)
    for name in ("ctranslate2", "huggingface_hub"):
        if name != leave_out:
            make_wheel(
                folder,
                name.replace("_", "-"),
                "4.5.0",
                module("faster_whisper", name),
                ["standin-common"],
            )
    make_wheel(
        folder, "faster-whisper", "1.2.1",
        module("faster_whisper", "faster_whisper") if package is None else package,
        ["ctranslate2<5,>=4.0", "huggingface-hub>=0.13", "standin-common", "numpy"],
        "standin-models = faster_whisper:available_models",
    )  # fmt: skip


def make_openai_whisper(folder: Path) -> None:
    """openai-whisper with all it needs; as on the index, its own source is all there is of it."""
    _common(folder)
    make_wheel(folder, "torch", "2.5.0", module("openai_whisper", "torch"), ["standin-common"])
    wheel = make_wheel(
        folder, "openai-whisper", "20250625", module("openai_whisper", "whisper"),
        ["torch", "standin-common"],
    )  # fmt: skip
    make_source(folder, wheel)


def _common(folder: Path) -> None:
    make_wheel(folder, "standin-common", "1.0", module("common", ""))


def _hash(data: bytes) -> str:
    digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=")
    return f"sha256={digest.decode()}"
