"""The files of a session."""

import os
import time
import unittest
from pathlib import Path
from typing import Optional

from tests.peers import results
from tests.session_case import SessionCase, chunk


class SessionTranscriptsTest(SessionCase):
    async def test_transcripts_are_written_when_asked_for_and_end_with_stop(self) -> None:
        wishes = {"targetLang": "es", "saveTranscript": True, "saveSRT": True}
        async with self.client(wishes) as client:
            await client.audio(chunk(1), 16000)
            await client.flush()
            (transcript,) = self.folder.glob("transcript_*.txt")
            (subtitles,) = self.folder.glob("subtitles_*.srt")
            self.assertIn("Source: en\nTarget: es\n", transcript.read_text())
            self.assertIn("Original: n1\nTranslation: N1\n\n", transcript.read_text())
            self.assertTrue(subtitles.read_text().endswith("\nn1\nN1\n\n"))
            await client.send({"type": "stop"})
            await client.audio(chunk(2), 16000)
            self.assertEqual(results(await client.flush()), [("n2", "N2")])
            self.assertNotIn("n2", transcript.read_text())
            # The same wishes after a stop begin files of their own.
            await client.config(**wishes)
            await client.audio(chunk(3), 16000)
            await client.flush()
            self.assertEqual(len(list(self.folder.glob("transcript_*.txt"))), 2)

    async def test_a_client_that_recognises_by_itself_gets_files_only_for_what_is_heard_here(
        self,
    ) -> None:
        wishes = {"sttEngine": "deepgram", "saveTranscript": True, "saveSRT": True}
        async with self.client() as client:
            await client.config(**wishes)
            await client.flush()
            self.assertEqual(list(self.folder.iterdir()), [])
            await client.audio(chunk(1), 16000)
            await client.audio(chunk(2), 16000)
            await client.flush()
            (transcript,) = self.folder.glob("transcript_*.txt")
            (subtitles,) = self.folder.glob("subtitles_*.srt")
            self.assertIn("Original: n1\n", transcript.read_text())
            self.assertIn("Original: n2\n", transcript.read_text())
            self.assertTrue(subtitles.read_text().endswith("\nn2\nN2\n\n"))

    async def test_the_same_config_again_keeps_the_files(self) -> None:
        wishes = {"saveTranscript": True, "saveSRT": True}
        async with self.client(wishes) as client:
            await client.audio(chunk(1), 16000)
            await client.config(**wishes)
            await client.config(**wishes, sttEngine="vosk")
            await client.audio(chunk(2), 16000)
            await client.flush()
        self.assertEqual(len(list(self.folder.iterdir())), 2)

    async def test_a_run_without_a_word_leaves_no_files(self) -> None:
        async with self.client({"saveTranscript": True, "saveSRT": True}) as client:
            await client.audio(chunk(0), 16000)
            await client.audio(chunk(99), 16000)
            await client.flush()
        self.assertEqual(list(self.folder.iterdir()), [])

    async def test_subtitles_have_the_times_of_the_speech_however_late_they_come(self) -> None:
        recogniser = self.recognisers[0]
        async with self.client({"targetLang": "es", "saveSRT": True}) as client:
            recogniser.gate.clear()
            self.now += 10.0
            await client.audio(chunk(1, 4.0), 16000)
            await self.eventually(recogniser.entered.is_set)
            self.now += 9.0
            recogniser.gate.set()
            await client.flush()
        (subtitles,) = self.folder.glob("subtitles_*.srt")
        self.assertEqual(subtitles.read_text(), "1\n00:00:06,000 --> 00:00:09,800\nn1\nN1\n\n")

    async def test_a_change_of_the_time_zone_shifts_nothing(self) -> None:
        before = os.environ.get("TZ")
        try:
            self._move_to("UTC0")
            async with self.client({"saveSRT": True}) as client:
                await client.flush()
                self._move_to("EAST-9")
                await client.audio(chunk(1), 16000)
                await client.flush()
            (subtitles,) = self.folder.glob("subtitles_*.srt")
            self.assertTrue(subtitles.read_text().startswith("1\n00:00:"), subtitles.read_text())
        finally:
            self._move_to(before)

    def _move_to(self, zone: Optional[str]) -> None:
        if zone is None:
            os.environ.pop("TZ", None)
        else:
            os.environ["TZ"] = zone
        time.tzset()

    async def test_no_files_without_the_wish(self) -> None:
        async with self.client({}) as client:
            await client.audio(chunk(1), 16000)
            await client.flush()
        self.assertEqual(list(self.folder.iterdir()), [])

    async def test_a_folder_that_refuses_costs_no_result(self) -> None:
        self.folder = Path("/dev/null/output")
        async with self.client({"saveTranscript": True}) as client:
            await client.audio(chunk(1), 16000)
            self.assertEqual(results(await client.flush()), [("n1", "N1")])


if __name__ == "__main__":
    unittest.main()
