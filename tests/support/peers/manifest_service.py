"""A scripted web server for manifests that says byte for byte what it is told, right or wrong.

  manifest_service.py [--tls]

Says: listening {port, certificate}, request {path, headers}, gone {path} when a client has hung up
on an answer without end.
Answers a path as it is told: {"path": "/a", ...} with
  "raw": the whole answer, as text, or "status": 200, "headers": {}, "body": text,
  "fill": bytes of spaces after it, "after": what becomes of the connection then: "close", "hold" or
  "drip" (a byte every 20 ms until the client hangs up).
Paths that nobody told of get 404.
"""

import select
import socketserver
import threading

from service_peer import QuietServer, commands_to, say

answers = {}
lock = threading.Lock()


def head(answer: dict, length: int) -> bytes:
    lines = [f"HTTP/1.1 {answer.get('status', 200)} Scripted", "Connection: close"]
    headers = {"Content-Type": "application/json", "Content-Length": str(length),
               **answer.get("headers", {})}
    lines += [f"{name}: {value}" for name, value in headers.items()]
    return ("\r\n".join(lines) + "\r\n\r\n").encode()


class Handler(socketserver.StreamRequestHandler):
    def handle(self) -> None:
        try:
            self.serve()
        except OSError:
            pass  # The client has given up.

    def serve(self) -> None:
        first = self.rfile.readline().decode("latin-1").split()
        if len(first) < 2:
            return
        headers = {}
        while line := self.rfile.readline().decode("latin-1").strip():
            name, _, value = line.partition(":")
            headers[name.lower()] = value.strip()
        path = first[1]
        say(event="request", method=first[0], path=path, headers=headers)
        with lock:
            answer = answers.get(path, {"status": 404})
        if "raw" in answer:
            data = answer["raw"].encode()
        else:
            body = answer.get("body", "").encode()
            data = head(answer, len(body) + answer.get("fill", 0)) + body
        self.wfile.write(data)
        for _ in range(answer.get("fill", 0) // 65536):
            self.wfile.write(b" " * 65536)
        self.wfile.write(b" " * (answer.get("fill", 0) % 65536))
        self.wfile.flush()
        self.linger(path, answer.get("after", "close"))

    def linger(self, path: str, after: str) -> None:
        while after != "close":
            if select.select([self.connection], [], [], 0.02)[0] and not self.connection.recv(1024):
                say(event="gone", path=path)
                return
            if after == "drip":
                self.wfile.write(b" ")


class Server(QuietServer, socketserver.ThreadingTCPServer):
    pass


for command in commands_to(Server, Handler):
    with lock:
        answers[command["path"]] = command
    say(event="told", path=command["path"])
