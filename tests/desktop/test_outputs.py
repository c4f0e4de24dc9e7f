"""One spoken sentence reaches every output: window, voice, page, chatbox, title, transcript."""

import collections
import contextlib
import os
import pathlib
import time
import unittest

from support import INSTALL_BACKEND, PROGRAM

from harness.processes import wait_until
from harness.program import free_port
from harness.road import Road
from harness.speech import recorded_sentences
from harness.witnesses import LogReader, OscDump, Page, Paint, Vmix

_ORIGINAL, _TRANSLATION = "📥 Original: ", "📥 Übersetzung: "

# The log is looked at once a millisecond, and on a busy machine later: the window may be faster.
_LOG_LAG = 0.25 * float(os.environ.get("ORVANE_SLOWDOWN", "1"))

_CHATBOX_LIMIT = 144


class Outputs(unittest.TestCase):
    REAL_TIME = True
    USES_PORT = True

    def setUp(self):
        context = contextlib.ExitStack()
        self.addCleanup(context.close)
        self.vmix = context.enter_context(Vmix())
        self.chat_port = free_port()
        self.road = context.enter_context(Road(PROGRAM, INSTALL_BACKEND, compositor=True, settings={
            "speakTranslations": True, "vmixEnabled": True, "vmixPort": self.vmix.port,
            "vrchatEnabled": True, "vrchatPort": self.chat_port}))
        program = self.road.program
        self.chatbox = context.enter_context(OscDump(self.road.desktop, self.chat_port))
        self.log = context.enter_context(LogReader(program))
        self.page = context.enter_context(Page(self.road.overlay.port))
        self.paint = context.enter_context(Paint(self.road.desktop, program.pid))
        self.listener = self.road.sound.listen()

    def results(self):
        """What the program says it was sent: (moment, source text, translation)."""
        seen = [(moment, line) for moment, line in self.log.seen
                if line.startswith((_ORIGINAL, _TRANSLATION))]
        return [(moment, original.removeprefix(_ORIGINAL), translation.removeprefix(_TRANSLATION))
                for (moment, original), (_, translation) in zip(seen[::2], seen[1::2])]

    def test_one_spoken_sentence_reaches_every_output(self):
        road = self.road
        road.show_panel()
        road.start_backend()
        road.start_translation()
        sentences = recorded_sentences()
        road.play_sentence(sentences[1])  # Opens the window and wakes the voice.
        self.listener.wait_for_silence(2.0)
        before, shown_before = len(self.results()), len(road.subtitles())
        painted_before = len(self.paint.seen)
        road.sound.speak(sentences[2].file).wait()
        ended = time.monotonic() - sentences[2].trailing_silence
        wait_until(lambda: self.results()[before:], "a result")
        self.wait_for_window(before)
        road.wait_until_quiet(shown_before, ended)
        results = self.results()[before:]
        arrived, original, translation = results[-1]
        delays = {
            "subtitle window": self.paint.first_since(
                painted_before, lambda size: True, since=arrived - _LOG_LAG),
            "page document": self.page.first_since(
                0, lambda what: (what["original"], what["translation"]) == (original, translation)),
            "chatbox": self.chatbox.first_since(
                0, lambda what: what == ("/chatbox/input", "sTF",
                                         f"{original}\n{translation}"[:_CHATBOX_LIMIT], "F")),
            "vMix translation": self.vmix.first_since(0, lambda what: what == {
                "Function": "SetText", "Input": "1", "SelectedName": "Translation",
                "Value": translation}),
            "vMix source text": self.vmix.first_since(0, lambda what: what == {
                "Function": "SetText", "Input": "1", "SelectedName": "Original",
                "Value": original}),
            "voice": self.listener.wait_for_sound(arrived) + arrived}
        print(f"\n{original!r} -> {translation!r}")
        for name, moment in delays.items():
            self.assertIsNotNone(moment, name)
            print(f"    {name:<18}{1000 * (moment - arrived):8.1f} ms after the result")
        self.check_transcripts(self.results())

    def wait_for_window(self, before):
        """Sees the latest pair in the window, which hides soon after."""

        def shown():
            names = [node.get_name() for node in self.road.accessibility.nodes(
                self.road.program.pid) if self.is_subtitle(node)]
            _, original, translation = self.results()[before:][-1]
            return original in names and translation in names

        wait_until(shown, "the latest result in the subtitle window")
        if folder := os.environ.get("ORVANE_PICTURES"):
            self.road.desktop.screenshot(pathlib.Path(folder) / "sentence.png")

    def is_subtitle(self, node):
        _, y, width, _ = self.road.accessibility.extents(node)
        return width == 760 and y > 600

    def check_transcripts(self, results):
        self.road.stop_translation()
        self.assertEqual(self.road.quit(), 0, self.road.program.tail())
        output = self.road.desktop.home / "Library" / "Application Support" / "Orvane" / "output"
        files = sorted(output.iterdir())
        self.assertEqual([file.suffix for file in files], [".srt", ".txt"])
        # Each text has a line of its own, as often as it came, but for a subtitle that says the same
        # in both languages.
        for file in files:
            came = collections.Counter(
                text for _, *pair in results
                for text in (set(pair) if file.suffix == ".srt" else pair))
            lines = [line.removeprefix("Original: ").removeprefix("Translation: ")
                     for line in file.read_text(encoding="utf-8").splitlines()]
            self.assertEqual({text: lines.count(text) for text in came}, came, file.name)


if __name__ == "__main__":
    unittest.main()
