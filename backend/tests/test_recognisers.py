"""Each engine by itself: packages that may not be installed through stand-ins with their published
functions, Vosk through a server on loopback. PocketSphinx has tests of its own."""

import asyncio
import json
import sys
import tempfile
import threading
import unittest
from pathlib import Path
from types import ModuleType, SimpleNamespace
from typing import Any, Callable, Iterator
from unittest import mock

import numpy as np

from orvane_backend.audio import encode_pcm
from orvane_backend.protocol import Config
from orvane_backend.recognisers import RecogniserError, Recognition
from orvane_backend.recognisers import selection
from orvane_backend.recognisers.google import GoogleRecogniser
from orvane_backend.recognisers.vosk import VoskRecogniser
from orvane_backend.recognisers.whisper import WhisperRecogniser
from orvane_backend.websocket import serve

SECOND = np.full(16000, 0.25, np.float32)


class SelectionTest(unittest.TestCase):
    def keys(self, **wishes: Any) -> list[object]:
        return [candidate.key[0] for candidate in selection.candidates(Config(**wishes))]

    def test_the_engine_asked_for_comes_first_and_the_builtin_one_last(self) -> None:
        self.assertEqual(self.keys(), ["whisper", "pocketsphinx"])
        self.assertEqual(self.keys(sttEngine="vosk"), ["vosk", "whisper", "pocketsphinx"])
        self.assertEqual(
            self.keys(sttEngine="google_grpc"), ["google_grpc", "whisper", "pocketsphinx"]
        )
        self.assertEqual(self.keys(sttEngine="pocketsphinx"), ["pocketsphinx"])

    def test_engines_of_the_client_and_unknown_ones_fall_back(self) -> None:
        for engine in (*selection.DIRECT_ENGINES, "nonsense"):
            self.assertEqual(self.keys(sttEngine=engine), ["whisper", "pocketsphinx"])
            self.assertIn(engine, selection.foreign_engine(Config(sttEngine=engine)))
        self.assertEqual(selection.foreign_engine(Config(sttEngine="vosk")), "")
        self.assertTrue(selection.is_served_elsewhere(Config(sttEngine="azure")))
        self.assertFalse(selection.is_served_elsewhere(Config(sttEngine="whisper")))

    def test_models_and_servers_are_told_apart(self) -> None:
        def key(**wishes: Any) -> object:
            return selection.candidates(Config(**wishes))[0].key

        self.assertNotEqual(key(whisperModel="tiny"), key(whisperModel="base"))
        self.assertNotEqual(
            key(sttEngine="vosk", enginePort=1), key(sttEngine="vosk", enginePort=2)
        )


class WhisperTest(unittest.TestCase):
    def setUp(self) -> None:
        self.calls: list[dict[str, Any]] = []
        self.answer: Any = {"language": "fr", "segments": []}
        model = SimpleNamespace(transcribe=self.transcribe, device=SimpleNamespace(type="cpu"))
        module = ModuleType("whisper")
        module.available_models = lambda: ["tiny", "base"]
        module.load_model = lambda name: model
        self.module = module
        patch = mock.patch.dict(sys.modules, {"whisper": module})
        patch.start()
        self.addCleanup(patch.stop)

    def transcribe(self, samples: Any, **options: Any) -> Any:
        self.assertEqual(samples.dtype, np.float32)
        self.calls.append(options)
        if isinstance(self.answer, Exception):
            raise self.answer
        return self.answer

    def segment(self, text: str, silent: float = 0.1, sure: float = -0.3) -> dict[str, Any]:
        return {"text": text, "no_speech_prob": silent, "avg_logprob": sure}

    def loaded(self) -> WhisperRecogniser:
        recogniser = WhisperRecogniser("base")
        recogniser.load()
        return recogniser

    def test_the_segments_are_joined_in_the_configured_language(self) -> None:
        self.answer["segments"] = [self.segment(" Guten Tag."), self.segment(" Hallo.")]
        self.assertEqual(
            self.loaded().recognise(SECOND, "de"), Recognition("Guten Tag. Hallo.", "de")
        )
        self.assertEqual(self.calls[0]["language"], "de")
        self.assertEqual(self.calls[0]["task"], "transcribe")
        self.assertFalse(self.calls[0]["fp16"])

    def test_automatic_detection_tells_the_language(self) -> None:
        self.answer["segments"] = [self.segment(" Bonjour.")]
        self.assertEqual(self.loaded().recognise(SECOND, "auto"), Recognition("Bonjour.", "fr"))
        self.assertIsNone(self.calls[0]["language"])

    def test_sentences_invented_for_noise_are_left_out(self) -> None:
        self.answer["segments"] = [self.segment(" Thanks for watching!", 0.9, -1.4)]
        self.assertEqual(self.loaded().recognise(SECOND, "en").text, "")

    def test_loud_doubt_alone_is_no_reason_to_leave_words_out(self) -> None:
        self.answer["segments"] = [self.segment(" Ja", 0.9, -0.4), self.segment(" nein", 0.1, -1.4)]
        self.assertEqual(self.loaded().recognise(SECOND, "de").text, "Ja nein")

    def test_failures_are_told(self) -> None:
        self.answer = RuntimeError("out of memory")
        with self.assertRaisesRegex(RecogniserError, "out of memory"):
            self.loaded().recognise(SECOND, "de")
        with self.assertRaisesRegex(RecogniserError, "kein Modell"):
            WhisperRecogniser("giant").load()
        self.module.load_model = mock.Mock(side_effect=OSError("disk full"))
        with self.assertRaisesRegex(RecogniserError, "disk full"):
            WhisperRecogniser("base").load()
        with mock.patch.dict(sys.modules, {"whisper": None}):
            with self.assertRaisesRegex(RecogniserError, "nicht installiert"):
                WhisperRecogniser("base").load()


class GoogleTest(unittest.TestCase):
    def setUp(self) -> None:
        self.requests: list[Any] = []
        self.results: list[Any] = []
        self.client_arguments: tuple[Any, ...] = ()

        def record(name: str) -> Callable[..., Any]:
            return lambda **fields: SimpleNamespace(kind=name, **fields)

        types = SimpleNamespace(
            RecognitionConfig=record("config"), RecognitionFeatures=record("features"),
            StreamingRecognitionConfig=record("streaming"),
            StreamingRecognizeRequest=record("request"),
            ExplicitDecodingConfig=mock.Mock(side_effect=record("decoding")),
        )  # fmt: skip
        types.ExplicitDecodingConfig.AudioEncoding = SimpleNamespace(LINEAR16="LINEAR16")
        module = ModuleType("google.cloud.speech_v2")
        module.types = SimpleNamespace(cloud_speech=types)
        module.SpeechClient = SimpleNamespace(from_service_account_file=self.client)
        patch = mock.patch.dict(sys.modules, {"google.cloud.speech_v2": module})
        patch.start()
        self.addCleanup(patch.stop)

    def client(self, account: str, client_options: Any) -> Any:
        self.client_arguments = (account, client_options["api_endpoint"])
        return SimpleNamespace(streaming_recognize=self.recognise)

    def recognise(self, requests: Iterator[Any], timeout: float) -> list[Any]:
        self.requests = list(requests)
        if isinstance(self.results, Exception):
            raise self.results
        return [SimpleNamespace(results=self.results)]

    def result(self, text: str, final: bool = True, language: str = "") -> Any:
        words = [SimpleNamespace(transcript=text)] if text else []
        return SimpleNamespace(is_final=final, alternatives=words, language_code=language)

    def loaded(self, location: str = "eu") -> GoogleRecogniser:
        recogniser = GoogleRecogniser("/key.json", "project", location)
        recogniser.load()
        return recogniser

    def test_final_results_are_joined(self) -> None:
        self.results = [self.result("hallo"), self.result("hal", False), self.result(""),
                        self.result(" welt")]  # fmt: skip
        self.assertEqual(self.loaded().recognise(SECOND, "de"), Recognition("hallo welt", "de"))

    def test_the_stream_begins_with_the_settings_and_holds_all_audio_in_small_blocks(self) -> None:
        self.loaded().recognise(SECOND, "en")
        first, *rest = self.requests
        self.assertEqual(first.recognizer, "projects/project/locations/eu/recognizers/_")
        config = first.streaming_config.config
        self.assertEqual(config.language_codes, ["en-US"])
        self.assertEqual(config.explicit_decoding_config.sample_rate_hertz, 16000)
        self.assertEqual(b"".join(request.audio for request in rest), encode_pcm(SECOND))
        self.assertLessEqual(max(len(request.audio) for request in rest), 25600)

    def test_the_location_decides_the_server(self) -> None:
        self.loaded("eu")
        self.assertEqual(self.client_arguments, ("/key.json", "eu-speech.googleapis.com"))
        self.loaded("")
        self.assertEqual(self.client_arguments[1], "speech.googleapis.com")

    def test_automatic_detection_tells_the_language(self) -> None:
        self.results = [self.result("ciao", language="it-IT")]
        self.assertEqual(self.loaded().recognise(SECOND, "auto"), Recognition("ciao", "it"))
        self.assertEqual(self.requests[0].streaming_config.config.language_codes, ["auto"])

    def test_the_project_comes_from_the_key_file_when_it_is_not_given(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder, "key.json")
            recogniser = GoogleRecogniser(str(path), "", "")
            for content in (None, "no json", "[]", "{}"):
                if content is not None:
                    path.write_text(content)
                with self.assertRaisesRegex(RecogniserError, "nicht lesbar"):
                    recogniser.load()
            path.write_text(json.dumps({"project_id": "from-file"}))
            recogniser.load()
        recogniser.recognise(SECOND, "en")
        self.assertIn("projects/from-file/", self.requests[0].recognizer)

    def test_failures_are_told(self) -> None:
        self.results = RuntimeError("quota")
        with self.assertRaisesRegex(RecogniserError, "quota"):
            self.loaded().recognise(SECOND, "de")
        client = sys.modules["google.cloud.speech_v2"].SpeechClient
        refusal = mock.Mock(side_effect=ValueError("bad key"))
        with mock.patch.object(client, "from_service_account_file", refusal):
            with self.assertRaisesRegex(RecogniserError, "bad key"):
                self.loaded()
        with mock.patch.dict(sys.modules, {"google.cloud.speech_v2": None}):
            with self.assertRaisesRegex(RecogniserError, "nicht installiert"):
                self.loaded()


class VoskServer:
    """Answers as a Vosk server does; runs on a thread of its own while the context lasts."""

    def __init__(self, final: str = '{"text": "drei"}') -> None:
        self.received: list[Any] = []
        self._final = final
        self._ready = threading.Event()
        self._thread = threading.Thread(target=lambda: asyncio.run(self._serve()))
        self.port = 0

    def __enter__(self) -> "VoskServer":
        self._thread.start()
        self._ready.wait(10)
        return self

    def __exit__(self, *_: object) -> None:
        self._loop.call_soon_threadsafe(self._stop.set)
        self._thread.join(10)

    async def _serve(self) -> None:
        self._loop, self._stop = asyncio.get_running_loop(), asyncio.Event()
        async with serve(self._handle, host="127.0.0.1", port=0) as server:
            self.port = server.sockets[0].getsockname()[1]
            self._ready.set()
            await self._stop.wait()

    async def _handle(self, client: Any) -> None:
        async for message in client:
            self.received.append(message)
            if isinstance(message, bytes):
                ended = sum(isinstance(m, bytes) for m in self.received) == 2
                await client.send('{"text": "eins zwei"}' if ended else '{"partial": "eins"}')
            elif "eof" in message:
                await client.send(self._final)


class VoskTest(unittest.TestCase):
    def test_sentences_ended_on_the_way_and_the_last_are_joined(self) -> None:
        with VoskServer() as server:
            recogniser = VoskRecogniser("127.0.0.1", server.port)
            recogniser.load()
            heard = recogniser.recognise(SECOND, "de")
        self.assertEqual(heard, Recognition("eins zwei drei", "de"))
        self.assertEqual(json.loads(server.received[0]), {"config": {"sample_rate": 16000}})
        self.assertEqual(b"".join(server.received[1:-1]), encode_pcm(SECOND))
        self.assertEqual(json.loads(server.received[-1]), {"eof": 1})

    def test_silence_gives_no_text(self) -> None:
        with VoskServer('{"text": ""}') as server:
            heard = VoskRecogniser("127.0.0.1", server.port).recognise(SECOND[:100], "auto")
        self.assertEqual(heard, Recognition("", "en"))

    def test_an_answer_that_is_none_is_told(self) -> None:
        for nonsense in ("nonsense", "[]"):
            with VoskServer(nonsense) as server:
                with self.assertRaisesRegex(RecogniserError, "unlesbare Antwort"):
                    VoskRecogniser("127.0.0.1", server.port).recognise(SECOND[:100], "de")

    def test_a_server_that_is_not_there_is_told(self) -> None:
        with VoskServer() as server:
            recogniser = VoskRecogniser("127.0.0.1", server.port)
            recogniser.load()
        for attempt in (recogniser.load, lambda: recogniser.recognise(SECOND, "de")):
            with self.assertRaisesRegex(RecogniserError, f"ws://127.0.0.1:{server.port}"):
                attempt()


if __name__ == "__main__":
    unittest.main()
