"""Entry of what there is to know and do about Whisper: `python3 manage_whisper.py status`, from any
folder.

Not called `whisper.py`: the folder of this file is the first place Python looks for modules, and a
package of that name is looked for.
"""

import sys

from orvane_backend.recognisers.whisper_command import main

if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
