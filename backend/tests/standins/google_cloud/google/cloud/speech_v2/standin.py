"""What a test sets before a stream begins. A process reads it from STANDIN_GOOGLE, in JSON."""

import dataclasses
import json
import os
from dataclasses import dataclass
from typing import Optional

from google.api_core import exceptions

API_DISABLED = {
    "reason": "SERVICE_DISABLED",
    "domain": "googleapis.com",
    "metadata": {"service": "speech.googleapis.com"},
}


@dataclass
class Control:
    """How the service is."""

    # So much sound a stream takes, and so long it waits for a request; what it says then.
    stream_seconds: float = 300.0
    idle_seconds: float = 10.0
    of_first_version: bool = False
    # The name of an error, when it comes (in seconds of sound), what it says, and its reason.
    failure: str = ""
    failure_after: float = 0.0
    failure_message: str = "The service is currently unavailable."
    failure_reason: str = ""
    # Projects that the account may use; none named: all.
    projects: tuple[str, ...] = ()

    def reset(self) -> None:
        """As at the start."""
        for field in dataclasses.fields(self):
            setattr(self, field.name, field.default)

    def too_old(self) -> exceptions.GoogleAPICallError:
        """The stream has taken what it takes."""
        if self.of_first_version:
            return exceptions.OutOfRange("Exceeded maximum allowed stream duration of 305 seconds.")
        return exceptions.Aborted("Max duration of 5 minutes reached for stream.")

    def too_quiet(self) -> exceptions.GoogleAPICallError:
        """Nothing was sent for too long."""
        if self.of_first_version:
            return exceptions.OutOfRange(
                "Audio Timeout Error: Long duration elapsed without audio. Audio should be sent"
                " close to real time."
            )
        return exceptions.Aborted("Stream timed out after receiving no more client requests.")

    def failed(self, seconds: float) -> Optional[exceptions.GoogleAPICallError]:
        """The error that was asked for, when it is due."""
        if not self.failure or seconds < self.failure_after:
            return None
        kind = getattr(exceptions, self.failure)
        info = {"reason": self.failure_reason, "domain": "googleapis.com"}
        return kind(self.failure_message, error_info=info if self.failure_reason else None)


control = Control(**json.loads(os.environ.get("STANDIN_GOOGLE", "{}")))
