"""The whole road of a result, with every kind of source: played speech becomes subtitles."""

import pathlib
import subprocess
import unittest

from support import INSTALL_BACKEND, PROGRAM

from harness.road import APP_ROAD, MICROPHONE_ROAD, SYSTEM_ROAD, Road, word_error_rate
from harness.speech import recorded_sentences

# Measured 0.32 over a clean microphone road; a wrong rate or torn blocks leave nothing recognisable.
_HIGHEST_ERROR_RATE = 0.6


class Roads(unittest.TestCase):
    TIME_LIMIT = 300
    REAL_TIME = True
    USES_PORT = True
    JOURNEYS = ("microphone", "system_audio", "one_application_while_another_plays")

    def road(self, source):
        road = Road(PROGRAM, INSTALL_BACKEND, source=source)
        self.enterContext(road)
        road.show_panel()
        road.start_backend()
        road.start_translation()
        return road

    def check_results(self, results):
        for spoken in results:
            self.assertTrue(spoken.heard, spoken.sentence.words)
            self.assertTrue(spoken.translation, spoken.heard)
        self.assertLess(word_error_rate(results), _HIGHEST_ERROR_RATE,
                        [spoken.heard for spoken in results])

    def check_orderly_end(self, road):
        road.stop_translation()
        self.assertEqual(road.quit(), 0, road.program.tail())
        road.program.wait_until_nothing_is_left()

    def test_microphone(self):
        road = self.road(MICROPHONE_ROAD)
        results = [road.play_sentence(sentence) for sentence in recorded_sentences()[1:4]]
        self.check_results(results)
        self.check_orderly_end(road)
        self.check_transcripts(road, results)

    def check_transcripts(self, road, results):
        output = road.desktop.home / "Library" / "Application Support" / "Orvane" / "output"
        files = sorted(pathlib.Path(output).iterdir())
        self.assertEqual(sorted(file.suffix for file in files), [".srt", ".txt"])
        for file in files:
            text = file.read_text(encoding="utf-8")
            for spoken in results:
                for subtitle in spoken.subtitles:
                    self.assertIn(subtitle.translation, text)

    def test_system_audio(self):
        road = self.road(SYSTEM_ROAD)
        self.check_results([road.play_sentence(sentence)
                            for sentence in recorded_sentences()[2:4]])
        self.check_orderly_end(road)

    def test_one_application_while_another_plays(self):
        sentences = recorded_sentences()
        road = self.road(APP_ROAD)
        noise = road.desktop.folder / "noise.wav"
        subprocess.run(["sox", str(sentences[0].file), str(noise), "repeat", "30"], check=True)
        other = road.sound.play(noise, "org.example.Other")
        results = [road.play_sentence(sentence) for sentence in sentences[2:4]]
        self.assertIsNone(other.poll(), "the other application should have played all the time")
        self.check_results(results)
        heard = {word for spoken in results for word in spoken.heard}
        self.assertFalse(heard & {"dashwood", "leisure", "consider", "john", "power"}, heard)
        self.check_orderly_end(road)


if __name__ == "__main__":
    unittest.main()
