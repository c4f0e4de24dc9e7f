"""What the speech server cannot do stands in the panel in full, in the window's language."""

import os
import pathlib
import unittest

from support import INSTALL_BACKEND, PROGRAM

from harness.processes import wait_until
from harness.road import MICROPHONE_ROAD, Road
from harness.texts import Texts


class Concerns(unittest.TestCase):
    """With the speech server as it is installed: PocketSphinx recognises, Whisper is not there."""

    USES_PORT = True
    REAL_TIME = True

    def test_a_language_that_nobody_recognises_in_english(self):
        self.start("en", sourceLang="de", targetLang="en")
        self.check_that_nobody_recognises()

    def test_a_language_that_nobody_recognises_in_german(self):
        self.start("de", sourceLang="de", targetLang="en")
        self.check_that_nobody_recognises()

    def test_a_pair_that_nobody_translates(self):
        self.start("en", sourceLang="en", targetLang="ja")
        nobody, detail = self.text.told("translation.none", source="English", target="日本語",
                                        address="@")
        self.wait_for(nobody)
        advice = detail.split("@")[0]
        self.assertEqual(len(self.names_that_begin(advice)), 1, self.names())
        # Who recognises instead of the engine asked for, and why.
        self.wait_for(self.text("status.listening") + " · PocketSphinx")
        for text in self.text.told("recognition.not_installed.whisper", engine="Whisper"):
            self.assertIn(text, self.names())
        self.take_a_picture("untranslated")
        self.check_that_it_goes_with_the_run(nobody)

    def check_that_nobody_recognises(self):
        nobody, advice = self.text.told("engine.none_for_language", language="Deutsch")
        why, _ = self.text.told("recognition.not_installed", engine="Whisper")
        why_not_the_other, _ = self.text.told("recognition.language_unknown",
                                              engine="PocketSphinx", language="Deutsch")
        in_full = f"{why}. {why_not_the_other}.\n{advice}"
        self.wait_for(in_full)
        names = self.names()
        # The header's line, and the card with its own first line.
        self.assertEqual(names.count(nobody), 3, names)
        self.assertEqual([name for name in names if "❌" in name], [], "the server's own words")
        self.take_a_picture(f"unrecognised-{self.language}")
        self.check_that_it_goes_with_the_run(in_full)

    def check_that_it_goes_with_the_run(self, name):
        self.road.press(self.text("main.stop"))
        wait_until(lambda: self.find(name) is None, f"{name!r} to leave the screen")
        self.wait_for(self.text("main.start"))
        self.road.press(self.text("main.quit"))
        self.assertEqual(self.road.program.wait_for_end(), 0, self.road.program.tail())
        self.road.program.wait_until_nothing_is_left()

    def start(self, language, **settings):
        self.language, self.text = language, Texts(language)
        self.road = Road(PROGRAM, INSTALL_BACKEND, source=MICROPHONE_ROAD, language=language,
                         settings={"sttEngine": "whisper", **settings})
        self.enterContext(self.road)
        self.road.desktop.click_tray()
        self.road.press(self.text("main.backend.start"))
        self.wait_for(self.text("main.backend.stop"))
        self.road.press(self.text("main.start"))

    def names(self):
        return [name for _, name in self.road.accessibility.names(self.road.program.pid)]

    def names_that_begin(self, begin):
        return [name for name in self.names() if name.startswith(begin)]

    def find(self, name):
        return self.road.accessibility.find(self.road.program.pid, name)

    def wait_for(self, name):
        return self.road.accessibility.wait_for(self.road.program.pid, name)

    def take_a_picture(self, name):
        if folder := os.environ.get("ORVANE_PICTURES"):
            self.road.desktop.screenshot(pathlib.Path(folder) / f"{name}.png")


if __name__ == "__main__":
    unittest.main()
