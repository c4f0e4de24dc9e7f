"""Debian's nginx in front of a stand-in, with TLS and HTTP/2, as the services' own front is.

  python3 -m tests.cloud_rest.front --to PORT [--name HOST ...] [--keepalive-requests N]

Says: listening {port, certificate}, done {command}.
Does: {"freeze": true}   it takes connections and says nothing more, not even a handshake
      {"thaw": true}
      {"closeConnections": true}   ends idle connections in good order, others after their answer
      {"cutConnections": true}     ends all connections at once
Ends when standard input ends, and with whoever started it in any case.
"""

from __future__ import annotations

import argparse
import contextlib
import json
import os
import pathlib
import pwd
import re
import shutil
import signal
import socket
import ssl
import subprocess
import sys
import tempfile
import threading

from .helpers import die_with_parent, end_with_parent, say

LIMIT = 60  # Seconds after which something that has to happen is given up.
STARTED = re.compile(r'start worker process (\d+)')
ENDED = re.compile(r'worker process (\d+) exited')

CONFIGURATION = """
daemon off;
worker_processes 1;
worker_shutdown_timeout 60s;
pid {folder}/pid;
error_log stderr notice;
{user}
events {{ worker_connections 256; }}
http {{
  access_log off;
  client_body_temp_path {folder}/body;
  proxy_temp_path {folder}/proxy;
  fastcgi_temp_path {folder}/fastcgi;
  uwsgi_temp_path {folder}/uwsgi;
  scgi_temp_path {folder}/scgi;
  client_max_body_size 0;
  keepalive_requests {keepalive_requests};
  server {{
    listen 127.0.0.1:{port} ssl{http2_in_listen};
    {http2}
    ssl_certificate {certificate};
    ssl_certificate_key {key};
    ssl_protocols TLSv1.2 TLSv1.3;
    location / {{
      proxy_pass http://127.0.0.1:{to};
      proxy_http_version 1.1;
      proxy_set_header Host $http_host;
      proxy_redirect off;
      proxy_next_upstream off;
      proxy_read_timeout 600s;
    }}
  }}
}}
"""


def make_certificate(folder: pathlib.Path, names: list[str]) -> tuple[pathlib.Path, pathlib.Path]:
    """A certificate for this machine, and for further names, and its key."""
    certificate, key = folder / 'certificate.pem', folder / 'key.pem'
    alternatives = ','.join(f'DNS:{name}' for name in ['localhost', *names])
    subprocess.run(
        f'openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -keyout {key} '
        f'-out {certificate} -subj /CN=localhost'.split()
        + ['-addext', f'subjectAltName=IP:127.0.0.1,{alternatives}'],
        check=True,
        capture_output=True,
    )
    return certificate, key


def version_of(nginx: str) -> tuple[int, ...]:
    said = subprocess.run([nginx, '-v'], check=True, capture_output=True, text=True).stderr
    return tuple(int(part) for part in re.search(r'nginx/([\d.]+)', said)[1].split('.'))


def find_nginx() -> str:
    found = shutil.which('nginx', path=os.environ.get('PATH', '') + ':/usr/sbin:/sbin')
    if found is None:
        raise FileNotFoundError('nginx is missing: install the package nginx-light')
    return found


class Front:
    """A context manager. It ends with the thread that entered it, so a test enters it in its main
    thread. Methods return when what they are for has happened."""

    def __init__(
        self, to: int, names: list[str] | None = None, keepalive_requests: int = 1000
    ) -> None:
        self._to, self._names = to, names or []
        self._keepalive_requests = keepalive_requests
        self._condition = threading.Condition()
        self._workers: set[int] = set()
        self._started = 0
        self.log: list[str] = []

    def __enter__(self) -> Front:
        self._folder = tempfile.TemporaryDirectory(prefix='front-')
        try:
            self._start(pathlib.Path(self._folder.name))
        except BaseException:
            self._folder.cleanup()
            raise
        return self

    def _start(self, folder: pathlib.Path) -> None:
        nginx = find_nginx()
        certificate, key = make_certificate(folder, self._names)
        self.certificate = str(certificate)
        # nginx cannot choose a port itself; it is handed a socket that listens already, so that the
        # port is nobody else's for a single moment.
        with socket.create_server(('127.0.0.1', 0), backlog=128) as listener:
            self.port = listener.getsockname()[1]
            newer = version_of(nginx) >= (1, 25, 1)
            configuration = folder / 'nginx.conf'
            configuration.write_text(
                CONFIGURATION.format(
                    folder=folder,
                    user=f'user {pwd.getpwuid(0).pw_name} root;' if os.geteuid() == 0 else '',
                    port=self.port,
                    to=self._to,
                    http2_in_listen='' if newer else ' http2',
                    http2='http2 on;' if newer else '',
                    certificate=certificate,
                    key=key,
                    keepalive_requests=self._keepalive_requests,
                )
            )
            self._process = subprocess.Popen(
                [nginx, '-e', 'stderr', '-p', str(folder), '-c', str(configuration)],
                env={**os.environ, 'NGINX': f'{listener.fileno()};'},
                pass_fds=[listener.fileno()],
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=subprocess.PIPE,
                text=True,
                # Told to end, the master ends its workers; were it killed, they would go on alone.
                preexec_fn=lambda: end_with_parent(signal.SIGTERM),
            )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        self._handshake()
        # The worker answers before its master's word of it has been read.
        self._wait_for(lambda: self._workers)

    def _read(self) -> None:
        """What nginx says of its workers is how we know of them."""
        for line in self._process.stderr:
            with self._condition:
                self.log.append(line.rstrip())
                if found := STARTED.search(line):
                    self._workers.add(int(found[1]))
                    self._started += 1
                if found := ENDED.search(line):
                    self._workers.discard(int(found[1]))
                self._condition.notify_all()

    def _handshake(self) -> None:
        """Returns once it answers."""
        context = ssl.create_default_context(cafile=self.certificate)
        try:
            with socket.create_connection(('127.0.0.1', self.port), LIMIT) as plain:
                with context.wrap_socket(plain, server_hostname='127.0.0.1'):
                    pass
        except OSError as error:
            raise RuntimeError('nginx does not answer:\n' + '\n'.join(self.log)) from error

    def _wait_for(self, condition) -> None:
        with self._condition:
            if not self._condition.wait_for(condition, LIMIT):
                raise TimeoutError('nginx did not do it:\n' + '\n'.join(self.log))

    @property
    def workers(self) -> set[int]:
        with self._condition:
            return set(self._workers)

    def _signal_workers(self, number: int) -> None:
        for worker in self.workers:
            with contextlib.suppress(ProcessLookupError):  # It has just ended by itself.
                os.kill(worker, number)

    def freeze(self) -> None:
        """It takes connections, as the system does for it, and says nothing more."""
        self._signal_workers(signal.SIGSTOP)
        for worker in self.workers:
            with contextlib.suppress(FileNotFoundError):
                wait_until_stopped(worker)

    def thaw(self) -> None:
        self._signal_workers(signal.SIGCONT)

    def close_connections(self) -> None:
        """Idle connections end in good order, others after their answer; new ones are taken."""
        before = self._started
        self._process.send_signal(signal.SIGHUP)
        self._wait_for(lambda: self._started > before)

    def cut_connections(self) -> None:
        """All connections end at once, wherever they are; new ones are taken."""
        before, old = self._started, self.workers
        self._signal_workers(signal.SIGKILL)
        self._wait_for(lambda: self._started > before and not old & self._workers)
        self._handshake()

    def __exit__(self, *error) -> None:
        self.thaw()
        self._process.terminate()
        self._process.wait(LIMIT)
        self._reader.join(LIMIT)
        self._process.stderr.close()
        self._folder.cleanup()


def wait_until_stopped(process: int) -> None:
    """A signal has been sent when kill() returns, and takes hold a moment later."""
    stat = pathlib.Path(f'/proc/{process}/stat')
    while stat.read_text().rpartition(')')[2].split()[0] not in 'Tt':
        os.sched_yield()


COMMANDS = {
    'freeze': Front.freeze,
    'thaw': Front.thaw,
    'closeConnections': Front.close_connections,
    'cutConnections': Front.cut_connections,
}


def main() -> None:
    die_with_parent()
    parser = argparse.ArgumentParser(description=Front.__doc__)
    parser.add_argument('--to', type=int, required=True, help='the port of the stand-in')
    parser.add_argument('--name', action='append', help='a further name in the certificate')
    parser.add_argument('--keepalive-requests', type=int, default=1000)
    options = parser.parse_args()
    with Front(options.to, options.name, options.keepalive_requests) as front:
        say(event='listening', port=front.port, certificate=front.certificate)
        for line in sys.stdin:
            for command in json.loads(line):
                COMMANDS[command](front)
                say(event='done', command=command)


if __name__ == '__main__':
    main()
