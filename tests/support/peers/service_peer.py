"""What the scripted services for the tests have in common: lines of JSON in both directions.

A service says on standard output what happens to it, and does what it is told on standard input;
it ends when standard input ends.
"""

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
    """One event, as one line."""
    with _lock:
        sys.stdout.write(json.dumps(event) + "\n")
        sys.stdout.flush()


def tls_context():
    """A server context with a certificate for 127.0.0.1 made on the spot, and its path."""
    key = os.path.join(_folder.name, "key.pem")
    certificate = os.path.join(_folder.name, "certificate.pem")
    subprocess.run(
        ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
         "-nodes", "-keyout", key, "-out", certificate, "-days", "2", "-subj", "/CN=127.0.0.1",
         "-addext", "subjectAltName=IP:127.0.0.1"],
        check=True, capture_output=True)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    return context, certificate
