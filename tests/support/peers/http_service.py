"""A scripted REST service, on Python's own HTTP server.

  http_service.py [--tls]

Says: listening {port, certificate}, request {id, method, path, headers, body: base64}, and answered {id}
once the answer is with the client's system.
Answers a request as it is told, by its id, or all as told once for all:
  {"answer": id, ...} or {"always": true, ...} with
    "status": 200, "body": text, "bodyBase64": base64, "headers": {},
    "fill": bytes of spaces after the body, "cut": bytes after which the connection is closed,
    "abort": true to close it without an answer.
"""

import base64
import http.server
import threading

from service_peer import QuietServer, commands_to, say

condition = threading.Condition()
answers = {}
always = None
next_id = 0


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_POST(self) -> None:
        global next_id
        body = self.rfile.read(int(self.headers["Content-Length"]))
        with condition:
            request = next_id
            next_id += 1
        say(event="request", id=request, method=self.command, path=self.path,
            headers={name.lower(): value for name, value in self.headers.items()},
            body=base64.b64encode(body).decode())
        with condition:
            condition.wait_for(lambda: always is not None or request in answers)
            answer = answers.get(request, always)
        self.answer(answer)
        say(event="answered", id=request)

    def answer(self, answer: dict) -> None:
        body = answer.get("body", "").encode()
        if "bodyBase64" in answer:
            body = base64.b64decode(answer["bodyBase64"])
        body += b" " * answer.get("fill", 0)
        if answer.get("abort"):
            self.close_connection = True
            return
        try:
            self.send_response(answer.get("status", 200))
            for name, value in answer.get("headers", {}).items():
                self.send_header(name, value)
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            if "cut" in answer:
                body = body[:answer["cut"]]
                self.close_connection = True
            self.wfile.write(body)
        except OSError:
            self.close_connection = True  # The client has given up.

    def log_message(self, format, *args) -> None:
        pass


class Server(QuietServer, http.server.ThreadingHTTPServer):
    pass


for command in commands_to(Server, Handler):
    with condition:
        if "always" in command:
            always = command
        else:
            answers[command["answer"]] = command
        condition.notify_all()
