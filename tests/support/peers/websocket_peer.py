"""A scripted speech server for the tests: a WebSocket server on Debian's `websockets` library.

Says on standard output, one JSON object a line, what happens to it:
  {"event": "listening", "port": N}
  {"event": "open"}                          a client has finished its handshake
  {"event": "text", "data": "..."}           a text frame came in
  {"event": "binary", "size": N}
  {"event": "closed", "code": N, "reason": "..."}
Does what it is told on standard input, one JSON object a line:
  {"send": "text"}   {"sendBinary": "base64"}   {"sendInvalidText": true}   {"close": code}
  {"abort": true}    drop the connection without a closing handshake
  {"answerFlush": true | false}              answer flush requests by itself (default: true)
Ends when standard input ends.
"""

import asyncio
import base64
import json
import sys

import websockets

from websocket_service import MAX_SIZE, serve


class Peer:
    def __init__(self) -> None:
        self.answer_flush = True
        self.client = None

    def say(self, **event) -> None:
        sys.stdout.write(json.dumps(event) + "\n")
        sys.stdout.flush()

    async def serve(self, client) -> None:
        self.client = client
        self.say(event="open")
        try:
            async for message in client:
                await self.take(client, message)
        except websockets.ConnectionClosed:
            pass
        self.say(event="closed", code=client.close_code, reason=client.close_reason)

    async def take(self, client, message) -> None:
        if isinstance(message, bytes):
            self.say(event="binary", size=len(message))
            return
        self.say(event="text", data=message)
        if self.answer_flush and '"flush"' in message[:40]:
            await client.send('{"type":"flushed"}')

    async def obey(self, command: dict) -> None:
        if "answerFlush" in command:
            self.answer_flush = command["answerFlush"]
        elif "send" in command:
            await self.client.send(command["send"])
        elif "sendBinary" in command:
            await self.client.send(base64.b64decode(command["sendBinary"]))
        elif "sendInvalidText" in command:
            self.client.transport.write(b"\x81\x04\xff\xfe\xfd\xfc")
        elif "close" in command:
            await self.client.close(command["close"], "bye")
        elif "abort" in command:
            self.client.transport.abort()

    async def run(self) -> None:
        server = await serve(self.serve)
        self.say(event="listening", port=server.sockets[0].getsockname()[1])
        reader = asyncio.StreamReader(limit=MAX_SIZE)
        loop = asyncio.get_running_loop()
        await loop.connect_read_pipe(lambda: asyncio.StreamReaderProtocol(reader), sys.stdin)
        while line := await reader.readline():
            try:
                await self.obey(json.loads(line))
            except websockets.ConnectionClosed:
                pass  # The test closed it meanwhile.


asyncio.run(Peer().run())
