"""The helpers of the scripted services in `tests/support/peers`, which are run from their folder."""

import ctypes
import importlib
import pathlib
import ssl
import sys
import types

FOLDER = pathlib.Path(__file__).parents[1] / 'support' / 'peers'

_PR_SET_PDEATHSIG = 1
_PR_GET_PDEATHSIG = 2


def service_peer() -> types.ModuleType:
    """The module. Importing it makes the process die with its parent, as a program has to."""
    if str(FOLDER) not in sys.path:
        sys.path.append(str(FOLDER))
    return importlib.import_module('service_peer')


def tls_context() -> tuple[ssl.SSLContext, str]:
    """A context for 127.0.0.1 and its certificate's path. A test that asks for it in its own process
    lives on without its parent if it did so before."""
    libc = ctypes.CDLL(None)
    signal = ctypes.c_int()
    libc.prctl(_PR_GET_PDEATHSIG, ctypes.byref(signal))
    module = service_peer()
    libc.prctl(_PR_SET_PDEATHSIG, signal.value)
    context, certificate = module.tls_context()
    context.sni_callback = None  # It would print in the middle of a test's own output.
    return context, certificate
