"""The stand-in of Google's client refuses the accounts and fields that the real one refuses."""

import json
import os
import subprocess
import sys
import unittest
from unittest.mock import patch

from tests import standins
from tests.test_standins_google import GoogleCase


class MessagesTest(GoogleCase):
    def test_unknown_fields_and_wrong_types_are_refused(self) -> None:
        config = self.types.RecognitionConfig
        self.refuses(ValueError, "Unknown field", lambda: config(language_code="de-DE"))
        self.refuses(ValueError, "Unknown field", lambda: config({"bogus": 1}))
        self.refuses(ValueError, "Unknown field", lambda: config(features={"punctuation": True}))
        self.refuses(AttributeError, "Unknown field", lambda: config().interim_results)
        self.refuses(AttributeError, "bogus", lambda: setattr(config(), "bogus", 1))
        self.refuses(TypeError, "int", lambda: config(model=1))
        self.refuses(TypeError, "str", lambda: self.types.StreamingRecognizeRequest(audio="text"))
        self.refuses(TypeError, "float", lambda: config(explicit_decoding_config={
            "sample_rate_hertz": 16000.0
        }))  # fmt: skip
        self.refuses(TypeError, "Invalid constructor", lambda: config("long"))

    def test_of_two_in_a_group_the_last_is_left(self) -> None:
        request = self.types.StreamingRecognizeRequest(
            streaming_config={"config": {"model": "long"}}
        )
        self.assertIn("streaming_config", request)
        request.audio = b"\0\0"
        self.assertNotIn("streaming_config", request)
        self.assertIn("audio", request)

    def test_looking_at_a_field_does_not_set_it_but_writing_into_it_does(self) -> None:
        config = self.types.RecognitionConfig()
        self.assertEqual(config.explicit_decoding_config.sample_rate_hertz, 0)
        self.assertNotIn("explicit_decoding_config", config)
        self.assertIsNone(config.standin_which("decoding_config"))
        config.explicit_decoding_config.sample_rate_hertz = 16000
        config.language_codes.append("de-DE")
        self.assertEqual(config.standin_which("decoding_config"), "explicit_decoding_config")
        self.assertEqual(config.language_codes, ["de-DE"])
        self.assertFalse(self.types.StreamingRecognizeResponse())


class AccountsTest(GoogleCase):
    def load(self, content: str) -> object:
        self.account.write_text(content)
        return self.client()

    def without(self, name: str) -> str:
        account = json.loads(self.account.read_text())
        del account[name]
        return json.dumps(account)

    def test_a_damaged_file_is_refused(self) -> None:
        whole = self.account.read_text()
        self.refuses(json.JSONDecodeError, "", lambda: self.load(whole[: len(whole) // 2]))
        self.account.write_text(whole)
        for name in ("client_email", "token_uri", "private_key"):
            content = self.without(name)
            self.refuses(ValueError, name, lambda: self.load(content))
            self.account.write_text(whole)
        broken = json.dumps({**json.loads(whole), "private_key": "none"})
        self.refuses(ValueError, "PEM", lambda: self.load(broken))
        self.account.unlink()
        self.refuses(FileNotFoundError, "", self.client)

    def test_the_environment_names_an_account(self) -> None:
        from google.auth.exceptions import DefaultCredentialsError as Absent

        make = self.speech.SpeechClient
        with patch.dict(os.environ):
            os.environ.pop("GOOGLE_APPLICATION_CREDENTIALS", None)
            self.refuses(Absent, "were not found", make)
            os.environ["GOOGLE_APPLICATION_CREDENTIALS"] = str(self.account)
            make()
            content = self.without("type")
            self.account.write_text(content)
            self.refuses(Absent, "valid type", make)
            self.account.write_text("{")
            self.refuses(Absent, "valid json", make)
            self.account.unlink()
            self.refuses(Absent, "was not found", make)

    def test_options_are_checked(self) -> None:
        make = self.speech.SpeechClient
        self.refuses(TypeError, "endpoint", lambda: self.options(endpoint="x"))
        self.refuses(ValueError, "endpoint", lambda: make(client_options={"endpoint": "x"}))
        self.refuses(TypeError, "", lambda: make("positional"))
        self.refuses(TypeError, "credentials", lambda: make(credentials="a key"))

    def test_keys_are_refused_with_the_first_call(self) -> None:
        client = self.speech.SpeechClient(client_options={"api_key": "a-key"})
        with self.assertRaises(self.errors.Unauthenticated) as raised:
            client.streaming_recognize(requests=iter([self.first()]))
        self.assertEqual(raised.exception.reason, "CREDENTIALS_MISSING")

    def test_a_closed_client_is_closed(self) -> None:
        with self.client() as client:
            pass
        self.refuses(ValueError, "closed", lambda: client.streaming_recognize(requests=iter([])))

    def test_a_process_finds_it_and_its_control(self) -> None:
        environment = {
            **os.environ, "PYTHONPATH": standins.python_path(self.folder),
            "STANDIN_GOOGLE": '{"stream_seconds": 2, "failure": "Aborted"}',
        }  # fmt: skip
        code = (
            "from google.cloud.speech_v2 import standin as s;"
            " print(s.control.stream_seconds, s.control.failure)"
        )
        output = subprocess.run(
            [sys.executable, "-c", code], env=environment, stdout=subprocess.PIPE,
            encoding="utf-8", check=True, cwd="/",
        ).stdout  # fmt: skip
        self.assertEqual(output.split(), ["2", "Aborted"])


if __name__ == "__main__":
    unittest.main()
