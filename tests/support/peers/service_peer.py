"""What the scripted services for the tests have in common: lines of JSON in both directions.

A service says on standard output what happens to it, and does what it is told on standard input;
it ends when standard input ends.
"""

import argparse
import ctypes
import json
import os
import signal
import ssl
import subprocess
import sys
import tempfile
import threading

# A service that the test has frozen cannot notice by itself that the test was killed.
PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None)


def die_with_parent() -> None:
    _libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


die_with_parent()

_lock = threading.Lock()
_folder = tempfile.TemporaryDirectory()


def say(**event) -> None:
    """One event, as one line. Not through sys.stdout: the interpreter takes that one's lock when it
    ends, and crashes where a thread that still speaks has it."""
    rest = (json.dumps(event) + "\n").encode()
    with _lock:
        while rest:
            rest = rest[os.write(1, rest):]


def tls_context(name=None):
    """A server context with a certificate for 127.0.0.1, or for a host's name, made on the spot, and
    its path. Says: hello {name}, what a client calls the host that it wants, or null."""
    key = os.path.join(_folder.name, "key.pem")
    certificate = os.path.join(_folder.name, "certificate.pem")
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
         "-nodes", "-keyout", key, "-out", certificate, "-days", "2", "-subj",
         f"/CN={name or '127.0.0.1'}", "-addext",
         f"subjectAltName=DNS:{name}" if name else "subjectAltName=IP:127.0.0.1,IP:10.77.0.2"],
        check=True, capture_output=True)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    context.sni_callback = lambda connection, wanted, own: say(event="hello", name=wanted)
    return context, certificate


class QuietServer:
    """To be mixed into a threading server: speaks TLS when it has a context, and takes clients that
    break off or do not trust the certificate as the part of the tests that they are."""

    daemon_threads = True
    allow_reuse_address = True
    context = None

    def finish_request(self, request, client_address) -> None:
        if self.context:
            request = self.context.wrap_socket(request, server_side=True)
        super().finish_request(request, client_address)

    def handle_error(self, request, client_address) -> None:
        pass


def commands_to(server_class, handler):
    """Serves on a free port, with TLS where the command line has --tls or the host's --name, says
    listening {port, certificate}, and then gives what it is told, one object after the other."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--tls", action="store_true")
    parser.add_argument("--name")
    options = parser.parse_args()
    server = server_class(("127.0.0.1", 0), handler)
    certificate = None
    if options.tls or options.name:
        server.context, certificate = tls_context(options.name)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    say(event="listening", port=server.server_address[1], certificate=certificate)
    for line in sys.stdin:
        yield json.loads(line)
