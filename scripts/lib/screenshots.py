"""Makes pictures of every screen of the program. Started by scripts/screenshots."""

import argparse
import contextlib
import pathlib
import sys

import pictured_server

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

from harness.accessibility import Accessibility  # noqa: E402
from harness.desktop import Desktop  # noqa: E402
from harness.isolation import isolate  # noqa: E402
from harness.portal import Portal  # noqa: E402
from harness.processes import end_on_signals, wait_until  # noqa: E402
from harness.program import Program, write_settings  # noqa: E402
from harness.scripted_backend import ScriptedBackend, notice, result, status  # noqa: E402
from harness.sound import Sound  # noqa: E402
from harness.texts import Texts  # noqa: E402

TABS = ("general", "engines", "whisper", "languages", "storage", "info")

# Where a tab is longer than its window, the rest of it is shown in these only.
WHOLE = (("en", "light"), ("de", "dark"))

# Whose fields are shown: one with keys, one with everything else.
ENGINES = (("deepgram", "Deepgram"), ("google-grpc", "settings.engine.google_grpc.name"))

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
    "interrupted": [SPOKEN],
    "error": [status("error", "Recognition failed: the model file whisper-base.pt is damaged. "
                     "Download it again under Settings → Whisper.")],
    "loading": [status("model_loading", "", notice("engine.loading", engine="Whisper (base)"))],
    "refused": [status("error", "", notice("engine.none_for_language", language="de", reason=""),
                       recognition=[notice("recognition.not_installed", engine="Whisper"),
                                    notice("recognition.language_unknown", engine="PocketSphinx",
                                           language="de")])],
    "replaced": [status("engine", "", notice("engine.serving", recogniser="PocketSphinx",
                                             translator=""),
                        recognition=[notice("recognition.not_installed", engine="Whisper")],
                        translation=[notice("translation.none", source="en", target="it",
                                            address="127.0.0.1:11434"),
                                     notice("translation.package", source="en", target="it",
                                            packages="apertium-en-it")])],
    "serving": [status("engine", "", notice("engine.serving", recogniser="Whisper (base)",
                                            translator="mistral:latest"))],
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
    parser.add_argument("--states", default="running,interrupted", help="of " + ", ".join(STATES))
    parser.add_argument("--scale", default="1", help="pixels per logical pixel (default: 1)")
    parser.add_argument("--no-settings", action="store_true", help="the panel only")
    parser.add_argument("--program", type=pathlib.Path,
                        default=ROOT / "build" / "release" / "orvane")
    return parser.parse_args()


def say(text):
    print(f"==> {text}", flush=True)


_SMALLEST_WINDOW = 200  # The item in the tray is much smaller.
_STANDS_STILL = 10  # Looks in a row that show the same.

# Notches of the mouse wheel.
_TO_THE_NEXT = 5
_TO_THE_END = 20


def settled_window(desktop):
    """The number of the program's window and its (width, height), once nothing changes any more."""
    last = [None, 0]

    def settled():
        found = [(number, place[2:]) for number, place in desktop.numbered_windows("orvane")
                 if min(place[2:]) > _SMALLEST_WINDOW]
        last[1] = last[1] + 1 if len(found) == 1 and found == last[0] else 0
        last[0] = found
        return found[0] if last[1] >= _STANDS_STILL else None

    return wait_until(settled, "a window that stands still", 20, interval=0.03)


class Pictures:
    """Pictures of one program on one desktop."""

    def __init__(self, options, desktop, backend, program, accessibility, language, suffix):
        self._options = options
        self._text = Texts(language)
        self._backend = backend
        self._desktop = desktop
        self._program = program
        self._accessibility = accessibility
        self._suffix = suffix

    def take(self, name):
        number, (width, height) = settled_window(self._desktop)
        file = self._file(name)
        self._desktop.screenshot(file, window=number)
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
        if state in ("running", "interrupted"):
            sound = f"{self._text('run.stage.sound')}: {self._text('run.stage.now')}"
            self._accessibility.wait_for(self._program.pid, sound)
        if state == "interrupted":
            wait_until(self._backend.has_client, "the run")
            self._backend.hang_up()
            self._program.wait_for_line("❌ WebSocket receive: ")
        self.take("panel" if state == "running" else f"panel-{state}")

    def settings(self, whole):
        text = self._text
        self._press(text("main.settings"))
        for name in TABS:
            self._press(text(f"settings.tab.{name}"))
            self.take(f"settings-{name}")
            if name == "whisper":
                self._accessibility.wait_for(self._program.pid, text("settings.near.search"))
                self.take(f"settings-{name}")
            if whole and name in ("general", "whisper"):
                self._take_the_rest(f"settings-{name}")
            elif whole and name == "engines":
                for engine, called in ENGINES:
                    self._press(text(called) if "." in called else called)
                    self._turn_the_wheel(_TO_THE_END)
                    self.take(f"settings-engines-{engine}")
                self._press(text("settings.engine.whisper.name"))

    def _take_the_rest(self, name):
        """Pictures of what is further down, numbered from 2 on, until nothing new comes."""
        last = self._file(name).read_bytes()
        number = 2
        while True:
            self._turn_the_wheel(_TO_THE_NEXT)
            self.take(f"{name}-{number}")
            file = self._file(f"{name}-{number}")
            if file.read_bytes() == last:
                file.unlink()
                return
            last = file.read_bytes()
            number += 1

    def _turn_the_wheel(self, notches):
        number, _ = settled_window(self._desktop)
        x, y, _, height = dict(self._desktop.numbered_windows("orvane"))[number]
        for _ in range(notches):
            # At the edge, where nothing is that shows being below the pointer.
            self._desktop.click(x + 4, y + height // 2, button=5)

    def _press(self, name):
        self._accessibility.press(self._program.pid, name)

    def _file(self, name):
        return self._options.out / f"{name}-{self._suffix}.png"


def make_pictures(options, desktop, backend, portal, accessibility):
    for state in options.states.split(","):
        script = STATES[state]
        backend.set_script(script or [], finishes=state != "stopping")
        for language in options.languages.split(","):
            for scheme in options.schemes.split(","):
                portal.set_scheme(scheme)
                if state in ("running", "interrupted"):
                    backend.set_script([SPOKEN if language == "de" else SPANISH])
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
                    pictures = Pictures(options, desktop, backend, program, accessibility,
                                        language, suffix)
                    pictures.panel(state)
                    if not options.no_settings and state == options.states.split(",")[0]:
                        pictures.settings((language, scheme) in WHOLE)
                finally:
                    program.terminate()


def main():
    options = arguments()
    end_on_signals()
    if reason := isolate():
        print(f"the pictures are taken in this machine's network ({reason})", file=sys.stderr)
    options.out.mkdir(parents=True, exist_ok=True)
    screen = "2560x1800x24" if options.scale != "1" else "1280x900x24"
    with contextlib.ExitStack() as stack:
        desktop = stack.enter_context(Desktop(screen=screen))
        desktop.environment["QT_SCALE_FACTOR"] = options.scale
        pictured_server.place(desktop.home)
        portal = Portal(desktop)
        Sound(desktop)
        say("a private desktop stands")
        backend = ScriptedBackend(desktop)
        accessibility = Accessibility(desktop)
        make_pictures(options, desktop, backend, portal, accessibility)


if __name__ == "__main__":
    main()
