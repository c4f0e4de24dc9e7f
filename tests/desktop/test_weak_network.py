"""The program before cloud services that a bad network leads to. What is lost is said, nothing comes twice
or in another order, one press goes on, and a stop ends. The figures go to standard error."""

import os
import subprocess
import sys
import time
import unittest

from support import INSTALL_BACKEND

from harness.cloud import Peer
from harness.processes import Children, wait_until
from harness.road import Road
from harness.speech import recorded_sentences
from harness.texts import Texts
from harness.weak_network import WeakNetwork

PROGRAM = os.environ["ORVANE_ON_LOOPBACK"]

_KEY = "geheim-4711"

# Of speech that nobody takes: longer than a dead stream is to go unnoticed, and than sound may wait.
_SILENCED_SECONDS = 25

_WORDS_SECONDS = 2
_PAUSE_SECONDS = 1


def figure(what, value):
    print(f"{what}: {value}", file=sys.stderr)


class WeakNetworkTest(unittest.TestCase):
    USES_PORT = True
    REAL_TIME = True
    NEEDS_WEAK_NETWORK = True

    def setUp(self):
        self.text = Texts("en")
        self.network = self.enterContext(WeakNetwork())
        self.children = Children()
        self.addCleanup(self.children.stop_all)
        self.events = []

    def serve(self, module, *arguments):
        """Starts a stand-in with TLS; returns the address by which it is found."""
        self.service = Peer(self.children, self.events.append, "cloud_service.py", module, "--key",
                            _KEY, "--tls", *arguments)
        return self.network.stand_for(self.service.port)

    def open(self, engine, settings, **addresses):
        self.road = self.enterContext(Road(
            PROGRAM, INSTALL_BACKEND, settings={"sttEngine": engine, "autoGain": False, **settings},
            environment={"ORVANE_TRUSTED_CERTIFICATE": self.service.certificate, **addresses}))
        self.road.show_panel()
        self.road.start_backend()
        self.road.start_translation()

    def open_deepgram(self):
        self.open("deepgram", {"deepgramApiKey": _KEY}, ORVANE_SERVICE_DEEPGRAM="wss://" + self.serve(
            "tests.cloud_services.deepgram"))

    def open_google(self, *arguments):
        """Recognition alone."""
        self.open("google_rest", {"googleApiKey": _KEY, "targetLang": "en"},
                  ORVANE_SERVICE_GOOGLE_SPEECH="https://" + self.serve(
                      "tests.cloud_rest.google_speech", *arguments))

    def told(self, event):
        return [each for each in list(self.events) if each["event"] == event]

    def shown(self):
        return [subtitle.original for subtitle in self.road.subtitles()]

    def play(self):
        """A few words, which every service takes for one result, and a pause; returns when the last
        word had been played."""
        file = self.sound("words.wav", "trim", "0", str(_WORDS_SECONDS), "pad", "0", str(_PAUSE_SECONDS))
        self.road.sound.speak(file).wait()
        return time.monotonic() - _PAUSE_SECONDS

    def sound(self, name, *effects, sentences=1):
        file = self.road.desktop.folder / name
        subprocess.run(["sox", *[str(recorded_sentences()[2].file)] * sentences, str(file), *effects],
                       check=True)
        return file

    def long_speech(self):
        """A file with speech for as long as the network is gone."""
        return self.sound("long.wav", "trim", "0", str(_SILENCED_SECONDS), sentences=8)

    def speak(self):
        """Until the page shows another subtitle; returns how long after the last word it came."""
        before = len(self.road.subtitles())
        ended = self.play()
        wait_until(lambda: len(self.road.subtitles()) > before, "a subtitle")
        return self.road.subtitles()[before].arrived - ended

    def speak_until_missed(self):
        """Speaks into a network that has gone, until the panel says so and everything was spoken."""
        begin = time.monotonic()
        noise = self.road.sound.speak(self.long_speech())
        wait_until(lambda: self.says(self.text("run.interrupted")), "the panel to say it")
        figure("said after", f"{time.monotonic() - begin:.1f} s")
        noise.wait()

    def names(self):
        return [name for _, name in self.road.accessibility.names(self.road.program.pid)]

    def says(self, start):
        return [name for name in self.names() if name.startswith(start)]

    def private_kilobytes(self):
        with open(f"/proc/{self.road.program.pid}/smaps_rollup", encoding="ascii") as file:
            sizes = dict(line.split(":") for line in file if ":" in line and "-" not in line)
        return int(sizes["Private_Dirty"].split()[0])

    def check_order(self):
        """Whoever looks late may miss one; none comes twice or before its time."""
        said = [line["text"] for line in self.told("line")]
        shown = [text for text in self.shown() if text in said]
        left = iter(said)
        self.assertTrue(all(text in left for text in shown), (shown, said))

    def end(self):
        self.road.stop_translation()
        self.assertEqual(self.road.quit(), 0, self.road.program.tail())
        everything = "\n".join(self.road.program.lines())
        self.assertNotIn(_KEY, everything)

    def test_a_stream_that_is_swallowed_is_missed_and_goes_on(self):
        self.open_deepgram()
        self.speak()
        before = self.private_kilobytes()
        self.network.swallow()
        self.speak_until_missed()
        figure("memory grew by", f"{(self.private_kilobytes() - before) / 1024:.1f} MiB")
        self.assertTrue(self.says("Deepgram"))
        self.network.swallow(False)
        self.road.press(self.text("run.continue"))
        wait_until(lambda: len(self.told("accepted")) == 2, "the service to be asked again")
        figure("subtitle after the last word", f"{self.speak():.1f} s")
        self.check_order()
        self.end()

    def test_another_address_ends_the_stream_and_one_press_goes_on(self):
        self.open_deepgram()
        self.speak()
        self.network.move()
        self.speak_until_missed()
        self.road.press(self.text("run.continue"))
        self.speak()
        self.check_order()
        self.end()

    def test_requests_that_are_swallowed_are_given_up_and_the_present_is_shown(self):
        self.open_google()
        self.speak()
        self.network.swallow()
        self.road.sound.speak(self.long_speech()).wait()
        self.road.sound.speak(self.long_speech()).wait()
        wait_until(lambda: self.says("Google Cloud does not answer")
                   or self.says("Google Cloud cannot be reached"), "the panel to say it")
        before = len(self.road.subtitles())
        self.network.swallow(False)
        returned = time.monotonic()
        wait_until(lambda: self.road.subtitles()[before:], "a subtitle")
        figure("subtitle after the return", f"{time.monotonic() - returned:.1f} s")
        self.speak()
        self.check_order()
        self.end()

    def test_chunks_that_waited_for_too_long_are_dropped_and_that_is_said(self):
        # Two are under way at once, and the words of 15 s are about five chunks.
        self.open_google("--slow", "14", "--fault", "slow", "slow", "slow", "slow", "none")
        for _ in range(11):
            self.play()
        wait_until(lambda: self.says("Google Cloud does not keep up"), "the panel to say it")
        self.assertTrue([line for line in self.road.program.lines() if "s Ton verworfen" in line])
        figure("subtitle after the last word", f"{self.speak():.1f} s")
        self.check_order()
        self.end()

    def test_a_kept_connection_from_another_address_costs_no_chunk(self):
        self.open_google()
        self.speak()
        self.network.move()
        figure("subtitle after the last word", f"{self.speak():.1f} s")
        self.end()
        self.assertEqual([answer["status"] for answer in self.told("answer")],
                         [200] * len(self.told("answer")))

    def test_loss_and_delay_change_nothing_but_the_time(self):
        self.open_deepgram()
        self.network.lose(0.05)
        self.network.delay(0.1)
        for _ in range(3):
            figure("subtitle after the last word", f"{self.speak():.1f} s")
        self.check_order()
        self.end()
        self.assertEqual(self.told("misuse"), [])

    def test_a_stop_without_a_network_ends_and_asks_nothing_more(self):
        self.open_google()
        self.speak()
        self.network.swallow()
        self.play()
        self.play()
        requests = len(self.told("request"))
        begin = time.monotonic()
        self.road.press(self.text("main.stop"))
        self.road.accessibility.wait_for(self.road.program.pid, self.text("main.stopping"))
        self.road.wait_for_end_of_run()
        figure("stopped after", f"{time.monotonic() - begin:.1f} s")
        self.network.swallow(False)
        self.assertEqual(self.road.quit(), 0, self.road.program.tail())
        self.assertEqual(len(self.told("request")), requests)


if __name__ == "__main__":
    unittest.main()
