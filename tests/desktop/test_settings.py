"""The settings window of the whole program, by what its controls are called."""

import unittest

from support import DesktopTest

from harness.processes import wait_until
from harness.program import read_settings, settings_file

# The tabs in each language of the interface, and the panel's button that opens them.
LANGUAGES = {
    "de": ("Einstellungen", ["Allgemein", "Engines", "Whisper", "Sprachen", "Speicher", "Info"]),
    "en": ("Settings", ["General", "Engines", "Whisper", "Languages", "Storage", "Info"]),
    "es": ("Ajustes", ["General", "Motores", "Whisper", "Idiomas", "Almacenamiento",
                       "Información"]),
    "fr": ("Réglages", ["Général", "Moteurs", "Whisper", "Langues", "Stockage", "Infos"]),
    "it": ("Impostazioni", ["Generali", "Motori", "Whisper", "Lingue", "Archiviazione", "Info"]),
}

# The switches of the first tab from top to bottom: what each one writes. The transcript's is not
# kept. On a fresh start all but these are off.
SWITCHES = ["autoStartBackend", "autoStopBackend", "networkAccess", "showOverlay", "showOriginal",
            None, "speakTranslations", "autoGain", "overlayBorderEnabled", "obsOverlayEnabled",
            "vrchatEnabled", "vrchatPlaySound", "vmixEnabled", "vmixShowConnectionWarnings"]
ON_AT_FIRST = {"autoStopBackend", "showOverlay", "autoGain", "overlayBorderEnabled",
               "vmixShowConnectionWarnings"}

ENGINES = ["whisper", "deepgram", "assemblyai", "google_rest", "google_grpc", "azure", "vosk"]


class Settings(DesktopTest):
    def open_settings(self, language="en", **settings):
        button, self.tabs = LANGUAGES[language]
        self.open_desktop(uiLanguage=language, **settings)
        self.start_program()
        self.desktop.click_tray()
        self.press(button)
        self.wait_for(self.tabs[0], "page tab")

    def show_tab(self, number):
        self.press(self.tabs[number])

    def controls(self, role):
        return [node for node in self.accessibility.nodes(self.program.pid)
                if node.get_role_name() == role]

    def use(self, node):
        """Does what a control can do first: presses or toggles it."""
        self.assertTrue(node.get_action_iface().do_action(0))

    def wait_until_stored(self, key, value):
        wait_until(lambda: read_settings(self.desktop).get(key) == value,
                   f"{key} to be stored as {value!r}")

    def check_switches(self, language):
        self.open_settings(language)
        switches = wait_until(
            lambda: (lambda found: found if len(found) == len(SWITCHES) else None)(
                self.controls("check box")), "the switches of the first tab")
        names = [switch.get_name() for switch in switches]
        self.assertEqual(len(set(names)), len(names))
        for switch, key in zip(switches, SWITCHES):
            self.assertTrue(switch.get_name())
            self.use(switch)
            if key is not None:
                self.wait_until_stored(key, key not in ON_AT_FIRST)

        self.show_tab(1)
        rows = wait_until(
            lambda: (lambda found: found if len(found) == len(ENGINES) else None)(
                self.controls("radio button")), "the engines")
        for row, engine in list(zip(rows, ENGINES))[::-1]:
            self.use(row)
            self.wait_until_stored("sttEngine", engine)

    def test_every_switch_and_engine_in_german(self):
        self.check_switches("de")

    def test_every_switch_and_engine_in_english(self):
        self.check_switches("en")

    def test_every_switch_and_engine_in_spanish(self):
        self.check_switches("es")

    def test_every_switch_and_engine_in_french(self):
        self.check_switches("fr")

    def test_every_switch_and_engine_in_italian(self):
        self.check_switches("it")

    def test_the_window_closes_and_comes_back(self):
        self.open_settings()
        self.wait_for("ORV Settings")
        self.show_tab(4)
        self.desktop.key("Escape")
        self.wait_until_gone("ORV Settings")
        self.desktop.click_tray()
        self.press("Settings")
        self.wait_for("ORV Settings")
        self.wait_for("Clear Logs: Delete", "push button")

    def test_another_language_changes_everything_at_once(self):
        self.open_settings()
        self.click_on("Interface Language", "combo box")
        self.wait_for("🇫🇷 Français", "list item")
        self.desktop.key("Down", "Down", "Return")
        self.wait_for("Réglages d'ORV")
        for tab in LANGUAGES["fr"][1]:
            self.wait_for(tab, "page tab")
        self.wait_until_stored("uiLanguage", "fr")

    def test_what_is_typed_is_stored(self):
        self.open_settings()
        # Further down than the window is high, so it gets the focus the way a screen reader gives it.
        host = self.wait_for("VRChat Chatbox (OSC): Host", "text")
        self.assertTrue(host.get_component_iface().grab_focus())
        self.desktop.key("ctrl+a")
        self.desktop.type("vr-pc.local")
        self.wait_until_stored("vrchatHost", "vr-pc.local")
        self.desktop.key("Tab", "ctrl+a")
        self.desktop.type("9100")
        self.desktop.key("Tab")
        self.wait_until_stored("vrchatPort", 9100)

    def test_logs_are_cleared_after_a_question(self):
        self.open_settings()
        log = self.desktop.home / "Library/Application Support/Orvane/backend.log"
        log.parent.mkdir(parents=True, exist_ok=True)
        log.write_text("old\n")
        self.show_tab(4)
        self.press("Clear Logs: Delete")
        self.wait_for("Clear Cache?")
        self.press("Cancel")
        self.wait_until_gone("Clear Cache?")
        self.assertTrue(log.exists())
        self.press("Clear Logs: Delete")
        self.wait_for("Clear Cache?")
        self.press("Delete")
        self.wait_for("Logs have been removed.")
        self.assertFalse(log.exists())
        self.press("OK")
        self.wait_until_gone("Logs have been removed.")

    def test_a_model_that_cannot_be_fetched_is_said(self):
        self.open_settings()
        self.show_tab(2)
        self.press("Tiny: Download")
        self.wait_for("Download Failed")
        self.press("OK")
        self.wait_until_gone("Download Failed")

    def test_a_failed_update_check_is_said(self):
        self.open_settings()
        self.show_tab(5)
        self.press("Check for Updates")
        self.wait_for("The check for updates failed")
        self.assertTrue(settings_file(self.desktop).exists())


if __name__ == "__main__":
    unittest.main()
