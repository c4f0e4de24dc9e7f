"""Ten minutes in which nobody says a word, as the program sends them to the whole server."""

import tempfile
import unittest
from pathlib import Path

import numpy as np

from orvane_backend.audio import Samples, encode_pcm
from tests.gate_sounds import played
from tests.music import MUSIC
from tests.noises import NOISES
from tests.peers import Client, ServerProcess, results
from tests.recordings import at_48_khz, cut_at_pauses, recordings
from tests.sounds import RATE

_MUSIC_SECONDS, _NOISE_SECONDS, _SILENCE_SECONDS = 17, 10, 50


def wordless() -> Samples:
    """Every instrument at another speed than the gate was fitted to, every noise and hum, silence."""
    random = np.random.default_rng(12)
    music = [played(make(40), random)[: _MUSIC_SECONDS * RATE] for make in MUSIC.values()]
    noises = [make(_NOISE_SECONDS) for make in NOISES.values()]
    return np.concatenate([*music, *noises, np.zeros(_SILENCE_SECONDS * RATE)])


class WordlessTest(unittest.IsolatedAsyncioTestCase):
    async def test_ten_minutes_of_music_hum_and_silence_show_nothing(self) -> None:
        sound = wordless()
        self.assertGreater(len(sound), 10 * 60 * RATE)
        sentence = at_48_khz(recordings()[4].pcm + bytes(2 * 11200))
        with tempfile.TemporaryDirectory() as home, ServerProcess(Path(home)) as server:
            server.read_log()
            async with await Client.connect(server.port) as client:
                await client.config(sttEngine="pocketsphinx", saveSRT=True)
                await client.until("status", "engine")
                for chunk in cut_at_pauses(at_48_khz(encode_pcm(sound))):
                    await client.audio(chunk)
                    heard = results(await client.until("processed"))
                    self.assertEqual(heard, [])
                self.assertEqual(results(await client.flush()), [])
                self.assertEqual(list(Path(home).rglob("*.srt")), [])
                # It has listened all the time.
                await client.audio(sentence)
                self.assertEqual(len(results(await client.flush())), 1)


if __name__ == "__main__":
    unittest.main()
