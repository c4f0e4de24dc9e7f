"""A network of one's own, with loopback alone, and display numbers of one's own.

The speech server's port is the same for every Orvane. In a network of its own a test neither meets
the one that a person runs on this machine nor the one of the test beside it, and listens on any port
without asking. Two X servers in two networks would give themselves the same number, though: they find
out by a socket that belongs to the network, and then take each other's socket in the file system away.
So that folder becomes private, too.
"""

import ctypes
import fcntl
import os
import socket
import struct

_CLONE_NEWNS = 0x00020000
_CLONE_NEWUSER = 0x10000000
_CLONE_NEWNET = 0x40000000
_MS_REC = 0x4000
_MS_PRIVATE = 0x40000
_SIOCSIFFLAGS = 0x8914
_IFF_UP = 0x1

_DISPLAYS = "/tmp/.X11-unix"

_libc = ctypes.CDLL(None, use_errno=True)
_succeeded = False


def isolate():
    """Moves this process, and with it all that it starts from now on, into a network and a folder of
    X servers of its own.

    Works for root, and for others where the system lets them make user namespaces. Returns why not
    where neither is allowed, and None on success. Must be called before this process has a second
    thread."""
    try:
        try:
            _check(_libc.unshare(_CLONE_NEWNET | _CLONE_NEWNS))
        except PermissionError:  # Not root, or root in a container.
            _unshare_as_ourselves()
        _switch_loopback_on()
        _hide_displays()
    except OSError as error:
        return error.strerror
    global _succeeded
    _succeeded = True
    return None


def succeeded():
    """Whether this process has been moved."""
    return _succeeded


def _check(result):
    if result != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def _unshare_as_ourselves():
    """Without root, such things can be had inside a user namespace only. In it we stay who we are, so
    that files keep their owner."""
    user, group = os.geteuid(), os.getegid()
    _check(_libc.unshare(_CLONE_NEWUSER | _CLONE_NEWNET | _CLONE_NEWNS))
    for file, content in (("setgroups", "deny"), ("uid_map", f"{user} {user} 1"),
                          ("gid_map", f"{group} {group} 1")):
        with open(f"/proc/self/{file}", "w", encoding="ascii") as mapping:
            mapping.write(content)


def _switch_loopback_on():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
        # struct ifreq: 16 bytes of name, then the flags.
        fcntl.ioctl(control, _SIOCSIFFLAGS, struct.pack("16sh22x", b"lo", _IFF_UP))


def _hide_displays():
    os.makedirs(_DISPLAYS, mode=0o1777, exist_ok=True)
    # What is mounted here must not show outside.
    _check(_libc.mount(b"none", b"/", None, _MS_REC | _MS_PRIVATE, None))
    _check(_libc.mount(b"tmpfs", _DISPLAYS.encode(), b"tmpfs", 0, b"mode=1777"))
