"""The tree's own helpers for scripted services, taken without what they do to a whole process."""

import ctypes
import pathlib
import sys

PEERS = pathlib.Path(__file__).resolve().parents[1] / 'support' / 'peers'
PR_SET_PDEATHSIG = 1
PR_GET_PDEATHSIG = 2

_libc = ctypes.CDLL(None)


def end_with_parent(signal: int) -> None:
    """This process gets the signal when the thread that started it ends; 0 for none."""
    _libc.prctl(PR_SET_PDEATHSIG, signal)


def _without_being_tied():
    # On import service_peer ties the process to its parent, which is right for a program. A test that
    # has a peer inside itself is to stay as it was.
    before = ctypes.c_int()
    _libc.prctl(PR_GET_PDEATHSIG, ctypes.byref(before))
    sys.path.append(str(PEERS))
    try:
        import service_peer
    finally:
        sys.path.remove(str(PEERS))
        end_with_parent(before.value)
    return service_peer


service_peer = _without_being_tied()
QuietServer = service_peer.QuietServer
commands_to = service_peer.commands_to
die_with_parent = service_peer.die_with_parent
say = service_peer.say
