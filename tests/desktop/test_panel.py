"""The tray, the panel and its window, used the way a person uses them."""

import unittest

from support import DesktopTest

from harness.processes import wait_until
from harness.program import BACKEND_PORT, port_is_open, read_settings, write_settings

_LAST_SWITCH = {"en": "Smart Pause Detection", "de": "Intelligente Pausenerkennung",
                "es": "Detección inteligente de pausas",
                "fr": "Détection intelligente des pauses",
                "it": "Rilevamento intelligente delle pause"}


class Panel(DesktopTest):
    USES_PORT = True

    def test_a_click_on_the_tray_opens_and_closes_the_panel(self):
        self.open_desktop()
        self.start_program()
        wait_until(self.desktop.tray_item, "the program's item in the tray")
        self.assertFalse(self.is_on_screen("Quit"))
        self.open_panel()
        self.desktop.click_tray()
        self.wait_until_gone("Quit")
        self.open_panel()

    def test_the_panel_closes_when_the_user_turns_elsewhere(self):
        self.open_desktop()
        self.start_program()
        self.open_panel()
        self.desktop.click(200, 700)
        self.wait_until_gone("Quit")

    def test_a_right_click_shows_the_menu_whose_quit_ends_the_program(self):
        self.open_desktop()
        self.start_program()
        self.desktop.click_tray(button=3)
        self.wait_for_menu()
        icon = min(self.desktop.windows("orvane"), key=lambda place: place[2])
        wait_until(lambda: self.menus()[0][1] == icon[1] + icon[3] + 5,
                   "the menu to stand a little below the icon")
        self.press_quit_in_the_menu()
        self.assertEqual(self.program.wait_for_end(), 0)

    def test_without_a_tray_the_panel_is_a_window_and_closing_it_ends_an_idle_program(self):
        self.open_desktop(tray=False)
        self.start_program()
        self.wait_for("Start Translation", "push button")
        self.look_into_the_settings()
        self.close_window(lambda: self.program.process.poll() is not None)
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())

    def look_into_the_settings(self):
        """Opens the settings beside the window, which stays, and closes them."""
        self.press("Settings")
        self.wait_until_active("ORV Settings")
        self.wait_for("Start Translation", "push button")
        self.desktop.key("Escape")
        self.wait_until_gone("ORV Settings")
        self.wait_for("Start Translation", "push button")
        self.wait_until_active()

    def test_starting_without_a_backend_is_refused(self):
        self.open_desktop()
        self.start_program()
        self.open_panel()
        self.press("Start Translation")
        self.wait_for("Please start the backend first.")
        self.press("OK")
        self.wait_until_gone("Please start the backend first.")
        self.wait_for("Start Translation", "push button")
        self.assertNotIn("📢 Translation Status Changed: true", self.program.lines())

    def test_a_missing_speech_server_is_said(self):
        wait_until(lambda: not port_is_open(BACKEND_PORT), "the backend's port to be free", 60)
        self.open_desktop()
        self.start_program()
        self.open_panel()
        self.press("Start Backend")
        self.wait_for("Backend Not Found")
        self.press("OK")
        self.wait_for("❌ Backend not installed")

    def test_a_missing_sound_server_is_said(self):
        self.open_desktop(sound=False)
        self.start_program()
        self.open_panel()
        self.wait_for("Audio server not available")

    def test_the_panel_speaks_german(self):
        self.open_desktop(uiLanguage="de")
        self.start_program()
        self.open_panel("Beenden")
        for name in ("Backend starten", "Übersetzung starten", "🎤 Mikrofon"):
            self.wait_for(name)

    def test_a_key_starts_and_escape_closes_the_panel(self):
        self.open_desktop()
        self.start_program()
        self.open_panel()
        self.desktop.key("ctrl+Return")
        self.wait_for("Please start the backend first.")
        self.press("OK")
        self.wait_until_gone("Please start the backend first.")
        self.press_until_gone("Escape", "Quit")

    def press_until_gone(self, key, name):
        """The window manager gives the focus back some time after an alert has gone."""

        def gone():
            self.desktop.key(key)
            return not self.is_on_screen(name)

        wait_until(gone, f"{name!r} to leave the screen", interval=0.5)

    def test_the_panel_follows_the_desktop_from_light_to_dark(self):
        self.open_desktop(portal="light")
        self.start_program()
        self.open_panel()
        wait_until(lambda: self.panel_ground() > 0.9, "a light panel")
        self.portal.set_scheme("dark")
        wait_until(lambda: self.panel_ground() < 0.2, "a dark panel")
        self.portal.set_scheme("light")
        wait_until(lambda: self.panel_ground() > 0.9, "a light panel again")

    def panel_ground(self):
        """How bright the panel is, 0..1, near its upper left corner."""
        x, y, width, height = max(self.desktop.windows("orvane"), key=lambda place: place[2])
        return self.desktop.brightness(x + 6, y + 6)

    def test_the_panel_fits_a_low_screen_in_every_language(self):
        self.open_desktop(screen="1280x768x24")
        for language, start in (("en", "Start Translation"), ("de", "Übersetzung starten"),
                                ("es", "Iniciar traducción"), ("fr", "Démarrer la traduction"),
                                ("it", "Avvia traduzione")):
            with self.subTest(language):
                write_settings(self.desktop, {"uiLanguage": language})
                self.start_program()
                self.desktop.click_tray()
                x, y, width, height = self.accessibility.extents(self.wait_for(start))
                self.assertLessEqual(x + width, 1280)
                self.assertLessEqual(y + height, 768)
                self.assertGreaterEqual(height, 30)
                # Everything stands on screen at once: no section has to be scrolled to.
                pause = self.accessibility.extents(self.wait_for(_LAST_SWITCH[language]))
                self.assertLess(pause[1] + pause[3], y)
                self.program.terminate()
                self.desktop.wait_until_tray_is_empty()

    def test_choices_last_beyond_a_restart(self):
        self.open_desktop()
        self.start_program()
        self.open_panel()
        self.press("Show Original Text")
        self.press("Smart Pause Detection")
        self.choose_language("From", "suomi")
        self.choose_language("To", "espa")
        self.choose_with_keys("Microphone", "Microphone")
        self.press("🔊 System Audio")
        for key, value in (("showOriginal", True), ("sourceLang", "fi"), ("targetLang", "es"),
                           ("audioSourceType", 1)):
            self.wait_until_stored(key, value)
        self.program.terminate()
        self.desktop.wait_until_tray_is_empty()

        self.start_program()
        self.open_panel()
        self.assertTrue(self.accessibility.is_checked(self.program.pid, "Show Original Text"))
        self.assertFalse(self.accessibility.is_checked(self.program.pid, "Smart Pause Detection"))
        self.assertTrue(self.accessibility.is_checked(self.program.pid, "🔊 System Audio"))
        self.assertIn("Suomi", self.accessibility.value_text(self.program.pid, "From"))
        self.assertIn("Español", self.accessibility.value_text(self.program.pid, "To"))
        settings = read_settings(self.desktop)
        self.assertEqual((settings["sourceLang"], settings["targetLang"]), ("fi", "es"))
        self.assertEqual(settings["selectedInputDevice"], "orvane_microphone")

    def choose_with_keys(self, name, entry):
        """Gives the field the focus and types the beginning of the entry."""
        self.click_on(name, "combo box")
        self.wait_for(entry, "list item")
        self.desktop.type(entry)
        self.desktop.key("Return")


if __name__ == "__main__":
    unittest.main()
