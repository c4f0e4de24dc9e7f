"""What the person names in `recognisers.toml`, and what is written there for them."""

import json
import os
import stat
import tempfile
import threading
import unittest
from pathlib import Path
from typing import Any, Optional
from unittest import mock

from orvane_backend.recognisers.near import accepting
from orvane_backend.recognisers.near.accepting import FileProblem, accept, forget
from orvane_backend.recognisers.near.address import Address, BadAddress, parse_address
from orvane_backend.recognisers.near.catalogue import Catalogue, catalogue
from orvane_backend.recognisers.near.choice import candidates_near
from orvane_backend.recognisers.near.discovery import Found
from orvane_backend.recognisers.near.http import TranscriptionsRecogniser
from orvane_backend.recognisers.near.listen import ListenRecogniser
from orvane_backend.recognisers.near.named import Named
from orvane_backend.recognisers.near.sherpa import SherpaRecogniser
from orvane_backend.settings_file import TABLES, Settings, SettingsFile

FOUND = Found("transcriptions", Address(False, "127.0.0.1", 8000), "Speaches", "a/whisper")
LISTENING = Found("listen", Address(False, "127.0.0.1", 8000), "WhisperLiveKit")


class AddressTest(unittest.TestCase):
    def test_what_people_write_is_understood(self) -> None:
        for text, web in (
            ("http://127.0.0.1:8000", "http://127.0.0.1:8000"),
            ("http://localhost:8000/", "http://localhost:8000"),
            ("ws://host", "http://host:80"), ("wss://Host/x/", "https://host:443/x"),
            ("https://host/api/v1", "https://host:443/api"),
            ("http://h:1/v1/audio/transcriptions", "http://h:1"),
            ("ws://h:1/v1/listen", "http://h:1"), ("http://h:1/inference", "http://h:1"),
            ("http://[::1]:8080", "http://[::1]:8080"),
        ):  # fmt: skip
            self.assertEqual(parse_address(text).web(), web)
            self.assertEqual(parse_address(text).socket(), web.replace("http", "ws", 1))

    def test_nothing_else_is(self) -> None:
        for text in (
            "", "127.0.0.1:8000", "localhost:8000", "ftp://h", "file:///etc/passwd", "http://",
            "http:///path", "http://:80", "http://h:0", "http://h:70000", "http://h:x",
            "http://me:secret@h", "http://h?x=1", "http://h/#a", "http://h/\r\nX: 1", "http://h /",
            "http://hä", "http://[::1", "http://h/a b", "http://h\t", "unix:///run/x",
        ):  # fmt: skip
            with self.subTest(text), self.assertRaises(BadAddress):
                parse_address(text)


class SettingsCase(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.path = self.folder / "recognisers.toml"

    def settings(self, content: Optional[str] = None) -> Settings:
        if content is not None:
            self.path.write_text(content, "utf-8")
        return SettingsFile(self.path, TABLES).read()

    def read(self, content: Optional[str] = None) -> Catalogue:
        return catalogue(self.settings(content))


def table(**values: Any) -> str:
    usual = {"kind": "transcriptions", "address": "http://127.0.0.1:8000", **values}
    # What JSON and TOML write alike.
    lines = (f"{key} = {json.dumps(value)}\n" for key, value in usual.items() if value is not None)
    return "[[recogniser]]\n" + "".join(lines)


class CatalogueTest(SettingsCase):
    def test_tables_are_read_in_order(self) -> None:
        found = self.read(
            table(name=" Küche ", model="m", key="s3cret", languages=("de", "English", "nb-NO"))
            + table(kind="listen", address="ws://box.local:8000/v1/listen")
            + table(kind="sherpa", address="ws://127.0.0.1:6006")
        )
        self.assertEqual(found.notices, ())
        first, second, third = found.named
        self.assertEqual(
            first,
            Named(
                "transcriptions", Address(False, "127.0.0.1", 8000), "Küche", "m", "s3cret",
                ("de", "en", "nb"),
            ),
        )  # fmt: skip
        self.assertEqual(second.shown("WhisperLiveKit"), "WhisperLiveKit (box.local:8000)")
        self.assertEqual(third.shown(), "Erkenner (127.0.0.1:6006)")
        self.assertEqual(first.shown("Speaches"), "Küche")
        self.assertNotIn("s3cret", repr(found))

    def test_no_file_names_nothing(self) -> None:
        self.assertEqual(self.read(), Catalogue())

    def test_a_table_that_cannot_be_used_is_told_and_the_others_serve(self) -> None:
        good = table(name="good")
        for bad, place in (
            (table(kind="chat"), "kind"), (table(kind=None), "kind"), (table(kind=5), "kind"),
            (table(key="two\nlines"), "key"), (table(key="ü"), "key"),
            (table(model="a\a"), "model"),
            (table(name="a\ab"), "name"),
        ):  # fmt: skip
            found = self.read(bad + good)
            self.assertEqual([one.name for one in found.named], ["good"], bad)
            self.assertEqual(found.notices[0].code, "recognition.near_entry_key")
            self.assertEqual(found.notices[0].parameters["key"], place)
        for bad in (table(address="ftp://h"), table(address=None), table(address=7)):
            found = self.read(bad + good)
            self.assertEqual([one.name for one in found.named], ["good"], bad)
            self.assertEqual(found.notices[0].code, "recognition.near_address")
            self.assertEqual(found.notices[0].parameters["entry"], "Nr. 1")

    def test_languages_that_are_none_are_told_and_the_rest_counts(self) -> None:
        found = self.read(table(languages=("de", "Klingon", 5)))
        self.assertEqual(found.named[0].languages, ("de",))
        self.assertEqual(found.notices[0].parameters["key"], "languages")

    def test_one_name_serves_once(self) -> None:
        for twice in (table(name="a") + table(name="a", model="b"), table() + table()):
            found = self.read(twice)
            self.assertEqual(len(found.named), 1)
            self.assertEqual(found.notices[0].code, "recognition.near_entry_twice")

    def test_damage_and_unknown_keys_are_told_by_the_settings(self) -> None:
        told = self.settings(table(name="a", modell="x")).notices
        self.assertEqual(told[0].parameters["key"], "recogniser.modell")
        file = SettingsFile(self.path, TABLES)
        self.assertEqual(len(catalogue(file.read()).named), 1)
        self.path.write_text(table(name="a") + "name =\n")
        damaged = file.read()
        self.assertEqual(damaged.notices[0].parameters["line"], 5)
        self.assertEqual(len(catalogue(damaged).named), 1)


class CandidatesTest(SettingsCase):
    def test_each_named_one_is_a_candidate_of_its_kind(self) -> None:
        content = (
            table(name="b")
            + table(kind="sherpa")
            + table(kind="x")
            + table(kind="listen", name="c")
        )
        made = [candidate.create() for candidate in candidates_near(self.settings(content))]
        self.assertEqual(
            [type(one) for one in made],
            [TranscriptionsRecogniser, SherpaRecogniser, ListenRecogniser],
        )
        self.assertEqual(made[0].name, "b")

    def test_one_engine_serves_until_its_table_changes(self) -> None:
        def keys(**values: Any) -> list[object]:
            return [one.key for one in candidates_near(self.settings(table(**values)))]

        self.assertEqual(keys(key="a"), keys(key="a"))
        self.assertNotEqual(keys(key="a"), keys(key="b"))
        self.assertNotEqual(keys(model="a"), keys(model="b"))


class AcceptingTest(SettingsCase):
    def content(self) -> bytes:
        return self.path.read_bytes()

    def names(self) -> list[str]:
        return [one.shown() for one in self.read().named]

    def code(self, work: Any, *arguments: Any) -> str:
        with self.assertRaises(FileProblem) as caught:
            work(*arguments, self.path)
        return caught.exception.notice.code.removeprefix("recognition.near_")

    def test_the_first_makes_a_private_file(self) -> None:
        self.path = self.folder / "new" / "recognisers.toml"
        name = accept(FOUND, self.path)
        self.assertEqual(name, "Speaches (127.0.0.1:8000)")
        self.assertEqual(stat.S_IMODE(self.path.stat().st_mode), 0o600)
        read = self.read()
        self.assertEqual(read.notices, ())
        self.assertEqual(read.named, (Named("transcriptions", FOUND.address, name, "a/whisper"),))
        self.assertEqual(os.listdir(self.path.parent), ["recognisers.toml"])

    def test_what_the_person_wrote_stays_byte_for_byte(self) -> None:
        for before in (
            b"", b"# mine\n", b"# no end", b"\n\n", b"[translation]\nmodel = 'm' # x\n\n",
            b"a = 1\r\n# \xc3\xa4\r\n", b"\xef\xbb\xbf# mark\n",
            table(name="mine").encode() + b"# behind\n",
        ):  # fmt: skip
            with self.subTest(before):
                self.path.write_bytes(before)
                self.path.chmod(0o640)
                names = [accept(FOUND, self.path), accept(LISTENING, self.path)]
                self.assertTrue(self.content().startswith(before))
                self.assertEqual(self.names()[-2:], names)
                self.assertEqual(stat.S_IMODE(self.path.stat().st_mode), 0o640)
                for name in names:
                    forget(name, self.path)
                # A last line may have got the end that it lacked.
                lacking = b"" if before.endswith(b"\n") or not before else b"\n"
                self.assertEqual(self.content(), before + lacking)
                self.assertEqual(os.listdir(self.folder), ["recognisers.toml"])

    def test_names_differ_and_one_recogniser_is_added_once(self) -> None:
        other = Found(FOUND.kind, FOUND.address, "Speaches", "b/whisper")
        third = Found("sherpa", FOUND.address, "Speaches")
        names = [accept(found, self.path) for found in (FOUND, other, third, FOUND, other)]
        plain = "Speaches (127.0.0.1:8000)"
        self.assertEqual(names, [plain, f"{plain} b/whisper", f"{plain} 2", plain, names[1]])
        self.assertEqual(len(self.read().named), 3)

    def test_those_who_accept_at_once_lose_nothing(self) -> None:
        found = [Found("listen", Address(False, "h", port), "x") for port in range(1, 17)]
        start = threading.Barrier(len(found))

        def work(one: Found) -> None:
            start.wait(60)
            accept(one, self.path)

        threads = [threading.Thread(target=work, args=(one,)) for one in found]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(60)
        self.assertEqual(len(self.read().named), len(found))

    def test_values_of_all_characters_come_back(self) -> None:
        for model in ('a"b', "a\\b", "ä€😀", "a\x7fb", "#", "'''"):
            found = Found(FOUND.kind, FOUND.address, "", model)
            self.path.unlink(missing_ok=True)
            accept(found, self.path)
            tables = self.settings().repeated("recogniser")
            self.assertEqual(tables[0]["model"], model)

    def test_only_what_was_added_is_removed(self) -> None:
        self.path.write_text(table(name="mine"))
        accept(FOUND, self.path)
        before = self.content()
        self.assertEqual(self.code(forget, "mine"), "not_added")
        self.assertEqual(self.code(forget, "nobody"), "not_named")
        self.assertEqual(self.content(), before)

    def test_what_stands_around_the_table_stays_and_what_is_in_it_goes(self) -> None:
        name = accept(FOUND, self.path)
        added = self.path.read_text()
        inner = 'key = "k" # mine\nlanguages = [\n  "de",\n  # and\n  "en",\n]\n'
        behind = "# behind\n\n[translation]\nmodel = 'm'\n" + table(name="mine")
        self.path.write_text("# before\n\n" + added + inner + behind)
        forget(name, self.path)
        self.assertEqual(self.path.read_text(), "# before\n" + behind)

    def test_the_right_one_of_several_is_removed(self) -> None:
        for index in range(3):
            self.path.unlink(missing_ok=True)
            found = [Found("listen", Address(False, "h", port), "x") for port in (1, 2, 3)]
            names = [accept(one, self.path) for one in found]
            forget(names[index], self.path)
            self.assertEqual(self.names(), names[:index] + names[index + 1 :])

    def test_a_file_that_is_damaged_stays_as_it_is(self) -> None:
        for before in (b"a =\n", b"\xff\n", b"recogniser = 5\n", b"[recogniser]\n", b"a = '''\n",
                       b"recogniser = []\n"):  # fmt: skip
            with self.subTest(before):
                self.path.write_bytes(before)
                self.assertEqual(self.code(accept, FOUND), "file_damaged")
                self.assertEqual(self.content(), before)
                self.assertEqual(os.listdir(self.folder), ["recognisers.toml"])

    def test_a_link_stays_a_link(self) -> None:
        target = self.folder / "elsewhere.toml"
        target.write_text("# here\n")
        self.path.symlink_to(target)
        accept(FOUND, self.path)
        self.assertTrue(self.path.is_symlink())
        self.assertTrue(target.read_text().startswith("# here\n\n"))

    def test_a_disk_that_refuses_leaves_the_file_and_nothing_beside_it(self) -> None:
        self.path.write_text("# mine\n")
        for function in ("replace", "fsync", "fchmod"):
            refusal = mock.patch.object(accepting.os, function, side_effect=OSError(28, "full"))
            with refusal:
                self.assertEqual(self.code(accept, FOUND), "file")
            self.assertEqual(self.content(), b"# mine\n")
            self.assertEqual(os.listdir(self.folder), ["recognisers.toml"])

    def test_a_kind_that_is_none_is_refused(self) -> None:
        self.assertEqual(self.code(accept, Found("chat", FOUND.address, "")), "kind")
        self.assertFalse(self.path.exists())


if __name__ == "__main__":
    unittest.main()
