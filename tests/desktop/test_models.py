"""Downloads of speech models and the ends of the program, by the speech server's own script, with a
stand-in for the recognition library and a server on loopback that stops half way."""

import pathlib
import signal
import sys
import unittest

from support import DesktopTest

from harness.processes import wait_until

_BACKEND = pathlib.Path(__file__).resolve().parents[2] / "backend"
sys.path.insert(0, str(_BACKEND))

from tests.model_server import CONTENT, Answer, ModelServer  # noqa: E402

# The first length that is half of it.
_HALF = (len(CONTENT) + 1) // 2

_LIBRARY = """
import os
log_mel_spectrogram = None
_MODELS = {{"tiny": {address!r}}}

def load_model(name):
    path = os.path.join(os.environ["XDG_CACHE_HOME"], "whisper", name + ".pt")
    if os.path.getsize(path) != {size}:
        raise RuntimeError("this is no model")
"""


class Models(DesktopTest):
    JOURNEYS = ("quitting_ends_a_download_that_goes_on_another_day",
                "killing_the_program_ends_a_download")

    def open_desktop_with_a_download(self):
        """Has a program without a tray, and a download that waits half way."""
        self.open_desktop(tray=False, sound=False)
        support = self.desktop.home / "Library" / "Application Support" / "Orvane"
        (support / "venv" / "bin").mkdir(parents=True)
        (support / "venv" / "bin" / "python3").symlink_to("/usr/bin/python3")
        (support / "backend").symlink_to(_BACKEND)
        self.server = self.enterContext(ModelServer(Answer(sends=_HALF, holds=True)))
        self.library = self.desktop.folder / "library"
        self.library.mkdir()
        (self.library / "whisper.py").write_text(
            _LIBRARY.format(address=self.server.address(), size=len(CONTENT)))
        (self.library / "torch.py").touch()
        self.cache = self.desktop.home / ".cache" / "whisper"
        self.start_download()
        self.wait_for("Downloading: 50%")

    def start_download(self):
        self.start_on_loopback(PYTHONPATH=str(self.library), PYTHONDONTWRITEBYTECODE="1")
        self.press("Settings")
        self.press("Whisper")
        # It is offered once the server has told that something could load the model.
        self.wait_for("In use")
        self.press("Tiny: Download")

    def expect_the_part(self):
        self.assertEqual((self.cache / "tiny.pt.part").read_bytes(), CONTENT[:_HALF])
        self.assertFalse((self.cache / "tiny.pt").exists())

    def expect_the_rest_to_come(self):
        self.program.wait_for_line("✓ Whisper-Modell geladen: tiny")
        self.assertEqual((self.cache / "tiny.pt").read_bytes(), CONTENT)
        self.assertEqual(self.server.ranges(), [None, f"bytes={_HALF}-"])

    def test_closing_the_only_window_does_not_break_off_a_download(self):
        self.open_desktop_with_a_download()
        # The settings, and then the panel, which becomes small.
        self.close_window(lambda: not self.desktop.windows("orvane"))
        self.assertIsNone(self.program.process.poll())
        self.server.release.set()
        self.expect_the_rest_to_come()
        self.desktop.key("alt+Tab")
        wait_until(lambda: self.desktop.windows("orvane"), "the window to come back")

    def test_quitting_ends_a_download_that_goes_on_another_day(self):
        self.open_desktop_with_a_download()
        self.press("Quit")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()
        self.expect_the_part()
        self.start_download()
        self.wait_for("Tiny: Delete")
        self.expect_the_rest_to_come()

    def test_killing_the_program_ends_a_download(self):
        self.open_desktop_with_a_download()
        self.program.process.send_signal(signal.SIGKILL)
        self.program.wait_for_end()
        self.program.wait_until_nothing_is_left()
        self.expect_the_part()


if __name__ == "__main__":
    unittest.main()
