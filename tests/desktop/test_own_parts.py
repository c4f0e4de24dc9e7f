"""An engine and an output that somebody added, each in one file of its own (see program/): the rest of
the program, which does not know them, offers them, asks for what they need and uses them."""

import pathlib
import tempfile
import unittest

from support import INSTALL_BACKEND, ON_LOOPBACK, DesktopTest

from harness.processes import wait_until
from harness.program import read_settings
from harness.road import Road
from harness.speech import recorded_sentences


class OwnParts(DesktopTest):
    REAL_TIME = True
    USES_PORT = True

    def open(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        self.written = pathlib.Path(folder) / "own output"
        self.road = self.enterContext(Road(
            ON_LOOPBACK, INSTALL_BACKEND, environment={"ORVANE_OWN_OUTPUT": str(self.written)}))
        self.desktop, self.program = self.road.desktop, self.road.program
        self.accessibility = self.road.accessibility

    def choose_the_engine(self):
        """In the settings, where it is asked for its key under its own name."""
        self.road.show_panel()
        self.press("Settings")
        self.press("Engines")
        self.press("Abacus")
        self.wait_until_stored("sttEngine", "counting")
        self.wait_for("STT: Zählen (direkt) · Kein Backend nötig")
        self.wait_until_active("ORV Settings")
        key = self.wait_for("Abacus: API Key", "password text")
        self.assertTrue(self.accessibility.grab_focus(key))
        self.desktop.type("abacus")
        self.wait_until_stored("azureApiKey", "abacus")
        self.press("Info")
        self.wait_for("Abacus")
        self.close_window(lambda: not self.is_on_screen("ORV Settings"))

    def results(self):
        return [(subtitle.original, subtitle.translation) for subtitle in self.road.subtitles()]

    def test_are_offered_and_used_like_the_programs_own(self):
        self.open()
        self.choose_the_engine()
        self.road.show_panel()
        self.road.start_backend()
        self.road.start_translation()
        self.program.wait_for_line("✅ Direct Engine CountingEngine verbunden")
        self.road.sound.speak(recorded_sentences()[1].file).wait()
        wait_until(self.results, "the first result on the overlay page")
        self.wait_for("chunk 1")
        self.road.stop_translation()
        self.assertEqual(self.road.quit(), 0)
        expected = [(f"chunk {n}", f"Stück {n}") for n in range(1, len(self.own_output()) + 1)]
        self.assertGreaterEqual(len(expected), 1)
        self.assertEqual(self.own_output(), expected)
        # The speech server, which knows no such engine, keeps a transcript of its own beside it.
        self.assertIn(expected, self.transcripts())
        self.assertEqual(read_settings(self.desktop)["sttEngine"], "counting")

    def own_output(self):
        lines = self.written.read_text(encoding="utf-8").splitlines()
        return [tuple(line.split("|")) for line in lines]

    def transcripts(self):
        """The results in each file of the run."""
        folder = self.desktop.home / "Library" / "Application Support" / "Orvane" / "output"
        return [_results_in(file) for file in folder.glob("transcript_*.txt")]


def _results_in(file):
    lines = file.read_text(encoding="utf-8").splitlines()
    return list(zip([line.removeprefix("Original: ") for line in lines
                     if line.startswith("Original: ")],
                    [line.removeprefix("Translation: ") for line in lines
                     if line.startswith("Translation: ")]))


if __name__ == "__main__":
    unittest.main()
