"""What `manage_whisper.py` does, for the program's settings window.

`status` prints one line of JSON. `delete` removes a model, and prints why when it cannot.
"""

import io
import json
import sys
from typing import Sequence

from . import whisper_models as models
from .whisper_status import status

_USAGE = "Usage: manage_whisper.py status [--model MODEL] | delete MODEL"


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
        case ["delete", model]:
            return _delete(model)
    _say(_USAGE)
    return 2


def _delete(model: str) -> int:
    try:
        models.delete(model)
    except KeyError:
        _say(f"„{model}“ ist kein Modell von Whisper")
        return 2
    except OSError as error:
        _say(f"{error.filename}: {error.strerror}" if error.strerror else str(error))
        return 1
    return 0


def _say(line: str) -> None:
    print(line, flush=True)
