"""The two files of a session."""

import os
import resource
import tempfile
import unittest
from datetime import datetime, timedelta, timezone
from pathlib import Path
from unittest import mock

from orvane_backend import transcripts
from orvane_backend.transcripts import TranscriptWriter

_START = datetime(2025, 3, 1, 14, 30, 5)


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
        self.assertTrue(transcripts.cue(1, 0, "Hallo", "").endswith("\nHallo\n\n\n"))

    def test_a_cue_stays_for_three_seconds(self) -> None:
        self.assertEqual(
            transcripts.cue(7, 0.25, "a", "b"), "7\n00:00:00,250 --> 00:00:03,250\na\nb\n\n"
        )

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
            self.folder, _START, ("en", "es"), **{"transcript": True, "subtitles": True, **wishes}
        )
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
            writer.append(_START + timedelta(seconds=number), f"o{number}", "ü")
            self.assertTrue(
                self.text("transcript_20250301_143005.txt").endswith(
                    f"Original: o{number}\nTranslation: ü\n\n"
                )
            )
            self.assertTrue(
                self.text("subtitles_20250301_143005.srt").endswith(
                    f"{number}\n00:00:0{number},000 --> 00:00:0{number + 3},000\no{number}\nü\n\n"
                )
            )

    def test_two_sessions_of_one_second_keep_their_own_files(self) -> None:
        first, second = self.open(), self.open()
        first.append(_START, "first", "")
        second.append(_START, "second", "")
        self.assertIn("first", self.text("transcript_20250301_143005.txt"))
        self.assertIn("second", self.text("transcript_20250301_143005_2.txt"))
        self.assertIn("second", self.text("subtitles_20250301_143005_2.srt"))

    def test_only_what_was_asked_for_is_written(self) -> None:
        self.open(transcript=False).append(_START, "a", "b")
        self.assertEqual(os.listdir(self.folder), ["subtitles_20250301_143005.srt"])

    def test_a_folder_that_cannot_be_made_costs_a_line(self) -> None:
        blocked = self.folder.parent / "file"
        blocked.parent.mkdir()
        blocked.write_text("")
        with mock.patch.object(transcripts, "log") as log:
            writer = TranscriptWriter.open(
                blocked / "output", _START, ("en", "es"), transcript=True, subtitles=True
            )
        self.assertIsNone(writer)
        log.assert_called_once()

    def test_a_full_disk_leaves_whole_entries_and_a_line(self) -> None:
        writer = self.open(subtitles=False)
        writer.append(_START, "whole", "ganz")
        before = self.text("transcript_20250301_143005.txt")
        soft, hard = resource.getrlimit(resource.RLIMIT_FSIZE)
        # Python ignores the signal of this limit, so a write beyond it fails as on a full disk.
        resource.setrlimit(resource.RLIMIT_FSIZE, (len(before.encode()) + 20, hard))
        try:
            with mock.patch.object(transcripts, "log") as log:
                writer.append(_START, "does not fit any more", "passt nicht mehr")
        finally:
            resource.setrlimit(resource.RLIMIT_FSIZE, (soft, hard))
        log.assert_called_once()
        self.assertEqual(self.text("transcript_20250301_143005.txt"), before)
        writer.append(_START, "fits again", "passt wieder")
        self.assertIn("fits again", self.text("transcript_20250301_143005.txt"))

    def test_text_that_is_no_unicode_is_written_with_a_mark(self) -> None:
        self.open().append(_START, "a\ud800b", "c")
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
