"""Apertium: the installed one for real, and ways over pairs that are not installed."""

import os
import select
import shutil
import tempfile
import threading
import unittest
from pathlib import Path
from unittest import mock

from orvane_backend.translators import Passage, TranslatorError, apertium
from orvane_backend.translators.apertium import ApertiumTranslator
from orvane_backend.translators.debian_pairs import packages_for
from orvane_backend.translators.directions import find_path

_MODES = Path("/usr/share/apertium/modes")


def translate(text: str, *way: str) -> str:
    return ApertiumTranslator(way or ("eng-spa",)).translate(Passage(text))


class TranslatingTest(unittest.TestCase):
    def test_english_becomes_spanish_and_back(self) -> None:
        self.assertEqual(translate("The house is big"), "La casa es grande")
        self.assertEqual(translate("La casa es grande", "spa-eng"), "The house is big")

    def test_unknown_words_stay_without_a_mark(self) -> None:
        self.assertEqual(translate("the frobnitz"), "El frobnitz")
        self.assertEqual(translate("the *frobnitz*"), "El *frobnitz*")

    def test_a_word_without_a_counterpart_leaves_one_blank(self) -> None:
        translated = translate("had he married a woman")
        self.assertTrue(translated)
        self.assertNotIn("  ", translated)

    def test_signs_of_its_own_formats_survive(self) -> None:
        text = "[b] ^c$ {d} <e> \\f @g #h /i *j ~k +l _m [[t:x:y]] [/] <STREAMCMD:X> 😀 «n»"
        translated = translate(text)
        for sign in text.split():
            self.assertIn(sign.lower(), translated.lower())

    def test_a_sign_alone_survives(self) -> None:
        for sign in "^$/\\<>{}[]@*#~+_|&%":
            self.assertEqual(translate(sign), sign)

    def test_texts_with_no_break_spaces_and_without_a_word(self) -> None:
        self.assertEqual(translate("the\u00a0house"), "La\u00a0casa")
        self.assertEqual(translate("… 5 !"), "… 5 !")

    def test_line_ends_and_control_characters_do_not_matter(self) -> None:
        self.assertEqual(translate("The house\nis\r\n\nbig\x00"), "La casa es grande")
        self.assertEqual(translate("the house \ud800"), "La casa ?")

    def test_two_steps_go_one_after_the_other(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            modes = Path(folder, "modes")
            modes.mkdir()
            shutil.copy(_MODES / "eng-spa.mode", modes)
            (modes / "spa-cat.mode").write_text("sed -e 's/grande/gran/'\n")
            with mock.patch.dict(os.environ, {"APERTIUM_DATADIR": folder}):
                apertium.forget_installed()
                self.addCleanup(apertium.forget_installed)
                found = apertium.find("en", "ca")
                assert found is not None
                self.assertEqual(found.way, ("eng-spa", "spa-cat"))
                self.assertEqual(found.translate(Passage("The house is big")), "La casa es gran")

    def test_a_direction_that_is_not_installed_is_told(self) -> None:
        with self.assertRaises(TranslatorError):
            translate("a", "eng-xyz")

    def test_an_answer_without_anything_is_told(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "modes").mkdir()
            Path(folder, "modes", "eng-spa.mode").write_text("sed -e d\n")
            with mock.patch.dict(os.environ, {"APERTIUM_DATADIR": folder}):
                with self.assertRaisesRegex(TranslatorError, "leere Antwort"):
                    translate("a")

    def test_texts_side_by_side(self) -> None:
        done: list[str] = []
        threads = [
            threading.Thread(target=lambda: done.append(translate("The house"))) for _ in range(4)
        ]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(60)
        self.assertEqual(done, ["La casa"] * 4)

    def test_a_program_that_hangs_is_ended_with_its_children(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            fifo, hanging = Path(folder, "fifo"), Path(folder, "hanging")
            os.mkfifo(fifo)
            hanging.write_text(f'#!/bin/sh\nsleep 600 > "{fifo}" &\nsleep 600\n')
            hanging.chmod(0o755)
            # A reader of the pipe sees its end only when no child holds it any more.
            reader = os.open(fifo, os.O_RDONLY | os.O_NONBLOCK)
            self.addCleanup(os.close, reader)
            with mock.patch.object(apertium, "_COMMAND", str(hanging)):
                with mock.patch.object(apertium, "_SECONDS", 0.5):
                    with self.assertRaisesRegex(TranslatorError, "keine Antwort"):
                        translate("a")
            while True:
                self.assertTrue(select.select([reader], [], [], 60)[0], "a child lives on")
                if not os.read(reader, 100):
                    break


class InstalledTest(unittest.TestCase):
    def setUp(self) -> None:
        apertium.forget_installed()
        self.addCleanup(apertium.forget_installed)

    def test_directions_are_found_by_short_codes(self) -> None:
        for source, target, way in (
            ("en", "es", ("eng-spa",)), ("es-MX", "EN", ("spa-eng",)), ("es", "en-US", ("spa-eng_US",)),
        ):  # fmt: skip
            found = apertium.find(source, target)
            assert found is not None
            self.assertEqual(found.way, way)
        self.assertIsNone(apertium.find("en", "ja"))

    def test_the_list_is_looked_up_again_only_when_its_folder_changes(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            modes = Path(folder, "modes")
            modes.mkdir()
            os.utime(modes, ns=(0, 0))
            with mock.patch.dict(os.environ, {"APERTIUM_DATADIR": folder}):
                (modes / "a-b.mode").touch()
                (modes / "eng-cat.mode").touch()
                os.utime(modes, ns=(0, 1))
                self.assertEqual(set(apertium.installed()), {"a-b", "eng-cat"})
                with mock.patch.object(apertium, "_run", side_effect=AssertionError):
                    self.assertEqual(set(apertium.installed()), {"a-b", "eng-cat"})
                (modes / "eng-cat.mode").unlink()
                os.utime(modes, ns=(0, 2))
                self.assertEqual(apertium.installed(), ("a-b",))

    def test_the_list_is_looked_up_again_after_a_while(self) -> None:
        with mock.patch.object(apertium, "_run", side_effect=["  a-b\n", "  c-d\n"]):
            with mock.patch.object(apertium, "_LIST_AGE", 0.0):
                self.assertEqual(apertium.installed(), ("a-b",))
                self.assertEqual(apertium.installed(), ("c-d",))

    def test_a_missing_program_is_told(self) -> None:
        with mock.patch.object(apertium, "_COMMAND", "/nowhere/apertium"):
            self.assertEqual(apertium.installed(), ())
            with self.assertRaisesRegex(TranslatorError, "Apertium: No such file"):
                translate("a")


class PathTest(unittest.TestCase):
    def check(self, source: str, target: str, installed: str, expected: str) -> None:
        self.assertEqual(find_path(source, target, installed.split()), tuple(expected.split()))

    def test_the_fewest_steps_win_and_two_are_the_most(self) -> None:
        self.check("en", "ca", "eng-spa spa-cat", "eng-spa spa-cat")
        self.check("en", "ca", "eng-spa spa-cat eng-cat", "eng-cat")
        self.check("en", "it", "eng-spa spa-cat cat-ita", "")
        self.check("en", "ca", "spa-eng cat-spa", "")
        self.check("en", "ca", "", "")

    def test_short_and_long_names_are_one_language(self) -> None:
        self.check("en", "gl", "en-gl", "en-gl")
        self.check("en", "gl", "eng-spa es-gl", "eng-spa es-gl")

    def test_of_several_ways_the_one_over_the_greater_language_wins(self) -> None:
        self.check("en", "pt", "eng-glg glg-por eng-cat cat-por eng-spa spa-por", "eng-spa spa-por")

    def test_a_region_finds_its_variant(self) -> None:
        catalan = "eng-cat_valencia_uni eng-cat eng-cat_valencia"
        self.check("en", "ca", catalan, "eng-cat")
        self.check("en", "ca-valencia", catalan, "eng-cat_valencia")
        self.check("en", "ca_ES-valencia", catalan, "eng-cat_valencia")
        self.check("ca", "pt-BR", "cat-por cat-por_BR", "cat-por_BR")
        self.check("ca", "pt-PT", "cat-por cat-por_BR", "cat-por")
        self.check("ca", "pt", "cat-por_BR", "cat-por_BR")
        self.check("oc", "fr", "oci_gascon-fra oci-fra", "oci-fra")
        self.check("en", "ca-valencia", "eng-spa eng-spa_US spa-cat spa-cat_valencia",
                   "eng-spa spa-cat_valencia")  # fmt: skip

    def test_languages_that_apertium_names_otherwise(self) -> None:
        self.check("no", "da", "nob-dan nno-dan", "nob-dan")
        self.check("nb", "nn", "nno-nob nob-nno nob-nno_e", "nob-nno")
        self.check("nn", "sv", "nob-swe nno-swe", "nno-swe")
        self.check("id", "ms", "ind-zlm zlm-ind", "ind-zlm")
        self.check("ca", "sc", "cat-srd", "cat-srd")
        self.check("hr", "en", "hbs-eng", "hbs-eng")
        self.check("en", "sr", "eng-hbs_BS eng-hbs_HR eng-hbs_SR eng-hbs", "eng-hbs_SR")
        self.check("mk", "hr", "mkd-hbs_BS mkd-hbs_HR mkd-hbs_SR", "mkd-hbs_HR")

    def test_what_is_in_one_there_is_not_translated_into_itself(self) -> None:
        self.check("hr", "sr", "hbs-mkd mkd-hbs_SR", "")

    def test_names_that_are_parts_for_developers_are_none(self) -> None:
        self.check("fr", "es", "eco-fr-es", "")
        self.check("en", "es", "eng-spa-lex eng-spa-tagger Cyrl-Latn en-es-", "")


class PackagesTest(unittest.TestCase):
    def test_what_is_missing_is_named(self) -> None:
        for source, target, installed, packages in (
            ("en", "ca", "eng-spa", ("apertium-eng-cat",)),
            ("en", "es", "", ("apertium-eng-spa",)),
            ("en", "sc", "", ("apertium-eng-cat", "apertium-cat-srd")),
            ("en", "sc", "eng-cat", ("apertium-cat-srd",)),
            ("es", "pt-BR", "", ("apertium-es-pt",)),
            ("es", "eu", "", ()),
            ("en", "ja", "", ()),
            ("en", "es", "eng-spa", ()),
        ):
            self.assertEqual(packages_for(source, target, installed.split()), packages)


if __name__ == "__main__":
    unittest.main()
