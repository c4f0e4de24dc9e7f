"""The private sound server: loudspeakers nobody hears and a microphone one can play into."""

import os
import subprocess
import time

from .processes import wait_until

SPEAKERS = "orvane_speakers"
MICROPHONE = "orvane_microphone"
_MICROPHONE_INPUT = "orvane_microphone_input"

# A null sink's monitor is silent for its first two seconds, whatever is played.
_PRIMING_SECONDS = 3.0


class Sound:
    """A PulseAudio daemon of its own on `desktop`, until the desktop ends."""

    def __init__(self, desktop):
        self._desktop = desktop
        socket = desktop.folder / "pulse.socket"
        desktop.environment["PULSE_SERVER"] = f"unix:{socket}"
        desktop.environment["PULSE_RUNTIME_PATH"] = str(desktop.folder / "runtime" / "pulse")
        self._daemon = desktop._start([
            "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
            "--disallow-exit=yes", "--realtime=no", "--high-priority=no", "--log-level=error",
            "-L", f"module-native-protocol-unix auth-anonymous=1 socket={socket}",
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
            ["pacat", "--playback", f"--device={sink}", "--latency-msec=20",
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
