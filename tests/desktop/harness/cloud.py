"""Cloud recognition services on loopback, each the way its provider publishes it.

The transports are the scripted services of tests/support/peers, in processes of their own. What
they answer depends on the sound that reaches them: each stretch of voice becomes one numbered
result that says how long the voice lasted. Each class here is one provider: `environment` leads the
program to it, `settings` choose it, `results` are the final results it has given, as (source text,
translation) pairs in the order of giving.
"""

import base64
import io
import json
import pathlib
import subprocess
import threading
import traceback
import urllib.parse
import wave

from .processes import Children
from .voice import RATE, SHORTEST_VOICE_SECONDS, Stretches, voice_seconds

KEY = "geheim-4711"
TRANSLATION_KEY = "geheim-translate-4712"

_PEERS = pathlib.Path(__file__).resolve().parents[2] / "support" / "peers"


def source_text(number, seconds):
    return f"Stretch {number}: {seconds:.2f} s of voice, “naïve” & <plain>"


def translated(text):
    """What the translation services here make of a text."""
    return text.replace("Stretch", "Tramo").replace("of voice", "de voz – ¡así es!")


class Peer:
    """A process that runs `script`. Whatever it says goes to `take`, on a thread of its own; `only`
    names the one event that does, if it is not all."""

    def __init__(self, children, take, script, *arguments, only=None):
        self._lock = threading.Lock()
        self._take = take
        self._only = only
        self._process = children.start(["/usr/bin/python3", str(_PEERS / script), *arguments],
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        listening = json.loads(self._process.stdout.readline())
        self.port = listening["port"]
        self.certificate = listening.get("certificate")
        self.failure = None
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        try:
            for event in map(json.loads, self._process.stdout):
                if self._only in (None, event["event"]):
                    self._take(event)
        except Exception as error:  # Nobody else would see it.
            self.failure = error
            traceback.print_exc()

    def command(self, **command):
        with self._lock:
            try:
                self._process.stdin.write(json.dumps(command).encode() + b"\n")
                self._process.stdin.flush()
            except OSError:
                pass  # Unplugged.

    def unplug(self):
        """Ends the process at once, as a pulled cable or a crash would."""
        self._process.kill()
        self._process.wait()


class CloudService:
    """What the providers have in common. A context."""

    by_chunks = False  # Whether the program cuts the sound for it.

    def __init__(self):
        self.results = []
        self.voice_seconds = 0.0  # In all of them.
        self.interim = []
        self.misuses = []
        self._children = Children()

    def __enter__(self):
        self.open()
        return self

    def __exit__(self, *_):
        self._children.stop_all()

    def peer(self, take, script, *arguments, only=None):
        return Peer(self._children, take, script, *arguments, only=only)

    def give(self, number, seconds):
        """Notes a final result; returns its source text."""
        text = source_text(number, seconds)
        self.results.append((text, translated(text)))
        self.voice_seconds += seconds
        return text

    def check(self, condition, what):
        if not condition:
            self.misuses.append(what)

    def heard(self):
        """All sound that came in, 16-bit PCM."""
        raise NotImplementedError


class _Translation:
    """The translation service that the streaming providers' users need."""

    def __init__(self, service):
        self._service = service
        self._peer = service.peer(self._take, "http_service.py", only="request")
        self.url = f"http://127.0.0.1:{self._peer.port}"

    def _take(self, event):
        path, query = _split(event["path"])
        request = json.loads(base64.b64decode(event["body"]))
        self._service.check(path == "/language/translate/v2", path)
        self._service.check(query == {"key": TRANSLATION_KEY}, query)
        self._service.check((request["target"], request["format"]) == ("es", "text"), request)
        self._peer.command(answer=event["id"],
                           headers={"Content-Type": "application/json; charset=UTF-8"},
                           body=translation_answer(request["q"]))


def translation_answer(text):
    return json.dumps({"data": {"translations": [
        {"translatedText": translated(text), "detectedSourceLanguage": "en"}]}},
        ensure_ascii=False, indent=2)


def _split(path):
    parts = urllib.parse.urlsplit(path)
    return parts.path, dict(urllib.parse.parse_qsl(parts.query))


class StreamingService(CloudService):
    """A provider with one WebSocket for all sound."""

    def open(self):
        self._sound = []
        self._stretches = Stretches()
        self.events = []
        self.translation = _Translation(self)
        self.service = self.peer(self._take, "streaming_service.py", self.name, "--key", KEY)
        url = f"ws://127.0.0.1:{self.service.port}"
        self.environment = {f"ORVANE_SERVICE_{self.name.upper()}": url,
                            "ORVANE_SERVICE_GOOGLE_TRANSLATE": self.translation.url}
        self.settings = {"sttEngine": self.name, f"{self.name}ApiKey": KEY,
                         "googleApiKey": TRANSLATION_KEY}
        self.keys = [KEY, TRANSLATION_KEY]

    def _take(self, event):
        if event["event"] != "audio":
            self.events.append(event)
            self.check(event["event"] not in ("misuse", "refused"), event)
            return
        pcm = base64.b64decode(event["data"], validate=True)
        self._sound.append(pcm)
        for number, seconds, over in self._stretches.take(pcm):
            text = source_text(number, seconds)
            self.interim.append("interim " + text)
            for message in self.messages(text, seconds, over):
                self.service.command(send=json.dumps(message, ensure_ascii=False))
            if over:
                self.give(number, seconds)

    def heard(self):
        return b"".join(self._sound)

    def is_listening(self):
        """Whether somebody speaks, or has just spoken, whose result is still to come."""
        return self._stretches.is_open()

    def event(self, name):
        return next((event for event in self.events if event["event"] == name), None)


class Deepgram(StreamingService):
    name = "deepgram"
    engine = "DeepgramDirectEngine"
    disconnected = "Deepgram disconnected"
    connected = "Deepgram connected (streaming)"

    def messages(self, text, seconds, over):
        if not over:
            return [self._result("interim " + text, seconds, False)]
        # A final result without words follows a pause, and the end of the utterance is told apart.
        return [self._result("interim " + text, seconds, False),
                self._result(text, seconds, True),
                self._result("", 0.3, True),
                {"type": "UtteranceEnd", "channel": [0, 1], "last_word_end": seconds}]

    @staticmethod
    def _result(transcript, seconds, final):
        words = [{"word": word.lower(), "start": 0.0, "end": seconds, "confidence": 0.98,
                  "punctuated_word": word} for word in transcript.split()]
        return {"type": "Results", "channel_index": [0, 1], "duration": seconds, "start": 0.0,
                "is_final": final, "speech_final": final,
                "channel": {"alternatives": [
                    {"transcript": transcript, "confidence": 0.98, "words": words}]},
                "metadata": {"request_id": "r-1", "model_info": {"name": "general-nova-2"}}}


class AssemblyAI(StreamingService):
    name = "assemblyai"
    engine = "AssemblyAIDirectEngine"
    disconnected = "AssemblyAI disconnected"
    connected = "AssemblyAI connected (streaming)"

    def messages(self, text, seconds, over):
        partial = {"message_type": "PartialTranscript", "audio_start": 0,
                   "audio_end": int(1000 * seconds), "confidence": 0.9, "words": [],
                   "text": "interim " + text, "created": "2030-01-01T00:00:00.000000"}
        if not over:
            return [partial]
        return [partial,
                {**partial, "message_type": "FinalTranscript", "text": text, "punctuated": True,
                 "text_formatted": True},
                {**partial, "text": ""}]


class ChunkedService(CloudService):
    """A provider that gets one request for each chunk."""

    by_chunks = True

    def __init__(self):
        super().__init__()
        self._number = 0
        self._chunks = []

    def chunk(self, pcm):
        """The source text for a chunk; None when nobody speaks in it."""
        self._chunks.append(pcm)
        seconds = voice_seconds(pcm)
        if seconds < SHORTEST_VOICE_SECONDS:
            return None
        self._number += 1
        return self.give(self._number, seconds)

    def heard(self):
        return b"".join(self._chunks)

    def answer(self, event, body, status=200):
        self.service.command(answer=event["id"], status=status, body=body,
                             headers={"Content-Type": "application/json; charset=utf-8"})


class Azure(ChunkedService):
    name = "azure"
    engine = "AzureDirectEngine"

    def open(self):
        self.waves = []
        self.service = self.peer(self._take, "http_service.py", only="request")
        url = f"http://127.0.0.1:{self.service.port}"
        self.environment = {"ORVANE_SERVICE_AZURE_SPEECH_TRANSLATION": url}
        self.settings = {"sttEngine": self.name, "azureApiKey": KEY, "azureRegion": "westeurope"}
        self.keys = [KEY]

    def _take(self, event):
        path, query = _split(event["path"])
        self.check(path == "/speech/translation/cognitiveservices/v1", path)
        self.check(query == {"from": "en-US", "to": "es", "api-version": "3.0"}, query)
        self.check(event["headers"].get("ocp-apim-subscription-key") == KEY, "key")
        body = base64.b64decode(event["body"])
        self.waves.append(body)
        with wave.open(io.BytesIO(body)) as sound:
            form = (sound.getnchannels(), sound.getsampwidth(), sound.getframerate())
            self.check(form == (1, 2, RATE), form)
            text = self.chunk(sound.readframes(sound.getnframes()))
        self.answer(event, json.dumps(
            {"RecognitionStatus": "NoMatch", "Offset": 0, "Duration": 0} if text is None else
            {"RecognitionStatus": "Success", "Offset": 0, "Duration": 10_000_000,
             "DisplayText": text, "Translations": [{"Language": "es", "Text": translated(text)}]},
            ensure_ascii=False))


class GoogleRest(ChunkedService):
    name = "google_rest"
    engine = "GoogleCloudDirectEngine"

    def open(self):
        self.service = self.peer(self._take, "http_service.py", only="request")
        url = f"http://127.0.0.1:{self.service.port}"
        self.environment = {"ORVANE_SERVICE_GOOGLE_SPEECH": url,
                            "ORVANE_SERVICE_GOOGLE_TRANSLATE": url}
        self.settings = {"sttEngine": self.name, "googleApiKey": KEY}
        self.keys = [KEY]

    def _take(self, event):
        path, query = _split(event["path"])
        self.check(query == {"key": KEY}, query)
        request = json.loads(base64.b64decode(event["body"]))
        if path == "/language/translate/v2":
            self.check((request["target"], request["format"]) == ("es", "text"), request)
            self.answer(event, translation_answer(request["q"]))
            return
        self.check(path == "/v1/speech:recognize", path)
        self.check(request["config"] == {
            "encoding": "LINEAR16", "sampleRateHertz": RATE, "languageCode": "en-US",
            "enableAutomaticPunctuation": True}, request["config"])
        text = self.chunk(base64.b64decode(request["audio"]["content"], validate=True))
        self.answer(event, json.dumps(
            {"totalBilledTime": "15s"} if text is None else
            {"results": [{"alternatives": [{"transcript": text, "confidence": 0.97}],
                          "languageCode": "en-us"}], "totalBilledTime": "15s"},
            ensure_ascii=False, indent=2))
