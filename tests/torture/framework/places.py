"""The places at which the program calls the system, as the library in faults/ tells them, and how each
of these calls may plausibly fail."""

import dataclasses
import errno

SHORT = 0  # Instead of an error: the call is made for half of what it is asked for.


@dataclasses.dataclass(frozen=True)
class Place:
    number: str    # The library's name for it, hexadecimal.
    count: int     # How often the call was made here.
    call: str
    subject: str
    library: str   # "program" for a call that the program makes itself.
    frames: tuple  # Return addresses within the program, as offsets, the innermost first.

    @property
    def is_ours(self):
        return self.library == "program"

    def __str__(self):
        subject = f" ({self.subject})" if self.subject else ""
        return f"{self.call}{subject} by {self.library} at {' '.join(self.frames) or '-'}"


def places_of(report):
    """Of a recording, in the order of their numbers."""
    places = []
    for line in report.splitlines():
        if line.startswith("place "):
            _, number, count, what = line.split(" ", 3)
            call, subject, library, frames = what.split("|")
            places.append(Place(number, int(count), call, subject, library, tuple(frames.split())))
    return sorted(places, key=lambda place: place.number)


def fault_of(report):
    """What failed and which file it was about, of a run's report; None when nothing did."""
    for line in report.splitlines():
        if line.startswith("fault "):
            return line.split(" ", 4)[4]
    return None


_BY_CALL = {
    "fsync": [errno.EIO, errno.ENOSPC], "fdatasync": [errno.EIO, errno.ENOSPC],
    "ftruncate": [errno.EIO, errno.ENOSPC],
    "rename": [errno.ENOSPC, errno.EIO, errno.EACCES], "mkdir": [errno.ENOSPC, errno.EACCES],
    "socket": [errno.EMFILE, errno.ENOBUFS], "socketpair": [errno.EMFILE, errno.ENFILE],
    "pipe": [errno.EMFILE, errno.ENFILE], "eventfd": [errno.EMFILE, errno.ENFILE],
    "epoll_create": [errno.EMFILE, errno.ENFILE],
    "bind": [errno.EADDRINUSE], "listen": [errno.EADDRINUSE],
    "fork": [errno.EAGAIN, errno.ENOMEM], "clone": [errno.EAGAIN, errno.ENOMEM],
    "posix_spawn": [errno.EAGAIN, errno.ENOENT, errno.ENOMEM], "execve": [errno.ENOENT, errno.EACCES],
    "malloc": [errno.ENOMEM], "realloc": [errno.ENOMEM]}
_BY_PURPOSE = {
    "to create": [errno.ENOSPC, errno.EMFILE, errno.EACCES, errno.EIO],
    "to write": [errno.EMFILE, errno.EACCES, errno.EIO],
    "to read": [errno.EMFILE, errno.EIO, errno.ENFILE], "a folder": [errno.EMFILE, errno.EIO]}
_READS = ("read", "pread", "readv", "recv", "recvfrom", "recvmsg")
_WRITES = ("write", "pwrite", "writev", "send", "sendto", "sendmsg")
_NEVER_SHORT = ("recvmsg", "sendmsg")


def errors_of(place):
    """The values of errno that this call can meet, SHORT among them, the likeliest first. Empty for a
    call that can meet none. That is writing to a pipe: the other end of each is the program's own, and a
    full one has woken its reader already."""
    words = place.subject.split()
    nonblocking = [errno.EAGAIN] if "nonblocking" in words else []
    if place.call == "open":
        return _BY_PURPOSE[place.subject]
    if place.call == "connect":
        return ([errno.ECONNREFUSED, *nonblocking] if "unix" in words
                else [errno.ECONNREFUSED, errno.ENETUNREACH, errno.ETIMEDOUT])
    if place.call == "accept":
        return [errno.ECONNABORTED, errno.EMFILE, *nonblocking]
    if place.call in _READS:
        return _errors_of_reading(place.call, words, nonblocking)
    if place.call in _WRITES:
        return _errors_of_writing(place.call, words, nonblocking)
    return _BY_CALL[place.call]


def _errors_of_reading(call, words, nonblocking):
    short = [] if call in _NEVER_SHORT else [SHORT]
    if "file" in words:
        return [errno.EIO, *short]
    if "stream" in words:
        # Whoever reads has been told that there is something; within a machine that is always true.
        return [errno.ECONNRESET, *short, *([] if "unix" in words else nonblocking)]
    if "datagram" in words:
        return [errno.ECONNREFUSED, *nonblocking]
    return [*short, *nonblocking] if "pipe" in words else []


def _errors_of_writing(call, words, nonblocking):
    short = [] if call in _NEVER_SHORT else [SHORT]
    if "file" in words:
        return [errno.ENOSPC, errno.EIO, *short]
    if "stream" in words:
        return [errno.EPIPE, errno.ECONNRESET, *nonblocking, *(short if nonblocking else [])]
    if "datagram" in words:
        return [errno.ENOBUFS, *nonblocking]
    return []


def name_of(error):
    return "falls short" if error == SHORT else errno.errorcode[error]
