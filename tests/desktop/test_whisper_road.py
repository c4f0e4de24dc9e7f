"""From a fresh home to subtitles by Whisper, without a terminal: the server, the package and a model
come by a press each. pip takes the package from a folder, the package its model from a server on
loopback."""

import contextlib
import os
import pathlib
import subprocess
import sys
import unittest

from support import DesktopTest

from harness.processes import Timeout, wait_until

_BACKEND = pathlib.Path(__file__).resolve().parents[2] / "backend"
sys.path.insert(0, str(_BACKEND))

from tests import standins as _standins  # noqa: E402, F401
import standin_voice  # noqa: E402
from tests.model_server import ModelServer  # noqa: E402
from tests.wheels import make_faster_whisper, module  # noqa: E402

_SAID = "good morning this is a test of the speech server"
_SHOWN = "Good morning this is a test of the speech server."

# The package brings a model from the test's server, where the real one would ask the hub.
_DOWNLOAD = b"""

_there = download_model

def download_model(size, *arguments, local_files_only=False, **wishes):
    if not local_files_only:
        import os, urllib.request
        with urllib.request.urlopen(os.environ["TEST_MODELS"]) as answer:
            answer.read()
        standin_install(size)
    return _there(size, *arguments, local_files_only=True, **wishes)
"""


class WhisperRoad(DesktopTest):
    REAL_TIME = True
    USES_PORT = True

    def start_in_a_fresh_home(self):
        self.open_fresh_desktop()
        wheels = self.desktop.folder / "wheels"
        wheels.mkdir()
        files = module("faster_whisper", "faster_whisper")
        files["faster_whisper/utils.py"] += _DOWNLOAD
        make_faster_whisper(wheels, package=files)
        self.models = self.enterContext(ModelServer())
        self.start_on_loopback(
            PIP_NO_INDEX="1", PIP_FIND_LINKS=wheels.as_uri(), PIP_CONFIG_FILE=os.devnull,
            TEST_MODELS=self.models.address())

    def speech(self):
        """A file in which the stand-in hears `_SAID`, once the sound has come through unharmed."""
        file = self.desktop.folder / "said.wav"
        sound = standin_voice.speak(_SAID, 48000)
        subprocess.run(
            ["sox", "-t", "raw", "-e", "float", "-b", "32", "-c", "1", "-r", "48000", "-", "-b",
             "16", str(file), "gain", "-3"], input=sound.tobytes(), check=True)
        return file

    def open_settings(self):
        self.press("Settings")
        self.press("Whisper")

    def close_settings(self):
        self.close_window(lambda: not self.is_on_screen("Base: Delete"))
        # The panel has closed when the settings came.
        self.open_panel()

    def subtitle(self):
        """Whether the panel shows the translation of exactly what was said."""
        lines = self.program.lines()
        if f"📥 Original: {_SHOWN}" not in lines:
            return False
        translation = lines[lines.index(f"📥 Original: {_SHOWN}") + 1]
        return self.is_on_screen(translation.removeprefix("📥 Übersetzung: "))

    def speak_until_it_is_shown(self):
        file = self.speech()
        # A machine that cannot give the sound server its time tears the sound.
        for _ in range(4):
            self.sound.speak(file).wait()
            with contextlib.suppress(Timeout):
                return wait_until(self.subtitle, "a subtitle in the panel", 20)
        self.fail(f"on screen: {self.accessibility.names(self.program.pid)}")

    def test_from_a_fresh_home_to_subtitles_by_whisper(self):
        self.start_in_a_fresh_home()
        self.open_panel()
        self.install_backend()
        # It runs on while its packages are exchanged.
        self.open_settings()
        self.wait_for("openai-whisper: Install")
        self.wait_for("Models can be downloaded once Whisper is installed.")
        self.press("faster-whisper: Install")
        self.wait_for("In use")
        self.press("Base: Download")
        self.wait_for("Base: Delete")
        self.assertTrue(self.models.requests, "the model has come from the server")
        self.close_settings()

        self.translate_english()
        self.speak_until_it_is_shown()
        self.assertFalse(self.is_on_screen("Whisper is not installed"))
        self.stop_and_quit()


if __name__ == "__main__":
    unittest.main()
