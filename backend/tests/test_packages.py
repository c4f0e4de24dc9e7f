"""What the installation of a package is made of, without pip."""

import ctypes
import errno
import tempfile
import unittest
from pathlib import Path
from typing import Any
from unittest import mock

from orvane_backend.packages import PackageError, adding, amount, package_called
from orvane_backend.packages import environment as environments
from orvane_backend.packages.belongings import Belongings
from orvane_backend.packages.environment import Environment
from orvane_backend.packages.pip import _reason
from orvane_backend.packages.sizes import rough_size


class FolderCase(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="Äpfel und Birnen ")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.environment = Environment(self.folder, self.folder / "server.py")
        self.write("venv/lib/python3/site-packages/one.py", "one")
        self.write("venv/bin/tool", f"#!{self.folder}/venv/bin/python3")
        self.write("venv/pyvenv.cfg", "home = /usr/bin")
        (self.folder / "venv" / "lib64").symlink_to("lib")

    def write(self, name: str, text: str) -> Path:
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path


class EnvironmentTest(FolderCase):
    def test_a_copy_shares_what_nobody_writes_into(self) -> None:
        self.environment.stage()
        library = "lib/python3/site-packages/one.py"
        staged = self.environment.staged
        self.assertTrue((staged / library).samefile(self.environment.path / library))
        for name in ("bin/tool", "pyvenv.cfg"):
            self.assertFalse((staged / name).samefile(self.environment.path / name))
        self.assertEqual((staged / "lib64").readlink(), Path("lib"))

    def test_a_disk_without_second_names_gets_copies(self) -> None:
        with mock.patch("os.link", side_effect=OSError(errno.EPERM, "no")):
            self.environment.stage()
        copy = self.environment.staged / "lib/python3/site-packages/one.py"
        self.assertEqual((copy.read_text(), copy.stat().st_nlink), ("one", 1))

    def test_the_commands_of_a_copy_name_the_place_it_is_going_to_have(self) -> None:
        self.environment.stage()
        tool = self.write(".venv.new/bin/fresh", f"#!{self.environment.staged}/bin/python3")
        tool.chmod(0o755)
        self.environment.settle()
        self.assertEqual(tool.read_text(), f"#!{self.environment.path}/bin/python3")
        self.assertEqual(tool.stat().st_mode & 0o777, 0o755)

    def test_the_exchange_is_one_step(self) -> None:
        self.environment.stage()
        self.write(".venv.new/mark", "")
        with mock.patch("os.rename", side_effect=AssertionError("a second step")):
            self.environment.exchange()
        self.assertTrue((self.environment.path / "mark").exists())
        self.assertFalse((self.environment.staged / "mark").exists())
        self.assertTrue(self.environment.staged.exists())

    def test_a_disk_that_cannot_exchange_renames(self) -> None:
        self.environment.stage()
        self.write(".venv.new/mark", "")

        def refuse(*_: Any) -> int:
            ctypes.set_errno(errno.EINVAL)
            return -1

        with mock.patch.object(environments, "_libc", mock.Mock(renameat2=refuse)):
            self.environment.exchange()
        self.assertTrue((self.environment.path / "mark").exists())
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), [".venv.new", "venv"])

    def test_what_is_not_proven_takes_no_place(self) -> None:
        for failing, exchanges in ((".venv.new", 0), ("venv", 2), ("", 1)):
            steps = mock.Mock(path=Path("venv"), staged=Path(".venv.new"))

            def prove(path: Path, _: str) -> None:
                if str(path) == failing:
                    raise PackageError("no")

            steps.prove.side_effect = prove
            with self.subTest(failing), mock.patch.object(adding, "ignore_signals"):
                if failing:
                    with self.assertRaises(PackageError):
                        adding.change(steps, "")
                else:
                    adding.change(steps, "")
                self.assertEqual(steps.exchange.call_count, exchanges)
                self.assertEqual(steps.clear.call_count, 0 if failing else 1)


class BelongingsTest(FolderCase):
    def setUp(self) -> None:
        super().setUp()
        self.belongings = Belongings(self.environment.path)

    def put(self, name: str, *needs: str) -> None:
        lines = [f"Metadata-Version: 2.1\nName: {name}\nVersion: 1"]
        lines += [f"Requires-Dist: {need}" for need in needs]
        info = f"venv/lib/python3/site-packages/{name.replace('-', '_')}-1.dist-info"
        self.write(f"{info}/METADATA", "\n".join(lines) + "\n")

    def test_what_others_ask_for_stays_with_all_that_it_asks_for(self) -> None:
        self.put("faster-whisper", "av", "Hub_Client>=1")
        self.put("hub-client", "tqdm ; extra == 'bar'")
        self.put("tqdm")
        self.put("av")
        self.belongings.note("faster-whisper", ["hub-client", "tqdm", "av"])
        self.assertEqual(
            self.belongings.only_for("faster-whisper"),
            ["av", "faster-whisper", "hub-client", "tqdm"],
        )
        self.put("her-own", "hub.client")
        self.assertEqual(self.belongings.only_for("faster-whisper"), ["av", "faster-whisper"])

    def test_a_package_goes_although_another_asks_for_it(self) -> None:
        self.put("faster-whisper")
        self.put("her-own", "faster-whisper")
        self.assertEqual(self.belongings.only_for("faster-whisper"), ["faster-whisper"])

    def test_one_that_was_put_there_by_hand_goes_alone(self) -> None:
        self.put("faster-whisper", "av")
        self.put("av")
        self.assertEqual(self.belongings.only_for("faster-whisper"), ["faster-whisper"])
        self.assertEqual(self.belongings.version("faster-whisper"), "1")

    def test_what_stays_belongs_to_the_others(self) -> None:
        self.belongings.note("a", ["shared", "b"])
        self.belongings.note("c", ["d"])
        self.belongings.forget("a", ["a", "b"])
        self.assertEqual(self.belongings._read(), {"c": ["c", "d", "shared"]})

    def test_a_note_never_changes_the_file_that_another_environment_has(self) -> None:
        self.belongings.note("a", [])
        other = self.write("other", "")
        other.unlink()
        other.hardlink_to(self.environment.path / "orvane-packages.json")
        before = other.read_text()
        self.belongings.note("b", [])
        self.assertEqual(other.read_text(), before)


class ReasonTest(unittest.TestCase):
    def test_what_pip_says_becomes_one_line(self) -> None:
        for lines, reason in (
            (
                ["WARNING: x", "ERROR: one", "ERROR: two"],
                "It cannot be installed: two",
            ),
            (
                ["ERROR: Could not install packages due to an OSError: [Errno 28] No space left on "
                 "device", ""],
                "No room is left on the disk",
            ),
            (
                ["connection error: Read timed out.", "ERROR: No matching distribution found for a<2"],
                "The package index cannot be reached for a<2: timed out",
            ),
            (["what is it", " "], "It cannot be installed: what is it"),
            ([], "It cannot be installed: pip ended with 3"),
        ):  # fmt: skip
            self.assertEqual(_reason("It", lines, 3), reason)
        self.assertEqual(len(_reason("It", ["x" * 999], 3)), 300)

    def test_names_amounts_and_sizes(self) -> None:
        for name in ("whisper", "openai-whisper"):
            package = package_called(name)
            assert package is not None
            self.assertEqual(package.module, "whisper")
        self.assertIsNone(package_called("vosk"))
        self.assertEqual(
            [amount(size) for size in (0, 1_600_000, 999_000_000, 2_250_000_000)],
            ["1 MB", "2 MB", "999 MB", "2.2 GB"],
        )
        self.assertEqual(rough_size("nvidia-cudnn-cu12"), rough_size("NVIDIA_cuDNN"))
        self.assertGreater(rough_size("torch"), 100 * rough_size("tqdm"))


if __name__ == "__main__":
    unittest.main()
