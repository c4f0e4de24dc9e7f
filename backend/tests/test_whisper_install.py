"""`scripts/install-backend --with` and `--without`."""

import re
import shutil
import subprocess
import threading
import unittest

from tests.wheels import make_faster_whisper, make_openai_whisper, make_wheel, module
from tests.whisper_install_case import SCRIPT, WhisperInstallCase

_FASTER = "import faster_whisper, ctranslate2, huggingface_hub"


class WhisperInstallTest(WhisperInstallCase):
    def test_a_package_comes_with_all_it_needs_and_once(self) -> None:
        lines = self.install("--with", "faster-whisper")
        steps = re.findall(r"\[(\d/\d)\]", "\n".join(lines))
        self.assertEqual(steps, [f"{number}/7" for number in range(1, 8)])
        told = [int(found) for found in re.findall(r"^==> (\d+) % ", "\n".join(lines), re.M)]
        self.assertEqual((told, told[-1]), (sorted(set(told)), 100))
        self.assertIn("==> [5/7] Downloading 4 packages, about 1 MB", lines)
        self.assertEqual(lines[-1], "==> faster-whisper is installed.")
        self.assertTrue(self.imports(_FASTER))
        self.works()
        # Nothing is left beside it, and its commands name the place where it stands.
        self.assertEqual(
            sorted(path.name for path in self.folder.iterdir()),
            [".install.lock", "backend", "venv"],
        )
        command = self.venv / "bin" / "standin-models"
        self.assertIn(b"large-v3", subprocess.run([str(command)], stderr=subprocess.PIPE).stderr)
        self.assertNotIn(b".venv.new", command.read_bytes())

        before = self.venv.stat().st_ino
        lines = self.install("--with", "faster-whisper")
        self.assertEqual(lines[-1], "==> faster-whisper 1.2.1 is there already.")
        # Nor does another installation of the server take it away.
        self.install()
        self.assertEqual(self.venv.stat().st_ino, before)
        self.python.unlink()
        self.install()
        self.assertTrue(self.imports(_FASTER))
        self.works()

    def test_both_packages_stand_beside_each_other_and_go_one_by_one(self) -> None:
        make_openai_whisper(self.wheels)
        # One that the person has put there herself, and that needs a part of another's.
        make_wheel(self.wheels, "own-package", "1", {"own_package.py": b""}, ["huggingface-hub"])
        self.install("--with", "whisper")
        self.install("--with", "faster-whisper")
        command = [str(self.python), "-m", "pip", "install", "own-package"]
        subprocess.run(command, env=self.environment(), stdout=subprocess.DEVNULL, check=True)

        lines = self.install("--without", "faster-whisper")
        self.assertIn("==> [4/5] Removing ctranslate2, faster-whisper", lines)
        self.assertTrue(self.imports("import whisper, torch, own_package, huggingface_hub"))
        self.assertFalse(self.imports("import faster_whisper"))
        lines = self.install("--without", "faster-whisper")
        self.assertEqual(lines[-1], "==> faster-whisper is not there.")
        self.install("--without", "whisper")
        self.assertFalse(self.imports("import torch"))
        self.assertTrue(self.imports("import own_package, huggingface_hub"))
        self.works()
        self.assertFalse((self.folder / ".packages").exists())

    def test_what_both_need_goes_with_the_last(self) -> None:
        make_openai_whisper(self.wheels)
        self.install("--with", "whisper")
        self.install("--with", "faster-whisper")
        lines = self.install("--without", "whisper")
        self.assertIn("==> [4/5] Removing openai-whisper, torch", lines)
        self.assertTrue(self.imports(_FASTER))
        self.install("--without", "faster-whisper")
        self.assertFalse(self.imports("import standin_notes"))

    def test_what_is_missing_is_told_in_the_last_line(self) -> None:
        (self.wheels / "ctranslate2-4.5.0-py3-none-any.whl").unlink()
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertEqual(
            lines[-1],
            "error: faster-whisper cannot be installed: ctranslate2<5,>=4.0 is missing, "
            "pip does not find it",
        )
        self.unchanged()

    def test_an_index_that_cannot_be_reached_is_told_as_such(self) -> None:
        # Nobody listens on port 1.
        usual = self.environment()
        del usual["PIP_NO_INDEX"], usual["PIP_FIND_LINKS"]
        usual |= {"PIP_INDEX_URL": "http://127.0.0.1:1/simple", "PIP_RETRIES": "0"}
        self.environment = lambda: usual  # type: ignore[method-assign]
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertEqual(
            lines[-1],
            "error: The package index cannot be reached for faster-whisper: Connection refused",
        )
        self.unchanged()

    def test_a_package_that_does_not_work_leaves_the_environment_alone(self) -> None:
        init = "faster_whisper/__init__.py"
        make_faster_whisper(self.wheels, package={init: b"raise ImportError('no AVX')\n"})
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertEqual(lines[-1], "error: What was installed does not work: ImportError: no AVX")
        self.unchanged()
        # One that ends the whole process.
        make_faster_whisper(self.wheels, package={init: b"import os\nos.abort()\n"})
        shutil.rmtree(self.folder / ".packages")
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertEqual(lines[-1], "error: What was installed does not work: -6")
        self.unchanged()

    def test_one_that_has_stopped_working_is_told_and_comes_anew_after_its_removal(self) -> None:
        self.install("--with", "faster-whisper")
        init = next(self.venv.glob("lib/*/site-packages/ctranslate2/__init__.py"))
        init.write_text("raise ImportError('worn out')\n")
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertEqual(
            lines[-1], "error: What was installed does not work: ImportError: worn out"
        )
        self.install("--without", "faster-whisper")
        self.install("--with", "faster-whisper")
        self.assertTrue(self.imports(_FASTER))

    def test_one_with_which_the_server_does_not_start_leaves_the_environment_alone(self) -> None:
        files = {**module("faster_whisper", "ctranslate2"), "websockets/__init__.py": b"1 / 0\n"}
        make_wheel(self.wheels, "ctranslate2", "4.6.0", files)
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertEqual(
            lines[-1],
            "error: The server does not start with it: ZeroDivisionError: division by zero",
        )
        self.unchanged()

    def test_a_damaged_file_is_fetched_anew_the_next_time(self) -> None:
        wheel = self.wheels / "ctranslate2-4.5.0-py3-none-any.whl"
        kept = self.folder / ".packages" / "wheels"
        kept.mkdir(parents=True)
        (kept / wheel.name).write_bytes(wheel.read_bytes()[:1000])
        lines = self.install("--with", "faster-whisper", status=1)
        self.assertIn(f"error: {wheel.name} is damaged", lines[-1])
        self.unchanged()
        self.install("--with", "faster-whisper")
        self.assertTrue(self.imports(_FASTER))

    def test_the_server_answers_and_the_environment_stands_all_the_time(self) -> None:
        over = threading.Event()
        gaps = []

        def watch() -> None:
            while not over.wait(0.0005):
                for needed in (self.python, self.venv / "pyvenv.cfg", self.venv / "lib"):
                    if not needed.exists():
                        gaps.append(needed)

        watcher = threading.Thread(target=watch)
        with self.server() as port:
            watcher.start()
            try:
                process = self.start("--with", "faster-whisper")
                assert process.stdout is not None
                for line in process.stdout:
                    self.assertTrue(self.answers(port), line)
                self.assertEqual(process.wait(), 0)
                self.assertTrue(self.answers(port))
            finally:
                over.set()
                watcher.join()
        self.assertEqual(gaps, [])
        self.assertTrue(self.imports(_FASTER))

    def test_the_second_of_two_at_once_waits_and_finds_it_there(self) -> None:
        first = self.start("--with", "faster-whisper")
        self.read_until(first, "[4/7]")
        second = self.start("--with", "faster-whisper")
        self.read_until(second, "Another installation is under way")
        self.assertEqual(self.rest_of(first)[-1], "==> faster-whisper is installed.")
        self.assertEqual(self.rest_of(second)[-1], "==> faster-whisper 1.2.1 is there already.")
        self.assertEqual((first.wait(), second.wait()), (0, 0))

    def test_help_names_it_and_wrong_names_are_told(self) -> None:
        told = subprocess.run([str(SCRIPT), "--help"], stdout=subprocess.PIPE, encoding="utf-8")
        for part in ("--with faster-whisper", "--with whisper", "--without NAME"):
            self.assertIn(part, told.stdout)
        for arguments in (
            ["--with"], ["--with", "vosk"], ["--without", ""],
            ["--with", "whisper", "--without", "whisper"],
        ):  # fmt: skip
            self.assertIn("error: ", self.install(*arguments, status=1)[-1])

    def unchanged(self) -> None:
        self.assertFalse(self.imports("import ctranslate2"))
        self.assertFalse((self.folder / ".venv.new").exists())
        self.assertFalse((self.venv / "orvane-packages.json").exists())
        self.works()


if __name__ == "__main__":
    unittest.main()
