"""The whole road of a result: speech is played, subtitles come out of the browser overlay."""

import contextlib
import dataclasses
import statistics
import threading
import time

from .accessibility import Accessibility
from .desktop import Desktop
from .processes import PATIENCE, Timeout, wait_until
from .program import BACKEND_PORT, Overlay, Program, free_port, port_is_open, write_settings
from .sound import MICROPHONE, Sound
from .speech import Sentence, word_errors, words_of
from .speech_server import install_speech_server

MICROPHONE_ROAD, SYSTEM_ROAD, APP_ROAD = "microphone", "system", "app"
_SOURCE_NUMBERS = {MICROPHONE_ROAD: 0, SYSTEM_ROAD: 1, APP_ROAD: 2}

PLAYER = "org.example.Player"

# How long the reader is quiet until everything said is taken to have been answered.
_QUIET_SECONDS = 3.0
_ANSWER_LIMIT = 60.0

# Of digital silence, a line each second, until nothing is taken to be on its way any more.
_QUIET_LINES = 2


@dataclasses.dataclass
class Subtitle:
    arrived: float  # time.monotonic()
    original: str
    translation: str


@dataclasses.dataclass
class Spoken:
    """A sentence that was played and what came back for it."""

    sentence: Sentence
    ended: float  # When its last word had been played.
    subtitles: list

    @property
    def heard(self):
        return words_of(" ".join(subtitle.original for subtitle in self.subtitles))

    @property
    def translation(self):
        return " ".join(subtitle.translation for subtitle in self.subtitles).strip()

    @property
    def delay(self):
        """Seconds from the sentence's end to its last subtitle; None without a subtitle."""
        return self.subtitles[-1].arrived - self.ended if self.subtitles else None


class SubtitleWatch:
    """Collects every result the overlay shows, with the time it appeared."""

    def __init__(self, overlay, interval=0.05):
        self._overlay = overlay
        self._interval = interval
        self._seen = []
        self._lock = threading.Lock()
        self._finished = threading.Event()
        self._thread = threading.Thread(target=self._watch, daemon=True)
        self._thread.start()

    def _watch(self):
        last = 0
        while not self._finished.wait(self._interval):
            result = self._overlay.text()
            if result and result["ts"] != last:
                last = result["ts"]
                with self._lock:
                    self._seen.append(Subtitle(time.monotonic(), result["original"],
                                               result["translation"]))

    def seen(self):
        with self._lock:
            return list(self._seen)

    def close(self):
        self._finished.set()
        self._thread.join()


class Road:
    """A context with everything between a voice and a subtitle: desktop, sound, the program, its
    speech server. `environment` is what the program finds in its own besides the desktop's;
    `prepare` is given the desktop before the program starts. `say` tells the person who watches what
    happens."""

    def __init__(self, executable, install_backend, source=MICROPHONE_ROAD, language="en",
                 settings=None, environment=None, tray=True, compositor=False,
                 prepare=lambda desktop: None, say=lambda text: None):
        self._executable = executable
        self._install_backend = install_backend
        self._source = source
        self._language = language
        self._settings = settings or {}
        self._environment = environment or {}
        self._prepare = prepare
        self._say = say
        self.desktop = Desktop(tray=tray, compositor=compositor)
        self._watch = None

    def __enter__(self):
        wait_until(lambda: not port_is_open(BACKEND_PORT),
                   f"port {BACKEND_PORT}, which another speech server uses")
        self.desktop.__enter__()
        self.desktop.environment.update(self._environment)
        try:
            self._set_up()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def __exit__(self, *_):
        if self._watch:
            self._watch.close()
        self.desktop.__exit__(None, None, None)

    def _set_up(self):
        self._say("a private desktop stands: " + self.desktop.environment["DISPLAY"])
        self.sound = Sound(self.desktop)
        self._say("a private sound server has a microphone and loudspeakers")
        install_speech_server(self.desktop, self._install_backend)
        self._say("the speech server is installed in the private home")
        self.overlay = Overlay(free_port())
        write_settings(self.desktop, {
            "uiLanguage": self._language, "sourceLang": "en", "targetLang": "es",
            "audioSourceType": _SOURCE_NUMBERS[self._source],
            "selectedInputDevice": MICROPHONE, "selectedAppBundleId": PLAYER,
            "obsOverlayEnabled": True, "obsOverlayPort": self.overlay.port,
            "showOriginal": True, **self._settings})
        if self._source == APP_ROAD:
            self.sound.open_player(PLAYER)
        self.accessibility = Accessibility(self.desktop)
        self._prepare(self.desktop)
        self.program = Program(self.desktop, self._executable)
        self.program.wait_for_line("App gestartet")
        wait_until(self.overlay.text, "the browser overlay")
        self._watch = SubtitleWatch(self.overlay)

    def show_panel(self):
        """Opens the panel from the tray unless it is on screen already."""
        if self.accessibility.find(self.program.pid, "Quit") is None:
            self.desktop.click_tray()
        self.accessibility.wait_for(self.program.pid, "Quit")

    def press(self, name):
        self.accessibility.press(self.program.pid, name)

    def start_backend(self):
        self.press("Start Backend")
        self.program.wait_for_line("✓ Backend läuft auf Port")
        self.accessibility.wait_for(self.program.pid, "Stop Backend")
        self._say("the speech server runs")

    def start_translation(self):
        self.press("Start Translation")
        self.program.wait_for_line("✓ Config gesendet")
        # Before it opens the stream that stays, the program may try out another.
        self.program.wait_for_line("✅ Mikrofon-Engine gestartet" if self._source == MICROPHONE_ROAD
                                   else "✅ ScreenCaptureKit Audio gestartet")
        wait_until(self.sound.recording_streams, "the program to listen")
        self._say("the program listens")

    def stop_translation(self, limit=PATIENCE):
        """Stops the run and waits until the last words have been processed."""
        self.press("Stop Translation")
        self.accessibility.wait_for(self.program.pid, "Start Translation")
        self.wait_for_end_of_run(limit)

    def wait_for_end_of_run(self, limit=PATIENCE):
        wait_until(lambda: not self.accessibility.find(
            self.program.pid, "Processing last translation..."), "the end of the run", limit)

    def quit(self):
        """Quits with the panel's button; returns the exit status."""
        self.press("Quit")
        return self.program.wait_for_end()

    def subtitles(self):
        """Everything the overlay has shown so far."""
        return self._watch.seen()

    def play_sentence(self, sentence):
        """Plays a sentence the way the road wants it and waits for what comes back."""
        before = len(self._watch.seen())
        player = (self.sound.speak(sentence.file) if self._source == MICROPHONE_ROAD
                  else self.sound.play(sentence.file, PLAYER))
        player.wait()
        ended = time.monotonic() - sentence.trailing_silence
        self.wait_until_quiet(before, ended)
        return Spoken(sentence, ended, self._watch.seen()[before:])

    def nothing_is_left(self):
        """Whether the program, by its log, has heard nothing for a while since it last cut off a
        chunk. What it still has at a stop goes to the speech server, which answers and writes by
        itself."""
        quiet = 0
        for line in self.program.lines():
            if line.startswith(("🗣 VAD: Sprache-Start", "🎵 Direct Engine: Sende")):
                quiet = 0
            elif line.startswith("🎤 Buffer: "):
                quiet = quiet + 1 if "-80.0 dB" in line else 0
        return quiet >= _QUIET_LINES

    def wait_until_quiet(self, before, ended):
        """Waits until no more subtitles come, after one that came after the moment `ended`; gives
        up when none does. The first `before` ones do not count."""

        def answered():
            late = [subtitle for subtitle in self._watch.seen()[before:]
                    if subtitle.arrived > ended]
            return late and time.monotonic() - late[-1].arrived > _QUIET_SECONDS

        with contextlib.suppress(Timeout):
            wait_until(answered, "a subtitle", _ANSWER_LIMIT)


def word_error_rate(results):
    """Errors per spoken word over all results."""
    errors = sum(word_errors(spoken.sentence.words, spoken.heard) for spoken in results)
    return errors / sum(len(spoken.sentence.words) for spoken in results)


def median_delay(results):
    delays = [spoken.delay for spoken in results if spoken.delay is not None]
    return statistics.median(delays) if delays else None
