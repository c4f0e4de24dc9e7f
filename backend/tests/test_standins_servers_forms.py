"""The stand-ins read forms and sound strictly."""

import struct
import unittest
from typing import Optional

import numpy as np

from tests.standins._multipart import BadForm, File, read_form
from tests.standins._wav import BadSound, level_of, raw_samples, samples_of, silence, tone, wav_of

_KIND = "multipart/form-data; boundary=b"
_FIELD = b'--b\r\nContent-Disposition: form-data; name="a"\r\n\r\n1\r\n'
_END = b"--b--\r\n"


class Forms(unittest.TestCase):
    def refused(self, body: bytes, why: str, kind: Optional[str] = _KIND) -> None:
        with self.assertRaisesRegex(BadForm, why):
            read_form(kind, body)

    def test_takes_good_ones(self) -> None:
        file = b'--b\r\nContent-Disposition: form-data; name="f"; filename="x.wav"\r\n'
        file += b"Content-Type: audio/wav\r\n\r\n\r\n--not\r\n\r\n"
        for end in (_END, b"--b--"):
            form = read_form('multipart/form-data; boundary="b"', _FIELD + file + end)
            self.assertEqual(form.fields, {"a": "1"})
            self.assertEqual(form.files, {"f": File("x.wav", "audio/wav", b"\r\n--not\r\n")})
        self.assertEqual(read_form(_KIND, _END).fields, {})

    def test_refuses_others(self) -> None:
        self.refused(_FIELD + _END, "with a boundary", None)
        self.refused(_FIELD + _END, "with a boundary", "multipart/form-data")
        self.refused(_FIELD + _END, "with a boundary", "multipart/mixed; boundary=b")
        self.refused(_FIELD + _END, "does not begin", "multipart/form-data; boundary=c")
        self.refused(b"before\r\n" + _FIELD + _END, "does not begin")
        self.refused(_FIELD, "does not end")
        self.refused(_FIELD + b"--b\r\n", "does not end")
        self.refused(_FIELD + _END + b"after", "does not end")
        self.refused(b"--b\r\nno blank line\r\n" + _END, "without headers")
        self.refused(b"--b glued" + _FIELD[3:] + _END, "without headers")
        self.refused(_FIELD.replace(b"; name", b"; title") + _END, "without a name")
        self.refused(_FIELD.replace(b"form-data", b"attachment") + _END, "without a name")
        self.refused(_FIELD.replace(b"\r\n\r\n", b"\r\nodd\r\n\r\n") + _END, "without a colon")
        self.refused(_FIELD.replace(b'"\r\n', b'"\nodd: 1\r\n') + _END, "without a colon")
        self.refused(_FIELD.replace(b"1\r\n", b"\xff\r\n") + _END, "not UTF-8")
        self.refused(_FIELD * 2 + _END, "twice")


class Sound(unittest.TestCase):
    def refused(self, file: bytes, why: str) -> None:
        with self.assertRaisesRegex(BadSound, why):
            samples_of(file)

    def assembled(self, *chunks: bytes) -> bytes:
        body = b"WAVE" + b"".join(chunks)
        return b"RIFF" + struct.pack("<I", len(body)) + body

    def test_takes_good_files(self) -> None:
        self.assertTrue(np.array_equal(samples_of(wav_of(tone(0.5))), tone(0.5)))
        good = wav_of(silence(0.01))
        more = self.assembled(good[12:36], b"LIST\x03\0\0\0abc\0", good[36:])
        self.assertEqual(len(samples_of(more)), 160)

    def test_refuses_other_files(self) -> None:
        good = wav_of(silence(0.01))
        form, data = good[12:36], good[36:]
        self.refused(b"", "no RIFF")
        self.refused(b"RIFX" + good[4:], "no RIFF")
        self.refused(good[:8] + b"AVI " + good[12:], "no RIFF")
        self.refused(good[:4] + b"\xff\xff\xff\xff" + good[8:], "length is not the file's")
        self.refused(good + b"\0\0", "length is not the file's")
        self.refused(good[:40] + b"\xff\xff\xff\xff" + good[44:], "longer than the file")
        self.refused(self.assembled(form, data, b"LIST"), "half a chunk")
        self.refused(self.assembled(form, form, data), "twice")
        self.refused(self.assembled(data, form), "no format before")
        self.refused(self.assembled(form), "no format before")
        self.refused(self.assembled(b"fmt \x11\0\0\0", form[8:], b"\0\0", data), "an odd length")
        self.refused(self.assembled(form, b"data\x03\0\0\0abc\0"), "half a sample")
        for header in (
            {"rate": 8_000}, {"rate": 48_000}, {"channels": 2}, {"bits": 8}, {"bits": 32},
        ):  # fmt: skip
            self.refused(wav_of(silence(0.01), **header), "not 16 kHz")
        self.refused(self.assembled(form[:8] + b"\x03" + form[9:], data), "not 16 kHz")

    def test_knows_its_level(self) -> None:
        self.assertEqual(level_of(raw_samples(b"")), 0)
        self.assertEqual(level_of(tone(1, 5000)), 5000)
