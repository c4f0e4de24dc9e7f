"""The stand-ins of live recognisers refuse and answer what they are there for."""

import asyncio
import http.client
import json
import unittest
from typing import Any, Optional

import numpy as np

from orvane_backend.websocket import ConnectionClosed, WebSocketException, connect
from tests.standins._wav import Samples, silence, tone
from tests.standins.listen_server import ListenServer
from tests.standins.sherpa_server import SherpaServer

_QUERY = "encoding=linear16&sample_rate=16000&channels=1&interim_results=true&endpointing=300"


def floats(samples: Samples) -> bytes:
    return (samples.astype("<f4") / 32768).tobytes()


async def rest_of(connection: Any) -> tuple[list[Any], Optional[int]]:
    """Every message until the end, and the code it ended with; None without one."""
    messages = []
    try:
        while True:
            text = await connection.recv()
            messages.append(json.loads(text) if text.startswith("{") else text)
    except ConnectionClosed as closed:
        return messages, closed.rcvd.code if closed.rcvd else None


async def exchange(address: str, *sent: Any) -> tuple[list[Any], Optional[int]]:
    """Sends these and returns what came until the end."""
    async with connect(address, max_size=None) as connection:
        for message in sent:
            try:
                await connection.send(message)
            except ConnectionClosed:
                break
        return await rest_of(connection)


def upgrade(server: Any, path: str, **headers: str) -> int:
    """The status of an upgrade asked for without the library."""
    connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=60)
    asked = {
        "Connection": "Upgrade", "Upgrade": "websocket", "Sec-WebSocket-Version": "13",
        "Sec-WebSocket-Key": "MDEyMzQ1Njc4OWFiY2RlZg==", **headers,
    }  # fmt: skip
    try:
        connection.request("GET", path, headers=asked)
        return connection.getresponse().status
    finally:
        connection.close()


class Listen(unittest.IsolatedAsyncioTestCase):
    async def refused(self, query: str, *sent: Any, code: int = 4400, **options: Any) -> list[Any]:
        with ListenServer(**options) as server:
            messages, got = await exchange(f"{server.address}/v1/listen?{query}", *sent)
            self.assertEqual(got, code, messages)
            self.assertEqual(messages[-1]["type"], "Error")
            self.assertIn("request_id", messages[-1])
            server.wait_until(lambda: server.closings)
            return messages

    async def test_recognises_until_the_stream_is_closed(self) -> None:
        close = json.dumps({"type": "CloseStream"})
        sound = np.concatenate([tone(1.5), silence(1)]).tobytes()
        with ListenServer() as server:
            messages, code = await exchange(
                f"{server.address}/v1/listen?{_QUERY}&model=other",
                json.dumps({"type": "KeepAlive"}), sound, tone(0.5).tobytes(), close,
            )  # fmt: skip
            self.assertEqual(code, 1000)
            kinds = [message["type"] for message in messages]
            self.assertEqual(kinds, ["Metadata"] + ["Results"] * 4 + ["Metadata"])
            results = messages[1:-1]
            self.assertEqual([r["is_final"] for r in results], [False, True, False, True])
            best = results[1]["channel"]["alternatives"][0]
            self.assertEqual(best["confidence"], 0.0)
            self.assertTrue(best["transcript"].startswith("1.8 seconds"))
            self.assertEqual(messages[-1]["duration"], 3.0)
            conversation = server.conversations[0]
            self.assertEqual((conversation.ignored, conversation.seconds), (("model",), 3.0))
            server.wait_until(lambda: server.closings == [(1000, "")])
            self.assertEqual(server.faults, [])

    async def test_silence_is_answered_by_empty_or_invented_text(self) -> None:
        close = json.dumps({"type": "CloseStream"})
        for invented in (None, "Thank you."):
            with ListenServer(on_silence=invented) as server:
                address = f"{server.address}/v1/listen?{_QUERY}"
                messages, _ = await exchange(address, silence(1).tobytes(), close)
                texts = [m["channel"]["alternatives"][0]["transcript"] for m in messages[1:-1]]
                self.assertEqual(texts, [invented or ""] * 2)

    async def test_tells_of_speech_when_asked(self) -> None:
        close = json.dumps({"type": "CloseStream"})
        sound = np.concatenate([tone(1.5), silence(1)]).tobytes()
        with ListenServer() as server:
            query = f"{_QUERY}&utterance_end_ms=1000&vad_events=true"
            messages, _ = await exchange(f"{server.address}/v1/listen?{query}", sound, close)
            kinds = [message["type"] for message in messages]
            self.assertEqual(kinds[1:5], ["SpeechStarted", "Results", "Results", "UtteranceEnd"])
            query = _QUERY.replace("interim_results=true", "interim_results=false")
            messages, _ = await exchange(f"{server.address}/v1/listen?{query}", sound, close)
            self.assertTrue(all(m["is_final"] for m in messages[1:-1]))

    async def test_refuses_bad_parameters(self) -> None:
        for old, new in (
            ("sample_rate=16000", "sample_rate=48000"),
            ("sample_rate=16000", "other=1"),
            ("linear16", "opus"),
            ("encoding=linear16", "other=1"),
            ("channels=1", "channels=2"),
            ("interim_results=true", "interim_results=yes"),
            ("endpointing=300", "endpointing=soon"),
            ("endpointing=300", "utterance_end_ms=6000"),
            ("endpointing=300", "utterance_end_ms=999"),
            ("interim_results=true", "utterance_end_ms=1000"),
            ("channels=1", "language=the+English"),
        ):
            messages = await self.refused(_QUERY.replace(old, new))
            self.assertEqual(len(messages), 1)

    async def test_refuses_messages(self) -> None:
        self.assertEqual((await self.refused(_QUERY, b""))[0]["type"], "Metadata")
        await self.refused(_QUERY, json.dumps({"type": "Finalize"}))
        await self.refused(_QUERY, json.dumps({"type": "Configure"}))
        await self.refused(_QUERY, "[]")
        await self.refused(_QUERY, "stop")

    async def test_closes_when_nothing_comes(self) -> None:
        await self.refused(_QUERY, idle=0.05, code=1011)

    async def test_asks_for_the_key(self) -> None:
        await self.refused(_QUERY, key="k", code=4401)
        await self.refused(_QUERY + "&token=x", key="k", code=4401)
        path = f"/v1/listen?{_QUERY}"
        with ListenServer(key="k", key_status=401) as server:
            self.assertEqual(upgrade(server, path), 401)
            self.assertEqual(upgrade(server, path, Authorization="Basic k"), 401)
            self.assertEqual(upgrade(server, path, Authorization="Token k"), 101)
            self.assertEqual(upgrade(server, path, Authorization="Bearer k"), 101)
            self.assertEqual(upgrade(server, path + "&token=k"), 101)
            self.assertEqual(upgrade(server, "/v2/listen?token=k"), 403)

    async def test_says_what_the_test_says_and_drops(self) -> None:
        with ListenServer(drops_after=1) as server:
            async with connect(f"{server.address}/v1/listen?{_QUERY}") as connection:
                await connection.recv()
                await asyncio.to_thread(server.say, {"type": "Odd"})
                self.assertEqual(json.loads(await connection.recv()), {"type": "Odd"})
                await connection.send(tone(1).tobytes() + b"\0")
                self.assertEqual((await rest_of(connection))[1], None)
            self.assertEqual(server.faults, ["half a sample"])
            server.wait_until(lambda: server.closings == [(1006, "")])


class Sherpa(unittest.IsolatedAsyncioTestCase):
    async def heard(self, kind: str, *sent: Any) -> tuple[list[Any], Optional[int], SherpaServer]:
        with SherpaServer(kind) as server:
            async with connect(server.address + "/any", max_size=None) as connection:
                for message in sent:
                    await connection.send(message)
                messages: list[Any] = []
                code: Optional[int] = 0
                try:
                    while not messages or messages[-1] != "Done!":
                        text = await connection.recv()
                        messages.append(json.loads(text) if text.startswith("{") else text)
                except ConnectionClosed as closed:
                    code = closed.rcvd.code if closed.rcvd else None
            return messages, code, server

    async def test_native_one_says_done(self) -> None:
        sound = np.concatenate([tone(1), silence(1.5), tone(0.5)])
        messages, code, server = await self.heard("c++", floats(sound), "Done")
        self.assertEqual((messages[-1], code, server.faults), ("Done!", 0, []))
        self.assertTrue(np.array_equal(server.sounds[0], sound))
        finals = [message for message in messages[:-1] if message["is_final"]]
        self.assertEqual([message["segment"] for message in finals], [0, 1])
        self.assertTrue(finals[0]["text"].startswith("2.2 seconds"))
        self.assertAlmostEqual(finals[1]["start_time"], 2.2)
        self.assertEqual([message["is_eof"] for message in finals], [False, True])
        self.assertGreater(len(messages), 6)

    async def test_segments_end_in_silence_and_when_long(self) -> None:
        messages, _, _ = await self.heard("c++", floats(silence(2.4)), floats(tone(20)), "Done")
        finals = [message for message in messages[:-1] if message["is_final"]]
        self.assertEqual([message["start_time"] for message in finals], [0.0, 2.4, 22.4])
        self.assertEqual(finals[0]["text"], "")

    async def test_python_one_ends_without_a_word(self) -> None:
        sound = floats(np.concatenate([tone(1), silence(1.5)]))
        messages, code, _ = await self.heard("python", sound, "Done")
        self.assertEqual(code, 1000)
        self.assertTrue(all(set(message) == {"text", "segment"} for message in messages))
        self.assertEqual(messages[-1]["segment"], 1)

    async def test_half_a_float_ends_the_connection(self) -> None:
        for kind, code in (("c++", None), ("python", 1011)):
            messages, got, server = await self.heard(kind, floats(tone(0.1)) + b"\0\0")
            self.assertEqual((messages, got), ([], code))
            self.assertEqual(server.faults, ["a float cut in two"])

    async def test_tells_of_what_it_puts_up_with(self) -> None:
        loud = np.array([2.0, float("nan")], "<f4").tobytes()
        _, _, server = await self.heard("c++", "done", loud, "Done")
        expected = ["a text that is not Done: done", "samples beyond -1 to 1"]
        self.assertEqual(server.faults, expected)
        with SherpaServer() as server:
            async with connect(server.address) as connection:
                await connection.send("Done")
                await connection.send(floats(tone(0.1)))
                await asyncio.to_thread(server.wait_until, lambda: bool(server.faults))
        self.assertEqual(server.faults, ["a message after Done"])

    async def test_python_one_refuses_much(self) -> None:
        _, code, _ = await self.heard("python", bytes((1 << 20) + 4))
        self.assertEqual(code, 1009)
        messages, code, _ = await self.heard("c++", bytes((1 << 20) + 4), "Done")
        self.assertEqual((messages[-1], code), ("Done!", 0))

    async def test_python_one_is_busy(self) -> None:
        with SherpaServer("python", most=1) as server:
            async with connect(server.address):
                self.assertEqual(upgrade(server, "/"), 503)
                with self.assertRaises(WebSocketException):
                    async with connect(server.address):
                        pass
            async with connect(server.address):
                pass

    async def test_drops(self) -> None:
        with SherpaServer(drops_after=0.1) as server:
            _, code = await exchange(server.address, floats(tone(0.2)))
            self.assertEqual(code, None)
