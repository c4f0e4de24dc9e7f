"""Starting twice, being killed, losing the desktop, and what is left of the program afterwards."""

import os
import pathlib
import signal
import unittest

from support import PROGRAM, DesktopTest

from harness.processes import wait_until
from harness.program import BACKEND_PORT, Program, free_port, port_is_open, read_settings
from harness.session import Session

_PANEL_WIDTH = 300  # At least; the item in the tray is a narrow window.


class Life(DesktopTest):
    USES_PORT = True

    def start_again(self, **environment):
        return Program(self.desktop, PROGRAM, environment=environment)

    def panels(self):
        return [place for place in self.desktop.windows("orvane") if place[2] >= _PANEL_WIDTH]

    def test_a_second_start_shows_the_panel_of_the_first(self):
        self.open_desktop()
        self.start_program()
        wait_until(self.desktop.tray_item, "the program's item in the tray")
        place = self.desktop.tray_window()
        self.assertEqual(self.panels(), [])
        second = self.start_again()
        self.assertEqual(second.wait_for_end(), 0)
        self.assertEqual(second.lines(), [])
        self.wait_for("Quit")
        self.assertEqual(self.desktop.tray_window(), place, "one item in the tray")
        # Again, while the panel is open.
        self.assertEqual(self.start_again().wait_for_end(), 0)
        self.wait_for("Quit")
        wait_until(lambda: len(self.panels()) == 1, "one panel")

    def test_a_second_start_shows_the_window_where_there_is_no_tray(self):
        self.open_desktop(tray=False)
        self.start_program()
        self.wait_for("Quit")
        self.assertEqual(self.start_again().wait_for_end(), 0)
        wait_until(lambda: len(self.panels()) == 1, "one window")

    def test_another_home_is_another_program(self):
        self.open_desktop()
        self.start_program()
        other = self.desktop.folder / "other home"
        other.mkdir()
        program = self.start_again(HOME=str(other), XDG_CONFIG_HOME=str(other / ".config"))
        program.wait_for_line("App gestartet")
        self.assertIsNone(self.program.process.poll())
        self.assertEqual(program.terminate(), 0)

    def test_a_start_while_the_first_one_quits_takes_its_place(self):
        self.open_desktop()
        self.start_program()
        self.quit_by_the_menu()
        second = self.start_again()
        second.wait_for_line("App gestartet")
        self.assertEqual(self.program.wait_for_end(), 0)
        self.assertEqual(second.terminate(), 0)

    def test_a_start_while_the_panels_quit_is_under_way_takes_its_place(self):
        self.open_desktop()
        self.start_program()
        self.open_panel()
        self.press("Quit")
        self.program.wait_for_line("🛑 Beende App...")
        second = self.start_again()
        second.wait_for_line("App gestartet")
        self.assertEqual(self.program.wait_for_end(), 0)
        self.assertEqual(second.terminate(), 0)

    def test_a_killed_program_leaves_a_state_that_works(self):
        self.start_with_backend(targetLang="es")
        self.open_panel()
        self.press("Start Translation")
        wait_until(self.sound.recording_streams, "the program to listen")
        self.press("Show Original Text")
        wait_until(lambda: "showOriginal" in read_settings(self.desktop), "the choice to be stored")
        chosen = read_settings(self.desktop)
        self.program.process.kill()
        self.program.wait_until_nothing_is_left()
        wait_until(lambda: not port_is_open(BACKEND_PORT), "the backend's end")

        self.start_automatically()
        self.assertEqual(read_settings(self.desktop), chosen)
        self.open_panel()
        self.press("Start Translation")
        wait_until(self.sound.recording_streams, "the program to listen again")
        self.press("Quit")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()

    def test_the_end_of_the_display_leaves_nothing(self):
        self.start_with_backend()
        display = next(process for process in self.desktop.children._processes
                       if process.args[0] == "Xvfb")
        display.kill()
        self.program.wait_for_end()
        self.program.wait_until_nothing_is_left()
        self.assertFalse(port_is_open(BACKEND_PORT))

    def end_session(self, tray):
        """Ends the session of a program that runs its backend."""
        self.open_desktop_for_backend(tray=tray, autoStartBackend=True)
        session = Session(self.desktop)
        self.program = self.start_again(**session.environment)
        session.wait_for_program()
        self.program.wait_for_line("✓ Backend läuft auf Port")
        session.end()
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.assertIn("App wird beendet - stoppe Backend (autoStopBackend=true)...",
                      self.program.lines())
        self.program.wait_until_nothing_is_left()

    def test_the_end_of_the_session_ends_it_in_order(self):
        self.end_session(tray=True)

    def test_a_window_does_not_hold_up_the_end_of_the_session(self):
        # Closed by its user, this window would only become small: the backend runs.
        self.end_session(tray=False)

    def test_a_home_whose_name_is_not_utf8_is_said(self):
        self.open_desktop(sound=False)
        home = os.fsencode(self.desktop.folder) + b"/J\xf6rg"
        os.mkdir(home)
        program = self.start_again(HOME=os.fsdecode(home))
        program.wait_for_line("❌ Der Name des Benutzerordners ist kein UTF-8")
        program.wait_for_line("App gestartet")
        program.process.send_signal(signal.SIGTERM)
        self.assertEqual(program.wait_for_end(), 0, program.tail())

    def test_quitting_leaves_no_process_no_port_and_no_temporary_file(self):
        port = free_port()
        temporary = None

        def files():
            folders = [temporary, pathlib.Path(self.desktop.environment["XDG_RUNTIME_DIR"]),
                       self.desktop.home]
            return {str(file) for folder in folders for file in folder.rglob("*")
                    if not file.is_dir()}

        self.open_desktop_for_backend(autoStartBackend=True, obsOverlayEnabled=True,
                                      obsOverlayPort=port)
        temporary = self.desktop.folder / "temporary"
        temporary.mkdir()
        self.desktop.environment["TMPDIR"] = str(temporary)
        before = files()
        self.start_automatically()
        wait_until(lambda: port_is_open(port), "the browser overlay")
        doors = [file for file in files() - before if pathlib.Path(file).is_socket()]
        self.assertEqual(len(doors), 1, "for later starts, in the user's own folder")
        self.open_panel()
        self.press("Start Translation")
        wait_until(self.sound.recording_streams, "the program to listen")
        self.press("Quit")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()
        self.assertFalse(port_is_open(port))
        self.assertFalse(port_is_open(BACKEND_PORT))
        left = {file for file in files() - before if "/__pycache__/" not in file}
        kept = str(self.desktop.home / "Library" / "Application Support" / "Orvane")
        self.assertEqual({file for file in left if not file.startswith(kept)}, set())
        self.assertEqual([file for file in left if pathlib.Path(file).suffix not in
                          (".txt", ".srt", ".log")], [], "transcripts and the log are meant to stay")


if __name__ == "__main__":
    unittest.main()
