"""The file that a person writes: what is read, what is told, and when it is looked up again."""

import os
import tempfile
import unittest
from pathlib import Path
from unittest import mock

from orvane_backend import settings_file
from orvane_backend.settings_file import Settings, SettingsFile, Table

TABLES = {
    "translation": Table({"chat": str, "model": str, "seconds": float}),
    "recogniser": Table({"name": str, "port": int, "live": bool}, repeated=True),
}


class SettingsFileTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = Path(folder.name, "recognisers.toml")
        self.file = SettingsFile(self.path, TABLES)

    def read(self, content: "str | bytes") -> Settings:
        self.path.write_bytes(content.encode() if isinstance(content, str) else content)
        # A clock that is coarser than this test must not make it pass or fail.
        os.utime(self.path, ns=(0, self._tick()))
        return self.file.read()

    def _tick(self) -> int:
        self._ticks = getattr(self, "_ticks", 0) + 1_000_000_000
        return self._ticks

    def told(self, settings: Settings) -> list[tuple[str, object, object]]:
        return [
            (one.code, one.parameters.get("key"), one.parameters.get("line"))
            for one in settings.notices
        ]

    def test_no_file_is_no_values_and_nothing_to_tell(self) -> None:
        self.assertEqual(self.file.read(), Settings())
        self.assertEqual(SettingsFile(Path("/dev/null/x"), TABLES).read(), Settings())

    def test_known_keys_are_read(self) -> None:
        found = self.read(
            '[translation]\nchat = " http://127.0.0.1:1 "\nseconds = 3\n'
            '[[recogniser]]\nname = "a"\n[[recogniser]]\nname = "b"\nport = 7\nlive = true\n'
        )
        self.assertEqual(found.notices, ())
        self.assertEqual(found.text("translation", "chat"), "http://127.0.0.1:1")
        self.assertEqual(found.text("translation", "model"), "")
        self.assertEqual(found.table("translation")["seconds"], 3)
        self.assertEqual(
            found.repeated("recogniser"), ({"name": "a"}, {"name": "b", "port": 7, "live": True})
        )

    def test_unknown_keys_and_tables_are_named_and_the_rest_counts(self) -> None:
        found = self.read('[translation]\nchatt = "x"\nmodel = "m"\n[other]\na = 1\n')
        self.assertEqual(
            self.told(found),
            [("settings.unknown", "translation.chatt", None), ("settings.unknown", "other", None)],
        )
        self.assertEqual(found.text("translation", "model"), "m")

    def test_values_of_another_type_are_named_and_left_out(self) -> None:
        found = self.read(
            '[translation]\nchat = 7\nmodel = "m"\n[[recogniser]]\nport = true\nlive = 1\n'
        )
        self.assertEqual(
            [key for _, key, _ in self.told(found)],
            ["translation.chat", "recogniser.port", "recogniser.live"],
        )
        self.assertEqual(found.table("translation"), {"model": "m"})

    def test_a_table_in_the_other_form_is_named(self) -> None:
        for content, key in (
            ('[[translation]]\nchat = "x"\n', "translation"),
            ('[recogniser]\nname = "x"\n', "recogniser"),
            ("translation = 3\n", "translation"),
            ("recogniser = [1, 2]\n", "recogniser"),
        ):
            found = self.read(content)
            self.assertEqual(self.told(found), [("settings.wrong_type", key, None)])
            self.assertEqual(found.tables, {})

    def test_damage_is_told_with_its_line_and_the_last_values_hold(self) -> None:
        self.read('[translation]\nmodel = "good"\n')
        for content, line in (
            ('[translation]\nmodel = "bad\n', 2),
            ("\n\n[translation\n", 3),
            ('[translation]\nmodel = """bad\n\n', 2),
            ('[translation]\nmodel = "a"\nmodel = "b"\n', 3),
            (b'[translation]\n# caf\xe9\nmodel = "bad"\n', 2),
            ("a = " + "[" * 100_000, 1),
        ):
            found = self.read(content)
            self.assertEqual(self.told(found), [("settings.damaged", None, line)], content[:60])
            self.assertEqual(found.text("translation", "model"), "good")
        self.assertEqual(self.read('[translation]\nmodel = "new"\n').notices, ())
        self.assertEqual(self.file.read().text("translation", "model"), "new")

    def test_a_notice_has_no_value_in_it(self) -> None:
        for content in ('[translation]\nkey = "geheim\n', '[translation]\nkey = "geheim"\n'):
            for told in self.read(content).notices:
                self.assertNotIn("geheim", told.german)

    def test_a_removed_file_takes_its_values_with_it(self) -> None:
        self.read('[translation]\nmodel = "m"\n')
        self.path.unlink()
        self.assertEqual(self.file.read(), Settings())
        self.assertEqual(
            self.read('[translation]\nmodel = "m"\n').text("translation", "model"), "m"
        )

    def test_what_is_no_regular_file_is_told_and_does_not_hold_the_server_up(self) -> None:
        self.read('[translation]\nmodel = "m"\n')
        self.path.unlink()
        os.mkfifo(self.path)
        found = self.file.read()
        self.assertEqual([one.code for one in found.notices], ["settings.unreadable"])
        self.assertEqual(found.text("translation", "model"), "m")
        self.path.unlink()
        self.path.mkdir()
        self.assertEqual([one.code for one in self.file.read().notices], ["settings.unreadable"])

    def test_a_file_without_end_is_not_read(self) -> None:
        found = self.read("#" * 2_000_000)
        self.assertEqual([one.code for one in found.notices], ["settings.unreadable"])

    def test_windows_line_ends_and_a_byte_order_mark_do_not_matter(self) -> None:
        found = self.read(b'\xef\xbb\xbf[translation]\r\nmodel = "m"\r\n')
        self.assertEqual((found.notices, found.text("translation", "model")), ((), "m"))

    def test_a_file_that_did_not_change_is_not_parsed_again(self) -> None:
        self.read('[translation]\nmodel = "m"\n')
        with mock.patch.object(settings_file, "_content", side_effect=AssertionError):
            self.assertEqual(self.file.read().text("translation", "model"), "m")

    def test_a_file_put_in_the_place_of_another_is_seen(self) -> None:
        self.read('[translation]\nmodel = "a"\n')
        before = self.path.stat().st_mtime_ns
        other = self.path.with_name("other")
        other.write_text('[translation]\nmodel = "b"\n')
        os.utime(other, ns=(before, before))
        other.replace(self.path)
        self.assertEqual(self.file.read().text("translation", "model"), "b")


class PlaceTest(unittest.TestCase):
    def test_the_file_is_beside_the_program_or_where_the_variable_says(self) -> None:
        with mock.patch.dict(os.environ):
            os.environ.pop(settings_file.VARIABLE, None)
            program = Path(__file__).resolve().parent.parent
            self.assertTrue((program / "server.py").is_file())
            self.assertEqual(settings_file.settings_path().resolve(), program / "recognisers.toml")
            with tempfile.TemporaryDirectory() as folder:
                named = Path(folder, "mine.toml")
                named.write_text('[translation]\nchat = "c"\n')
                os.environ[settings_file.VARIABLE] = str(named)
                self.assertEqual(settings_file.settings().text("translation", "chat"), "c")

    def test_every_key_of_translation_is_listed(self) -> None:
        self.assertEqual(
            set(settings_file.TABLES["translation"].keys),
            {"chat", "model", "key", "libretranslate", "libretranslate_key"},
        )


if __name__ == "__main__":
    unittest.main()
