"""The download of a model over connections of every kind, from a server on loopback."""

import errno
import io
import os
import tempfile
import unittest
from contextlib import redirect_stdout
from pathlib import Path
from typing import Any
from unittest import mock

from orvane_backend.downloads import DownloadError
from orvane_backend.downloads.fetch import fetch
from orvane_backend.downloads.part import Part
from orvane_backend.downloads.transfer import Patience
from tests.model_server import CONTENT, Answer, ModelServer

TOTAL = len(CONTENT)
HALF = (TOTAL + 1) // 2
THIRD = TOTAL // 3


class DownloadCase(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="cache of models ")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name) / "cache" / "whisper"
        self.target = self.folder / "tiny.pt"
        self.pauses: list[float] = []

    def serve(self, *answers: Answer) -> ModelServer:
        server = ModelServer(*answers)
        self.enterContext(server)
        return server

    def fetch(
        self, server: ModelServer, pauses: tuple[float, ...] = (), **wishes: Any
    ) -> list[str]:
        """Returns what was printed."""
        file = server.file(digest=wishes.pop("digest", ""))
        patience = Patience(pauses, sleep=self.pauses.append, **wishes)
        with redirect_stdout(io.StringIO()) as printed:
            try:
                fetch(file, self.folder, patience)
            finally:
                self.printed = printed.getvalue().splitlines()
        return self.printed

    def fails(self, server: ModelServer, pauses: tuple[float, ...] = (), **wishes: Any) -> str:
        """Returns the reason."""
        with self.assertRaises(DownloadError) as caught:
            self.fetch(server, pauses, **wishes)
        self.assertFalse(self.target.exists())
        return str(caught.exception)

    def names(self) -> list[str]:
        return sorted(path.name for path in self.folder.iterdir())

    def part(self) -> bytes:
        return self.target.with_name("tiny.pt.part").read_bytes()

    def assert_whole(self) -> None:
        self.assertEqual(self.target.read_bytes(), CONTENT)
        self.assertEqual(self.names(), ["tiny.pt"])

    def break_off(self, server: ModelServer, after: int = HALF, **answer: Any) -> None:
        """Leaves a part of `after` bytes."""
        server.answers.insert(0, Answer(sends=after, **answer))
        self.assertIn("Verbindung verloren", self.fails(server))
        self.assertEqual(self.part(), answer.get("content", CONTENT)[:after])
        server.requests.clear()


class OneConnectionTest(DownloadCase):
    def test_a_model_comes_whole_with_every_percentage_told_once(self) -> None:
        server = self.serve()
        percentages = [int(line.removeprefix("progress ")) for line in self.fetch(server)]
        self.assert_whole()
        self.assertEqual(server.ranges(), [None])
        self.assertEqual((percentages[0], percentages[-1]), (0, 100))
        self.assertEqual(percentages[:-1], sorted(set(percentages[:-1])))

    def test_a_server_that_tells_no_length_is_judged_by_the_digest(self) -> None:
        self.fetch(self.serve(Answer(tells_length=False)))
        self.assert_whole()

    def test_a_whole_file_is_left_alone_and_a_forgotten_part_removed(self) -> None:
        self.folder.mkdir(parents=True)
        self.target.write_bytes(CONTENT)
        self.target.with_name("tiny.pt.part").write_bytes(b"left over")
        before = self.target.stat().st_mtime_ns
        server = self.serve()
        self.fetch(server)
        self.assert_whole()
        self.assertEqual(self.target.stat().st_mtime_ns, before)
        self.assertEqual(server.requests, [])

    def test_a_truncated_or_damaged_file_of_that_name_is_downloaded_anew(self) -> None:
        for wrong in (CONTENT[:HALF], b"", b"x" + CONTENT[1:]):
            self.folder.mkdir(parents=True, exist_ok=True)
            self.target.write_bytes(wrong)
            server = self.serve()
            self.assertIn("wird neu geladen", "".join(self.fetch(server)))
            self.assert_whole()
            self.assertEqual(server.ranges(), [None])

    def test_a_damaged_file_is_gone_as_soon_as_the_download_begins(self) -> None:
        self.folder.mkdir(parents=True)
        self.target.write_bytes(CONTENT[:HALF])
        self.break_off(self.serve(), after=THIRD)
        self.assertEqual(self.names(), ["tiny.pt.part", "tiny.pt.part.source"])

    def test_a_wrong_digest_removes_everything_and_says_so(self) -> None:
        for answer in (Answer(content=CONTENT[:-1] + b"x"), Answer(length=str(HALF))):
            self.assertIn("Prüfsumme", self.fails(self.serve(answer)))
            self.assertEqual(self.names(), [])

    def test_a_file_that_is_not_there_is_no_matter_of_patience(self) -> None:
        self.assertIn("404", self.fails(self.serve(Answer(refusal=404)), pauses=(1, 2)))
        self.assertEqual(self.pauses, [])

    def test_more_than_the_disk_holds_is_not_even_begun(self) -> None:
        reason = self.fails(self.serve(Answer(length=str(1 << 60))), pauses=(1, 2))
        self.assertIn("Kein Platz", reason)
        self.assertEqual(self.part(), b"")
        self.assertEqual(self.pauses, [])

    def test_a_disk_that_is_full_ends_it_and_keeps_what_there_is(self) -> None:
        write = os.pwrite

        def until_half(descriptor: int, data: Any, offset: int) -> int:
            if offset >= HALF:
                raise OSError(errno.ENOSPC, "No space left on device")
            return write(descriptor, data[: HALF - offset], offset)

        server = self.serve()
        with mock.patch("os.pwrite", until_half):
            self.assertIn("Kein Platz", self.fails(server, pauses=(1, 2)))
        self.assertEqual(self.pauses, [])
        self.assertEqual(self.part(), CONTENT[:HALF])
        self.fetch(server)
        self.assert_whole()
        self.assertEqual(server.ranges(), [None, f"bytes={HALF}-"])

    def test_a_folder_that_cannot_be_is_told(self) -> None:
        self.folder.parent.mkdir(parents=True)
        self.folder.write_text("a file in its place")
        self.assertIn(str(self.folder), self.fails(self.serve()))


class AnotherConnectionTest(DownloadCase):
    def test_a_later_download_goes_on_where_the_first_was_broken_off(self) -> None:
        server = self.serve()
        self.break_off(server)
        self.assertEqual(self.fetch(server)[0], "progress 50")
        self.assert_whole()
        self.assertEqual(server.ranges(), [f"bytes={HALF}-"])
        self.assertEqual(server.requests[0]["If-Range"], '"one"')

    def test_a_lost_connection_is_tried_again_after_growing_pauses(self) -> None:
        server = self.serve(Answer(refusal=503), Answer(sends=0), Answer(refusal=500))
        self.fetch(server, pauses=(1, 2, 4))
        self.assert_whole()
        self.assertEqual(self.pauses, [1, 2, 4])

    def test_patience_ends_and_begins_anew_with_what_more_has_come(self) -> None:
        server = self.serve(
            Answer(sends=THIRD), Answer(sends=0), Answer(sends=10), *[Answer(sends=0)] * 3
        )
        self.assertIn("zu früh geschlossen", self.fails(server, pauses=(1, 2)))
        self.assertEqual(self.pauses, [1, 2, 1, 2])
        self.assertEqual(self.part(), CONTENT[: THIRD + 10])

    def test_a_server_that_gives_the_same_beginning_for_ever_is_given_up(self) -> None:
        server = self.serve(*[Answer(sends=HALF, ranges=False)] * 9)
        self.fails(server, pauses=(1, 2))
        self.assertEqual(self.pauses, [1, 2])

    def test_a_server_that_falls_silent_is_a_lost_connection(self) -> None:
        server = self.serve(Answer(sends=HALF, holds=True))
        # On a slow machine the next connections may fall silent, too.
        printed = self.fetch(server, pauses=(0,) * 1000, silence=0.5)
        self.assertIn("der Server schweigt", "".join(printed))
        self.assert_whole()
        self.assertEqual(server.ranges()[:2], [None, f"bytes={HALF}-"])

    def test_nobody_listening_is_a_lost_connection(self) -> None:
        with ModelServer() as server:
            pass
        self.assertIn("Verbindung verloren", self.fails(server, pauses=(1, 2)))
        self.assertEqual(self.pauses, [1, 2])

    def test_shorter_ranges_than_asked_for_are_put_together(self) -> None:
        server = self.serve()
        self.break_off(server, after=100)
        server.answers.append(Answer(length="50", sends=50, content_range=f"bytes 100-149/{TOTAL}"))
        self.fetch(server)
        self.assert_whole()
        self.assertEqual(server.ranges(), ["bytes=100-", "bytes=150-"])

    def test_a_part_that_is_complete_already_needs_no_connection(self) -> None:
        server = self.serve()
        with mock.patch.object(Part, "finish", side_effect=DownloadError("as if killed")):
            self.fails(server)
        self.assertEqual(self.part(), CONTENT)
        server.requests.clear()
        self.fetch(server)
        self.assert_whole()
        self.assertEqual(server.requests, [])


class StartingOverTest(DownloadCase):
    def assert_starts_over(self, server: ModelServer, asked_first: bool = True) -> None:
        """`asked_first`: for the rest, before the whole was asked for."""
        self.fetch(server)
        self.assert_whole()
        expected = [f"bytes={HALF}-", None] if asked_first else [None]
        self.assertEqual(server.ranges(), expected)

    def test_when_the_server_sends_everything(self) -> None:
        for answer in (Answer(ranges=False), Answer(etag='"two"')):
            server = self.serve()
            self.break_off(server)
            server.answers.append(answer)
            self.fetch(server)
            self.assert_whole()
            self.assertEqual(server.ranges(), [f"bytes={HALF}-"])
            self.target.unlink()

    def test_when_the_rest_is_of_another_file(self) -> None:
        server = self.serve()
        self.break_off(server)
        server.answers.append(Answer(etag='"two"', heeds_if_range=False))
        self.assert_starts_over(server)

    def test_when_the_server_knows_no_such_rest(self) -> None:
        server = self.serve()
        self.break_off(server)
        server.answers.append(Answer(content=CONTENT[:HALF]))
        self.assert_starts_over(server)

    def test_when_the_total_is_another(self) -> None:
        server = self.serve()
        self.break_off(server)
        server.answers.append(Answer(content_range=f"bytes {HALF}-{TOTAL}/{TOTAL + 1}"))
        self.assert_starts_over(server)

    def test_when_the_rest_begins_elsewhere_or_nobody_says_where(self) -> None:
        for told in (
            f"bytes {HALF - 1}-{TOTAL - 1}/{TOTAL}", f"bytes {HALF}-{TOTAL - 1}/*",
            f"bytes {HALF}-{TOTAL}/{TOTAL}", f"bytes {HALF}-{HALF - 1}/{TOTAL}",
            f"bytes */{TOTAL}", "nonsense",
        ):  # fmt: skip
            with self.subTest(told):
                server = self.serve()
                self.break_off(server)
                server.answers.append(Answer(content_range=told))
                self.assert_starts_over(server)
                self.target.unlink()

    def test_when_the_length_was_never_told(self) -> None:
        server = self.serve()
        server.answers.append(Answer(sends=HALF, tells_length=False))
        self.assertIn("Prüfsumme", self.fails(server))
        server.requests.clear()
        self.assert_starts_over(server, asked_first=False)

    def test_when_the_length_was_not_told_before_the_connection_was_lost(self) -> None:
        server = self.serve(Answer(sends=HALF, tells_length=False, holds=True))
        self.fetch(server, pauses=(0,) * 1000, silence=0.5)
        self.assert_whole()
        self.assertEqual(server.ranges()[:2], [None, None])

    def test_when_the_file_has_become_shorter_than_what_is_there(self) -> None:
        server = self.serve()
        self.break_off(server, after=TOTAL + 100, content=CONTENT * 2)
        server.answers.append(Answer(etag='"two"'))
        self.fetch(server)
        self.assert_whole()

    def test_when_nobody_knows_what_the_part_is_of(self) -> None:
        for note in (None, "", "{}", "[]", '{"address": "x", "etag": "", "total": "9"}'):
            with self.subTest(note):
                server = self.serve()
                self.break_off(server)
                path = self.target.with_name("tiny.pt.part.source")
                path.unlink() if note is None else path.write_text(note)
                self.assert_starts_over(server, asked_first=False)
                self.target.unlink()

    def test_when_the_address_is_another(self) -> None:
        server = self.serve()
        self.break_off(server)
        other = self.serve()
        self.assert_starts_over(other, asked_first=False)

    def test_but_not_for_want_of_a_tag_that_can_be_compared(self) -> None:
        for tag in ("", 'W/"weak"'):
            server = self.serve()
            self.break_off(server, etag=tag)
            server.answers.append(Answer(etag=tag))
            self.fetch(server)
            self.assert_whole()
            self.assertEqual(server.ranges(), [f"bytes={HALF}-"])
            self.assertNotIn("If-Range", server.requests[0])
            self.target.unlink()

    def test_pieces_that_do_not_belong_together_are_found_out_by_the_digest(self) -> None:
        server = self.serve()
        self.break_off(server, etag="", content=b"x" * HALF + CONTENT[HALF:])
        self.assertIn("Prüfsumme", self.fails(server))
        self.assertEqual(self.names(), [])

    def test_a_partial_answer_that_nobody_asked_for_is_none(self) -> None:
        server = self.serve(Answer(refusal=206), Answer(refusal=206))
        self.assertIn("unerwartete Antwort 206", self.fails(server, pauses=(1, 2)))


if __name__ == "__main__":
    unittest.main()
