"""Starts one of the strict stand-ins of cloud services by its module's name.

  cloud_service.py tests.cloud_services.deepgram [its arguments]
"""

import pathlib
import runpy
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3]))
sys.argv = sys.argv[1:]
runpy.run_module(sys.argv[0], run_name="__main__", alter_sys=True)
