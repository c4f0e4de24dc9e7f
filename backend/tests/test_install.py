"""`scripts/install-backend` in a home of its own."""

import os
import re
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

_SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "install-backend"


class InstallTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="home with blanks ")
        self.addCleanup(folder.cleanup)
        self.home = Path(folder.name)
        self.target = self.home / "Library" / "Application Support" / "Orvane"
        self.server = self.target / "backend" / "server.py"

    def install(self, *arguments: str) -> str:
        ended = subprocess.run(
            [str(_SCRIPT), *arguments], env={**os.environ, "HOME": str(self.home)}, cwd="/",
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", timeout=120,
        )  # fmt: skip
        self.assertEqual(ended.returncode, 0, ended.stdout)
        return ended.stdout

    def first_line_of_server(self) -> str:
        process = subprocess.Popen(
            [str(self.target / "venv" / "bin" / "python3"), str(self.server)], cwd="/",
            env={**os.environ, "HOME": str(self.home), "ORV_PORT": "0"},
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
        )  # fmt: skip
        with process:
            line = process.stdout.readline()
            process.send_signal(signal.SIGTERM)
            self.assertEqual(process.wait(10), 0)
        return line

    def test_it_installs_a_server_that_runs_and_mends_only_what_is_wrong(self) -> None:
        self.assertIn("Installing the server", self.install())
        self.assertTrue(re.match("✓ Backend lauscht auf .*", self.first_line_of_server()))

        # The download of models is part of it: without a model it says how it is used.
        fetch = [
            str(self.target / "venv" / "bin" / "python3"),
            str(self.server.with_name("fetch_model.py")),
        ]
        self.assertEqual(subprocess.run(fetch, stdout=subprocess.DEVNULL).returncode, 2)
        # So is the list of recognisers near by.
        near = [fetch[0], str(self.server.with_name("recognisers.py"))]
        self.assertEqual(subprocess.run(near, stdout=subprocess.DEVNULL).returncode, 2)

        before = (self.server.stat().st_ino, (self.target / "venv" / "bin").stat().st_mtime_ns)
        output = self.install("--home", str(self.home))
        self.assertIn("environment is up to date", output)
        self.assertIn("server is up to date", output)
        after = (self.server.stat().st_ino, (self.target / "venv" / "bin").stat().st_mtime_ns)
        self.assertEqual(before, after)

        # What the person has written beside the program survives, and is no difference.
        settings = self.target / "backend" / "recognisers.toml"
        settings.write_text('[translation]\nmodel = "m"\n')
        self.assertIn("server is up to date", self.install())

        # A file changed, one too many, and what a cut-off installation left behind.
        self.server.write_text("broken")
        (self.target / "backend" / "old_module.py").write_text("")
        (self.target / ".backend.new").mkdir()
        self.assertIn("Installing the server", self.install())
        self.assertIn("✓ Backend lauscht auf", self.first_line_of_server())
        self.assertFalse((self.target / "backend" / "old_module.py").exists())
        self.assertEqual(settings.read_text(), '[translation]\nmodel = "m"\n')

        # Cut off between taking the old one away and putting the new one there.
        (self.target / "backend").rename(self.target / ".backend.old")
        self.assertIn("server is up to date", self.install())
        self.assertEqual([path.name for path in self.target.glob(".backend*")], [])

        (self.target / "venv" / "bin" / "python3").unlink()
        self.assertIn("Making the Python environment", self.install())
        self.assertIn("✓ Backend lauscht auf", self.first_line_of_server())

    def test_wrong_arguments_are_told(self) -> None:
        for arguments in (["--home"], ["--home", "/does/not/exist"], ["--colour"]):
            ended = subprocess.run(
                [str(_SCRIPT), *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                encoding="utf-8",
            )  # fmt: skip
            self.assertEqual(ended.returncode, 1)
            self.assertIn("error:", ended.stderr)


if __name__ == "__main__":
    unittest.main()
