"""One call: requests are taken by a thread of its own, answers wait to be read."""

import queue
import threading
import time
from typing import Any, Iterator, Optional

from google.api_core import exceptions
from standin_notes import note

from .standin import control
from .standin_hearing import Hearing
from .standin_rules import check_audio, check_first, location_of
from .types import cloud_speech

_END = object()
# A queue takes no endless time; it is asked again then.
_LONGEST_WAIT = 3600.0


class Stream:
    """The answers of a call. Made only when the first of them, or the end, is there."""

    def __init__(self, client: Any, requests: Iterator[Any], timeout: Optional[float]) -> None:
        self._client = client
        self._requests = requests
        self._ends = None if timeout is None else time.monotonic() + timeout
        self._answers: "queue.SimpleQueue[Any]" = queue.SimpleQueue()
        self._asked = time.monotonic()
        self._cancelled = threading.Event()
        self._ended: Optional[BaseException] = None
        threading.Thread(target=self._take_all, daemon=True).start()
        self._first: list[Any] = []
        try:
            self._first.append(next(self))
        except StopIteration:
            pass

    def __iter__(self) -> "Stream":
        return self

    def __next__(self) -> Any:
        if self._first:
            return self._first.pop()
        if self._ended is None:
            answer = self._next()
            if isinstance(answer, cloud_speech.StreamingRecognizeResponse):
                return answer
            self._ended = StopIteration() if answer is _END else answer
            if answer is not _END:
                note("google.error", error=type(answer).__name__, message=str(answer))
            self._cancelled.set()
        raise self._ended

    def cancel(self) -> None:
        """Ends the call from this side."""
        self._cancelled.set()
        self._answers.put(exceptions.Cancelled("Locally cancelled by application!"))

    def _next(self) -> Any:
        while True:
            now = time.monotonic()
            waits = self._asked + control.idle_seconds - now
            left = float("inf") if self._ends is None else self._ends - now
            if left <= 0:
                return exceptions.DeadlineExceeded("Deadline Exceeded")
            try:
                return self._answers.get(timeout=max(0.0, min(waits, left, _LONGEST_WAIT)))
            except queue.Empty:
                if time.monotonic() >= self._asked + control.idle_seconds:
                    return control.too_quiet()

    def _take_all(self) -> None:
        try:
            for answer in self._conversation():
                if self._cancelled.is_set():
                    return
                self._answers.put(answer)
            self._answers.put(_END)
        except exceptions.GoogleAPICallError as error:
            self._answers.put(error)
        except Exception as error:
            note("google.broken", error=repr(error))
            self._answers.put(exceptions.Unknown("Exception iterating requests!"))

    def _conversation(self) -> Iterator[Any]:
        endpoint = self._client.standin_endpoint
        location_of(endpoint)
        hearing: Optional[Hearing] = None
        for request in self._requests:
            self._asked = time.monotonic()
            if self._cancelled.is_set():
                return
            if isinstance(request, dict):
                request = cloud_speech.StreamingRecognizeRequest(request)
            if not isinstance(request, cloud_speech.StreamingRecognizeRequest):
                raise TypeError(f"no request: {request!r}")
            self._client.standin_authenticate()
            if hearing is None:
                check_first(request, endpoint, control.projects)
                config = request.streaming_config
                note("google.stream", recognizer=request.recognizer, endpoint=endpoint)
                note("google.config", config=repr(config))
                hearing = Hearing(config)
            else:
                sound = check_audio(request)
                note("google.audio", bytes=len(sound))
                yield from hearing.take(sound)
            failure = control.failed(hearing.seconds)
            if failure is not None:
                raise failure
            if hearing.seconds > control.stream_seconds:
                raise control.too_old()
        if hearing is None:
            raise exceptions.InvalidArgument("Malformed request: there is none.")
        # Who has said that nothing more comes is not waited for.
        self._asked = float("inf")
        note("google.half_closed", seconds=hearing.seconds)
        yield from hearing.end()
