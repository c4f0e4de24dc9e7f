"""sherpa-onnx's online server, the one in C++ and the one in Python."""

import math
from typing import Any, Mapping, Optional

import numpy as np

from . import _http
from ._http import Reply, text_reply
from ._segments import Heard, Segments
from ._wav import RATE, Hearing, Samples, describe
from ._websocket import Upgrade, WebSocketStandIn, drop, say

KINDS = ("c++", "python")
_STEP = 0.32  # Seconds of sound for one step of decoding.


class SherpaServer(WebSocketStandIn):
    """`sounds` holds what each conversation sent, `faults` what it should not have.

    `most` clients at once are served, by the one in Python. `hear` says what is heard. After
    `drops_after` seconds of sound the connection ends without a word.
    """

    def __init__(
        self,
        kind: str = "c++",
        *,
        hear: Hearing = describe,
        most: int = 200,
        drops_after: float = math.inf,
        **options: Any,
    ) -> None:
        super().__init__(largest=1 << 20 if kind == "python" else None, **options)
        self.sounds: list[Samples] = []
        self._native = kind == "c++"
        self._hear = hear
        self._most = most
        self._drops_after = drops_after

    def refuse(self, request: Upgrade) -> Optional[Reply]:
        if self._native or self._at_once < self._most:
            return None
        return text_reply("The server is busy. Please retry later.", 503)

    async def talk(self, connection: Any, request: Upgrade) -> None:
        number = len(self.sounds)
        self.sounds.append(np.zeros(0, np.int16))
        segments = Segments(step=_STEP, after=1.2, before=2.4, longest=20.0)
        segment = 0
        while True:
            message = await connection.recv()
            if isinstance(message, str):
                if message == "Done":
                    break
                self.fault(f"a text that is not Done: {message[:40]}")
                continue
            if len(message) % 4:
                self.fault("a float cut in two")
                return await self._die(connection)
            samples = self._samples(message)
            with self._changed:
                self.sounds[number] = np.concatenate([self.sounds[number], samples])
                self._changed.notify_all()
            for heard in segments.take(samples):
                await say(connection, self._result(heard, segment))
                segment += heard.ends
            if len(self.sounds[number]) >= self._drops_after * RATE:
                return drop(connection)
        await say(connection, self._result(segments.finish(), segment, last=True))
        if self._native:
            await connection.send("Done!")
        else:
            await connection.close()
        # The one in C++ leaves the closing to its client.
        async for _ in connection:
            self.fault("a message after Done")

    async def _die(self, connection: Any) -> None:
        """The one in C++ goes with the connection, the one in Python fails in its handler."""
        if self._native:
            drop(connection)
        else:
            await connection.close(1011)

    def _samples(self, data: bytes) -> Samples:
        floats = np.frombuffer(data, "<f4").astype(np.float64)
        if not np.all(np.isfinite(floats)) or np.any(np.abs(floats) > 1.0):
            self.fault("samples beyond -1 to 1")
            floats = np.clip(np.nan_to_num(floats), -1.0, 1.0)
        samples: Samples = np.clip(np.round(floats * 32768), -32768, 32767).astype(np.int16)
        return samples

    def _result(self, heard: Heard, segment: int, last: bool = False) -> Mapping[str, object]:
        text = " ".join(self._hear(heard.samples).split("\n"))
        if not self._native:
            return {"text": text, "segment": segment}
        words = text.split()
        return {
            "text": text,
            "tokens": [f" {word}" for word in words],
            "timestamps": [number * 0.04 for number in range(len(words))],
            "ys_probs": [-0.1] * len(words),
            "lm_probs": [],
            "context_scores": [],
            "segment": segment,
            "words": [],
            "start_time": heard.start,
            "is_final": heard.ends,
            "is_eof": last,
        }


def main() -> None:
    parser = _http.options(str(__doc__))
    parser.add_argument("--kind", choices=KINDS, default="c++")
    parser.add_argument("--most", type=int, default=200, help="clients at once")
    parser.add_argument("--text", help="what is heard, whatever comes")
    given = parser.parse_args()
    hear: Hearing = describe if given.text is None else lambda samples: str(given.text)
    _http.run(SherpaServer(given.kind, hear=hear, most=given.most, port=given.port), given.log)


if __name__ == "__main__":
    main()
