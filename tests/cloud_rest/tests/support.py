"""Sounds made on the spot, and plain HTTP clients, for the tests of the stand-ins."""

import base64
import http.client
import io
import json
import unittest
import wave
from dataclasses import dataclass

import numpy

LIMIT = 60


def tone(seconds, level=-20.0, rate=16000):
    """A tone whose RMS is so many dB below full scale."""
    times = numpy.arange(round(seconds * rate)) / rate
    return numpy.sin(2 * numpy.pi * 440 * times) * numpy.sqrt(2) * 10 ** (level / 20)


def silence(seconds, rate=16000):
    return numpy.zeros(round(seconds * rate))


def pcm(*parts):
    return (numpy.concatenate(parts) * 32767).astype('<i2').tobytes()


def wav(*parts, rate=16000, channels=1, width=2):
    """A file by Python's own writer of WAV files; other widths hold no sound."""
    data = pcm(*parts) if width == 2 else bytes(len(numpy.concatenate(parts)) * width)
    file = io.BytesIO()
    with wave.open(file, 'wb') as writer:
        writer.setnchannels(channels)
        writer.setsampwidth(width)
        writer.setframerate(rate)
        writer.writeframes(data)
    return file.getvalue()


def utterances(count, gap=0.5):
    """So many stretches of voice, with silence around and between."""
    parts = [silence(0.2)]
    for _ in range(count):
        parts += [tone(0.4), silence(gap)]
    return parts


@dataclass
class Reply:
    status: int
    headers: dict
    body: bytes

    @property
    def json(self):
        return json.loads(self.body)


def send(connection, method, target, body=None, headers=None):
    connection.request(method, target, body, headers or {})
    answer = connection.getresponse()
    return Reply(answer.status, {n.lower(): v for n, v in answer.getheaders()}, answer.read())


def request(peer, method, target, body=None, headers=None):
    connection = http.client.HTTPConnection('127.0.0.1', peer.port, timeout=LIMIT)
    try:
        return send(connection, method, target, body, headers)
    finally:
        connection.close()


# One good request for each service, to be changed at one place by whoever wants a bad one.

AZURE_SOUND = {
    'Ocp-Apim-Subscription-Key': 'right',
    'Content-Type': 'audio/wav; codecs=audio/pcm; samplerate=16000',
    'Accept': 'application/json',
}
AZURE_TARGET = '/speech/recognition/conversation/cognitiveservices/v1?language=de-DE&format=simple'


def azure_speech(peer, body=None, target=AZURE_TARGET, method='POST', without=(), **changes):
    headers = changed(AZURE_SOUND, without, changes)
    return request(peer, method, target, wav(*utterances(1)) if body is None else body, headers)


TRANSLATOR_HEADERS = {
    'Ocp-Apim-Subscription-Key': 'right',
    'Ocp-Apim-Subscription-Region': 'westeurope',
    'Content-Type': 'application/json',
}
TRANSLATOR_TARGET = '/translate?api-version=3.0&to=de&from=en'


def azure_translator(
    peer, body=None, target=TRANSLATOR_TARGET, method='POST', without=(), **changes
):
    body = [{'Text': 'one'}] if body is None else body
    body = body if isinstance(body, bytes) else json.dumps(body).encode()
    return request(peer, method, target, body, changed(TRANSLATOR_HEADERS, without, changes))


GOOGLE_CONFIG = {
    'encoding': 'LINEAR16',
    'sampleRateHertz': 16000,
    'languageCode': 'de-DE',
    'alternativeLanguageCodes': ['en-US'],
    'enableAutomaticPunctuation': True,
    'model': 'latest_long',
    'maxAlternatives': 1,
    'audioChannelCount': 1,
}
GOOGLE_TARGET = '/v1/speech:recognize?key=right'


def google_speech(
    peer,
    sound=None,
    target=GOOGLE_TARGET,
    method='POST',
    without=(),
    body=None,
    headers=None,
    **changes
):
    config = {name: v for name, v in {**GOOGLE_CONFIG, **changes}.items() if name not in without}
    if body is None:
        sound = pcm(*utterances(1)) if sound is None else sound
        body = {'config': config, 'audio': {'content': base64.b64encode(sound).decode()}}
    body = body if isinstance(body, bytes) else json.dumps(body).encode()
    return request(peer, method, target, body, headers or {'Content-Type': 'application/json'})


TRANSLATE_TARGET = '/language/translate/v2?key=right'


def google_translate(
    peer, target=TRANSLATE_TARGET, method='POST', without=(), body=None, headers=None, **changes
):
    content = {'q': 'one', 'target': 'de', 'source': 'en', 'format': 'text', **changes}
    content = {name: value for name, value in content.items() if name not in without}
    body = json.dumps(content).encode() if body is None else body
    return request(peer, method, target, body, headers or {'Content-Type': 'application/json'})


def changed(headers, without, changes):
    """Names as keyword arguments: content_type for Content-Type."""
    headers = {name: value for name, value in headers.items() if name not in without}
    for name, value in changes.items():
        name = name.replace('_', '-').title()
        headers = {n: v for n, v in headers.items() if n.title() != name}
        headers[name] = value
    return headers


class PeerTest(unittest.TestCase):
    def start(self, service, **settings):
        settings.setdefault('key', 'right')
        peer = service(**settings)
        self.enterContext(peer)
        self.addCleanup(self.no_defect, peer)
        return peer

    def no_defect(self, peer):
        self.assertEqual([e for e in peer.events if e['event'] in ('defect', 'misuse')], [])

    def assert_failed(self, peer, name):
        """The newest request was refused for that, and for nothing before it."""
        newest = peer.wait_for('request')[-1]
        self.assertEqual(newest['failed'], name)
        self.assertNotIn(name, newest['checked'])
