"""The subtitle window alone on a private desktop, and a window of another program below it."""

import json
import os
import subprocess

from harness.processes import wait_until

STAGE = os.environ["ORVANE_SUBTITLE_STAGE"]

TEXTS = {
    "short": ("Hallo Welt.", "Hello, world."),
    "wrapping": ("Heute sprechen wir über das Wetter an der Küste und über die Schiffe, die bei "
                 "diesem Wetter nicht auslaufen können.",
                 "Today we talk about the weather at the coast, and about the ships that cannot "
                 "leave the harbour in such weather."),
    "long": ("", "The quick brown fox jumps over the lazy dog. " * 45),
    "lines": ("", "First line\nSecond line\r\n\nAfter a blank one\n" + "\n".join(
        f"Line number {number}" for number in range(5, 60))),
    "arabic": ("مرحبا بالعالم، كيف حالكم اليوم؟",
               "أهلاً وسهلاً بكم في هذا البث المباشر، سنتحدث اليوم عن الطقس (weather) وعن البحر في عام "
               "2026، ثم نجيب عن أسئلتكم."),
    "hebrew": ("Welcome to the show.",
               "ברוכים הבאים לשידור החי שלנו! היום נדבר על מזג האוויר (weather) ועל הים, ואחר כך נענה על "
               "השאלות שלכם."),
    "hindi": ("Good morning, friends.",
              "नमस्ते दोस्तों, आज हम मौसम के बारे में बात करेंगे और फिर आपके प्रश्नों के उत्तर देंगे। क्षत्रिय "
              "श्रीमान् कृष्ण।"),
    "tamil": ("", "வணக்கம் நண்பர்களே, இன்று நாம் வானிலை பற்றி பேசுவோம். பின்னர் உங்கள் கேள்விகளுக்கு "
                  "பதிலளிப்போம்."),
    "thai": ("Hello everyone.",
             "สวัสดีครับทุกคน วันนี้เราจะพูดคุยเกี่ยวกับสภาพอากาศที่ชายฝั่งและเรือที่ไม่สามารถออกจากท่าเรือได้ในสภาพอากาศเช่นนี้"),
    "chinese": ("Good evening.",
                "大家晚上好，欢迎收看今天的直播节目。今天我们来谈谈海边的天气，以及在这种天气里无法出港的船只，然后回答大家的问题。"),
    "japanese": ("Good evening.",
                 "皆さん、こんばんは。今日の生放送へようこそ。海岸の天気と、このような天気では出港できない船についてお話しします。"),
    "korean": ("Good evening.", "여러분 안녕하세요. 오늘 생방송에 오신 것을 환영합니다. 오늘은 바닷가의 날씨에 대해 이야기하겠습니다."),
    "emoji": ("😀 So happy", "Great 👍🏽 the family 👨‍👩‍👧‍👦 flies 🇩🇪 → 🇯🇵 with a ❤️ and 1️⃣ suitcase 🧳"),
    "unbroken": ("", "a" * 2000),
    "address": ("", "See https://example.org/" + "a-very-long-path/" * 12 + "?with=query&and=more"),
}


class Stage:
    """The subtitle window in a process of its own."""

    def __init__(self, desktop, scale=1, hide_after=600_000, voice=False):
        self._desktop = desktop
        self._log = desktop.folder / "stage.log"
        with self._log.open("wb") as log:
            self.process = desktop.children.start(
                [STAGE, "-name", "orvane_subtitles", "--store", str(desktop.home / "stage.json"), "--hide-after",
                 str(hide_after), *(["--voice"] if voice else [])],
                env={**desktop.environment, "QT_SCALE_FACTOR": str(scale)},
                stdin=subprocess.PIPE, stdout=log, stderr=subprocess.STDOUT)
        self._wait_for("ready", 1)

    def lines(self):
        return self._log.read_text(encoding="utf-8", errors="replace").splitlines()

    def _wait_for(self, line, count):
        wait_until(lambda: self.lines().count(line) >= count,
                   f"{line!r} number {count} of the stage: {self.lines()}")

    def _tell(self, answer, **message):
        count = self.lines().count(answer)
        self.process.stdin.write(json.dumps(message).encode() + b"\n")
        self.process.stdin.flush()
        self._wait_for(answer, count + 1)

    def show(self, original, translation):
        self._tell("painted", original=original, translation=translation)

    def set(self, **values):
        self._tell("set", set=values)

    def end(self):
        self._tell("ended", end=True)

    def window(self):
        """(x, y, width, height) of the window on the screen with its shadow, or None."""
        return next(iter(self._desktop.windows("orvane_subtitles")), None)


class Backdrop:
    """A window of another program; says what happens to it."""

    def __init__(self, desktop, full_screen=False):
        self._log = desktop.folder / "backdrop.log"
        with self._log.open("wb") as log:
            self.process = desktop.children.start(
                [STAGE, "-name", "orvane_backdrop", "backdrop", *(["--full-screen"] if full_screen else [])],
                env=desktop.environment, stdin=subprocess.PIPE, stdout=log,
                stderr=subprocess.STDOUT)
        self.wait_for("ready")
        self.wait_for("active true")

    def lines(self):
        return self._log.read_text(encoding="utf-8", errors="replace").splitlines()

    def wait_for(self, line):
        wait_until(lambda: line in self.lines(), f"{line!r} of the backdrop: {self.lines()}")

    def full_screen(self, on=True):
        self._tell(fullScreen=on)

    def cover(self):
        """Covers the whole screen, subtitles too, by a window that is no concern of the window
        manager, as theirs is none."""
        self._tell(cover=True)

    def _tell(self, **message):
        self.process.stdin.write(json.dumps(message).encode() + b"\n")
        self.process.stdin.flush()
