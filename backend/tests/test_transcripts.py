"""The two files of a session."""

import os
import resource
import tempfile
import unittest
from datetime import datetime, timedelta, timezone
from pathlib import Path
from unittest import mock

from orvane_backend import transcripts
from orvane_backend.transcripts import Spoken, TranscriptWriter

_START = datetime(2025, 3, 1, 14, 30, 5)
_SPOKEN = Spoken(1.0, 2.0, 2.6)


class FormatTest(unittest.TestCase):
    def test_the_header(self) -> None:
        self.assertEqual(
            transcripts.header(_START, "auto", "de"),
            "Live Audio Translation\nSession: 2025-03-01 14:30:05\nSource: auto\nTarget: de\n"
            + "=" * 60 + "\n\n",
        )  # fmt: skip

    def test_an_entry_is_stamped_in_utc_with_milliseconds(self) -> None:
        moment = datetime(2025, 3, 1, 14, 30, 5, 123999, timezone(timedelta(hours=1)))
        self.assertEqual(
            transcripts.entry(moment, "Hallo", "Hello"),
            "[2025-03-01T13:30:05.123Z]\nOriginal: Hallo\nTranslation: Hello\n\n",
        )

    def test_an_empty_translation_still_has_its_line(self) -> None:
        moment = datetime(2025, 3, 1, tzinfo=timezone.utc)
        self.assertIn("\nTranslation: \n\n", transcripts.entry(moment, "Hallo", ""))

    def test_a_cue(self) -> None:
        self.assertEqual(
            transcripts.cue(7, 0.25, 1.5, ("a", "b")), "7\n00:00:00,250 --> 00:00:01,500\na\nb\n\n"
        )

    def test_a_line_that_would_end_a_cue_is_left_away(self) -> None:
        text = transcripts.cue(1, 0, 1, ("one\n\ntwo", " "))
        self.assertTrue(text.endswith(",000\none two\n\n"), text)

    def test_a_cue_stays_while_somebody_speaks_and_while_one_reads_it(self) -> None:
        for spoken, letters, last_end, times in (
            (Spoken(1, 5, 5.6), 10, 0, (1, 5)),  # as long as it was said
            (Spoken(1, 1.3, 9), 10, 0, (1, 2)),  # a second at least
            (Spoken(1, 2, 9), 68, 0, (1, 5)),  # as long as one reads 68 letters
            (Spoken(1, 2, 20), 900, 0, (1, 8)),  # but not for ever
            (Spoken(1, 2, 2.6), 68, 0, (1, 2.6)),  # and not when somebody may speak again
            (Spoken(1, 5, 5.6), 10, 3, (3, 5)),  # not before the one before it has gone
            (Spoken(1, 2, 2.6), 10, 4, (4, 4.3)),  # even when it was said before that
            (Spoken(-2, 1, 1.6), 10, 0, (0, 1)),  # nor before the session
        ):
            begin, end = transcripts.cue_times(spoken, letters, last_end)
            self.assertAlmostEqual(begin, times[0], msg=str(spoken))
            self.assertAlmostEqual(end, times[1], msg=str(spoken))

    def test_times(self) -> None:
        for seconds, text in (
            (-5, "00:00:00,000"), (0, "00:00:00,000"), (3725.5, "01:02:05,500"),
            (0.3, "00:00:00,300"),
            (59.9999, "00:00:59,999"), (360000, "100:00:00,000"), (4.35, "00:00:04,350"),
        ):  # fmt: skip
            self.assertEqual(transcripts.srt_time(seconds), text)


class WriterTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name) / "Library" / "output"

    def open(self, **wishes: bool) -> TranscriptWriter:
        writer = TranscriptWriter.open(
            self.folder, _START, ("en", "es"),
            **{"transcript": True, "subtitles": True, "with_original": True, **wishes},
        )  # fmt: skip
        assert writer is not None
        self.addCleanup(writer.close)
        return writer

    def text(self, name: str) -> str:
        return (self.folder / name).read_text("utf-8")

    def test_the_files_are_named_by_their_start_and_complete_after_every_entry(self) -> None:
        writer = self.open()
        self.assertTrue(self.text("transcript_20250301_143005.txt").endswith("=\n\n"))
        self.assertEqual(self.text("subtitles_20250301_143005.srt"), "")
        for number in (1, 2):
            spoken = Spoken(2 * number, 2 * number + 1.5, 2 * number + 1.6)
            writer.append(_START + timedelta(seconds=2 * number), spoken, f"o{number}", "ü")
            self.assertTrue(
                self.text("transcript_20250301_143005.txt").endswith(
                    f"Original: o{number}\nTranslation: ü\n\n"
                )
            )
            self.assertTrue(
                self.text("subtitles_20250301_143005.srt").endswith(
                    f"{number}\n00:00:0{2 * number},000 --> 00:00:0{2 * number + 1},500\no{number}\nü\n\n"
                )
            )

    def test_two_sessions_of_one_second_keep_their_own_files(self) -> None:
        first, second = self.open(), self.open()
        first.append(_START, _SPOKEN, "first", "")
        second.append(_START, _SPOKEN, "second", "")
        self.assertIn("first", self.text("transcript_20250301_143005.txt"))
        self.assertIn("second", self.text("transcript_20250301_143005_2.txt"))
        self.assertIn("second", self.text("subtitles_20250301_143005_2.srt"))

    def test_only_what_was_asked_for_is_written(self) -> None:
        self.open(transcript=False).append(_START, _SPOKEN, "a", "b")
        self.assertEqual(os.listdir(self.folder), ["subtitles_20250301_143005.srt"])

    def test_subtitles_hold_the_original_only_if_wished_and_no_line_twice(self) -> None:
        for with_original, translated, lines in (
            (True, "hola", "hello\nhola"), (False, "hola", "hola"),
            (True, "hello", "hello"), (True, "", "hello"), (False, "", "hello"),
        ):  # fmt: skip
            writer = self.open(transcript=False, with_original=with_original)
            writer.append(_START, _SPOKEN, "hello", translated)
            newest = max(self.folder.iterdir(), key=lambda path: path.stat().st_ino)
            self.assertTrue(newest.read_text().endswith(f"\n{lines}\n\n"), newest.read_text())
            newest.unlink()

    def test_a_folder_that_cannot_be_made_costs_a_line(self) -> None:
        blocked = self.folder.parent / "file"
        blocked.parent.mkdir()
        blocked.write_text("")
        with mock.patch.object(transcripts, "log") as log:
            writer = TranscriptWriter.open(
                blocked / "output", _START, ("en", "es"),
                transcript=True, subtitles=True, with_original=True,
            )  # fmt: skip
        self.assertIsNone(writer)
        log.assert_called_once()

    def test_a_full_disk_leaves_whole_entries_and_a_line(self) -> None:
        writer = self.open(subtitles=False)
        writer.append(_START, _SPOKEN, "whole", "ganz")
        before = self.text("transcript_20250301_143005.txt")
        soft, hard = resource.getrlimit(resource.RLIMIT_FSIZE)
        # Python ignores the signal of this limit, so a write beyond it fails as on a full disk.
        resource.setrlimit(resource.RLIMIT_FSIZE, (len(before.encode()) + 20, hard))
        try:
            with mock.patch.object(transcripts, "log") as log:
                writer.append(_START, _SPOKEN, "does not fit any more", "passt nicht mehr")
        finally:
            resource.setrlimit(resource.RLIMIT_FSIZE, (soft, hard))
        log.assert_called_once()
        self.assertEqual(self.text("transcript_20250301_143005.txt"), before)
        writer.append(_START, _SPOKEN, "fits again", "passt wieder")
        self.assertIn("fits again", self.text("transcript_20250301_143005.txt"))

    def test_text_that_is_no_unicode_is_written_with_a_mark(self) -> None:
        self.open().append(_START, _SPOKEN, "a\ud800b", "c")
        self.assertIn("Original: a?b", self.text("transcript_20250301_143005.txt"))


class FolderTest(unittest.TestCase):
    def test_it_lies_in_the_home_that_the_environment_names(self) -> None:
        with mock.patch.dict(os.environ, {"HOME": "/somewhere"}):
            self.assertEqual(
                str(transcripts.output_folder()),
                "/somewhere/Library/Application Support/Orvane/output",
            )


if __name__ == "__main__":
    unittest.main()
