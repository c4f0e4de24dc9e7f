"""Whoever reads what the program prints may pause."""

import unittest

from support import PROGRAM, DesktopTest

from harness.processes import wait_until
from harness.program import Overlay, PausingReader, Program, free_port
from harness.scripted_backend import ScriptedBackend, result

_ORIGINAL = "📥 Original: "
_LEFT_OUT = "⚠️ Ausgabe wurde nicht gelesen - "

# Together more than what a pipe and the program's queue hold.
_LONG_RESULTS = [result(f"{number} heard " + 20_000 * "a", f"{number} said " + 20_000 * "b")
                 for number in range(50)]


class Log(DesktopTest):
    USES_PORT = True

    def test_a_reader_who_pauses_holds_up_nothing_and_is_told_what_is_missing(self):
        self.start_translating()
        self.reader.pause()
        for one in _LONG_RESULTS:
            self.publish(one)
        self.check_that_all_goes_on()
        self.reader.go_on()
        self.program.wait_for_line(_LEFT_OUT)
        self.publish(result("heard again", "said again"))
        self.program.wait_for_line(_ORIGINAL + "heard again")
        self.press("Quit")
        self.assertEqual(self.program.wait_for_end(), 0, self.program.tail())
        self.reader.wait_for_end()
        self.check_log()

    def start_translating(self):
        self.overlay = Overlay(free_port())
        self.open_desktop(obsOverlayEnabled=True, obsOverlayPort=self.overlay.port, vadEnabled=False)
        self.backend = ScriptedBackend(self.desktop)
        self.reader = PausingReader()
        self.addCleanup(self.reader.go_on)
        self.program = Program(self.desktop, PROGRAM, reader=self.reader)
        self.program.wait_for_line("App gestartet")
        self.open_panel()
        self.press("Start Backend")
        self.wait_for("Stop Backend")
        self.press("Start Translation")
        self.program.wait_for_line("✓ Config gesendet")
        wait_until(self.overlay.text, "the browser overlay")

    def publish(self, one):
        """Publishes a result and waits until it is shown."""
        self.backend.publish(one)
        wait_until(lambda: (self.overlay.text() or {}).get("translation") == one["translation"],
                   "the result in the overlay")

    def check_that_all_goes_on(self):
        heard = self.backend.audio_messages()
        wait_until(lambda: self.backend.audio_messages() > heard + 1, "more sound")
        self.press("Show Original Text")
        self.wait_until_stored("showOriginal", True)

    def check_log(self):
        lines = self.program.lines()
        told = [line for line in lines if line.startswith(_LEFT_OUT)]
        self.assertEqual(len(told), 1)
        results = [line.removeprefix(_ORIGINAL) for line in lines if line.startswith(_ORIGINAL)]
        written = len(results) - 1
        self.assertTrue(0 < written < len(_LONG_RESULTS), written)
        self.assertEqual(results[:-1], [one["original"] for one in _LONG_RESULTS[:written]])
        # Two lines for each result, and what capture says beside.
        left_out = int(told[0].removeprefix(_LEFT_OUT).split()[0])
        self.assertGreaterEqual(left_out, 2 * (len(_LONG_RESULTS) - written) - 1)


if __name__ == "__main__":
    unittest.main()
