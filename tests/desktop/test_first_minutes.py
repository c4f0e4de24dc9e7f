"""A person's first minutes with the program: nothing is there yet, and no step needs a terminal."""

import subprocess
import unittest

from support import PROGRAM, DesktopTest

from harness.processes import Timeout, wait_until
from harness.program import BACKEND_PORT, Program, port_is_open
from harness.speech import recorded_sentences


class FirstMinutes(DesktopTest):
    REAL_TIME = True
    USES_PORT = True

    def start_in_a_fresh_home(self):
        self.open_fresh_desktop()
        self.program = Program(self.desktop, PROGRAM)
        self.program.wait_for_line("App gestartet")

    def speak_until_a_subtitle_is_shown(self):
        """Plays recorded speech until the panel shows the translation that has come back."""
        for sentence in recorded_sentences()[1:4]:
            self.sound.speak(sentence.file).wait()
            try:
                return wait_until(self.subtitle, "a subtitle in the panel", 15)
            except Timeout:
                continue
        self.fail(f"no subtitle; on screen: {self.accessibility.names(self.program.pid)}")

    def subtitle(self):
        """A translation that the backend has sent and the panel shows, or None."""
        mark = "📥 Übersetzung: "
        for line in self.program.lines():
            if line.startswith(mark) and self.is_on_screen(line[len(mark):]):
                return line[len(mark):]
        return None

    def test_from_a_fresh_home_to_a_subtitle_and_out(self):
        self.start_in_a_fresh_home()
        self.open_panel()
        self.install_backend()
        self.assertIn("✓ Backend installiert", self.program.lines())
        self.translate_english()
        self.speak_until_a_subtitle_is_shown()
        self.stop_and_quit()
        self.assertFalse(port_is_open(BACKEND_PORT))
        self.check_what_was_recorded()

    def check_what_was_recorded(self):
        """The installer's words and the server's are in a file of the user's own."""
        log = self.desktop.home / "Library/Application Support/Orvane/backend.log"
        self.assertEqual(log.stat().st_mode & 0o777, 0o600)
        starts = log.read_text().split(" UTC - Start: ")[1:]
        self.assertEqual([text.split("\n")[0].split("/")[-1] for text in starts],
                         ["install-backend", "server.py"])
        for text in starts:
            self.assertGreater(len(text.split("\n")[1]), 0)

    def test_an_installation_that_fails_says_why(self):
        self.start_in_a_fresh_home()
        # A file stands where the folder would have to be.
        library = self.desktop.home / "Library"
        subprocess.run(["touch", str(library)], check=True)
        self.open_panel()
        self.press("Start Backend")
        self.press("Install Backend")
        self.wait_for("Backend Installation Failed")
        self.press("OK")
        self.wait_for("❌ Backend not installed")
        # Mended, it works from the same place.
        library.unlink()
        self.press("Start Backend")
        self.press("Install Backend")
        self.accessibility.wait_for(self.program.pid, "Stop Backend")
        self.press("Quit")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()


if __name__ == "__main__":
    unittest.main()
