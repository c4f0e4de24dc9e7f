"""The settings window of the whole program, by what its controls are called."""

import json
import unittest

from support import DesktopTest, EveryLanguage

from harness.processes import wait_until
from harness.program import Overlay, free_port, read_settings
from harness.texts import Texts
from harness.witnesses import Chatbox
from subtitles import Backdrop

TABS = ["general", "engines", "whisper", "languages", "storage", "info"]

# The switches of the first tab from top to bottom, by the keys of their names: what each one
# writes. The transcript's is not kept. On a fresh start all but these are off.
SWITCHES = {
    "settings.backend.autostart": "autoStartBackend",
    "settings.backend.autostop": "autoStopBackend",
    "settings.continue": "continueAfterInterruption",
    "settings.backend.network": "networkAccess",
    "settings.overlay": "showOverlay",
    "option.original": "showOriginal",
    "option.transcript": None,
    "option.speak": "speakTranslations",
    "settings.autogain": "autoGain",
    "settings.overlay.border": "overlayBorderEnabled",
    "settings.obs.enable": "obsOverlayEnabled",
    "settings.vrc.enable": "vrchatEnabled",
    "settings.vrc.sound": "vrchatPlaySound",
    "settings.vmix.enable": "vmixEnabled",
    "settings.vmix.warn_on_fail": "vmixShowConnectionWarnings"}
ON_AT_FIRST = {"autoStopBackend", "showOverlay", "autoGain", "overlayBorderEnabled",
               "vmixShowConnectionWarnings"}

# The colours: what each writes, and the colour right of its default in the palette.
COLOURS = {"settings.overlay.bgcolor": ("overlayBgColor", "#B2EBF2"),
           "settings.overlay.textcolor": ("overlayTextColor", "#212121"),
           "settings.overlay.bordercolor": ("overlayBorderColor", "#00695C")}

# By their names, or the keys of their names.
ENGINES = {"whisper": "settings.engine.whisper.name", "deepgram": "Deepgram",
           "assemblyai": "AssemblyAI", "google_rest": "settings.engine.google_rest.name",
           "google_grpc": "settings.engine.google_grpc.name", "azure": "Microsoft Azure",
           "vosk": "Vosk"}


class Settings(EveryLanguage, DesktopTest):

    def open_settings(self, language="en", **settings):
        self.text = Texts(language)
        self.open_desktop(uiLanguage=language, **settings)
        self.start_on_loopback()
        self.desktop.click_tray()
        self.use("main.settings")
        self.wait_for(self.tab(0), "page tab")

    def tab(self, number):
        return self.text(f"settings.tab.{TABS[number]}")

    def show_tab(self, number):
        self.press(self.tab(number))

    def names(self, role):
        return [name for found, name in self.accessibility.names(self.program.pid)
                if found == role]

    def use(self, *keys):
        """Presses or toggles what is called by the texts of `keys`, with a colon between them."""
        self.press(": ".join(self.text(key) for key in keys))

    def on_screen(self, key, role=None):
        return self.wait_for(self.text(key), role)

    def wait_until_key_gone(self, key):
        self.wait_until_gone(self.text(key))

    def answer(self, alert, key):
        """Presses a button of an alert, known by the key of one of its texts, and sees it go."""
        self.on_screen(alert)
        self.use(key)
        self.wait_until_key_gone(alert)

    # The walk, tab by tab.

    def use_switches(self):
        wait_until(lambda: len(self.names("check box")) == len(SWITCHES), "all switches")
        self.assertEqual(self.names("check box"), [self.text(key) for key in SWITCHES])
        for key, stored in SWITCHES.items():
            if stored is None:
                before = self.accessibility.is_checked(self.program.pid, self.text(key))
                self.use(key)
                wait_until(lambda: self.accessibility.is_checked(
                    self.program.pid, self.text(key)) != before, "the switch to turn")
            else:
                self.use(key)
                self.wait_until_stored(stored, stored not in ON_AT_FIRST)

    def use_colours(self):
        for key, (stored, colour) in COLOURS.items():
            before = len(self.desktop.windows("orvane"))
            self.use(key)
            wait_until(lambda: len(self.desktop.windows("orvane")) > before, "the palette")
            self.desktop.key("Right", "Return")
            self.wait_until_stored(stored, colour)
            wait_until(lambda: len(self.desktop.windows("orvane")) == before,
                       "the palette to close")

    def use_outputs(self, chatbox):
        self.use("settings.vrc.test")
        wait_until(lambda: [what for _, what in chatbox.seen
                            if what.startswith(b"/chatbox/input")], "the test message")
        self.use("settings.obs.copy")
        # What was copied is what can be pasted.
        host = f"{self.text('settings.vrc.section')}: {self.text('settings.vrc.host')}"
        self.assertTrue(self.accessibility.grab_focus(self.wait_for(host, "text")))

        def pasted():
            self.desktop.key("ctrl+a", "ctrl+v")
            return read_settings(self.desktop).get("vrchatHost") == "http://localhost:8077/overlay"

        # A button that is pressed from outside does its work a moment later.
        wait_until(pasted, "the overlay's address to be pasted", interval=0.5)

    def use_engines(self):
        names = {engine: self.text(name) if "." in name else name
                 for engine, name in ENGINES.items()}
        wait_until(lambda: self.names("radio button") == list(names.values()), "the engines")
        for engine in reversed(ENGINES):
            self.press(names[engine])
            self.wait_until_stored("sttEngine", engine)
            if engine == "google_grpc":
                self.use_service_account()
            elif engine == "deepgram":
                self.reveal_key(names[engine])

    def use_service_account(self):
        account = self.desktop.home / "account.json"
        account.write_text("{}")
        self.use("settings.engine.choose_file")
        title = self.text("settings.engine.choose_file")
        self.wait_until_active(title, "dialog")
        self.desktop.type(str(account))
        self.desktop.key("Return")
        self.wait_until_stored("googleServiceAccountPath", str(account))
        wait_until(lambda: not self.is_on_screen(title, "dialog"), "the choice of a file to close")
        self.use("settings.engine.clear_file")
        self.wait_until_stored("googleServiceAccountPath", "")

    def reveal_key(self, engine):
        key = f"{engine}: {self.text('settings.engine.apikey')}"
        reveal = f"{engine}: {self.text('settings.engine.apikey.show')}"
        self.wait_for(key, "password text")
        self.press(reveal)
        self.wait_for(key, "text")
        self.press(reveal)
        self.wait_for(key, "password text")

    def place_server_with_whisper(self):
        """A speech server that says what it has, and whose package then fails."""
        program = self.desktop.home / "Library/Application Support/Orvane/venv/bin/python3"
        program.parent.mkdir(parents=True)
        has = json.dumps({"packages": [{"package": "faster-whisper", "state": "there"}],
                          "serves": "faster-whisper", "models": []})
        program.write_text(f"#!/bin/sh\ncase \"$2\" in\nstatus) echo '{has}' ;;\nlist) ;;\n"
                           "*) echo no network; exit 1 ;;\nesac\n")
        program.chmod(0o755)

    def use_models(self):
        # Nothing is installed that could load one.
        self.wait_for(self.text("settings.whisper.needs.package"))
        self.wait_for(f"faster-whisper: {self.text('settings.whisper.install')}", "push button")
        self.place_server_with_whisper()
        self.press(self.text("settings.tab.languages"))
        self.press(self.text("settings.tab.whisper"))
        self.wait_for(self.text("settings.whisper.serves"))
        self.press(f"Tiny: {self.text('settings.whisper.download')}")
        self.answer("settings.whisper.failed", "alert.ok")
        self.wait_for(f"Tiny: {self.text('settings.whisper.download')}", "push button")

    def use_storage(self):
        support = self.desktop.home / "Library/Application Support/Orvane"
        log = support / "backend.log"
        log.parent.mkdir(parents=True, exist_ok=True)
        log.write_text("old\n")
        earlier = support / "backend.log.1"
        earlier.write_text("older\n")
        for key, folder in (("settings.storage.backend", support),
                            ("settings.storage.transcripts", support / "output")):
            before = self.opened()
            self.use(key, "settings.storage.open")
            wait_until(lambda: self.opened() == [*before, folder.as_uri()], f"{folder} to be shown")
            self.assertTrue(folder.is_dir())
        self.use("settings.storage.clearlogs", "settings.storage.delete")
        self.answer("alert.cache.title", "alert.cache.cancel")
        self.assertTrue(log.exists())
        self.use("settings.storage.clearlogs", "settings.storage.delete")
        self.answer("alert.cache.title", "alert.cache.delete")
        self.answer("alert.cache.done.msg", "alert.ok")
        self.assertFalse(log.exists())
        self.assertFalse(earlier.exists())

    def use_update_check(self):
        before = self.failed_checks()
        self.use("info.update.check")
        self.on_screen("info.update.failed")
        wait_until(lambda: self.failed_checks() > before, "the check to be told in the log")

    def failed_checks(self):
        return sum(line.startswith("Update: ") and " failed: " in line
                   for line in self.program.lines())

    def walk(self, language):
        with Chatbox() as chatbox:
            self.open_settings(language, vrchatPort=chatbox.port)
            self.use_switches()
            self.use_colours()
            self.use_outputs(chatbox)
        for number, use in ((1, self.use_engines), (2, self.use_models), (4, self.use_storage),
                            (5, self.use_update_check)):
            self.show_tab(number)
            use()

    def test_the_window_closes_and_comes_back(self):
        self.open_settings()
        self.wait_for("ORV Settings")
        self.show_tab(4)
        self.wait_until_active("ORV Settings")
        self.desktop.key("Escape")
        self.wait_until_gone("ORV Settings")
        self.desktop.click_tray()
        self.press("Settings")
        self.wait_for("ORV Settings")
        self.wait_for("Clear Logs: Delete", "push button")

    def test_asking_again_brings_the_window_to_the_front(self):
        self.open_settings()
        self.wait_until_active("ORV Settings")
        Backdrop(self.desktop)
        wait_until(lambda: not self.accessibility.is_active(self.wait_for("ORV Settings")),
                   "another window to be active")
        self.desktop.click_tray()
        self.press("Settings")
        self.wait_until_active("ORV Settings")
        settings, _ = max(self.desktop.numbered_windows("orvane"), key=lambda window: window[1][2])
        other, _ = self.desktop.numbered_windows("orvane_backdrop")[0]
        wait_until(lambda: self.desktop.is_above(settings, other), "the window to be in front")

    def test_another_language_changes_everything_at_once(self):
        self.open_settings()
        self.wait_until_active("ORV Settings")
        self.click_on("Interface Language", "combo box")
        self.wait_for("🇫🇷 Français", "list item")
        self.desktop.key("Down", "Down", "Return")
        self.wait_for("Réglages d'ORV")
        self.text = Texts("fr")
        for number in range(len(TABS)):
            self.wait_for(self.tab(number), "page tab")
        self.wait_until_stored("uiLanguage", "fr")

    def test_the_browser_overlay_follows_what_is_chosen(self):
        overlay = Overlay(free_port())
        self.open_settings(obsOverlayEnabled=True, obsOverlayPort=overlay.port,
                           overlayBgColor="#102030")
        first = wait_until(overlay.text, "the overlay server to answer")
        self.assertEqual(first["style"], {"background": "rgba(16,32,48,0.85)",
                                          "border": "3px solid #2E7D32", "color": "#000000"})
        self.assertFalse(first["showOriginal"])
        self.use("settings.overlay.border")
        wait_until(lambda: (overlay.text() or first)["style"]["border"] == "", "a page without a border")
        self.use("option.original")
        wait_until(lambda: (overlay.text() or first)["showOriginal"], "the source text on the page")

    def test_what_is_typed_is_stored(self):
        self.open_settings()
        self.wait_until_active("ORV Settings")
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


if __name__ == "__main__":
    unittest.main()
