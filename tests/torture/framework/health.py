"""What a process uses of the machine, and whether that grows."""

import collections
import dataclasses
import os
import pathlib
import re
import time

from .judges import descriptor_kinds, excess

# Connections come and go, threads look something up and end: what stays is in each of so many readings.
_READINGS = 25
_PAUSE = 0.02

_TICKS = os.sysconf("SC_CLK_TCK")


@dataclasses.dataclass(frozen=True)
class Usage:
    """What stays of a process: what was there in each of several readings."""

    descriptors: collections.Counter  # By their kinds.
    threads: int
    own: int  # KiB of memory that it has written: nobody else has a part in it.
    pss: int  # KiB of all its memory, what is shared in proportion; less while others share more.

    def __str__(self):
        return (f"{self.own / 1024:.2f} MiB of its own, PSS {self.pss / 1024:.2f} MiB, "
                f"{sum(self.descriptors.values())} descriptors, {self.threads} threads")


def usage(pid):
    descriptors, threads, own, pss = [], [], [], []
    for _ in range(_READINGS):
        descriptors.append(descriptor_kinds(pid))
        threads.append(len(os.listdir(f"/proc/{pid}/task")))
        memory = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
        own.append(_kib(memory, "Private_Dirty") + _kib(memory, "Swap"))
        pss.append(_kib(memory, "Pss"))
        time.sleep(_PAUSE)
    kinds = set().union(*descriptors)
    return Usage(collections.Counter({kind: min(one[kind] for one in descriptors) for kind in kinds}),
                 min(threads), min(own), min(pss))


def _kib(memory, what):
    return int(re.search(rf"^{what}:\s+(\d+) kB", memory, re.MULTILINE)[1])


def judge_growth(outcome, before, after, memory=None):
    """Fails when there are more descriptors or threads than before, or, where a limit is given, so many
    KiB more of memory of its own."""
    if more := excess(after.descriptors, before.descriptors):
        outcome.descriptors += sum(more.values())
        outcome.fail(f"it has more descriptors than before: {more}")
    if after.threads > before.threads:
        outcome.fail(f"it has {after.threads} threads, and had {before.threads} before")
    if memory is not None and after.own - before.own > memory:
        outcome.fail(f"its memory has grown by {after.own - before.own} KiB: {before}, then {after}")


@dataclasses.dataclass(frozen=True)
class Work:
    """What a process has done up to a moment."""

    moment: float   # time.monotonic()
    cpu: float      # Seconds of processors.
    switches: dict  # Of contexts, voluntary or not, by thread.

    @staticmethod
    def of(pid):
        fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
        switches = {}
        for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
            try:
                text = (task / "status").read_text()
            except OSError:
                continue  # Ended meanwhile.
            switches[task.name] = sum(map(int, re.findall(r"ctxt_switches:\s+(\d+)", text)))
        return Work(time.monotonic(), (int(fields[11]) + int(fields[12])) / _TICKS, switches)

    def cpu_since(self, earlier):
        """Processors, on average."""
        return (self.cpu - earlier.cpu) / (self.moment - earlier.moment)

    def switches_since(self, earlier):
        """A second, of the threads that have been there all the time."""
        return sum(count - earlier.switches[task] for task, count in self.switches.items()
                   if task in earlier.switches) / (self.moment - earlier.moment)
