"""Every control of the panel and every item of the tray's menu, by the names they have in each
language, and what comes of using them: in the store, in the log, and on the wire."""

import http.server
import json
import threading
import unittest

from support import DesktopTest, EveryLanguage

from harness.processes import wait_until
from harness.program import free_port, read_settings
from harness.scripted_backend import ScriptedBackend, result
from harness.texts import Texts

_RELEASE = {"version": "99.1", "url": "https://download.orvane.invalid/99.1", "notes": ""}
_TRANSLATION = "Así suena la traducción."

# The panel's switches and the key under which each one is kept.
_SWITCHES = {"option.overlay": "showOverlay", "option.original": "showOriginal",
             "option.speak": "speakTranslations"}


# Milliseconds between two places of the slider.
_PAUSE_STEP = 50


class _Releases(http.server.BaseHTTPRequestHandler):
    """Tells whoever asks about a newer release."""

    def do_GET(self):
        body = json.dumps(_RELEASE).encode()
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


class Walk(EveryLanguage, DesktopTest):
    USES_PORT = True
    JOURNEYS = ("everything_in_german",)

    def open_in(self, language, tray=True, **settings):
        self.text = Texts(language)
        self.open_desktop(uiLanguage=language, tray=tray, **settings)
        self.backend = ScriptedBackend(self.desktop, [result("This is heard.", _TRANSLATION)])
        self.sound.open_player()

    def start_with_a_newer_release(self):
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), _Releases)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        self.start_on_loopback(ORVANE_SERVICE_UPDATES=f"http://127.0.0.1:{server.server_port}")

    # What is used, by the key of its name.

    def use(self, key):
        self.press(self.text(key))

    def on_screen(self, key, role=None):
        return self.wait_for(self.text(key), role)

    def count(self, start):
        return sum(line.startswith(start) for line in self.program.lines())

    def wait_for_another(self, start, act):
        before = self.count(start)
        act()
        wait_until(lambda: self.count(start) > before, f"another line {start!r}")

    def choose_first_entry(self, key):
        """The first entry after the one that stands for no choice."""
        self.click_on(self.text(key), "combo box")
        self.wait_for(self.text({"audio.mic.label": "audio.mic.default",
                                 "audio.app.select": "audio.app.placeholder"}[key]), "list item")
        self.desktop.key("Down", "Return")

    def step_slider(self, key):
        """Moves a slider by a key; returns where it stood and where it stands."""
        slider = self.on_screen(key, "slider")
        before = self.accessibility.value(slider)
        self.assertTrue(self.accessibility.grab_focus(slider))
        self.desktop.key("Right")
        wait_until(lambda: self.accessibility.value(slider) > before, f"{key} to move")
        return before, self.accessibility.value(slider)

    # The walk, part by part.

    def use_sources(self):
        self.use("audio.system")
        self.wait_until_stored("audioSourceType", 1)
        self.use("audio.app")
        self.wait_until_stored("audioSourceType", 2)
        self.wait_for_another("📱 ScreenCaptureKit Apps", lambda: self.use("audio.app.refresh"))
        self.choose_first_entry("audio.app.select")
        self.wait_until_stored("selectedAppBundleId", "org.example.Player")
        self.use("audio.mic")
        self.wait_until_stored("audioSourceType", 0)
        self.wait_for_another("🎤 Gefundene Mikrofone", lambda: self.use("audio.app.refresh"))
        self.choose_first_entry("audio.mic.label")
        self.wait_until_stored("selectedInputDevice", "orvane_microphone")

    def use_gain(self):
        self.use("audio.gain.auto")
        self.wait_until_stored("autoGain", False)
        self.step_slider("audio.gain.label")
        wait_until(lambda: abs(read_settings(self.desktop)["audioGain"] - 1.1) < 0.001,
                   "the gain to be stored")

    def use_switches(self):
        for key, stored in _SWITCHES.items():
            name = self.text(key)
            before = self.accessibility.is_checked(self.program.pid, name)
            for wanted in (not before, before):
                self.press(name)
                self.wait_until_stored(stored, wanted)
        self.use("option.original")
        self.wait_until_stored("showOriginal", True)
        self.use("option.transcript")
        wait_until(lambda: not self.accessibility.is_checked(
            self.program.pid, self.text("option.transcript")), "transcripts to be off")

    def use_pauses(self):
        _, steps = self.step_slider("vad.pause")
        self.wait_until_stored("vadSilenceDuration", steps * _PAUSE_STEP)
        _, level = self.step_slider("vad.threshold")
        self.wait_until_stored("vadThreshold", level)
        self.on_screen("vad.active")
        self.use("vad.toggle")
        self.on_screen("vad.fixed")
        self.wait_until_stored("vadEnabled", False)
        self.wait_until_gone(self.text("vad.pause"))
        self.use("vad.toggle")
        self.wait_until_stored("vadEnabled", True)
        self.on_screen("vad.pause", "slider")

    def use_languages(self):
        for key, typed, stored, code in (("lang.source", "suomi", "sourceLang", "fi"),
                                         ("lang.target", "espa", "targetLang", "es")):
            self.choose_language(self.text(key), typed)
            self.wait_until_stored(stored, code)
            self.return_to_the_panel()

    def return_to_the_panel(self):
        """A window manager that is short of time gives the focus back late after a list has closed, and
        the panel takes that for the user's leaving."""
        quit_button = self.text("main.quit")
        wait_until(lambda: self.accessibility.has_active_window(self.program.pid)
                   or not self.is_on_screen(quit_button), "the panel to have the focus, or to be gone")
        if not self.is_on_screen(quit_button):
            self.open_panel(quit_button)

    def use_backend_and_run(self):
        self.use("main.start")
        self.on_screen("alert.backend.notready.msg")
        self.use("alert.ok")
        self.wait_until_gone(self.text("alert.backend.notready.msg"))
        self.assertEqual(self.backend.configurations(), [])

        self.use("main.backend.start")
        self.program.wait_for_line("📢 Backend Status Changed: true")
        self.on_screen("engine.running")
        self.use("main.start")
        self.program.wait_for_line("📢 Translation Status Changed: true")
        self.wait_for(_TRANSLATION)
        self.on_screen("main.stop", "push button")
        self.assert_configured(sourceLang="fi", targetLang="es", showOriginal=True,
                               saveTranscript=False, saveSRT=False)
        self.use_banner()
        self.use("main.stop")
        self.program.wait_for_line("📢 Translation Status Changed: false")
        self.on_screen("main.start", "push button")

    def assert_configured(self, **wanted):
        sent = self.backend.configurations()[-1]
        self.assertEqual({key: sent.get(key) for key in wanted}, wanted)

    def use_banner(self):
        """The three ways out of the warning that nobody answers at vMix's address."""
        self.switch_in_settings("settings.vmix.enable", "vmixEnabled")
        self.raise_banner()
        self.use("vmix.warn.off")
        self.wait_until_gone(self.text("vmix.warn.title"))
        self.wait_until_stored("vmixShowConnectionWarnings", False)
        self.switch_in_settings("settings.vmix.warn_on_fail", "vmixShowConnectionWarnings")
        self.raise_banner()
        self.use("vmix.warn.disable")
        self.wait_until_gone(self.text("vmix.warn.title"))
        self.wait_until_stored("vmixEnabled", False)
        self.switch_in_settings("settings.vmix.enable", "vmixEnabled")
        self.raise_banner()
        self.use("vmix.warn.snooze")
        self.wait_until_gone(self.text("vmix.warn.title"))
        self.fail_to_reach_vmix(times=4)
        self.assertFalse(self.is_on_screen(self.text("vmix.warn.title")))
        stored = read_settings(self.desktop)
        self.assertTrue(stored["vmixEnabled"] and stored["vmixShowConnectionWarnings"])

    def raise_banner(self):
        self.fail_to_reach_vmix()
        self.on_screen("vmix.warn.title")

    def fail_to_reach_vmix(self, times=3):
        """The third time in a row is worth a warning."""
        for number in range(times):
            self.wait_for_another("❌ vMix: ", lambda: self.backend.publish(
                result(f"Sentence {number}.", _TRANSLATION)))

    def switch_in_settings(self, key, stored):
        """Switches something on in the settings window and comes back to the panel."""
        self.open_settings()
        self.use(key)
        self.wait_until_stored(stored, True)
        self.close_settings()
        self.open_panel(self.text("main.quit"))

    def open_settings(self):
        self.use("main.settings")
        self.on_screen("settings.title")
        self.wait_until_gone(self.text("main.quit"))

    def close_settings(self):
        self.wait_until_active(self.text("settings.title"))
        self.desktop.key("Escape")
        self.wait_until_gone(self.text("settings.title"))

    def menu(self):
        """The items of the tray's menu, opened now, by their names."""
        self.desktop.click_tray(button=3)
        self.wait_for_menu()
        items = self.accessibility.menu_items(lambda: self.desktop.key("Down"))
        return {item.get_name(): item for item in items if item.get_role_name() != "separator"}

    def close_menu(self):
        self.desktop.key("Escape")
        self.wait_until_the_menu_is_gone()

    def choose(self, items, name):
        self.assertTrue(items[name].get_action_iface().do_action(0))

    def use_menu(self):
        short, quit_item = self.text("app.name.short"), self.text("menu.quit")
        update = f"Update: v{_RELEASE['version']}"
        running = self.menu()
        self.assertEqual(list(running), [short, self.text("menu.backend.running"), update,
                                         quit_item])
        # Two lines only inform.
        self.choose(running, short)
        self.choose(running, self.text("menu.backend.running"))
        self.close_menu()
        self.choose(self.menu(), update)
        wait_until(lambda: self.opened() == [_RELEASE["url"]], "the release's page")
        self.close_menu()

        self.open_panel(self.text("main.quit"))
        self.use("main.backend.stop")
        self.program.wait_for_line("📢 Backend Status Changed: false")
        self.on_screen("main.backend.start", "push button")
        self.desktop.click_tray()
        self.wait_until_gone(self.text("main.quit"))
        stopped = self.menu()
        self.assertEqual(list(stopped), [short, self.text("menu.backend.stopped"), update,
                                         quit_item])
        self.choose(stopped, quit_item)
        self.program.wait_for_line("🛑 App wird beendet...")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())

    def quit_by_the_panel(self):
        self.start_on_loopback()
        self.open_panel(self.text("main.quit"))
        self.use("main.quit")
        self.program.wait_for_line("🛑 Beende App...")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())

    def walk(self, language):
        self.open_in(language, vmixPort=free_port())
        self.start_with_a_newer_release()
        self.on_screen("info.update.available")
        self.use("info.update.later")
        self.wait_until_gone(self.text("info.update.available"))
        self.open_panel(self.text("main.quit"))
        self.use_sources()
        self.use_gain()
        self.use_switches()
        self.use_pauses()
        self.use_languages()
        self.use_backend_and_run()
        self.open_settings()
        self.close_settings()
        self.use_menu()
        self.quit_by_the_panel()

    # By the keys alone, in the window of a desktop without a tray.

    def tab_to(self, name):
        """Presses Tab until the control called `name` has the focus."""
        for _ in range(40):
            if self.focused_name() == name:
                return
            self.press_tab()
        self.fail(f"Tab does not reach {name!r}")

    def focused_name(self):
        node = self.accessibility.focused(self.program.pid)
        return self.name_of(node) if node is not None else None

    def name_of(self, node):
        """A field to type into is known by the name of the choice it belongs to."""
        return node.get_name() or node.get_parent().get_name()

    def press_tab(self):
        before = self.focused_name()
        self.desktop.key("Tab")
        wait_until(lambda: self.focused_name() not in (None, before), "the focus to move")

    def test_the_keys_alone_are_enough(self):
        self.open_in("en", tray=False, autoGain=False)
        self.start_on_loopback()
        self.on_screen("panel.notray")
        self.on_screen("main.start", "push button")
        reached = []
        self.press_tab()
        while self.focused_name() not in reached:
            reached.append(self.focused_name())
            self.press_tab()
        for key in ("main.settings", "main.quit", "main.backend.start", "audio.mic",
                    "audio.mic.label", "audio.app.refresh", "audio.gain.auto", "audio.gain.label",
                    "lang.source", "lang.target", "option.overlay", "option.original",
                    "option.transcript", "option.speak", "vad.toggle", "vad.pause",
                    "vad.threshold", "main.start"):
            self.assertIn(self.text(key), reached)

        self.tab_to(self.text("main.backend.start"))
        self.desktop.key("space")
        self.on_screen("engine.running")
        self.tab_to(self.text("lang.target"))
        self.desktop.type("espa")
        self.desktop.key("Return")
        self.wait_until_stored("targetLang", "es")
        self.tab_to(self.text("option.original"))
        self.desktop.key("space")
        self.wait_until_stored("showOriginal", True)
        self.desktop.key("ctrl+Return")
        self.wait_for(_TRANSLATION)
        self.assert_configured(targetLang="es", showOriginal=True)
        self.desktop.key("ctrl+Return")
        self.program.wait_for_line("📢 Translation Status Changed: false")
        self.on_screen("main.start", "push button")
        self.tab_to(self.text("main.quit"))
        self.desktop.key("space")
        self.program.wait_for_line("🛑 Beende App...")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())


if __name__ == "__main__":
    unittest.main()
