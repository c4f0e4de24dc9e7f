"""A gate before a sound server, which holds back what a client asks once it records something.

  pulse_gate.py SOCKET       the server's own socket

Says: listening {port}; holding, when the client has asked something after it had asked to record.
Told {"release": true}, it lets everything through. The client's messages are told apart as
PulseAudio's native protocol has them (pulsecore/pstream.c): a descriptor of five 32-bit numbers, of
which the first is the length of what follows; a command begins with "L" and its number.
"""

import json
import socket
import struct
import sys
import threading

from service_peer import say

_CREATE_RECORD_STREAM = 5  # Of pulsecore/native-common.h.
_DESCRIPTOR = struct.Struct("!5I")

released = threading.Event()


def read_exactly(source, count):
    data = b""
    while len(data) < count:
        piece = source.recv(count - len(data))
        if not piece:
            raise EOFError
        data += piece
    return data


def command_of(payload):
    return struct.unpack("!I", payload[1:5])[0] if payload[:1] == b"L" else None


def pass_questions(client, server):
    records = False
    told = False
    while True:
        descriptor = read_exactly(client, _DESCRIPTOR.size)
        payload = read_exactly(client, _DESCRIPTOR.unpack(descriptor)[0])
        if records and not released.is_set():
            if not told:
                say(event="holding")
                told = True
            released.wait()
        server.sendall(descriptor + payload)
        records = records or command_of(payload) == _CREATE_RECORD_STREAM


def pass_answers(server, client):
    while data := server.recv(65536):
        client.sendall(data)


def run(work, *ends):
    try:
        work(*ends)
    except (EOFError, OSError):
        pass
    for end in ends:
        end.close()


def accept_clients(listener):
    while True:
        client, _ = listener.accept()
        server = socket.socket(socket.AF_UNIX)
        server.connect(sys.argv[1])
        threading.Thread(target=run, args=(pass_questions, client, server), daemon=True).start()
        threading.Thread(target=run, args=(pass_answers, server, client), daemon=True).start()


listener = socket.create_server(("127.0.0.1", 0))
threading.Thread(target=accept_clients, args=(listener,), daemon=True).start()
say(event="listening", port=listener.getsockname()[1])
for line in sys.stdin:
    if json.loads(line).get("release"):
        released.set()
