"""Tests of the speech server; `/usr/bin/python3 -m unittest` in the folder above runs them all."""

import logging

# Async tests run their event loop in debug mode; its remarks about slow steps are no news here.
logging.getLogger("asyncio").setLevel(logging.ERROR)
