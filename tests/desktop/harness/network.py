"""A network of one's own: loopback alone, shared with nobody.

The speech server's port is the same for every Orvane. In a network of its own a test neither meets
the one that a person runs on this machine nor the one of the test beside it, and listens on any port
without asking.
"""

import ctypes
import fcntl
import os
import socket
import struct

_CLONE_NEWUSER = 0x10000000
_CLONE_NEWNET = 0x40000000
_SIOCSIFFLAGS = 0x8914
_IFF_UP = 0x1

_libc = ctypes.CDLL(None, use_errno=True)


def enter_private_network():
    """Moves this process, and with it all that it starts from now on, into a network of its own.

    Works for root, and for others where the system lets them make user namespaces. Returns why not
    where neither is allowed, and None on success. Must be called before this process has a second
    thread."""
    try:
        try:
            _unshare(_CLONE_NEWNET)
        except PermissionError:  # Not root, or root in a container.
            _unshare_as_ourselves()
        _switch_loopback_on()
    except OSError as error:
        return error.strerror
    return None


def _unshare(what):
    if _libc.unshare(what) != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def _unshare_as_ourselves():
    """Without root a network can be made inside a user namespace only. In it we stay who we are, so
    that files keep their owner."""
    user, group = os.geteuid(), os.getegid()
    _unshare(_CLONE_NEWUSER | _CLONE_NEWNET)
    for file, content in (("setgroups", "deny"), ("uid_map", f"{user} {user} 1"),
                          ("gid_map", f"{group} {group} 1")):
        with open(f"/proc/self/{file}", "w", encoding="ascii") as mapping:
            mapping.write(content)


def _switch_loopback_on():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
        # struct ifreq: 16 bytes of name, then the flags.
        fcntl.ioctl(control, _SIOCSIFFLAGS, struct.pack("16sh22x", b"lo", _IFF_UP))
