"""Somebody who speaks into the microphone, short words with pauses, for as long as they are wanted."""

import array
import math
import wave

_RATE = 16000
_WORD_SECONDS = 0.5
_PAUSE_SECONDS = 0.7
_SECONDS = 300


class Voice:
    def __init__(self, stage):
        self._sound = stage.sound
        self._file = stage.desktop.folder / "voice.wav"
        self._player = None
        if not self._file.exists():
            self._write()

    def speak(self):
        """From now on, and again when the sound server has come back."""
        if self._player is None or self._player.poll() is not None:
            self._player = self._sound.speak(self._file)

    def stop(self):
        if self._player is not None:
            self._player.kill()
            self._player.wait()

    def _write(self):
        word = array.array("h", (int(12000 * math.sin(2 * math.pi * 440 * place / _RATE))
                                 for place in range(int(_WORD_SECONDS * _RATE))))
        pause = array.array("h", bytes(2 * int(_PAUSE_SECONDS * _RATE)))
        with wave.open(str(self._file), "wb") as sound:
            sound.setnchannels(1)
            sound.setsampwidth(2)
            sound.setframerate(_RATE)
            sound.writeframes((word + pause).tobytes() * int(_SECONDS / (_WORD_SECONDS + _PAUSE_SECONDS)))
