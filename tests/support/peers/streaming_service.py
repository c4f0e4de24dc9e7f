"""A scripted streaming recognition service, on Debian's `websockets` library.

  streaming_service.py deepgram|assemblyai [--key KEY] [--tls] [--mute] [--idle SECONDS]

It speaks the provider's published interface: it refuses another path with 404 and a wrong key with
401, begins and ends sessions as the provider does, decodes the audio, and closes a stream that says
nothing for --idle seconds. With --mute it takes connections and never answers a handshake; without
--key it takes every key.

Says: listening {port, certificate}, open {path, authorization}, refused {status, path},
      audio {data: base64 of the PCM, frame: size of the frame's payload}, text {data},
      misuse {what}, closed {code, reason}.
Does: {"send": text} {"sendBinary": base64} {"sendInvalidText": true} {"sendLarge": bytes}
      {"close": code, "reason": text} {"abort": true} {"begin": true}
"""

import argparse
import asyncio
import base64
import binascii
import http
import json
import sys
import uuid

import websockets

from service_peer import say, tls_context
from websocket_service import MAX_SIZE, headers_of, path_of, serve


class Deepgram:
    path = "/v1/listen"

    def authorization(self, key: str) -> str:
        return "Token " + key

    async def begin(self, client) -> None:
        pass

    async def take(self, client, message) -> None:
        if isinstance(message, bytes):
            say(event="audio", data=base64.b64encode(message).decode(), frame=len(message))
            return
        say(event="text", data=message)
        kind = json.loads(message).get("type")
        if kind == "CloseStream":
            await client.send(json.dumps({"type": "Metadata", "request_id": str(uuid.uuid4())}))
        elif kind != "KeepAlive":
            say(event="misuse", what="unknown type " + str(kind))


class AssemblyAI:
    path = "/v2/realtime/ws"

    def authorization(self, key: str) -> str:
        return key

    async def begin(self, client) -> None:
        await client.send(json.dumps({
            "message_type": "SessionBegins", "session_id": "session-1",
            "expires_at": "2030-01-01T00:00:00.000000"}))

    async def take(self, client, message) -> None:
        if isinstance(message, bytes):
            say(event="misuse", what="binary frame")
            return
        content = json.loads(message)
        if "audio_data" in content:
            try:
                pcm = base64.b64decode(content["audio_data"], validate=True)
            except binascii.Error as error:
                say(event="misuse", what=str(error))
                return
            say(event="audio", data=base64.b64encode(pcm).decode(), frame=len(message),
                members=len(content))
            return
        say(event="text", data=message)
        if content.get("terminate_session") is True:
            await client.send('{"message_type":"SessionTerminated"}')
        else:
            say(event="misuse", what="unknown message " + message[:80])


class Service:
    def __init__(self, options) -> None:
        self.options = options
        self.provider = {"deepgram": Deepgram, "assemblyai": AssemblyAI}[options.provider]()
        self.client = None

    def admit(self, path, headers):
        status = None
        if path.split("?")[0] != self.provider.path:
            status = http.HTTPStatus.NOT_FOUND
        elif self.options.key is not None and (
                headers.get("Authorization") != self.provider.authorization(self.options.key)):
            status = http.HTTPStatus.UNAUTHORIZED
        if status is None:
            return None
        say(event="refused", status=int(status), path=path)
        return status, '{"error":"refused"}'

    async def serve(self, client) -> None:
        self.client = client
        say(event="open", path=path_of(client),
            authorization=headers_of(client).get("Authorization"))
        try:
            if not self.options.wait:
                await self.provider.begin(client)
            while True:
                message = await asyncio.wait_for(client.recv(), self.options.idle)
                await self.provider.take(client, message)
        except asyncio.TimeoutError:
            await client.close(1011, "idle")
        except websockets.ConnectionClosed:
            pass
        say(event="closed", code=client.close_code, reason=client.close_reason)

    async def obey(self, command: dict) -> None:
        if "send" in command:
            await self.client.send(command["send"])
        elif "sendBinary" in command:
            await self.client.send(base64.b64decode(command["sendBinary"]))
        elif "sendInvalidText" in command:
            self.client.transport.write(b"\x81\x04\xff\xfe\xfd\xfc")
        elif "sendLarge" in command:
            await self.client.send(" " * command["sendLarge"])
        elif "close" in command:
            await self.client.close(command["close"], command.get("reason", ""))
        elif "abort" in command:
            self.client.transport.abort()
        elif "begin" in command:
            await self.provider.begin(self.client)

    async def run(self) -> None:
        context, certificate = tls_context() if self.options.tls else (None, None)
        if self.options.mute:
            async def hold(reader, writer):
                say(event="taken")
                self.client = writer
            server = await asyncio.start_server(hold, "127.0.0.1", 0)
        else:
            server = await serve(
                self.serve, self.admit, ssl=context, ping_interval=None, close_timeout=0.5)
        say(event="listening", port=server.sockets[0].getsockname()[1], certificate=certificate)
        reader = asyncio.StreamReader(limit=MAX_SIZE)
        loop = asyncio.get_running_loop()
        await loop.connect_read_pipe(lambda: asyncio.StreamReaderProtocol(reader), sys.stdin)
        while line := await reader.readline():
            try:
                await self.obey(json.loads(line))
            except websockets.ConnectionClosed:
                pass  # The test closed it meanwhile.


parser = argparse.ArgumentParser()
parser.add_argument("provider")
parser.add_argument("--key")
parser.add_argument("--tls", action="store_true")
parser.add_argument("--mute", action="store_true")
parser.add_argument("--wait", action="store_true", help="begin a session only when told")
parser.add_argument("--idle", type=float)
asyncio.run(Service(parser.parse_args()).run())
