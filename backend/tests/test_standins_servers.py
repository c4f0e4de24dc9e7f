"""The stand-in of transcription servers refuses and answers what it is there for."""

import http.client
import json
import unittest
from typing import Any, Optional

import numpy as np

from tests.standins._wav import silence, tone, wav_of
from tests.standins.transcription_server import TranscriptionServer

PATH = "/v1/audio/transcriptions"
_MODEL = "Systran/faster-whisper-small"
_HEARD = "1.0 seconds of sound at level 3000."
_SECOND = wav_of(tone(1))


def form(
    fields: dict[str, str],
    file: Optional[bytes] = _SECOND,
    *,
    name: str = '; filename="speech.wav"',
    kind: str = "Content-Type: audio/wav\r\n",
    end: str = "--b--\r\n",
) -> bytes:
    parts = b"".join(
        f'--b\r\nContent-Disposition: form-data; name="{key}"\r\n\r\n{value}\r\n'.encode()
        for key, value in fields.items()
    )
    if file is not None:
        parts += f'--b\r\nContent-Disposition: form-data; name="file"{name}\r\n{kind}\r\n'.encode()
        parts += file + b"\r\n"
    return parts + end.encode()


def call(
    server: Any,
    body: Optional[bytes] = None,
    path: str = PATH,
    method: str = "POST",
    **headers: str,
) -> tuple[int, Any, str]:
    """Status, headers and text of an answer."""
    connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=60)
    sent = {"Content-Type": "multipart/form-data; boundary=b"} if body else {}
    sent.update({name.replace("_", "-"): value for name, value in headers.items()})
    try:
        connection.request(method, path, body, sent)
        reply = connection.getresponse()
        return reply.status, reply.headers, reply.read().decode()
    finally:
        connection.close()


def get(server: Any, path: str, **headers: str) -> tuple[int, Any, str]:
    return call(server, None, path, "GET", **headers)


class Form(unittest.TestCase):
    def refused(self, body: bytes, status: int = 400, **headers: str) -> str:
        with TranscriptionServer("whisperlivekit") as server:
            got, _, text = call(server, body, **headers)
            self.assertEqual(got, status, text)
            self.assertEqual(server.uploads, [])
            return text

    def test_takes_a_good_one_and_records_it(self) -> None:
        with TranscriptionServer("whisperlivekit") as server:
            status, headers, text = call(server, form({"language": "en"}))
            self.assertEqual((status, headers["Content-Type"]), (200, "application/json"))
            self.assertEqual(json.loads(text), {"text": _HEARD})
            upload = server.uploads[0]
            self.assertEqual(upload.fields, {"language": "en"})
            self.assertTrue(np.array_equal(upload.samples, tone(1)))
            self.assertEqual((len(server.requests), server.faults), (1, []))

    def test_refuses_what_is_no_form(self) -> None:
        self.refused(form({}), Content_Type="application/json")
        self.refused(form({}, end=""))
        self.refused(form({"file": "twice"}))

    def test_refuses_what_is_no_file(self) -> None:
        self.refused(form({}, None))
        self.refused(form({}, name=""))
        self.refused(form({}, name='; filename=""'))
        self.refused(form({}, kind=""))
        self.refused(form({}, kind="Content-Type: audio/mpeg\r\n"))
        self.refused(form({}, b""))

    def test_refuses_other_sound(self) -> None:
        for wrong in (wav_of(tone(1), rate=48_000), _SECOND[:-2], _SECOND[44:]):
            self.assertIn("no audio", self.refused(form({}, wrong)))

    def test_refuses_fields_that_cannot_be(self) -> None:
        self.refused(form({"response_format": "xml"}))
        self.refused(form({"language": "en-US"}))
        self.refused(form({"language": "auto"}))
        self.refused(form({"temperature": "cold"}))

    def test_needs_a_length_and_refuses_much(self) -> None:
        self.refused(form({}, bytes(26 << 20)), 413)
        with TranscriptionServer() as server:
            connection = http.client.HTTPConnection("127.0.0.1", server.port, timeout=60)
            connection.request("POST", PATH, iter([b"some"]), {"Transfer-Encoding": "chunked"})
            self.assertEqual(connection.getresponse().status, 411)
            connection.close()


class Flavours(unittest.TestCase):
    def error(
        self,
        flavour: str,
        status: int,
        fields: dict[str, str],
        body: Optional[bytes] = None,
        **options: Any,
    ) -> Any:
        with TranscriptionServer(flavour, path=PATH, **options) as server:
            got, _, text = call(server, body or form(fields))
            self.assertEqual(got, status, text)
            return json.loads(text)

    def test_model_rules(self) -> None:
        absent = self.error("speaches", 422, {})["detail"]
        self.assertEqual(
            (absent[0]["loc"], absent[0]["msg"]), (["body", "model"], "Field required")
        )
        file = self.error("speaches", 422, {"model": _MODEL}, body=form({"model": _MODEL}, None))
        self.assertEqual(file["detail"][0]["loc"], ["body", "file"])
        missing = self.error("speaches", 404, {"model": "x"})["detail"]
        self.assertIn("POST /v1/models/x", missing)
        said = {"message": "model 'x' not found", "type": "invalid_request_error"}
        localai = self.error("localai", 404, {"model": "x"})
        self.assertEqual(localai, {"error": {"code": 404, **said}})
        nemo = self.error("nemo", 404, {"model": "x"})
        self.assertEqual(nemo, {"error": {**said, "param": None, "code": None}})
        for flavour in ("localai", "nemo"):
            self.error(flavour, 400, {})
        for flavour in ("whisper_cpp", "whisperlivekit"):
            self.assertIn("text", self.error(flavour, 200, {"model": "x"}))

    def test_keys(self) -> None:
        for flavour, status in (
            ("speaches", 403), ("localai", 401), ("whisperlivekit", 401), ("nemo", 401),
        ):  # fmt: skip
            with TranscriptionServer(flavour, key="k") as server:
                body = form({"model": _MODEL})
                self.assertEqual(call(server, body)[0], status)
                self.assertIn("Not authenticated", call(server, body)[2])
                self.assertEqual(call(server, body, Authorization="Bearer x")[0], status)
                self.assertEqual(call(server, body, Authorization="k")[0], status)
                self.assertEqual(call(server, body, Authorization="Bearer k")[0], 200)
                self.assertEqual(get(server, "/v1/models")[0], status)
        with TranscriptionServer("localai", key="k", hidden_errors=True) as server:
            self.assertEqual(call(server, form({}))[::2], (401, ""))

    def test_loading_is_over_after_so_many_calls(self) -> None:
        for flavour in ("speaches", "whisper_cpp", "localai", "whisperlivekit", "nemo"):
            with TranscriptionServer(flavour, loading=2, path=PATH) as server:
                body = form({"model": _MODEL})
                for _ in range(2):
                    status, headers, text = call(server, body)
                    self.assertEqual((status, headers["Retry-After"]), (503, "1"))
                    own = text == '{"status": "loading model"}'
                    self.assertEqual(own, flavour == "whisper_cpp")
                self.assertEqual(call(server, body)[0], 200)

    def test_health_and_models(self) -> None:
        with TranscriptionServer("whisper_cpp", loading=1) as server:
            self.assertEqual(get(server, "/health")[::2], (503, '{"status": "loading model"}'))
            self.assertEqual(get(server, "/health")[::2], (200, '{"status": "ok"}'))
            status, headers, text = get(server, "/v1/models")
            self.assertEqual((status, headers.get_content_type()), (404, "text/plain"))
        with TranscriptionServer("whisperlivekit", models=("a", "b"), loading=1) as server:
            self.assertFalse(json.loads(get(server, "/health")[2])["ready"])
            self.assertEqual(len(json.loads(get(server, "/v1/models")[2])["data"]), 1)
        with TranscriptionServer("speaches") as server:
            self.assertEqual(get(server, "/health")[2], '{"message": "OK"}')
            self.assertEqual(call(server, form({}), "/other")[0], 404)
            self.assertEqual(call(server, form({}), "/api/ps/x")[0], 404)
            self.assertEqual(call(server, form({}), "/v1/models/x")[0], 201)
            self.assertEqual(call(server, form({}), "/api/ps/x")[0], 201)
            self.assertEqual(call(server, form({}), "/api/ps/x")[0], 409)
            self.assertEqual(call(server, form({"model": "x"}))[0], 200)
        with TranscriptionServer("localai") as server:
            status, headers, _ = get(server, "/health")
            self.assertEqual((status, headers.get_content_type()), (404, "application/json"))
            self.assertEqual(call(server, form({}), "/v1/models/x")[0], 404)

    def test_whisper_cpp_has_its_own_ways(self) -> None:
        with TranscriptionServer("whisper_cpp", key="k") as server:
            self.assertEqual(call(server, form({}))[0], 404)
            status, headers, text = call(server, form({}), "/inference")
            self.assertEqual((status, headers["Content-Type"]), (200, "text/html"))
            self.assertEqual(json.loads(text)["text"], " 1.0 seconds of sound\n at level 3000.\n")
            body = form({"response_format": "verbose_json", "language": "de"})
            verbose = json.loads(call(server, body, "/inference")[2])
            self.assertEqual((verbose["language"], len(verbose["segments"])), ("german", 2))
            self.assertEqual(len(server.faults), 1)
            one_pass = {"response_format": "verbose_json", "no_language_probabilities": "true"}
            call(server, form({**one_pass, "language": "auto"}), "/inference")
            self.assertEqual((len(server.uploads), len(server.faults)), (3, 1))
            self.assertEqual(call(server, form({"language": "x"}), "/inference")[0], 400)
            self.assertEqual(call(server, form({}), "/load")[0], 200)
            self.assertEqual(
                json.loads(call(server, form({}, None), "/inference")[2]),
                {"error": "no 'file' field in the request"},
            )
            self.assertEqual(
                json.loads(call(server, form({}, b"OggS"), "/inference")[2]),
                {"error": "failed to read audio data"},
            )
        with TranscriptionServer("whisper_cpp", plain_errors=True) as server:
            headers = call(server, form({}, b"OggS"), "/inference")[1]
            self.assertEqual(headers.get_content_type(), "text/plain")

    def test_forms_of_answers(self) -> None:
        whole = {"model": _MODEL, "response_format": "verbose_json", "language": "de"}
        self.assertEqual(self.error("speaches", 200, whole)["language"], "de")
        self.error("speaches", 400, whole, verbose=False)
        self.assertIn("segments", self.error("localai", 200, {"model": _MODEL}))
        self.assertNotIn("segments", self.error("nemo", 200, {"model": _MODEL}))
        for flavour, done in (("speaches", False), ("localai", True)):
            with TranscriptionServer(flavour) as server:
                text = call(server, form({"model": _MODEL, "stream": "true"}))[2]
                self.assertIn('"transcript.text.done"', text)
                self.assertEqual(text.endswith("data: [DONE]\n\n"), done)
            with TranscriptionServer(flavour) as server:
                body = form({"model": _MODEL, "response_format": "srt"})
                self.assertIn("00:00:00,500 --> 00:00:01,000", call(server, body)[2])

    def test_text_alone_and_a_file_of_another_name(self) -> None:
        with TranscriptionServer("whisperlivekit") as server:
            body = form({"response_format": "text"}, name='; filename="speech"')
            _, headers, text = call(server, body)
            self.assertEqual((text, headers.get_content_type()), (_HEARD, "text/plain"))
            self.assertEqual(server.faults, ["a WAV file that is not named so"])

    def test_bare_samples_and_bad_sound_at_speaches(self) -> None:
        with TranscriptionServer() as server:
            bare = form({"model": _MODEL}, bytes(32), kind="Content-Type: audio/pcm\r\n")
            self.assertEqual(call(server, bare)[::2], (200, '{"text": ""}'))
            self.assertEqual(call(server, form({"model": _MODEL}, b"OggS"))[0], 415)
            self.assertEqual(call(server, form({"model": _MODEL}, b""))[0], 400)
            self.assertEqual(call(server, form({"model": _MODEL}, None))[0], 422)

    def test_hears_what_it_is_told(self) -> None:
        quiet = form({}, wav_of(silence(1)))
        with TranscriptionServer("whisperlivekit", on_silence="Thank you.") as server:
            self.assertEqual(json.loads(call(server, quiet)[2]), {"text": "Thank you."})
        with TranscriptionServer("whisperlivekit", hear=lambda some: f"{len(some)}") as server:
            self.assertEqual(json.loads(call(server, quiet)[2]), {"text": "16000"})
