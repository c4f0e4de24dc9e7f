"""Where programs live: a desktop with sound, peers for all that they talk to, and a home for each."""

import contextlib
import os
import pathlib
import shutil
import sys

from harness.accessibility import Accessibility
from harness.desktop import Desktop
from harness.program import Program, free_port, write_settings
from harness.sound import MICROPHONE, Sound
from harness.speech_server import install_speech_server
from harness.witnesses import Chatbox, Vmix

from . import DESKTOP_TESTS
from .service import ToldDeepgram

# What the scripted speech server says to whoever configures a run.
SERVER_RESULT = ("From the speech server.", "Del servidor.")


class Stage:
    """A context. One to a process: see harness.accessibility. The desktop has no tray, so that the
    panel is an ordinary window, which stays."""

    def __init__(self):
        self._context = contextlib.ExitStack()
        self._lives = 0

    def __enter__(self):
        try:
            self.desktop = self._context.enter_context(Desktop(tray=False))
            self.sound = Sound(self.desktop)
            self.service = self._context.enter_context(ToldDeepgram())
            self.vmix = self._context.enter_context(Vmix())
            self.chatbox = self._context.enter_context(Chatbox())
            self.accessibility = Accessibility(self.desktop)
        except BaseException:
            self._context.close()
            raise
        return self

    def __exit__(self, *arguments):
        return self._context.__exit__(*arguments)

    def new_home(self, **settings):
        """An empty home for the programs that are started from now on, with folders of its own for the
        session and for temporary files. Everything that programs can talk to is set up in it."""
        if self._lives:
            shutil.rmtree(self.folder, ignore_errors=True)
        self._lives += 1
        self._programs_before = len(Program.started)
        self.folder = self.desktop.folder / f"life-{self._lives}"
        self.desktop.home = self.folder / "home"
        self.runtime, self.temporary = self.folder / "runtime", self.folder / "temporary"
        for folder in (self.desktop.home, self.runtime, self.temporary):
            folder.mkdir(mode=0o700, parents=True)
        home = self.desktop.home
        self.desktop.environment.update({
            "HOME": str(home), "XDG_CONFIG_HOME": str(home / ".config"),
            "XDG_DATA_HOME": str(home / ".local/share"), "XDG_STATE_HOME": str(home / ".local/state"),
            "XDG_RUNTIME_DIR": str(self.runtime), "TMPDIR": str(self.temporary)})
        self.service.forget()
        self.overlay_port = free_port()
        write_settings(self.desktop, {
            "uiLanguage": "en", "sourceLang": "en", "targetLang": "es", "audioSourceType": 0,
            "selectedInputDevice": MICROPHONE, "autoGain": False, "showOriginal": True,
            "obsOverlayEnabled": True, "obsOverlayPort": self.overlay_port,
            "vmixEnabled": True, "vmixPort": self.vmix.port,
            "vrchatEnabled": True, "vrchatPort": self.chatbox.port,
            **self.service.settings, **settings})

    @property
    def support(self):
        """The program's folder in the home."""
        return self.desktop.home / "Library" / "Application Support" / "Orvane"

    @property
    def output(self):
        return self.support / "output"

    def install_server(self):
        """The real speech server."""
        install_speech_server(self.desktop, os.environ["ORVANE_INSTALL_BACKEND"])

    def install_scripted_server(self):
        """A speech server that gives each run one result, and starts at once."""
        interpreter = self.support / "venv" / "bin" / "python3"
        interpreter.parent.mkdir(parents=True)
        interpreter.symlink_to(sys.executable)
        script = self.support / "backend" / "server.py"
        script.parent.mkdir(parents=True)
        script.write_text("import sys\n"
                          "sys.dont_write_bytecode = True\n"
                          f"sys.path.insert(0, {str(DESKTOP_TESTS)!r})\n"
                          "from harness.scripted_backend import result, serve\n"
                          f"serve([result(*{SERVER_RESULT!r})])\n")

    def start_program(self, **environment):
        """The program with its services on loopback. Its windows are known to the desktop by the
        program's own name."""
        program = Program(self.desktop, os.environ["ORVANE_ON_LOOPBACK"], environment={
            **self.service.environment, "RESOURCE_NAME": "orvane", **environment})
        return program

    def keep(self, folder):
        """Copies what tells of the latest home: its programs' logs, and its own files."""
        folder = pathlib.Path(folder)
        folder.mkdir(parents=True, exist_ok=True)
        for program in Program.started[self._programs_before:]:
            (folder / program.log_file.name).write_bytes(program.log_file.read_bytes())
        for file in self.folder.rglob("*"):
            if file.is_file() and not file.is_symlink() and "venv" not in file.parts:
                kept = folder / file.relative_to(self.folder)
                kept.parent.mkdir(parents=True, exist_ok=True)
                kept.write_bytes(file.read_bytes())
