"""Results that are read aloud, heard over the loudspeakers."""

import contextlib
import os
import signal
import statistics
import subprocess
import time
import unittest

import subtitles
from harness.desktop import Desktop
from harness.processes import end_on_signals, wait_until
from harness.sound import Sound

end_on_signals()

_LONG = "This is a long sentence which takes quite some time to be read aloud. " * 6
_SHORT = "Yes."
_LONGER = "This is the second sentence, and it takes a few seconds, too."

# For the speech service and its module to start, on a machine that is short of time.
_START_SECONDS = 90.0

_SLOWDOWN = float(os.environ.get("ORVANE_SLOWDOWN", "1"))

# Seconds that nobody blames on the speech service. Instrumented builds are slower than users'.
_HARDLY_NOTICED = 0.1 * _SLOWDOWN


class Voice(unittest.TestCase):
    REAL_TIME = True

    def open(self, **environment):
        context = contextlib.ExitStack()
        self.addCleanup(context.close)
        self.desktop = context.enter_context(Desktop(tray=False))
        sound = Sound(self.desktop)
        self.desktop.environment.update(environment)
        self.listener = sound.listen()
        self.stage = subtitles.Stage(self.desktop, voice=True)
        self.stage.set(speakTranslations=True)

    def speak(self, text):
        """Shows a result; returns the moment before."""
        moment = time.monotonic()
        self.stage.show("source text", text)
        return moment

    def speak_first(self, text):
        """The same, and waits however long the speech service takes to start."""
        moment = self.speak(text)
        self.listener.wait_for_sound(moment, _START_SECONDS)
        return moment

    def test_speech_begins_within_a_second_of_a_result(self):
        self.open()
        self.speak_first(_SHORT)
        delays = []
        for _ in range(5):
            self.listener.wait_for_silence(0.5)
            delays.append(self.listener.wait_for_sound(self.speak(_SHORT)))
        print("from the result to the sound:", " ".join(f"{1000 * d:.0f} ms" for d in delays))
        self.assertLess(statistics.median(delays), 1.0)

    def test_the_next_result_ends_the_utterance(self):
        self.open()
        self.speak_first(_LONG)
        second = self.speak(_LONGER)
        last = self.listener.wait_for_silence(2.0)
        self.assertLess(last - second, 10.0, "the first utterance would go on for half a minute")
        # The second one: nothing else is left to be heard by then.
        self.listener.wait_for_sound(second + 1.0)

    def test_an_error_ends_nothing(self):
        self.open()
        self.speak_first(_LONG)
        moment = self.speak("[Translation Error]")
        self.listener.wait_for_sound(moment + 5.0)  # The error itself would be over by then.

    def test_the_end_of_a_run_silences_at_once(self):
        self.open()
        self.speak_first(_LONG)
        moment = time.monotonic()
        self.stage.end()
        last = self.listener.wait_for_silence(2.0)
        print(f"silent {last - moment:.2f} s after the end")
        self.assertLess(last - moment, 10.0, "the utterance would go on for half a minute")

    def test_without_a_dispatcher_another_engine_speaks(self):
        self.open(SPEECHD_ADDRESS="inet_socket:127.0.0.1:1")
        self.speak_first(_SHORT)
        self.listener.wait_for_silence(0.5)
        self.listener.wait_for_sound(self.speak(_SHORT))
        self.assertEqual(self.dispatchers(), [])

    def test_nothing_is_heard_unless_the_user_wants_it(self):
        self.open()
        self.speak_first(_SHORT)
        self.listener.wait_for_silence(0.5)
        self.stage.set(speakTranslations=False)
        moment = self.speak(_LONG)
        wait_until(lambda: self.listener.heard_until() > moment + 1.5, "a second and a half")
        self.assertLess(self.listener.wait_for_silence(1.5), moment)

    def test_a_service_that_hangs_holds_nothing_up(self):
        self.open()
        self.speak_first(_SHORT)
        self.listener.wait_for_silence(0.5)
        healthy = self.time_to_show(20)
        service, = self.dispatchers()
        os.kill(service, signal.SIGSTOP)
        try:
            hung = self.time_to_show(20)
            print(f"to show a result: {1000 * healthy:.0f} ms, and {1000 * hung:.0f} ms while the "
                  "service hangs")
            self.assertLess(hung, 2 * healthy + _HARDLY_NOTICED)
            self.stage.process.stdin.close()
            self.assertEqual(self.stage.process.wait(20), 0)
        finally:
            os.kill(service, signal.SIGCONT)

    def time_to_show(self, count):
        """Seconds from a result to its picture, the middle one of `count` times: a machine that is
        busy for a moment does not change it."""
        times = []
        for number in range(count):
            moment = self.speak(f"Result {number}.")
            times.append(time.monotonic() - moment)
        return statistics.median(times)

    def dispatchers(self):
        """The processes of the speech dispatcher on this desktop."""
        return [int(process) for process in subprocess.run(
            ["pgrep", "-f", f"^/usr/bin/speech-dispatcher .*{self.desktop.folder}"], text=True,
            stdout=subprocess.PIPE).stdout.split()]


if __name__ == "__main__":
    unittest.main()
