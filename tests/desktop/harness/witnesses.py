"""Stand where results arrive and note the moment: a vMix, a VRChat, a page, the subtitle window.

Every witness keeps `seen`, a list of (time.monotonic(), what), and is a context with a thread of its
own. None of them knows the program; each speaks the interface its original speaks.
"""

import contextlib
import json
import pathlib
import re
import select
import socket
import subprocess
import threading
import time
import urllib.parse

from .processes import wait_until


class Witness:
    """Runs `_work` on a thread until the context is left."""

    def __init__(self):
        self.seen = []
        self._finished = threading.Event()
        self._thread = threading.Thread(target=self._work, daemon=True)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._finished.set()
        self._thread.join()

    def first_since(self, count, fits, since=0.0):
        """When something that `fits` was first seen, looking from entry `count` and the moment
        `since` on; None if not."""
        return next((moment for moment, what in self.seen[count:]
                     if moment >= since and fits(what)), None)

    def _note(self, what):
        self.seen.append((time.monotonic(), what))

    def _work(self):
        raise NotImplementedError


class Vmix(Witness):
    """vMix's web API on a loopback port: notes every request's decoded query as a dictionary and
    answers it. One that `hangs` accepts connections and never says a word."""

    def __init__(self, hangs=False):
        super().__init__()
        self._hangs = hangs
        self._listener = socket.create_server(("127.0.0.1", 0), backlog=256)
        self.port = self._listener.getsockname()[1]
        self._requests = {}

    def _work(self):
        with contextlib.closing(self._listener):
            while not self._finished.is_set():
                ready = select.select([self._listener, *self._requests], [], [], 0.1)[0]
                for connection in ready:
                    if connection is self._listener:
                        self._requests[self._listener.accept()[0]] = b""
                    else:
                        self._read(connection)
            for connection in self._requests:
                connection.close()

    def _read(self, connection):
        with contextlib.suppress(OSError):
            if data := connection.recv(65536):
                self._requests[connection] += data
                if b"\r\n\r\n" in self._requests[connection] and not self._hangs:
                    self._answer(connection, self._requests[connection])
                    self._requests[connection] = b""
                return
        del self._requests[connection]
        connection.close()

    def _answer(self, connection, request):
        target = request.split(b" ", 2)[1].decode()
        query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(target).query,
                                            keep_blank_values=True))
        self._note(query)
        body = b"Function completed successfully."
        connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: "
                           + str(len(body)).encode() + b"\r\n\r\n" + body)


class Chatbox(Witness):
    """A UDP port that takes chatbox messages: notes each datagram."""

    def __init__(self):
        super().__init__()
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.bind(("127.0.0.1", 0))
        self.port = self._socket.getsockname()[1]

    def _work(self):
        self._socket.settimeout(0.1)
        with contextlib.closing(self._socket):
            while not self._finished.is_set():
                with contextlib.suppress(TimeoutError):
                    self._note(self._socket.recvfrom(65536)[0])


class LogReader(Witness):
    """Reads the program's log as it grows: notes each line."""

    _PAUSE = 0.001

    def __init__(self, program):
        super().__init__()
        self._file = program.log_file

    def _work(self):
        with self._file.open(encoding="utf-8", errors="replace") as log:
            rest = ""
            while not self._finished.wait(self._PAUSE):
                *lines, rest = (rest + log.read()).split("\n")
                for line in lines:
                    self._note(line)


class OscDump(Witness):
    """liblo's oscdump on a UDP port: notes each message as (address, types, text, "T" or "F")."""

    _MESSAGE = re.compile(r'^[0-9a-f]{8}\.[0-9a-f]{8} (/\S+) (\S+) "(.*)" #T #([TF])$', re.DOTALL)

    def __init__(self, desktop, port):
        super().__init__()
        self.port = port
        self._process = desktop.children.start(
            ["oscdump", "-L", str(self.port)], stdout=subprocess.PIPE, text=True)
        wait_until(self._listens, "oscdump")

    def _listens(self):
        ports = pathlib.Path("/proc/net/udp").read_text() + pathlib.Path("/proc/net/udp6").read_text()
        return f":{self.port:04X} " in ports

    def __exit__(self, *arguments):
        self._process.terminate()
        super().__exit__(*arguments)

    def _work(self):
        message = ""
        for line in self._process.stdout:
            message += line
            if found := self._MESSAGE.match(message.rstrip("\n")):
                self._note(found.groups())
                message = ""


class Page(Witness):
    """Asks for the overlay's document about a thousand times a second: notes each new one."""

    _REQUEST = b"GET /text HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n"
    _PAUSE = 0.001

    def __init__(self, port):
        super().__init__()
        self._port = port

    def _work(self):
        last = None
        while not self._finished.wait(self._PAUSE):
            with contextlib.suppress(OSError, ValueError):
                document = self._document()
                if document != last:
                    last = document
                    self._note(json.loads(document))

    def _document(self):
        with socket.create_connection(("127.0.0.1", self._port), timeout=2) as connection:
            connection.sendall(self._REQUEST)
            answer = b""
            while data := connection.recv(65536):
                answer += data
        return answer.partition(b"\r\n\r\n")[2]


class Paint(Witness):
    """Hears from the X server whenever something is painted into the program's subtitle window:
    notes the painted (width, height). The window is the program's only one that is as wide."""

    _WIDTH = 800

    def __init__(self, desktop, pid):
        super().__init__()
        self._display = desktop.environment["DISPLAY"]
        self._pid = pid

    def _work(self):
        from Xlib import Xatom, display
        from Xlib.ext import damage
        connection = display.Display(self._display)
        with contextlib.closing(connection):
            connection.damage_query_version()
            root = connection.screen().root
            pid_atom = connection.intern_atom("_NET_WM_PID")
            watched = {}
            while not self._finished.is_set():
                for window in root.query_tree().children:
                    self._watch(connection, window, watched, pid_atom, Xatom, damage)
                self._hear(connection, watched)

    def _watch(self, connection, window, watched, pid_atom, xatom, damage):
        from Xlib import error
        if window.id in watched:
            return
        with contextlib.suppress(error.XError):
            owner = window.get_full_property(pid_atom, xatom.CARDINAL)
            if window.get_geometry().width < self._WIDTH or owner is None:
                return
            if owner.value[0] == self._pid:
                watched[window.id] = window.damage_create(damage.DamageReportNonEmpty)

    def _hear(self, connection, watched):
        if not connection.pending_events():
            select.select([connection.fileno()], [], [], 0.05 if watched else 0.005)
        while connection.pending_events():
            event = connection.next_event()
            if event.type == connection.extension_event.DamageNotify:
                self._note((event.area.width, event.area.height))
                connection.damage_subtract(event.damage, 0, 0)
                connection.flush()
