"""A recognition service that says what it is told to say, whatever it hears."""

import itertools
import json

from harness.cloud import Deepgram, source_text, translated


class ToldDeepgram(Deepgram):
    """Numbers its results through; `results` are those given to the program that lives now."""

    def open(self):
        super().open()
        self._numbers = itertools.count(1)
        self.openings = 0  # Streams so far.

    def _take(self, event):
        if event["event"] == "open":
            self.openings += 1
        if event["event"] != "audio":
            super()._take(event)

    def forget(self):
        """Before the next program lives."""
        self.results.clear()
        self.events.clear()

    def publish(self):
        """Gives another final result to the open stream; returns its source text and translation."""
        number = next(self._numbers)
        text = source_text(number, 1.0)
        self.results.append((text, translated(text)))
        for message in self.messages(text, 1.0, over=True):
            self.service.command(send=json.dumps(message, ensure_ascii=False))
        return text, translated(text)
