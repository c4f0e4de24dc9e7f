"""A project made for one test: files by their names, in a folder that goes with the test."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "scripts" / "lib"))


class ProjectTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve()

    def write(self, **files):
        """Writes files; their names have "__" for "/" and "_h", "_cpp" or "_cmake" at the end."""
        for name, text in files.items():
            path = name.replace("__", "/")
            for ending, real in (("_h", ".h"), ("_cpp", ".cpp"), ("/cmake", "/CMakeLists.txt")):
                if path.endswith(ending):
                    path = path.removesuffix(ending) + real
            file = self.root / path
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")
