"""A session manager, which tells programs that the desktop's session ends."""

import ctypes
import pathlib
import select
import subprocess
import sys


class Session:
    """A session on `desktop`: programs started with `environment` take part in it. It is a process
    of its own, so that it answers while the test waits for something."""

    def __init__(self, desktop):
        self._process = desktop.children.start(
            [sys.executable, "-m", "harness.session"],
            env={**desktop.environment, "PYTHONDONTWRITEBYTECODE": "1"},
            cwd=pathlib.Path(__file__).resolve().parents[1],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.environment = {"SESSION_MANAGER": self._wait_for("address")}

    def wait_for_program(self):
        """Waits until a program has joined the session and is done with its first save."""
        self._wait_for("joined")
        self._wait_for("saved")

    def end(self):
        """Ends the session as a logout does: every program may save, then it is told to go."""
        self._process.stdin.write("end\n")
        self._process.stdin.flush()
        self._wait_for("saved")

    def _wait_for(self, word):
        line = self._process.stdout.readline().split()
        if not line or line[0] != word:
            raise RuntimeError(f"the session manager said {line}, not {word}")
        return line[-1]


# The manager itself, on the C libraries that session managers are written with.

_POINTER = ctypes.c_void_p
_SAVE_LOCAL, _SAVE_BOTH = 1, 2
_INTERACT_NONE, _INTERACT_ANY = 0, 2
_REGISTER, _SAVE_REQUEST, _SAVE_PHASE2, _SAVE_DONE, _CLOSE, _SET, _DELETE, _GET = (
    0, 3, 4, 5, 6, 7, 8, 9)
_CALLBACKS = 10

_Any = ctypes.CFUNCTYPE(ctypes.c_int, _POINTER, _POINTER, _POINTER, _POINTER)
_NewClient = ctypes.CFUNCTYPE(ctypes.c_int, _POINTER, _POINTER, ctypes.POINTER(ctypes.c_ulong),
                              ctypes.POINTER(_POINTER), _POINTER)
_Broken = ctypes.CFUNCTYPE(None, _POINTER)
_Permit = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_char_p)


def _library(name, results):
    library = ctypes.CDLL(name)
    for function, result in results.items():
        getattr(library, function).restype = result
    return library


class _Manager:
    def __init__(self):
        self._sm = _library("libSM.so.6", {"SmsGenerateClientID": _POINTER})
        self._ice = _library("libICE.so.6", {
            "IceComposeNetworkIdList": ctypes.c_char_p, "IceAcceptConnection": _POINTER})
        self._ending = False
        self._programs = []
        self._connections = []
        self._callbacks = {
            _REGISTER: _Any(self._register), _SAVE_DONE: _Any(self._saved),
            _CLOSE: _Any(self._closed)}
        self._nothing = _Any(lambda *_: 1)
        self._new_client = _NewClient(self._join)
        self._permit = _Permit(lambda _host: 1)
        # The library's own handler would end this process when a program hangs up.
        self._broken = _Broken(lambda _connection: None)
        self._ice.IceSetIOErrorHandler(self._broken)

    def listen(self):
        error = ctypes.create_string_buffer(256)
        if not self._sm.SmsInitialize(b"orvane-tests", b"1", self._new_client, None, self._permit,
                                      256, error):
            raise RuntimeError(error.value)
        count = ctypes.c_int()
        self._listeners = ctypes.POINTER(_POINTER)()
        if not self._ice.IceListenForConnections(ctypes.byref(count),
                                                 ctypes.byref(self._listeners), 256, error):
            raise RuntimeError(error.value)
        self._count = count.value
        for index in range(self._count):
            self._ice.IceSetHostBasedAuthProc(_POINTER(self._listeners[index]), self._permit)
        say("address", self._ice.IceComposeNetworkIdList(
            self._count, self._listeners).decode())

    def _join(self, _program, _data, mask, callbacks, _reason):
        # An array of pairs: a function and what it is called with.
        for slot in range(_CALLBACKS):
            callbacks[2 * slot] = ctypes.cast(self._callbacks.get(slot, self._nothing), _POINTER)
            callbacks[2 * slot + 1] = None
        mask[0] = (1 << _CALLBACKS) - 1
        return 1

    def _register(self, program, _data, _previous, _unused):
        self._sm.SmsRegisterClientReply(
            _POINTER(program), _POINTER(self._sm.SmsGenerateClientID(_POINTER(program))))
        self._programs.append(program)
        say("joined")
        self._save(program, _SAVE_LOCAL, False, _INTERACT_NONE)
        return 1

    def _save(self, program, what, ends, interaction):
        self._sm.SmsSaveYourself(_POINTER(program), what, int(ends), interaction, 0)

    def _saved(self, program, *_):
        say("saved")
        if self._ending:
            self._sm.SmsDie(_POINTER(program))
        else:
            self._sm.SmsSaveComplete(_POINTER(program))
        return 1

    def _closed(self, program, *_):
        self._programs.remove(program)
        return 1

    def run(self):
        listeners = {self._ice.IceGetListenConnectionNumber(_POINTER(self._listeners[index])):
                     self._listeners[index] for index in range(self._count)}
        while True:
            connections = {self._ice.IceConnectionNumber(_POINTER(one)): one
                           for one in self._connections}
            for ready in select.select([sys.stdin, *listeners, *connections], [], [])[0]:
                if ready is sys.stdin:
                    if not sys.stdin.readline():
                        return
                    self._ending = True
                    for program in list(self._programs):
                        self._save(program, _SAVE_BOTH, True, _INTERACT_ANY)
                elif ready in listeners:
                    status = ctypes.c_int()
                    accepted = self._ice.IceAcceptConnection(_POINTER(listeners[ready]),
                                                             ctypes.byref(status))
                    if accepted:
                        self._connections.append(accepted)
                elif self._ice.IceProcessMessages(_POINTER(connections[ready]), None, None) != 0:
                    self._connections.remove(connections[ready])


def say(*words):
    print(*words, flush=True)


if __name__ == "__main__":
    manager = _Manager()
    manager.listen()
    manager.run()
