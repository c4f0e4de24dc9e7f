"""What `manage_whisper.py` does, for the program's settings window.

`status` prints one line of JSON. `install` and `remove` print what `fetch_model.py` does: "progress 37",
where 100 means that every byte is there and is being installed and tried, "note ..." for the log, and
as the last line of a failure its reason.
"""

import io
import json
import os
import re
import sys
from typing import Optional, Sequence

from ..packages import Interrupted, package_called
from ..packages.children import Child, end_on_signals
from .whisper_status import status

VARIABLE = "ORVANE_INSTALL_BACKEND"
_USAGE = "Usage: manage_whisper.py status [--model MODEL] | install|remove PACKAGE [INSTALLER]"
_PERCENT = re.compile(r"(?:==> )?(\d{1,3}) % ")


def main(arguments: Sequence[str]) -> int:
    """The exit status: 0 when it is done, 1 when it cannot be, 2 for arguments that say nothing."""
    if isinstance(sys.stdout, io.TextIOWrapper):
        sys.stdout.reconfigure(encoding="utf-8", errors="backslashreplace")
    match list(arguments):
        case ["status"]:
            _say(json.dumps(status(None), ensure_ascii=False))
            return 0
        case ["status", "--model", model]:
            _say(json.dumps(status(model), ensure_ascii=False))
            return 0
        case ["install", package]:
            return _change("--with", package, os.environ.get(VARIABLE))
        case ["install", package, installer]:
            return _change("--with", package, installer)
        case ["remove", package]:
            return _change("--without", package, os.environ.get(VARIABLE))
        case ["remove", package, installer]:
            return _change("--without", package, installer)
    _say(_USAGE)
    return 2


def _change(wish: str, name: str, installer: Optional[str]) -> int:
    package = package_called(name)
    if package is None:
        _say(f"„{name}“ ist kein Paket für Whisper")
        return 2
    if not installer or not os.access(installer, os.X_OK):
        _say(f"Das Installationsprogramm fehlt: {installer or VARIABLE}")
        return 1
    try:
        end_on_signals()
        return _run([installer, wish, package.name])
    except Interrupted as error:
        _say("Abgebrochen; was geladen ist, bleibt für das nächste Mal")
        return 128 + error.number


def _run(command: list[str]) -> int:
    reason = ""
    with Child(command) as child:
        for line in child.lines(lambda: None):
            if (percent := _PERCENT.match(line)) is not None:
                _say(f"progress {percent.group(1)}")
            elif line.startswith("error: "):
                reason = line.removeprefix("error: ")
            elif line.strip():
                _say(f"note {line.removeprefix('==> ')}")
                if not line.startswith("==> "):
                    reason = line.strip()
        ended = child.ended()
    if ended != 0:
        _say(reason or f"Das Installationsprogramm endete mit {ended}")
        return 1
    return 0


def _say(line: str) -> None:
    print(line, flush=True)
