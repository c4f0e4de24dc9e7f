"""The network of this process and all that it starts: loopback, switched off and on."""

import contextlib
import fcntl
import socket
import struct

_SIOCSIFFLAGS = 0x8914
_IFF_UP = 0x1


def switch_loopback(on):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
        # struct ifreq: 16 bytes of name, then the flags.
        fcntl.ioctl(control, _SIOCSIFFLAGS, struct.pack("16sh22x", b"lo", _IFF_UP if on else 0))


@contextlib.contextmanager
def no_network():
    """It is gone inside the context, and back afterwards."""
    switch_loopback(False)
    try:
        yield
    finally:
        switch_loopback(True)
