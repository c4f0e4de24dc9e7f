"""Makes pictures of every screen of the program. Started by scripts/screenshots."""

import argparse
import contextlib
import pathlib
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

from harness.accessibility import Accessibility  # noqa: E402
from harness.desktop import Desktop  # noqa: E402
from harness.portal import Portal  # noqa: E402
from harness.processes import Timeout, end_on_signals, wait_until  # noqa: E402
from harness.program import Program, write_settings  # noqa: E402
from harness.scripted_backend import ScriptedBackend, result, status  # noqa: E402
from harness.sound import Sound  # noqa: E402

SETTINGS = {"en": "Settings", "de": "Einstellungen", "es": "Ajustes", "fr": "Réglages",
            "it": "Impostazioni"}

SPOKEN = result("The river was high after three days of rain, and the old bridge was closed.",
                "Der Fluss führte nach drei Tagen Regen viel Wasser, und die alte Brücke war "
                "gesperrt.")
SPANISH = result(SPOKEN["original"],
                 "El río estaba crecido después de tres días de lluvia y el viejo puente estaba "
                 "cerrado.")

# What the panel can have to show: a name, the speech server's messages, and what is done then.
STATES = {
    "idle": None,
    "running": [SPOKEN],
    "stopping": [SPOKEN],
    "error": [status("error", "Recognition failed: the model file whisper-base.pt is damaged. "
                     "Download it again under Settings → Whisper.")],
    "loading": [status("model_loading", "Loading the Whisper model (base)...")],
    "long": [result("A sentence that does not want to end, because whoever speaks it never "
                    "breathes. " * 9,
                    "Ein Satz, der nicht enden will, weil wer ihn spricht, nie Luft holt. " * 9
                    + "Donaudampfschifffahrtsgesellschaftskapitän" * 5)],
    "rtl": [result("كان النهر مرتفعاً بعد ثلاثة أيام من المطر.",
                   "הנהר היה גבוה אחרי שלושה ימי גשם, והגשר הישן היה סגור.")],
}


def arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/screenshots",
        description="Makes pictures of every screen: the panel in its states, every tab of the "
        "settings window. Without options, those that the documentation shows.")
    parser.add_argument("--out", type=pathlib.Path, default=ROOT / "docs" / "images")
    parser.add_argument("--languages", default="en,de", help="of en, de, es, fr, it")
    parser.add_argument("--schemes", default="light,dark")
    parser.add_argument("--states", default="running", help="of " + ", ".join(STATES))
    parser.add_argument("--scale", default="1", help="pixels per logical pixel (default: 1)")
    parser.add_argument("--no-settings", action="store_true", help="the panel only")
    parser.add_argument("--program", type=pathlib.Path,
                        default=ROOT / "build" / "release" / "orvane")
    return parser.parse_args()


def say(text):
    print(f"==> {text}", flush=True)


def window(desktop, widest=True):
    """The place of the program's window on screen; its item in the tray is much smaller."""
    places = [place for place in desktop.windows("orvane") if place[2] > 200 and place[3] > 200]
    return max(places, key=lambda place: place[2], default=None) if widest else places


def settled_window(desktop):
    """The window's place once it does not change any more."""
    last = [None, 0]

    def settled():
        place = window(desktop)
        last[1] = last[1] + 1 if place is not None and place == last[0] else 0
        last[0] = place
        return place if last[1] >= 10 else None

    return wait_until(settled, "a window that stands still", 20, interval=0.03)


class Pictures:
    """Pictures of one program on one desktop."""

    def __init__(self, options, desktop, program, accessibility, suffix):
        self._options = options
        self._desktop = desktop
        self._program = program
        self._accessibility = accessibility
        self._suffix = suffix

    def take(self, name):
        x, y, width, height = settled_window(self._desktop)
        file = self._options.out / f"{name}-{self._suffix}.png"
        with tempfile.NamedTemporaryFile(suffix=".png") as screen:
            self._desktop.screenshot(screen.name)
            subprocess.run(["convert", screen.name, "-crop", f"{width}x{height}+{x}+{y}",
                            "+repage", "-strip", "-define", "png:compression-level=9", str(file)],
                           check=True)
        say(f"picture: {file.name} ({width} × {height})")

    def panel(self, state):
        self._desktop.click_tray()
        settled_window(self._desktop)
        if state != "idle":
            self._program.wait_for_line("✓ Backend läuft bereits auf Port")
            self._desktop.key("ctrl+Return")
            self._program.wait_for_line("✓ Config gesendet")
        if state == "stopping":
            self._desktop.key("ctrl+Return")
            self._program.wait_for_line("🛑 Stoppe Audio-Capture")
        self.take("panel" if state == "running" else f"panel-{state}")

    def settings(self, language):
        name = SETTINGS[language]
        try:
            self._accessibility.press(self._program.pid, name, limit=3)
            tabs = wait_until(self._tabs, "the settings window's tabs", 5)
        except Timeout:
            say("no settings window")
            return
        for index, tab in enumerate(tabs):
            self._accessibility.press(self._program.pid, tab)
            self.take(f"settings-{index + 1}")

    def _tabs(self):
        return [name for role, name in self._accessibility.names(self._program.pid)
                if role == "page tab"]


def make_pictures(options, desktop, backend, portal, accessibility):
    for state in options.states.split(","):
        script = STATES[state]
        backend.set_script(script or [], finishes=state != "stopping")
        for language in options.languages.split(","):
            for scheme in options.schemes.split(","):
                portal.set_scheme(scheme)
                if language == "de" and state == "running":
                    backend.set_script([SPOKEN])
                elif state == "running":
                    backend.set_script([SPANISH])
                write_settings(desktop, {"uiLanguage": language, "sourceLang": "en",
                                         "targetLang": "de" if language == "de" else "es",
                                         "autoStartBackend": state != "idle",
                                         "showOverlay": False, "saveTranscript": False})
                program = Program(desktop, options.program)
                try:
                    program.wait_for_line("Auto-Start Backend" if state != "idle"
                                          else "App gestartet", limit=60)
                    suffix = f"{scheme}-{language}"
                    if options.scale != "1":
                        suffix += f"@{options.scale}x"
                    pictures = Pictures(options, desktop, program, accessibility, suffix)
                    pictures.panel(state)
                    if not options.no_settings and state == options.states.split(",")[0]:
                        pictures.settings(language)
                finally:
                    program.terminate()


def main():
    options = arguments()
    end_on_signals()
    options.out.mkdir(parents=True, exist_ok=True)
    screen = "2560x1800x24" if options.scale != "1" else "1280x900x24"
    with contextlib.ExitStack() as stack:
        desktop = stack.enter_context(Desktop(screen=screen))
        desktop.environment["QT_SCALE_FACTOR"] = options.scale
        portal = Portal(desktop)
        sound = Sound(desktop)
        say("a private desktop stands")
        backend = ScriptedBackend(desktop)
        accessibility = Accessibility(desktop)
        make_pictures(options, desktop, backend, portal, accessibility)
        del sound


if __name__ == "__main__":
    main()
