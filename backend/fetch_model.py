"""Entry of the download of a Whisper model: `python3 fetch_model.py MODEL`, from any folder.

Beside `server.py`, and found the same way: the folder of this file is the first place Python looks
for modules.
"""

import sys

from orvane_backend.downloads.fetch import main

if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
