"""The program before the cloud services as they are today: a minute of speech, every result once and in
order, in the window's stead on the page, and in both transcript files. The stand-ins are strict and were
written by others, from what the services publish."""

import os
import pathlib
import subprocess
import unittest

from support import INSTALL_BACKEND

from harness.cloud import Peer
from harness.processes import Children, wait_until
from harness.road import Road
from harness.speech import recorded_sentences
from harness.transcripts import cues, entries

PROGRAM = os.environ["ORVANE_ON_LOOPBACK"]

_KEY = "geheim-4711"
_STREAMING = "tests.cloud_services."
_REST = "tests.cloud_rest."

# Of the sentences, about five seconds each, with a pause behind each that every service takes for one.
_SPOKEN = 10
_PAUSE_SECONDS = 1

# Of sound after the last that was played, until nothing of it is taken to be on its way any more.
_QUIET_MS = 3000


class Service:
    """One stand-in. What it tells is kept."""

    def __init__(self, children, module, *arguments):
        self.events = []
        self._peer = Peer(children, self.events.append, "cloud_service.py", module, "--key", _KEY,
                          *arguments)

    def address(self, scheme):
        return f"{scheme}://127.0.0.1:{self._peer.port}"

    def told(self, event):
        return [each for each in list(self.events) if each["event"] == event]

    def heard_ms(self):
        """How much sound a streaming one has got."""
        return sum(each["frame_ms"] for each in self.told("audio"))


class CloudToday(unittest.TestCase):
    REAL_TIME = True
    USES_PORT = True

    def setUp(self):
        self.children = Children()
        self.addCleanup(self.children.stop_all)
        self.translate = self.service(_REST + "google_translate")
        self.translators = [self.translate]

    def service(self, module, *arguments):
        return Service(self.children, module, *arguments)

    def open(self, engine, settings, **environment):
        self.road = self.enterContext(Road(
            PROGRAM, INSTALL_BACKEND, settings={"sttEngine": engine, "autoGain": False,
                                                "googleApiKey": _KEY, **settings},
            environment={"ORVANE_SERVICE_GOOGLE_TRANSLATE": self.translate.address("http"),
                         **environment}))
        self.road.show_panel()
        self.road.start_backend()
        self.road.start_translation()

    def speak_for_a_minute(self):
        """Plays speech until every stretch of it that the service has heard is on the page."""
        sentences = recorded_sentences()
        file = self.road.desktop.folder / "sentence.wav"
        for number in range(_SPOKEN):
            subprocess.run(["sox", str(sentences[number % len(sentences)].file), str(file), "pad",
                            "0", str(_PAUSE_SECONDS)], check=True)
            self.road.sound.speak(file).wait()
        wait_until(self.silence(), "silence")
        wait_until(lambda: self.is_all_translated() and self.shown()[-1:] == self.said()[-1:],
                   "every result on the page")

    def said(self):
        """The results, as the translation services have had them."""
        return [(text.removeprefix("es: "), text) for service in self.translators
                for answer in service.told("answer") for text in answer["text"]]

    def is_all_translated(self):
        return self.recognised() == " ".join(text for text, _ in self.said())

    def shown(self):
        return [(subtitle.original, subtitle.translation) for subtitle in self.road.subtitles()]

    def check(self):
        said = self.said()
        self.assertGreaterEqual(len(said), _SPOKEN)
        self.road.stop_translation()
        self.assertEqual(self.road.quit(), 0, self.road.program.tail())
        left = iter(said)
        # Who looks late may miss one; the files hold them all.
        self.assertTrue(all(pair in left for pair in self.shown()))
        folder = self.road.desktop.home / "Library" / "Application Support" / "Orvane" / "output"
        txt, srt = ([file for file in pathlib.Path(folder).iterdir() if file.suffix == suffix]
                    for suffix in (".txt", ".srt"))
        self.assertEqual((len(txt), len(srt)), (1, 1))
        text = txt[0].read_text(encoding="utf-8").partition("=" * 60 + "\n\n")[2]
        self.assertEqual(entries(text), said)
        self.assertEqual([cue[2:] for cue in cues(srt[0].read_text(encoding="utf-8"))], said)
        everything = "\n".join(self.road.program.lines())
        self.assertNotIn(_KEY, everything)

    def check_stream(self, service):
        def silence():
            """Whether it has heard silence for a while since now."""
            before = service.heard_ms()
            return lambda: (service.heard_ms() > before + _QUIET_MS
                            and len(service.told("begun")) == len(service.told("line")))

        self.silence = silence
        # Each stretch is several final results, or one.
        self.recognised = lambda: " ".join(line["text"] for line in service.told("line"))
        self.speak_for_a_minute()
        self.check()
        for wrong in ("misuse", "too_fast", "abandoned", "defect", "lost"):
            self.assertEqual(service.told(wrong), [])

    def check_chunks(self, service, of_one_chunk):
        self.silence = lambda: self.road.nothing_is_left
        self.recognised = lambda: " ".join(
            of_one_chunk(answer["text"]) for answer in service.told("answer") if answer["text"])
        self.speak_for_a_minute()
        self.check()

    def test_deepgram(self):
        service = self.service(_STREAMING + "deepgram")
        self.open("deepgram", {"deepgramApiKey": _KEY},
                  ORVANE_SERVICE_DEEPGRAM=service.address("ws"))
        self.check_stream(service)

    def test_assemblyai(self):
        service = self.service(_STREAMING + "assemblyai")
        self.open("assemblyai", {"assemblyaiApiKey": _KEY},
                  ORVANE_SERVICE_ASSEMBLYAI=service.address("ws"),
                  ORVANE_SERVICE_ASSEMBLYAI_STREAMING=service.address("ws"))
        self.check_stream(service)

    def test_azure(self):
        speech = self.service(_REST + "azure_speech", "--region", "westeurope")
        translator = self.service(_REST + "azure_translator", "--key-kind", "multi", "--region",
                                  "westeurope")
        self.translators.append(translator)
        self.open("azure", {"azureApiKey": _KEY, "azureRegion": "westeurope"},
                  ORVANE_SERVICE_AZURE_SPEECH_TO_TEXT=speech.address("http"),
                  ORVANE_SERVICE_AZURE_SPEECH_TRANSLATION=speech.address("http"),
                  ORVANE_SERVICE_AZURE_TRANSLATOR=translator.address("http"))
        self.check_chunks(speech, " ".join)
        self.assertEqual(self.translate.told("request"), [])

    def test_google(self):
        speech = self.service(_REST + "google_speech")
        self.open("google_rest", {}, ORVANE_SERVICE_GOOGLE_SPEECH=speech.address("http"))
        self.check_chunks(speech, lambda stretches: stretches[0].strip())


if __name__ == "__main__":
    unittest.main()
