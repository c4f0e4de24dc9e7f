"""Entry of the companion speech server: `python3 server.py`, from any working directory.

The folder of this file is the first place Python looks for modules, so the package beside it is
found without an installation.
"""

import os
import signal
import sys

# Until the server has its own handlers, an early stop must not print a traceback.
signal.signal(signal.SIGINT, lambda *_: os._exit(0))


def run() -> int:
    """Starts the server; the exit status says whether it could."""
    try:
        from orvane_backend.main import main
    except ImportError as error:
        print(f"❌ Python-Modul fehlt: {error.name} — bitte install-backend ausführen", flush=True)
        return 1
    return main()


if __name__ == "__main__":
    sys.exit(run())
