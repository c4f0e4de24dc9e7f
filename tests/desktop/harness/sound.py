"""The private sound server: loudspeakers nobody hears and a microphone one can play into."""

import array
import math
import os
import subprocess
import threading
import time

from .processes import PATIENCE, wait_until

SPEAKERS = "orvane_speakers"
MICROPHONE = "orvane_microphone"
_MICROPHONE_INPUT = "orvane_microphone_input"

# A null sink's monitor is silent for its first two seconds, whatever is played.
_PRIMING_SECONDS = 3.0

# How much of a recording the server has before it is due. A machine that is short of time, or stands
# still for a moment, leaves no gaps then: with 20 ms a third of the sound was lost on one that stood
# still for 200 ms of every 400.
_PLAYED_AHEAD_MS = 1000


class Sound:
    """A PulseAudio daemon of its own on `desktop`, until the desktop ends."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._socket = desktop.folder / "pulse.socket"
        desktop.environment["PULSE_SERVER"] = f"unix:{self._socket}"
        desktop.environment["PULSE_RUNTIME_PATH"] = str(desktop.folder / "runtime" / "pulse")
        self.start()

    def start(self):
        """Again, after `kill`."""
        self._daemon = self._desktop._start([
            "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
            "--disallow-exit=yes", "--realtime=no", "--high-priority=no", "--log-level=error",
            "-L", f"module-native-protocol-unix auth-anonymous=1 socket={self._socket}",
            "-L", f"module-null-sink sink_name={SPEAKERS} "
                  "sink_properties=device.description=Speakers",
            "-L", f"module-null-sink sink_name={_MICROPHONE_INPUT} "
                  "sink_properties=device.description=MicrophoneInput",
            "-L", f"module-remap-source source_name={MICROPHONE} "
                  f"master={_MICROPHONE_INPUT}.monitor "
                  "source_properties=device.description=Microphone",
        ])
        wait_until(lambda: self._pactl("info"), "the sound server")
        self._pactl("set-default-sink", SPEAKERS)
        self._pactl("set-default-source", MICROPHONE)
        self._prime()

    def kill(self):
        self._daemon.kill()
        self._daemon.wait()
        self._socket.unlink(missing_ok=True)

    def _pactl(self, *arguments):
        return subprocess.run(["pactl", *arguments], env=self._desktop.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

    def _prime(self):
        """Records both monitors until they are known to carry sound."""
        recorders = [subprocess.Popen(
            ["parec", "--raw", f"--device={sink}.monitor"], env=self._desktop.environment,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            for sink in (SPEAKERS, _MICROPHONE_INPUT)]
        time.sleep(_PRIMING_SECONDS)
        for recorder in recorders:
            recorder.terminate()
            recorder.wait()

    def _play(self, sink, application, *what):
        return self._desktop.children.start(
            ["pacat", "--playback", f"--device={sink}", f"--latency-msec={_PLAYED_AHEAD_MS}",
             f"--client-name={application}", f"--property=application.name={application}",
             f"--property=application.id={application}", *what],
            env=self._desktop.environment)

    def speak(self, file):
        """Plays `file` into the microphone. Returns the process, which ends with the sound."""
        return self._play(_MICROPHONE_INPUT, "org.example.Voice", "--file-format=wav", str(file))

    def play(self, file, application="org.example.Player"):
        """Plays `file` over the loudspeakers, as `application`. Returns the process."""
        return self._play(SPEAKERS, application, "--file-format=wav", str(file))

    def open_player(self, application="org.example.Player"):
        """Lets `application` play silence from now on, like a player that waits."""
        process = self._play(SPEAKERS, application, "--raw", "--format=s16le", "--rate=48000",
                             "--channels=1", "/dev/zero")
        wait_until(lambda: application in self._pactl("list", "sink-inputs"),
                   f"the stream of {application}")
        return process

    def recording_streams(self):
        """How many programs listen right now."""
        streams = self._pactl("list", "short", "source-outputs").splitlines()
        # The sound server's own, which carry the microphone, belong to no client.
        return sum(stream.split("\t")[2] != "-" for stream in streams)

    def listen(self):
        """Hears what the loudspeakers play, from now on."""
        return Listener(self._desktop, f"{SPEAKERS}.monitor")


class Listener:
    """Remembers when something could be heard, by its place in the recording: sound that is read
    late was not late."""

    _RATE = 16000
    _BLOCK = _RATE // 100  # Samples: 10 ms.
    _BLOCK_SECONDS = _BLOCK / _RATE
    _AUDIBLE = 300         # Of 32767.

    def __init__(self, desktop, source):
        self._process = desktop.children.start(
            ["parec", "--raw", f"--device={source}", "--format=s16le", f"--rate={self._RATE}",
             "--channels=1", "--latency-msec=10"], env=desktop.environment, stdout=subprocess.PIPE)
        self._loud = []            # Blocks, by their number.
        self._count = 0            # Of all blocks so far.
        self._begun = math.inf     # The moment of the recording's begin, as far as is known.
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()
        wait_until(lambda: self._count, "the first sound of the recorder, or silence")

    def _run(self):
        while block := self._process.stdout.read(2 * self._BLOCK):
            self._count += 1
            # No block comes before its time, so the earliest one tells most.
            self._begun = min(self._begun, time.monotonic() - self._count * self._BLOCK_SECONDS)
            if max(array.array("h", block)) > self._AUDIBLE:
                self._loud.append(self._count)

    def wait_for_sound(self, since, limit=PATIENCE):
        """Seconds from the moment `since` (of the monotonic clock) to the first sound after it."""
        return wait_until(lambda: next((t for t in map(self._moment, list(self._loud))
                                        if t > since), None), "a sound", limit) - since

    def wait_for_silence(self, seconds, limit=PATIENCE):
        """Waits until nothing was heard for so long; returns when the last sound was."""

        def quiet():
            last = self._moment(self._loud[-1] if self._loud else 0)
            return last if self.heard_until() - last >= seconds else None

        return wait_until(quiet, f"{seconds:g} s of silence", limit)

    def heard_until(self):
        return self._moment(self._count)

    def _moment(self, count):
        """Of the monotonic clock, when so many blocks had been recorded."""
        return self._begun + count * self._BLOCK_SECONDS
