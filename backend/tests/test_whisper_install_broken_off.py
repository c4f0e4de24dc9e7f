"""`scripts/install-backend --with`, broken off, and on disks that are full or odd."""

import os
import re
import resource
import shutil
import signal
import subprocess
import unittest

from orvane_backend.packages import MEGABYTE
from tests.wheels import make_wheel, module
from tests.whisper_install_case import WhisperInstallCase

_FASTER = "import faster_whisper, ctranslate2, huggingface_hub"
_TERM, _INT, _KILL = signal.SIGTERM, signal.SIGINT, signal.SIGKILL
_MOMENTS = (
    (_TERM, "[2/7]"), (_KILL, "[4/7]"), (_TERM, "[5/7]"), (_INT, " is there"), (_KILL, " is there"),
    (_KILL, "100 %"), (_INT, "[6/7]"), (_TERM, "[6/7]"), (_KILL, "[6/7]"), (_TERM, "[7/7]"),
    (_KILL, "[7/7]"),
)  # fmt: skip

# Less by some than the disk's size: the server and its environment are on it.
_SMALL_DISK = """
import os
from types import SimpleNamespace
os.statvfs = lambda _: SimpleNamespace(f_bavail={} - 50_000_000, f_frsize=1)
"""


class BrokenOffTest(WhisperInstallCase):
    def test_broken_off_at_any_moment_it_is_as_before_and_goes_on(self) -> None:
        for number, moment in _MOMENTS:
            with self.subTest(signal=number.name, moment=moment):
                self.break_off(number, moment)
        self.works()
        self.install("--with", "faster-whisper")
        self.assertTrue(self.imports(_FASTER))
        self.works()
        self.assertFalse((self.folder / ".packages").exists())

    def break_off(self, number: signal.Signals, moment: str) -> None:
        process = self.start("--with", "faster-whisper")
        self.read_until(process, moment)
        process.send_signal(number)
        lines = self.rest_of(process)
        status = process.wait()
        self.assert_nothing_runs()
        self.assertTrue(self.imports("import websockets, numpy, pip"))
        # It is there as a whole or not at all, and what it was made from is kept until it is.
        is_there = self.imports(_FASTER)
        self.assertEqual(is_there, (self.venv / "orvane-packages.json").exists())
        self.assertTrue(is_there or status != 0)
        wheels = list((self.folder / ".packages" / "wheels").glob("*.whl"))
        if not is_there and moment in ("100 %", "[6/7]", "[7/7]"):
            self.assertEqual(len(wheels), 4)
        if status == 128 + number:
            self.assertEqual(
                lines[-1], "error: Broken off; what has come is kept for the next time"
            )
            self.assertFalse(is_there)
            self.assertFalse((self.folder / ".venv.new").exists())
        if is_there:
            self.install("--without", "faster-whisper")

    def test_what_has_come_is_not_fetched_again(self) -> None:
        process = self.start("--with", "faster-whisper")
        self.read_until(process, "100 %")
        process.send_signal(signal.SIGTERM)
        self.rest_of(process)
        # The index still offers it, and would give something else now.
        make_wheel(self.wheels, "ctranslate2", "4.5.0", {}, ["standin-common"])
        lines = self.install("--with", "faster-whisper")
        self.assertIn(
            "==> [5/7] Downloading 0 packages, about 1 MB, 4 are there from before", lines
        )
        self.assertTrue(self.imports(_FASTER))

    def test_what_a_cut_has_left_is_cleared_away(self) -> None:
        (self.folder / ".venv.new").mkdir()
        self.venv.rename(self.folder / ".venv.old")
        self.install()
        self.assertEqual(
            sorted(path.name for path in self.folder.iterdir()),
            [".install.lock", "backend", "venv"],
        )
        self.works()

    def test_an_environment_in_the_making_is_made_to_its_end(self) -> None:
        # Cut off before pip was in it.
        for found in self.venv.glob("lib/python3*/site-packages/pip*"):
            shutil.rmtree(found)
        self.install("--with", "faster-whisper")
        self.assertTrue(self.imports(_FASTER))


class RoomTest(WhisperInstallCase):
    def test_a_disk_without_room_is_told_before_anything_comes(self) -> None:
        self.small_disk(200)
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertTrue(
            re.fullmatch(
                r"error: Not enough room on the disk: faster-whisper takes about 500 MB, "
                r"\d+ MB are free in .*/Orvane",
                lines[-1],
            ),
            lines[-1],
        )
        self.assertFalse(any("[5/7]" in line for line in lines))
        self.works()

    def test_what_would_not_fit_once_unpacked_is_told_before_it_is_unpacked(self) -> None:
        files = {
            **module("faster_whisper", "ctranslate2"),
            "ctranslate2/large": bytes(500 * MEGABYTE),
        }
        make_wheel(self.wheels, "ctranslate2", "4.6.0", files, ["standin-common"])
        self.small_disk(400)
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertIn("error: Not enough room on the disk: faster-whisper takes 500 MB", lines[-1])
        self.assertFalse(any("[6/7]" in line for line in lines))
        self.works()

    def test_a_disk_that_fills_up_meanwhile_leaves_the_environment_alone(self) -> None:
        content = {"ctranslate2/large": bytes(3 * MEGABYTE)}
        make_wheel(
            self.wheels, "ctranslate2", "4.6.0",
            {**module("faster_whisper", "ctranslate2"), **content}, ["standin-common"],
        )  # fmt: skip

        def restrict() -> None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (2 * MEGABYTE, 2 * MEGABYTE))

        lines = self.install("--with", "faster-whisper", status=1, before=restrict)
        self.assertIn("It cannot be installed", lines[-1])
        self.assertFalse(self.imports("import ctranslate2"))
        self.assertFalse((self.folder / ".venv.new").exists())
        self.works()

    def small_disk(self, megabytes: int) -> None:
        """Has the person live on a disk of this size or, where only root could make one, has the
        installer believe so."""
        place = self.home.with_name("disk")
        place.mkdir()
        command = ["mount", "-t", "tmpfs", "-o", f"size={megabytes}m", "tmpfs", str(place)]
        if os.geteuid() == 0:
            subprocess.run(command, check=True)
            self.addCleanup(subprocess.run, ["umount", str(place)], check=True)
        else:
            (place / "sitecustomize.py").write_text(_SMALL_DISK.format(megabytes * MEGABYTE))
            self.more = {"PYTHONPATH": str(place)}
        self.use(place / "home")


if __name__ == "__main__":
    unittest.main()
