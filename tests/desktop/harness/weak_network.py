"""A network between the program and its services that can be made as bad as one likes.

The services stay where they are, on loopback. A relay in a network of its own stands for each of them,
and every packet between it and the program passes through a process of ours, which loses it, holds it
back or swallows it as told: all the systems on the way know of it, and the program's own, is that no
answer comes. The program's side has an address, which can change, too.

Two TUN devices make it: what is written to one end as a packet comes out of the system at the other.
"""

import asyncio
import ctypes
import fcntl
import json
import os
import random
import signal
import socket
import struct
import threading

SERVICES = "10.77.0.2"  # Where the program finds them.
OURS = "10.77.0.1"
OURS_AFTER_A_MOVE = "10.77.0.3"

_NETMASK = "255.255.255.0"
_DEVICE = "/dev/net/tun"
_NAME = b"weak0"
_CLONE_NEWNET = 0x40000000
_TUNSETIFF = 0x400454CA
_IFF_TUN = 0x0001
_IFF_NO_PI = 0x1000
_SIOCSIFFLAGS = 0x8914
_SIOCSIFADDR = 0x8916
_SIOCSIFNETMASK = 0x891C
_IFF_UP = 0x1
_LARGEST_PACKET = 65536

_libc = ctypes.CDLL(None, use_errno=True)


def can_be_had():
    """Whether this process may make one."""
    try:
        os.close(_open_device(b"probe0"))
    except OSError:
        return False
    return True


class WeakNetwork:
    """A context. In the network of the process that makes it, which must be its own."""

    def __enter__(self):
        theirs, self._commands = os.pipe()
        self._answers, ours = os.pipe()
        # Not a program of its own: without root, what we may do in our network ends with an exec.
        self._child = os.fork()
        if self._child == 0:
            os.close(self._commands)
            os.close(self._answers)
            _run(theirs, ours)
        os.close(theirs)
        os.close(ours)
        self._lock = threading.Lock()
        self._heard = os.fdopen(self._answers, "rb")
        self._ask()
        return self

    def __exit__(self, *_):
        os.close(self._commands)
        self._heard.close()
        os.kill(self._child, signal.SIGKILL)
        os.waitpid(self._child, 0)

    def stand_for(self, port):
        """The address at which the program finds what listens at `port` of loopback."""
        return f"{SERVICES}:{self._ask(relay=port)['port']}"

    def swallow(self, everything=True):
        """No packet arrives any more, in either direction, and nobody is told."""
        self._ask(swallow=everything)

    def lose(self, share):
        """This share of all packets, by chance."""
        self._ask(lose=share)

    def delay(self, seconds):
        """Each packet, in each direction."""
        self._ask(delay=seconds)

    def move(self):
        """The program's side gets another address, as from another access point. Its connections do
        not come along."""
        self._ask(address=OURS_AFTER_A_MOVE)

    def _ask(self, **command):
        with self._lock:
            if command:
                os.write(self._commands, json.dumps(command).encode() + b"\n")
            answer = json.loads(self._heard.readline() or b'{"error": "the network has ended"}')
        if "error" in answer:
            raise OSError(answer["error"])
        return answer


def _open_device(name):
    device = os.open(_DEVICE, os.O_RDWR | os.O_NONBLOCK)
    try:
        fcntl.ioctl(device, _TUNSETIFF, struct.pack("16sH22x", name, _IFF_TUN | _IFF_NO_PI))
    except OSError:
        os.close(device)
        raise
    return device


def _set_address(address):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
        for request, value in ((_SIOCSIFADDR, address), (_SIOCSIFNETMASK, _NETMASK)):
            packed = struct.pack("HH4s8x", socket.AF_INET, 0, socket.inet_aton(value))
            fcntl.ioctl(control, request, struct.pack("16s16s8x", _NAME, packed))
        fcntl.ioctl(control, _SIOCSIFFLAGS, struct.pack("16sH22x", _NAME, _IFF_UP))


def _check(result):
    if result != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def _run(commands, answers):
    """The process in the middle; does not return."""
    say = os.fdopen(answers, "w")
    try:
        asyncio.run(_Middle(say).serve(commands))
    except BaseException as error:  # Told to whoever asks next.
        print(json.dumps({"error": repr(error)}), file=say, flush=True)
    finally:
        os._exit(0)


class _Middle:
    def __init__(self, say):
        self._say = say
        self._swallows = False
        self._lost = 0.0
        self._delay = 0.0
        self._chance = random.Random(1)
        self._servers = []

    async def serve(self, commands):
        near = _open_device(_NAME)
        _set_address(OURS)
        self._home = os.open("/proc/self/ns/net", os.O_RDONLY)
        _check(_libc.unshare(_CLONE_NEWNET))
        self._away = os.open("/proc/self/ns/net", os.O_RDONLY)
        far = _open_device(_NAME)
        _set_address(SERVICES)
        loop = asyncio.get_running_loop()
        loop.add_reader(near, self._carry, near, far)
        loop.add_reader(far, self._carry, far, near)
        reader = asyncio.StreamReader()
        await loop.connect_read_pipe(lambda: asyncio.StreamReaderProtocol(reader),
                                     os.fdopen(commands, "rb"))
        self._answer()
        while line := await reader.readline():
            self._answer(**await self._obey(json.loads(line)))

    def _answer(self, **what):
        print(json.dumps(what), file=self._say, flush=True)

    async def _obey(self, command):
        self._swallows = command.get("swallow", self._swallows)
        self._lost = command.get("lose", self._lost)
        self._delay = command.get("delay", self._delay)
        if "address" in command:
            self._at(self._home, lambda: _set_address(command["address"]))
        if "relay" in command:
            return {"port": await self._relay(command["relay"])}
        return {}

    def _carry(self, source, target):
        """All packets that have come by now."""
        while True:
            try:
                packet = os.read(source, _LARGEST_PACKET)
            except BlockingIOError:
                return
            if self._swallows or self._chance.random() < self._lost:
                continue
            if self._delay:
                asyncio.get_running_loop().call_later(self._delay, self._put, target, packet)
            else:
                self._put(target, packet)

    @staticmethod
    def _put(target, packet):
        try:
            os.write(target, packet)
        except OSError:
            pass  # As from a queue that is full: lost.

    def _at(self, network, do):
        _check(_libc.setns(network, _CLONE_NEWNET))
        try:
            return do()
        finally:
            _check(_libc.setns(self._away, _CLONE_NEWNET))

    async def _relay(self, port):
        async def meet(reader, writer):
            upstream = self._at(self._home, lambda: socket.create_connection(("127.0.0.1", port)))
            their_reader, their_writer = await asyncio.open_connection(sock=upstream)
            await asyncio.gather(_pump(reader, their_writer), _pump(their_reader, writer))

        server = await asyncio.start_server(meet, SERVICES, 0)
        self._servers.append(server)
        return server.sockets[0].getsockname()[1]


async def _pump(reader, writer):
    try:
        while data := await reader.read(65536):
            writer.write(data)
            await writer.drain()
    except OSError:
        pass
    writer.close()
