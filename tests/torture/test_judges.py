"""The judges of what a program leaves behind, and what they are told by the library that fails calls."""

import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))

from framework.complaints import complaints  # noqa: E402
from framework.judges import Torn, cues_of, entries_of, excess  # noqa: E402
from framework.places import errors_of, fault_of, places_of  # noqa: E402

_HEAD = "Live Audio Translation\nSession: 2030-01-02 03:04:05\nSource: en\nTarget: es\n" + "=" * 60 + "\n\n"
_ENTRY = "[2030-01-02T03:04:05.678Z]\nOriginal: One.\nTranslation: Uno.\n\n"
_CUE = "{}\n00:00:01,000 --> 00:00:04,000\nOne.\nUno.\n\n"


class Transcripts(unittest.TestCase):
    def test_whole_entries(self):
        self.assertEqual(entries_of(""), [])
        self.assertEqual(entries_of(_HEAD + 2 * _ENTRY), 2 * [("One.", "Uno.")])
        self.assertEqual(cues_of(_CUE.format(1) + _CUE.format(2)), 2 * [("One.", "Uno.")])

    def test_torn_entries(self):
        for cut in range(1, len(_ENTRY)):
            with self.assertRaises(Torn):
                entries_of(_HEAD + _ENTRY + _ENTRY[:cut])
        with self.assertRaises(Torn):
            entries_of(_HEAD[:-3])
        with self.assertRaises(Torn):
            entries_of(_HEAD + "\0" + _ENTRY)

    def test_cues_that_do_not_run_through(self):
        for second in (1, 3):
            with self.assertRaises(Torn):
                cues_of(_CUE.format(1) + _CUE.format(second))


class Descriptors(unittest.TestCase):
    def test_only_more_is_too_many(self):
        self.assertEqual(excess({"pipe": 3, "tcp": 1, "file": 1}, {"pipe": 1, "tcp": 2}),
                         {"pipe": 2, "file": 1})


class Words(unittest.TestCase):
    def test_trouble_is_told_apart(self):
        self.assertEqual(complaints(["fine", "❌ Port 8077: x", "❌ Port 8078: x", "Failed to start"]),
                         {"❌ Port 0: x", "Failed to start"})


class Places(unittest.TestCase):
    _REPORT = ("place 1f 3 write|socket inet stream nonblocking|libQt6Network.so.6|a b\n"
               "place 2e 1 write|pipe|program|c\n"
               "fault 1f 2 32 write|socket inet stream nonblocking|libQt6Network.so.6|a b|socket:[1]\n")

    def test_a_report_is_read(self):
        socket, pipe = places_of(self._REPORT)
        self.assertEqual((socket.number, socket.count, socket.call, socket.library, socket.frames),
                         ("1f", 3, "write", "libQt6Network.so.6", ("a", "b")))
        self.assertFalse(socket.is_ours)
        self.assertTrue(pipe.is_ours)
        self.assertTrue(errors_of(socket))
        self.assertEqual(errors_of(pipe), [])
        self.assertTrue(fault_of(self._REPORT).endswith("|socket:[1]"))
        self.assertIsNone(fault_of("place 2e 1 write|pipe|program|c\n"))


if __name__ == "__main__":
    unittest.main()
