"""What is known of Google's service: its places and languages, its errors, its accounts."""

import json
import tempfile
import unittest
from pathlib import Path
from types import SimpleNamespace
from typing import Any, Optional

from orvane_backend.recognisers import RecogniserError
from orvane_backend.recognisers.google_account import read_account
from orvane_backend.recognisers.google_errors import is_over, reason_of, recogniser_error
from orvane_backend.recognisers.google_models import endpoint, locale, model_for, normal_location
from tests import standins


class LocaleTest(unittest.TestCase):
    def test_short_codes_get_the_usual_region(self) -> None:
        for code, expected in (
            ("de", "de-DE"), ("en", "en-US"), ("pt", "pt-BR"), ("zh", "cmn-Hans-CN"),
            ("yue", "yue-Hant-HK"), ("he", "iw-IL"), ("pa", "pa-Guru-IN"), ("no", "no-NO"),
            ("nb", "no-NO"), ("jw", "jv-ID"), ("jv", "jv-ID"), ("tl", "fil-PH"), ("ur", "ur-PK"),
            ("cs", "cs-CZ"), ("DE", "de-DE"), ("de_", "de-DE"),
        ):  # fmt: skip
            self.assertEqual(locale(code), expected)

    def test_regions_that_were_asked_for_stay(self) -> None:
        for code in ("pt-PT", "de-AT", "es-419", "en-GB", "fr-CA"):
            self.assertEqual(locale(code), code)
        self.assertEqual(locale("pt_br"), "pt-BR")
        self.assertEqual(locale("in-id"), "id-ID")

    def test_languages_that_the_service_spells_in_one_way_keep_it(self) -> None:
        for code, expected in (
            ("he-IL", "iw-IL"), ("pa-IN", "pa-Guru-IN"), ("nb-NO", "no-NO"), ("fil-PH", "fil-PH"),
            ("zh-CN", "cmn-Hans-CN"), ("zh-TW", "cmn-Hant-TW"), ("zh-Hant", "cmn-Hant-TW"),
            ("zh-HK", "yue-Hant-HK"), ("cmn-Hans-CN", "cmn-Hans-CN"), ("zh-XX", "cmn-Hans-CN"),
            ("yue-HK", "yue-Hant-HK"), ("cmn-Hant-TW", "cmn-Hant-TW"),
        ):  # fmt: skip
            self.assertEqual(locale(code), expected)

    def test_languages_that_the_service_lacks(self) -> None:
        for code in (
            "as ba be bo br cy fo ha haw ht la lb ln mg mi mt nn oc ps sa sd sn so tg tk tt yi yo "
            "ga auto xx be-BY"
        ).split():
            self.assertIsNone(locale(code), code)

    def test_seventy_two_languages_are_known(self) -> None:
        codes = (
            "af am ar az bg bn bs ca cs da de el en es et eu fa fi fr gl gu he hi hr hu hy id is it "
            "ja jw ka kk km kn ko lo lt lv mk ml mn mr ms my ne nl no pa pl pt ro ru si sk sl sq sr "
            "su sv sw ta te th tl tr uk ur uz vi yue zh"
        ).split()
        self.assertEqual(len(codes), 72)
        self.assertNotIn(None, [locale(code) for code in codes])
        with standins.added("google_cloud"):
            from google.cloud.speech_v2.standin_rules import LANGUAGES
        self.assertEqual({locale(code) for code in codes} - set(LANGUAGES), set())


class PlaceTest(unittest.TestCase):
    def test_places_have_hosts_of_their_own_but_for_the_global_one(self) -> None:
        self.assertIsNone(endpoint("global"))
        self.assertEqual(endpoint("eu"), "eu-speech.googleapis.com")
        for told, normal in (("", "global"), (" EU ", "eu"), ("us-central1", "us-central1")):
            self.assertEqual(normal_location(told), normal)

    def test_each_place_is_asked_for_a_model_that_it_has(self) -> None:
        for place, model in (
            ("global", "long"), ("us", "chirp_3"), ("eu", "chirp_3"), ("us-central1", "chirp_2"),
            ("europe-west4", "chirp_2"), ("asia-southeast1", "chirp_2"), ("us-west1", "long"),
            ("asia-northeast1", "chirp_3"),
        ):  # fmt: skip
            self.assertEqual(model_for(place, "de-DE"), model)

    def test_what_a_model_does_not_stream_another_one_is_asked_for(self) -> None:
        self.assertEqual(model_for("us-central1", "pl-PL"), "long")
        self.assertEqual(model_for("eu", "pl-PL"), "chirp_3")

    def test_languages_are_detected_only_where_a_model_does(self) -> None:
        for place, model in (
            ("global", None), ("us-west1", None), ("eu", "chirp_3"), ("us-central1", "chirp_2"),
        ):  # fmt: skip
            self.assertEqual(model_for(place, None), model)


class ErrorTest(unittest.TestCase):
    """Errors as the client raises them, and as the transport below does."""

    def setUp(self) -> None:
        packages = standins.added("google_cloud")
        packages.__enter__()
        self.addCleanup(packages.__exit__, None, None, None)
        from google.api_core import exceptions
        from google.auth import exceptions as of_accounts

        self.errors: Any = exceptions
        self.of_accounts: Any = of_accounts

    def judged(self, error: Exception) -> tuple[str, bool]:
        told = recogniser_error(error, "Google", "eu")
        return told.notice.code.removeprefix("recognition."), told.is_passing

    def test_what_passes_is_told_from_what_does_not(self) -> None:
        for name, code, passes in (
            ("ServiceUnavailable", "unavailable", True),
            ("DeadlineExceeded", "unavailable", True),
            ("InternalServerError", "unavailable", True),
            ("Unknown", "unavailable", True),
            ("Cancelled", "unavailable", True),
            ("Aborted", "unavailable", True),
            ("OutOfRange", "unavailable", True),
            ("ResourceExhausted", "too_many", True),
            ("TooManyRequests", "too_many", True),
            ("Unauthenticated", "account_refused", False),
            ("PermissionDenied", "not_permitted", False),
            ("Forbidden", "not_permitted", False),
            ("InvalidArgument", "refused", False),
            ("FailedPrecondition", "refused", False),
            ("NotFound", "refused", False),
        ):
            self.assertEqual(self.judged(getattr(self.errors, name)("no")), (code, passes), name)

    def test_accounts_that_give_no_token(self) -> None:
        refused = self.of_accounts.RefreshError("invalid_grant: Invalid JWT Signature.", {"a": 1})
        self.assertEqual(self.judged(refused), ("account_refused", False))
        self.assertEqual(reason_of(refused), "invalid_grant: Invalid JWT Signature.")
        away = self.of_accounts.TransportError("no route")
        self.assertEqual(self.judged(away), ("unavailable", True))
        # The transport hides it in a status of its own.
        hidden = self.errors.ServiceUnavailable(
            "Getting metadata from plugin failed with error: ('invalid_grant: Bad.', {})"
        )
        self.assertEqual(self.judged(hidden), ("account_refused", False))

    def test_a_service_that_is_switched_off(self) -> None:
        error = self.errors.PermissionDenied("off", error_info={"reason": "SERVICE_DISABLED"})
        self.assertEqual(self.judged(error), ("service_disabled", False))
        self.assertEqual(reason_of(error), "SERVICE_DISABLED: off")

    def test_a_model_that_a_place_lacks(self) -> None:
        for error in (
            self.errors.InvalidArgument(
                'The model "long" does not exist in the location named "eu".'
            ),
            self.errors.PermissionDenied("chirp_3 in x is no longer generally available."),
        ):
            self.assertEqual(self.judged(error), ("no_model_there", False))

    def test_the_transports_own_errors_are_known(self) -> None:
        class RpcError(Exception):
            def code(self) -> Any:
                return SimpleNamespace(name="UNAVAILABLE")

        self.assertEqual(self.judged(RpcError("gone")), ("unavailable", True))

    def test_anything_else_is_a_failure(self) -> None:
        self.assertEqual(self.judged(RuntimeError("odd")), ("failed", False))
        self.assertEqual(self.judged(RuntimeError()), ("failed", False))

    def test_only_the_end_of_a_stream_is_its_end(self) -> None:
        for name, over in (("Aborted", True), ("OutOfRange", True), ("ServiceUnavailable", False)):
            self.assertEqual(is_over(getattr(self.errors, name)("x")), over)

    def test_reasons_are_short(self) -> None:
        self.assertEqual(reason_of(self.errors.NotFound(" one \ntwo")), "one")
        self.assertEqual(len(reason_of(RuntimeError("long " * 100))), 160)
        self.assertEqual(reason_of(RuntimeError()), "RuntimeError")


class AccountTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = Path(folder.name, "key.json")

    def told(self, content: Optional[bytes], path: Optional[str] = None) -> str:
        if content is not None:
            self.path.write_bytes(content)
        with self.assertRaises(RecogniserError) as raised:
            read_account(str(self.path) if path is None else path, "Google")
        self.assertFalse(raised.exception.is_passing)
        told = raised.exception.notice
        return f"{told.code.removeprefix('recognition.')} {told.parameters.get('reason', '')}"

    def test_files_of_no_use_are_told_apart(self) -> None:
        self.assertEqual(self.told(None, ""), "account_unset ")
        self.assertEqual(self.told(None), "account_missing ")
        self.assertIn("account_unreadable ", self.told(None, str(self.path.parent)))
        for content in (b"", b"no json", b"\xff\xfe", b"[" * 100000):
            self.assertEqual(self.told(content), "account_unreadable kein JSON")
        for content in (b"[]", b"{}", b'{"type": "authorized_user"}'):
            self.assertEqual(self.told(content), "account_unreadable kein Dienstkonto")
        damaged = b'{"type": "service_account", "private_key": "x", "token_uri": 1}'
        self.assertEqual(self.told(damaged), "account_unreadable client_email, token_uri fehlt")

    def test_a_whole_file_is_read(self) -> None:
        account = {
            "type": "service_account", "client_email": "a", "private_key": "b", "token_uri": "c",
        }  # fmt: skip
        self.path.write_text(json.dumps(account))
        self.assertEqual(read_account(str(self.path), "Google"), account)


if __name__ == "__main__":
    unittest.main()
