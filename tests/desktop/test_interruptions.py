"""What keeps a run from bringing results is said, and one press goes on."""

import os
import pathlib
import signal
import unittest

from support import INSTALL_BACKEND, PROGRAM

from harness.notifications import Notifications
from harness.processes import wait_until
from harness.program import BACKEND_PORT, port_is_open
from harness.road import MICROPHONE_ROAD, Road
from harness.speech import recorded_sentences
from harness.texts import Texts


class Interruptions(unittest.TestCase):
    USES_PORT = True
    REAL_TIME = True

    def test_a_killed_speech_server_in_english(self):
        self.walk("en")

    def test_a_killed_speech_server_in_german(self):
        self.walk("de")

    def test_a_killed_speech_server_without_a_tray(self):
        self.walk("en", tray=False)

    def test_a_run_continues_by_itself_when_the_user_wants_that(self):
        self.start("de", continueAfterInterruption=True)
        self.kill_speech_server()
        self.wait_until_told_once(self.text("run.trouble.link"))
        self.check_that_it_goes_on()
        self.assertEqual(len(self.notifications.seen()), 1)
        self.check_orderly_end()

    def test_a_sound_server_that_goes_and_returns(self):
        self.start("en")
        self.road.sound.kill()
        self.wait_for(self.text("run.interrupted"))
        self.road.sound.start()
        self.wait_until_gone(self.text("run.interrupted"))
        self.check_that_it_goes_on()
        self.check_orderly_end()

    def walk(self, language, tray=True):
        self.start(language, tray=tray)
        self.kill_speech_server()
        link_lost = self.text("run.trouble.link")
        self.wait_for(self.text("run.interrupted"))
        self.wait_for(link_lost)
        self.wait_until_told_once(link_lost)
        # The supervisor says the same as the run.
        self.wait_for(self.text("main.backend.start"))
        self.assertFalse(self.says_that_it_listens())
        if folder := os.environ.get("ORVANE_PICTURES"):
            self.road.desktop.screenshot(pathlib.Path(folder) / f"interrupted-{language}.png")
        self.road.press(self.text("run.continue"))
        self.check_that_it_goes_on()
        self.check_orderly_end()

    def start(self, language, tray=True, **settings):
        self.text = Texts(language)
        self.road = Road(PROGRAM, INSTALL_BACKEND, source=MICROPHONE_ROAD, language=language,
                         settings=settings, tray=tray,
                         prepare=lambda desktop: setattr(self, "notifications",
                                                         Notifications(desktop)))
        self.enterContext(self.road)
        if tray:
            self.road.desktop.click_tray()
        self.road.press(self.text("main.backend.start"))
        self.wait_for(self.text("main.backend.stop"))
        self.road.press(self.text("main.start"))
        self.road.program.wait_for_line("✅ Mikrofon-Engine gestartet")
        self.speak()
        for stage in ("sound", "speech", "sent", "answered"):
            self.wait_for_stage(stage)

    def speak(self):
        """Until something of what is said comes back."""
        before = len(self.road.subtitles())
        wait_until(lambda: self.road.play_sentence(recorded_sentences()[2]).subtitles, "a subtitle")
        return self.road.subtitles()[before:]

    def wait_for_stage(self, stage):
        """One that has been reached: it says when."""
        begin = self.text(f"run.stage.{stage}") + ": "
        never = begin + self.text("run.stage.never")
        wait_until(lambda: set(self.names_that_begin(begin)) - {never}, f"the stage {stage}")

    def says_that_it_listens(self):
        """In the header, behind which the speech server's last word stands."""
        return self.names_that_begin(self.text("status.listening"))

    def names_that_begin(self, begin):
        return [name for _, name in self.road.accessibility.names(self.road.program.pid)
                if name.startswith(begin)]

    def kill_speech_server(self):
        server, = [pid for pid, command in self.road.program.processes().items()
                   if "server.py" in command]
        os.kill(server, signal.SIGKILL)
        wait_until(lambda: not port_is_open(BACKEND_PORT), "the speech server's end")

    def wait_until_told_once(self, why):
        wait_until(self.notifications.seen, "a notification")
        self.assertEqual(self.notifications.seen(), [[self.text("run.interrupted"), why]])

    def check_that_it_goes_on(self):
        self.wait_until_gone(self.text("run.interrupted"))
        self.wait_for(self.text("main.backend.stop"))
        self.assertTrue(self.speak())
        wait_until(self.says_that_it_listens, "the panel to say that it listens")

    def check_orderly_end(self):
        self.road.press(self.text("main.stop"))
        self.wait_for(self.text("main.start"))
        self.road.press(self.text("main.quit"))
        self.assertEqual(self.road.program.wait_for_end(), 0, self.road.program.tail())
        self.road.program.wait_until_nothing_is_left()

    def find(self, name):
        return self.road.accessibility.find(self.road.program.pid, name)

    def wait_for(self, name):
        return self.road.accessibility.wait_for(self.road.program.pid, name)

    def wait_until_gone(self, name):
        wait_until(lambda: self.find(name) is None, f"{name!r} to leave the screen")


if __name__ == "__main__":
    unittest.main()
