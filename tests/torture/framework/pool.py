"""The side of the command line: workers side by side, restarted when something has gone wrong."""

import concurrent.futures
import contextlib
import json
import subprocess
import sys
import threading
import time

from harness.processes import Children

# A worker is a whole desktop, and most of its time it waits.
WORKERS = 4


class Worker:
    """A process and, as long as it may live, the thread that has started it: what a thread has started
    ends with it (see harness.processes)."""

    def __init__(self, children, folder, number):
        self._children = children
        self._folder = folder
        self._number = number
        self._process = None
        self.thread = concurrent.futures.ThreadPoolExecutor(max_workers=1)

    def end(self):
        """Ends the process, also in the midst of a job."""
        if process := self._process:
            process.terminate()

    def close(self):
        self.thread.submit(self._stop).result()
        self.thread.shutdown()

    def ask(self, job):
        """Has a job performed; returns what its outcome says, as a dictionary."""
        try:
            if self._process is None:
                self._start()
            self._process.stdin.write(json.dumps(job) + "\n")
            self._process.stdin.flush()
            answer = json.loads(self._process.stdout.readline())
        except (OSError, ValueError):
            answer = {"failures": [f"the worker ended; see {self._log}"], "lost": 0, "orphans": 0,
                      "descriptors": 0, "counts": {}, "seconds_of": {}, "notes": [], "facts": {}}
        if answer["failures"]:
            self._stop()  # The next one finds a stage that nothing has happened to.
        return answer

    def _start(self):
        self._folder.mkdir(parents=True, exist_ok=True)
        self._log = self._folder / f"worker-{self._number}.log"
        with self._log.open("a") as log:
            self._process = self._children.start(
                [sys.executable, "-B", sys.argv[0], "--worker"], stdin=subprocess.PIPE,
                stdout=subprocess.PIPE, stderr=log, text=True)
        json.loads(self._process.stdout.readline())

    def _stop(self):
        process, self._process = self._process, None
        if process is None:
            return
        with contextlib.suppress(OSError):
            process.stdin.close()
        self._children.stop(process, 60.0)


class Pool:
    """A context."""

    def __init__(self, folder, count=WORKERS):
        self._children = Children()
        self._is_closing = False
        self._workers = [Worker(self._children, folder, number + 1) for number in range(count)]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._is_closing = True
        for worker in self._workers:
            worker.end()
        for worker in self._workers:
            worker.close()
        self._children.stop_all()

    def ask_all(self, jobs):
        """Performs all jobs; returns their outcomes in order."""
        outcomes = {}
        self.work_off(enumerate(jobs), lambda job, outcome: outcomes.update({job[0]: outcome}),
                      lambda numbered: numbered[1])
        return [outcomes[number] for number in sorted(outcomes)]

    def work_off(self, jobs, take, content=lambda job: job, until=None):
        """Performs jobs until there are none left, or until the moment `until` has passed and none is
        due. `take(job, outcome)` is called for each, one at a time."""
        jobs, lock = iter(jobs), threading.Lock()

        def next_job():
            with lock:
                for job in jobs:
                    if self._is_closing:
                        return None
                    if until is None or time.monotonic() < until or content(job).get("due"):
                        return job
                    return None
                return None

        def work(worker):
            while (job := next_job()) is not None:
                outcome = worker.ask(content(job))
                with lock:
                    take(job, outcome)

        for done in [worker.thread.submit(work, worker) for worker in self._workers]:
            done.result()
