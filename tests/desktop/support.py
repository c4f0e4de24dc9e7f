"""What the desktop tests share. CTest names the program and the installer in the environment."""

import contextlib
import os
import sys
import unittest

from harness.accessibility import Accessibility
from harness.desktop import SCREEN, Desktop
from harness.portal import Portal
from harness.processes import end_on_signals, wait_until
from harness.program import (BACKEND_PORT, Program, port_is_open, read_settings,
                             write_settings)
from harness.sound import Sound
from harness.speech_server import install_speech_server

PROGRAM = os.environ["ORVANE_PROGRAM"]
ON_LOOPBACK = os.environ["ORVANE_ON_LOOPBACK"]
INSTALL_BACKEND = os.environ["ORVANE_INSTALL_BACKEND"]

end_on_signals()


class EveryLanguage:
    """To be mixed into a test that has `walk(language)`: does it in each language of the program."""

    def test_everything_in_german(self):
        self.walk("de")

    def test_everything_in_english(self):
        self.walk("en")

    def test_everything_in_spanish(self):
        self.walk("es")

    def test_everything_in_french(self):
        self.walk("fr")

    def test_everything_in_italian(self):
        self.walk("it")


class DesktopTest(unittest.TestCase):
    """A test that works on a private desktop. One to a process: see harness.accessibility."""

    def _callTestMethod(self, method):
        """Adds to a failure how each program of the test is, and what it logged last."""
        try:
            super()._callTestMethod(method)
        except Exception:
            for program in Program.started:
                print(f"{program.log_file.name}, status {program.process.poll()}, ends with:\n"
                      f"{program.tail(60)}", file=sys.stderr)
            raise

    def open_desktop(self, tray=True, sound=True, portal=None, screen=SCREEN, **settings):
        context = contextlib.ExitStack()
        self.addCleanup(context.close)
        self.desktop = context.enter_context(Desktop(tray=tray, screen=screen))
        if portal:
            self.portal = Portal(self.desktop, portal)
        if sound:
            self.sound = Sound(self.desktop)
        else:
            self.desktop.environment["PULSE_SERVER"] = f"unix:{self.desktop.folder}/nobody"
        write_settings(self.desktop, {"uiLanguage": "en", **settings})
        self.accessibility = Accessibility(self.desktop)

    def start_program(self):
        self.program = Program(self.desktop, PROGRAM)
        self.program.wait_for_line("App gestartet")
        return self.program

    def start_on_loopback(self, **environment):
        """Starts the program with all its services on loopback, where `environment` may name them,
        and with an opener that only writes down what it is asked to show: see `opened`."""
        folder = self.desktop.folder / "programs"
        folder.mkdir(exist_ok=True)
        self._opened = folder / "opened"
        opener = folder / "xdg-open"
        opener.write_text(f'#!/bin/sh\necho "$1" >> "{self._opened}"\n')
        opener.chmod(0o755)
        path = f"{folder}:{self.desktop.environment['PATH']}"
        # Its windows are known to the desktop by the program's own name.
        self.program = Program(self.desktop, ON_LOOPBACK, environment={
            **environment, "PATH": path, "RESOURCE_NAME": "orvane"})
        self.program.wait_for_line("App gestartet")
        return self.program

    def opened(self):
        """The addresses and folders that the desktop was asked to show so far."""
        return self._opened.read_text().splitlines() if self._opened.exists() else []

    def open_desktop_for_backend(self, **settings):
        """A desktop whose user has the backend installed, as soon as nobody else uses its port."""
        wait_until(lambda: not port_is_open(BACKEND_PORT), "the backend's port to be free", 60)
        self.open_desktop(**settings)
        install_speech_server(self.desktop, INSTALL_BACKEND)

    def open_fresh_desktop(self):
        """A desktop of a user of whom nothing has ever been written: its language decides."""
        wait_until(lambda: not port_is_open(BACKEND_PORT), "the backend's port to be free", 60)
        self.open_desktop()
        (self.desktop.home / ".config" / "orvane" / "defaults.json").unlink()

    def install_backend(self):
        """Has the panel install the backend. What was asked for happens then, without another press."""
        self.press("Start Backend")
        self.wait_for("Backend Not Found")
        self.press("Install Backend")
        self.wait_for("Stop Backend")

    def translate_english(self):
        """Starts translating English into Spanish, until the program listens."""
        self.choose_language("From", "english")
        self.choose_language("To", "espa")
        self.press("Start Translation")
        self.program.wait_for_line("✓ Config gesendet")
        wait_until(self.sound.recording_streams, "the program to listen")

    def stop_and_quit(self):
        """Ends the run and the program, which leaves nothing behind."""
        self.press("Stop Translation")
        self.wait_for("Start Translation", "push button")
        wait_until(lambda: not self.is_on_screen("Processing last translation..."),
                   "the end of the run", 60)
        self.press("Quit")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.program.wait_until_nothing_is_left()

    def start_with_backend(self, **settings):
        self.open_desktop_for_backend(autoStartBackend=True, **settings)
        self.start_automatically()

    def start_automatically(self):
        self.program = Program(self.desktop, PROGRAM)
        self.program.wait_for_line("Auto-Start Backend aktiviert")
        self.program.wait_for_line("✓ Backend läuft auf Port")

    def open_panel(self, name="Quit"):
        """Opens the panel and waits for the focus: only a window that has it notices that the user
        turns elsewhere."""
        self.desktop.click_tray()
        self.accessibility.wait_for(self.program.pid, name)
        self.wait_until_active()

    def wait_until_active(self, title=None, role=None):
        """Waits until the window called `title`, or any of the program's, gets the keys: the window
        manager gives the focus some time after a window has come, or another has gone."""

        def active():
            return self.accessibility.is_active(self.wait_for(title, role)) if title else (
                self.accessibility.has_active_window(self.program.pid))

        wait_until(active, f"{title or 'the window'} to have the focus")

    def close_window(self, closed):
        """Closes the window with the focus by the window manager's key, until `closed()`: the window
        manager grabs its keys anew when the desktop's first keys come in, and misses what is pressed
        meanwhile."""
        self.wait_until_active()

        def tried():
            if not closed():
                self.desktop.key("alt+F4")
            return closed()

        wait_until(tried, "the window to close", interval=1.0)

    def press(self, name):
        self.accessibility.press(self.program.pid, name)

    def is_on_screen(self, name, role=None):
        return self.accessibility.find(self.program.pid, name, role) is not None

    def wait_for(self, name, role=None):
        return self.accessibility.wait_for(self.program.pid, name, role)

    def wait_until_stored(self, key, value):
        wait_until(lambda: read_settings(self.desktop).get(key) == value,
                   f"{key} to be stored as {value!r}")

    def menus(self):
        """Where the menu is that stands below the tray's item, while the panel is closed."""
        tray = self.desktop.tray_window()
        if tray is None:  # It goes for a moment when it changes its size.
            return []
        x, y, width, height = tray
        return [place for place in self.desktop.windows("orvane")
                if place[1] >= y + height and place[2] > width]

    def wait_for_menu(self):
        wait_until(self.menus, "the menu")

    def quit_by_the_menu(self):
        self.desktop.click_tray(button=3)
        self.wait_for_menu()
        self.press_quit_in_the_menu()

    def press_quit_in_the_menu(self):
        """Presses the key of Quit, again if the menu, which has just come, misses the first."""

        def tried():
            if self.menus():
                self.desktop.key("q")
            return "🛑 App wird beendet..." in self.program.lines()

        wait_until(tried, "the program to quit", interval=1.0)

    def wait_until_the_menu_is_gone(self):
        wait_until(lambda: not self.menus(), "the menu to close")

    def wait_until_gone(self, name):
        wait_until(lambda: not self.is_on_screen(name), f"{name!r} to leave the screen")

    def choose_language(self, name, typed):
        """Clicks into the field and types a part of the language's name."""
        self.click_on(name, "combo box")
        self.desktop.type(typed)
        self.desktop.key("Return")

    def click_on(self, name, role):
        x, y, width, height = self.accessibility.extents(self.wait_for(name, role))
        self.desktop.click(x + width // 3, y + height // 2)
