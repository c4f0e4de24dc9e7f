"""However the program ends, it leaves nothing behind that nobody wants."""

import contextlib
import os
import signal
import unittest

from support import PROGRAM, DesktopTest

from harness import isolation
from harness.name_server import SilentNameServer
from harness.processes import wait_until
from harness.program import BACKEND_PORT, Program, port_is_open
from harness.scripted_backend import ScriptedBackend, result

# Listens where the speech server does, and ends by force only.
_STUBBORN_SERVER = f"""
import signal, socket
for ignored in (signal.SIGTERM, signal.SIGINT):
    signal.signal(ignored, signal.SIG_IGN)
server = socket.create_server(("localhost", {BACKEND_PORT}))
while True:
    server.accept()
"""


class Endings(DesktopTest):
    USES_PORT = True
    JOURNEYS = (
        "terminating_while_it_translates_ends_everything",
        "interrupting_ends_everything",
        "a_second_interrupt_does_not_cut_the_end_short",
        "killing_leaves_the_backend_that_the_user_wants_to_stay",
        "the_backend_stays_when_the_user_wants_it_to",
        "the_menus_quit_stops_the_backend_whatever_the_setting_says",
        "the_menus_quit_ends_a_backend_that_obeys_nothing",
        "closing_the_only_window_keeps_a_program_with_a_backend_in_reach",
        "closing_the_only_window_does_not_stop_a_backend_that_starts",
        "closing_the_only_window_does_not_break_off_an_installation",
    )

    def test_terminating_while_it_translates_ends_everything(self):
        self.start_with_backend()
        self.open_panel()
        self.press("Start Translation")
        wait_until(self.sound.recording_streams, "the program to listen")
        self.program.process.send_signal(signal.SIGTERM)
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.assertIn("App wird beendet - stoppe Backend (autoStopBackend=true)...",
                      self.program.lines())
        self.program.wait_until_nothing_is_left()
        self.assertFalse(port_is_open(BACKEND_PORT))

    def test_interrupting_ends_everything(self):
        self.start_with_backend()
        self.program.process.send_signal(signal.SIGINT)
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()

    @unittest.skipUnless(isolation.succeeded(), "where there is no network of the test's own")
    def test_a_silent_name_server_holds_up_neither_quit_nor_the_next_start(self):
        self.open_desktop(vmixEnabled=True, vmixHost="studio.example", sttEngine="deepgram",
                          deepgramApiKey="key")
        names = SilentNameServer(self.desktop.folder)
        backend = ScriptedBackend(self.desktop)
        self.start_program()
        self.open_panel()
        self.press("Start Backend")
        self.press("Start Translation")
        wait_until(backend.configurations, "a run")
        backend.publish(result("heard", "said"))
        wait_until(lambda: names.asked() >= {"studio.example", "api.deepgram.com"},
                   "questions for names")
        self.press("Quit")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()
        self.start_program()  # Nobody says that it runs already.

    def test_killing_leaves_the_backend_that_the_user_wants_to_stay(self):
        self.start_with_backend(autoStopBackend=False)
        self.addCleanup(self.end, self.program)
        self.program.process.kill()
        self.program.wait_for_end()
        self.assertEqual(len(self.program.processes()), 1)
        self.start_again_and_adopt()

    def test_the_backend_stays_when_the_user_wants_it_to(self):
        self.start_with_backend(autoStopBackend=False)
        self.program.process.send_signal(signal.SIGHUP)
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.assertIn("App wird beendet - Backend läuft weiter (autoStopBackend=false)",
                      self.program.lines())
        self.assertTrue(port_is_open(BACKEND_PORT))
        self.addCleanup(self.end, self.program)
        self.start_again_and_adopt()

    def start_again_and_adopt(self):
        """Another start adopts the backend, and does not end what it did not start."""
        self.program = Program(self.desktop, PROGRAM)
        self.program.wait_for_line("✓ Backend läuft bereits auf Port 8765")
        self.assertEqual(self.program.terminate(), 0)
        self.assertTrue(port_is_open(BACKEND_PORT))

    def end(self, program):
        for pid in program.processes():
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGTERM)
        program.wait_until_nothing_is_left()

    def test_the_menus_quit_stops_the_backend_whatever_the_setting_says(self):
        self.start_with_backend(autoStopBackend=False)
        self.quit_by_the_menu()
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()

    def test_the_menus_quit_ends_a_backend_that_obeys_nothing(self):
        self.open_desktop_for_backend(autoStartBackend=True)
        self.backend_program().write_text(_STUBBORN_SERVER)
        self.start_automatically()
        self.quit_by_the_menu()
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        # In the second that follows each: the signals of one stop, not of two.
        for line in ("⚠️ Backend noch aktiv, force stop...",
                     "⚠️ Backend reagiert nicht auf SIGTERM, sende SIGINT...",
                     "⚠️ Backend reagiert nicht, sende SIGKILL..."):
            self.assertEqual(self.program.lines().count(line), 1, self.program.tail())
        self.program.wait_until_nothing_is_left()
        self.assertFalse(port_is_open(BACKEND_PORT))

    def test_a_second_interrupt_does_not_cut_the_end_short(self):
        self.open_desktop_for_backend(autoStartBackend=True)
        self.backend_program().write_text(_STUBBORN_SERVER)
        self.start_automatically()
        self.program.process.send_signal(signal.SIGINT)
        self.program.wait_for_line("🛑 Stoppe Backend...")
        self.program.process.send_signal(signal.SIGINT)
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()
        self.assertFalse(port_is_open(BACKEND_PORT))

    def backend_program(self):
        support = self.desktop.home / "Library" / "Application Support" / "Orvane"
        return support / "backend" / "server.py"

    def test_closing_the_only_window_keeps_a_program_with_a_backend_in_reach(self):
        self.start_with_backend(tray=False)
        self.wait_for("Stop Backend", "push button")
        self.close_the_window_and_bring_it_back()

    def close_the_window_and_bring_it_back(self):
        """Small, not gone: the window manager brings it back."""
        self.close_window(lambda: not self.desktop.windows("orvane"))
        self.assertIsNone(self.program.process.poll())
        self.desktop.key("alt+Tab")
        wait_until(lambda: self.desktop.windows("orvane"), "the window to come back")

    def test_closing_the_only_window_does_not_stop_a_backend_that_starts(self):
        self.open_desktop_for_backend(tray=False)
        self.start_program()
        self.press("Start Backend")
        self.program.wait_for_line("✓ Backend-Prozess gestartet")
        self.close_the_window_and_bring_it_back()
        self.accessibility.wait_for(self.program.pid, "Stop Backend", "push button")

    def test_closing_the_only_window_does_not_break_off_an_installation(self):
        wait_until(lambda: not port_is_open(BACKEND_PORT), "the backend's port to be free", 60)
        self.open_desktop(tray=False)
        self.start_program()
        self.press("Start Backend")
        self.press("Install Backend")
        self.wait_until_gone("Install Backend")
        self.close_the_window_and_bring_it_back()
        self.accessibility.wait_for(self.program.pid, "Stop Backend")


if __name__ == "__main__":
    unittest.main()
