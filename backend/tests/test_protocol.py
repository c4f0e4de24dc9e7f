"""What counts as a message, and what the messages look like."""

import base64
import json
import unittest

from orvane_backend import protocol
from orvane_backend.notices import notice
from orvane_backend.protocol import (
    AudioMessage,
    BadMessage,
    Config,
    ConfigMessage,
    FlushMessage,
    StopMessage,
    UnknownMessage,
    parse,
)


def audio(**changes: object) -> str:
    record = {"type": "audio", "sample_rate": 48000, "format": "int16", "data": "AAABAA=="}
    return json.dumps(
        {key: value for key, value in {**record, **changes}.items() if value != "gone"}
    )


class ParseTest(unittest.TestCase):
    def refuses(self, frame: object, reason: str) -> None:
        with self.assertRaisesRegex(BadMessage, reason):
            parse(frame)

    def test_an_empty_config_means_the_defaults(self) -> None:
        self.assertEqual(parse('{"type":"config"}'), ConfigMessage(Config()))

    def test_a_config_takes_every_key(self) -> None:
        record = {
            "type": "config", "sourceLang": "en", "targetLang": "es", "saveTranscript": True,
            "saveSRT": True, "showOriginal": False, "whisperModel": "small", "sttEngine": "vosk",
            "engineApiKey": "key", "skipTranslation": True, "engineRegion": "eu",
            "engineServiceAccountPath": "/a.json", "engineProjectId": "p", "engineLocation": "l",
            "engineHost": "example", "enginePort": 1234,
        }  # fmt: skip
        message = parse(json.dumps(record))
        self.assertEqual(message.problems, ())
        self.assertEqual({"type": "config", **vars(message.config)}, record)

    def test_a_config_without_skipTranslation_translates(self) -> None:
        self.assertFalse(parse('{"type":"config","sttEngine":"whisper"}').config.skipTranslation)

    def test_unknown_config_keys_do_no_harm(self) -> None:
        message = parse('{"type":"config","targetLang":"es","colour":{"a":[1]}}')
        self.assertEqual(message, ConfigMessage(Config(targetLang="es")))

    def test_wrong_config_types_keep_the_default_and_are_named(self) -> None:
        message = parse('{"type":"config","sourceLang":7,"enginePort":true,"targetLang":"es"}')
        self.assertEqual(message.config, Config(targetLang="es"))
        self.assertEqual(message.problems, ("sourceLang", "enginePort"))

    def test_a_port_out_of_range_is_a_problem(self) -> None:
        for port in (0, 65536, -1, 10**30):
            self.assertEqual(
                parse(json.dumps({"type": "config", "enginePort": port})).problems, ("enginePort",)
            )

    def test_empty_texts_mean_the_default(self) -> None:
        self.assertEqual(parse('{"type":"config","engineHost":""}').config.engineHost, "localhost")

    def test_the_key_of_an_engine_is_never_printed(self) -> None:
        self.assertNotIn("geheim", repr(parse('{"type":"config","engineApiKey":"geheim"}')))

    def test_audio_is_decoded(self) -> None:
        self.assertEqual(parse(audio()), AudioMessage(b"\0\0\1\0", 48000))

    def test_audio_without_rate_and_format_has_the_usual_ones(self) -> None:
        self.assertEqual(
            parse(audio(sample_rate="gone", format="gone")), AudioMessage(b"\0\0\1\0", 48000)
        )

    def test_the_length_of_a_chunk_is_known(self) -> None:
        self.assertEqual(AudioMessage(bytes(2 * 24000), 48000).seconds, 0.5)

    def test_unusable_audio_is_refused_with_the_reason(self) -> None:
        self.refuses(audio(data="gone"), '"data" fehlt')
        self.refuses(audio(data=5), '"data" fehlt')
        self.refuses(audio(data="AA=A"), "Base64")
        self.refuses(audio(data="AAA\nA"), "Base64")
        self.refuses(audio(data="ÄÖÜß"), "Base64")
        self.refuses(audio(data="AAAA"), "ungerade")
        self.refuses(audio(format="float32"), "int16")
        self.refuses(audio(format=None), "int16")
        for rate in (0, -1, 7999, 200000, True, 48000.0, "48000", None, 10**30):
            self.refuses(audio(sample_rate=rate), "Abtastrate")

    def test_flush_stop_and_unknown_types(self) -> None:
        self.assertEqual(parse('{"type":"flush","more":1}'), FlushMessage())
        self.assertEqual(parse('{"type":"stop"}'), StopMessage())
        self.assertEqual(parse('{"type":"dance"}'), UnknownMessage("dance"))

    def test_binary_frames_holding_utf8_are_read(self) -> None:
        message = parse('{"type":"config","sourceLang":"ä"}'.encode())
        self.assertEqual(message.config.sourceLang, "ä")

    def test_what_is_no_json_object_with_a_type_is_refused(self) -> None:
        self.refuses("{", "JSON")
        self.refuses("", "JSON")
        self.refuses(b"\xff\xfe", "JSON")
        self.refuses("[" * 200000, "JSON")
        self.refuses("[]", "JSON-Objekt")
        self.refuses("null", "JSON-Objekt")
        self.refuses('{"typ":"config"}', '"type"')
        self.refuses('{"type":5}', '"type"')

    def test_sixteen_megabytes_are_read_and_one_byte_more_is_not(self) -> None:
        body = '{"type":"stop","x":"%s"}'
        fill = protocol.MAX_MESSAGE_BYTES - len(body % "")
        self.assertEqual(parse(body % ("x" * fill)), StopMessage())
        self.refuses(body % ("x" * (fill + 1)), "zu groß")
        self.refuses((body % ("x" * (fill + 1))).encode(), "zu groß")

    def test_the_size_counts_bytes_and_not_characters(self) -> None:
        self.refuses("ä" * (protocol.MAX_MESSAGE_BYTES // 2 + 1), "zu groß")


class BuildTest(unittest.TestCase):
    def test_the_version_message(self) -> None:
        message = json.loads(protocol.backend_version())
        self.assertEqual(message["type"], "status")
        self.assertEqual(message["status"], "backend_version")
        self.assertEqual(message["version"], 4)
        self.assertIsInstance(message["message"], str)

    def test_results_statuses_and_the_confirmation(self) -> None:
        self.assertEqual(
            json.loads(protocol.translation("a", "ä")),
            {"type": "translation", "original": "a", "translation": "ä"},
        )
        self.assertEqual(
            json.loads(protocol.status("model_loading", notice("engine.loading", engine="X"))),
            {
                "type": "status", "status": "model_loading", "message": "⏳ Lade X …",
                "code": "engine.loading", "parameters": {"engine": "X"},
            },
        )  # fmt: skip
        self.assertEqual(json.loads(protocol.flushed()), {"type": "flushed"})

    def test_a_lone_surrogate_of_a_client_can_be_sent_back(self) -> None:
        told = notice("session.unreadable", reason=json.loads('"\\ud800"'))
        protocol.status("warning", told).encode("utf-8")

    def test_audio_survives_base64_exactly(self) -> None:
        pcm = bytes(range(256)) * 8
        self.assertEqual(parse(audio(data=base64.b64encode(pcm).decode())).pcm, pcm)


if __name__ == "__main__":
    unittest.main()
