"""The way of one model into the hub's cache, through the package `faster-whisper` itself."""

import errno
import fcntl
import logging
import os
import re
import shutil
import threading
from contextlib import contextmanager, suppress
from pathlib import Path
from typing import Any, Callable, Iterator, Optional

from ..recognisers import whisper_models as models
from ..recognisers.whisper_sizes import download_size
from . import DownloadError, disk_error
from .catalogue import imported
from .part import digest_of

_LOOK_SECONDS = 0.25
# Beyond the model there are vocabulary and settings.
_EXTRA_BYTES = 5_000_000
# Large files have their SHA-256 for a name in the cache.
_DIGEST = re.compile(r"[0-9a-f]{64}")


class HubFetch:
    """One download. `progress` gets each new whole percentage, `note` a line for the log.

    A file gets its name in the cache when it is whole, and a model counts as there when all its
    files are. So nothing that is broken off counts, and the package goes on with it the next time.
    """

    def __init__(
        self, model: str, progress: Callable[[int], None], note: Callable[[str], None]
    ) -> None:
        """`model` is a full name."""
        self._model = model
        self._progress = progress
        self._note = note
        self._percent = -1
        self._failure: Optional[BaseException] = None

    def run(self) -> None:
        """Returns when the model is there. Raises DownloadError."""
        # Bars for a terminal would be lines without an end here.
        os.environ["HF_HUB_DISABLE_PROGRESS_BARS"] = "1"
        package = imported(models.FASTER)
        logging.getLogger().addHandler(_Notes(self._note))
        with self._alone():
            if self._is_there():
                return
            self._check_room()
            self._download(package)
            if not self._is_there():
                raise DownloadError(
                    f"Das Modell „{self._model}“ ist noch nicht vollständig, der nächste Versuch "
                    "macht weiter"
                )

    def _is_there(self) -> bool:
        """Whether it is there and right; what is not right is removed."""
        found = models.path_of(models.FASTER, self._model)
        if found is None:
            return False
        self._progress(100)
        weights = (found / "model.bin").resolve()
        if not _DIGEST.fullmatch(weights.name) or digest_of(weights) == weights.name:
            return True
        self._note(f"{self._model} ist beschädigt und wird gelöscht")
        try:
            (found / "model.bin").unlink()
            weights.unlink(missing_ok=True)
        except OSError as error:
            raise disk_error(error, weights) from error
        return False

    def _check_room(self) -> None:
        needed = download_size(self._model) - self._bytes_there()
        folder = models.hub_folder()
        free = shutil.disk_usage(folder).free
        if free < needed:
            raise DownloadError(
                f"Kein Platz auf dem Datenträger: Es kommen etwa {needed // 1_000_000} MB, "
                f"frei sind {free // 1_000_000} MB: {folder}"
            )

    def _download(self, package: Any) -> None:
        worker = threading.Thread(target=self._work, args=(package,), daemon=True)
        worker.start()
        while worker.is_alive():
            worker.join(_LOOK_SECONDS)
            self._look()
        if self._failure is not None:
            raise self._reason(self._failure)

    def _work(self, package: Any) -> None:
        try:
            package.download_model(self._model)
        except BaseException as error:  # the package lets everything through
            self._failure = error

    def _look(self) -> None:
        total = download_size(self._model) + _EXTRA_BYTES
        percent = min(99, self._bytes_there() * 100 // total)
        if percent > self._percent:
            self._percent = percent
            self._progress(percent)

    def _bytes_there(self) -> int:
        return max(hub_bytes(project) for project in models.hub_projects(self._model))

    def _reason(self, error: BaseException) -> DownloadError:
        if isinstance(error, OSError) and error.errno in (
            errno.ENOSPC, errno.EDQUOT, errno.EACCES, errno.EPERM, errno.EROFS,
        ):  # fmt: skip
            return disk_error(error, models.hub_folder())
        said = (str(error).strip().splitlines() or [type(error).__name__])[0]
        return DownloadError(f"Das Modell „{self._model}“ kommt nicht: {said[:200]}")

    @contextmanager
    def _alone(self) -> Iterator[None]:
        """One process at a time fetches a model; another waits and finds it."""
        lock = models.hub_folder() / ".locks" / f"orvane-{self._model}.lock"
        try:
            lock.parent.mkdir(parents=True, exist_ok=True)
            descriptor = os.open(lock, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o644)
        except OSError as error:
            raise disk_error(error, lock) from error
        try:
            try:
                fcntl.flock(descriptor, fcntl.LOCK_EX | fcntl.LOCK_NB)
            except BlockingIOError:
                self._note(f"{self._model} wird schon geladen, wartet")
                fcntl.flock(descriptor, fcntl.LOCK_EX)
            yield
        finally:
            os.close(descriptor)


class _Notes(logging.Handler):
    """What the package warns of goes to the log; the last line alone is a reason."""

    def __init__(self, note: Callable[[str], None]) -> None:
        super().__init__(logging.WARNING)
        self._note = note

    def emit(self, record: logging.LogRecord) -> None:
        for line in record.getMessage().splitlines()[:1]:
            self._note(line)


def hub_bytes(project: Path) -> int:
    """How much has come of a project of the hub, finished or not."""
    total = 0
    with suppress(OSError):
        for path in (project / "blobs").iterdir():
            with suppress(OSError):
                # A part may be as long as it is to become, with nothing in it.
                told = path.stat()
                total += min(told.st_size, told.st_blocks * 512)
    return total
