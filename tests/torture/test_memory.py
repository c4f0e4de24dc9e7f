"""A program that is refused the memory for its start says so, and ends in order."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from framework.places import fault_of, places_of  # noqa: E402

_PROGRAM = os.environ["ORVANE_ON_LOOPBACK"]
_LIBRARY = os.environ["ORVANE_TORTURE_FAULTS"]
_LIMIT = 120.0


class Memory(unittest.TestCase):
    def setUp(self):
        self._folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self._starts = 0

    def start(self, plan):
        """A start without a display, whose services nobody offers; returns the process, its log and its
        report."""
        self._starts += 1
        home = self._folder / f"home {self._starts}"
        self._runtime = home / "runtime"
        self._runtime.mkdir(parents=True, mode=0o700)
        log, report = home / "log", home / "report"
        environment = {
            "PATH": os.environ["PATH"], "HOME": str(home), "XDG_RUNTIME_DIR": str(self._runtime),
            "QT_QPA_PLATFORM": "offscreen", "LANG": "C.UTF-8",
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={home}/nobody", "PULSE_SERVER": f"unix:{home}/nobody",
            "LD_PRELOAD": _LIBRARY, "ORVANE_FAULTS": plan, "ORVANE_FAULTS_REPORT": str(report)}
        with log.open("wb") as output:
            process = subprocess.Popen([_PROGRAM], env=environment, stdout=output,
                                       stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process, log, report

    def test_a_start_without_memory_says_so(self):
        process, log, report = self.start("record")
        deadline = time.monotonic() + _LIMIT
        while "App gestartet" not in log.read_text() and time.monotonic() < deadline:
            self.assertIsNone(process.poll(), log.read_text())
            time.sleep(0.02)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(_LIMIT), 0, log.read_text())
        refusable = [place for place in places_of(report.read_text()) if place.call == "malloc" and place.is_ours]
        self.assertTrue(refusable)
        for place in refusable:
            with self.subTest(str(place)):
                process, log, report = self.start(f"fail {place.number} 1 12")
                self.assertEqual(process.wait(_LIMIT), 1, log.read_text())
                self.assertIsNotNone(fault_of(report.read_text()))
                self.assertIn("❌ Zu wenig Arbeitsspeicher, Orvane endet", log.read_text())
                self.assertEqual(list(self._runtime.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
