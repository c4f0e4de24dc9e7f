"""Entry of the recognisers near by: `python3 recognisers.py list`, from any folder.

Beside `server.py`, and found the same way: the folder of this file is the first place Python looks
for modules.
"""

import sys

from orvane_backend.recognisers.near.command import main

if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
