"""A speech server to be seen in pictures of the settings: it has Whisper, and a recogniser runs beside
it. Nothing of it recognises."""

import json
import shlex

_MEGABYTE = 1000 * 1000
_PACKAGES = [("faster-whisper", "there", 150, 500), ("openai-whisper", "missing", 3000, 7000)]
_MODELS = {"tiny": "there", "base": "there", "small": "partial"}
_NEAR = {"state": "found", "name": "whisper.cpp (8080)", "kind": "transcriptions",
         "address": "http://127.0.0.1:8080", "model": "", "answers": True}


def _status():
    return {
        "packages": [{"package": name, "state": state, "version": None, "why": None,
                      "download_bytes": load * _MEGABYTE, "disk_bytes": room * _MEGABYTE}
                     for name, state, load, room in _PACKAGES],
        "serves": "faster-whisper",
        "models": [{"model": name, "state": state, "package": "faster-whisper", "can_fetch": True,
                    "why": None} for name, state in _MODELS.items()],
        "used": {"wanted": "base", "model": "base", "package": "faster-whisper", "why": None},
    }


def place(home):
    """Puts it where the program looks for the speech server of the user with this home."""
    program = home / "Library/Application Support/Orvane/venv/bin/python3"
    program.parent.mkdir(parents=True, exist_ok=True)
    answers = {"status": json.dumps(_status()), "list": json.dumps(_NEAR)}
    cases = "".join(f"{question}) echo {shlex.quote(answer)} ;;\n"
                    for question, answer in answers.items())
    program.write_text(f'#!/bin/sh\ncase "$2" in\n{cases}esac\n')
    program.chmod(0o755)
