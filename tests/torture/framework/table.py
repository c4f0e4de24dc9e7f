"""The sum of what was done, as a table."""

import collections
import statistics


class Tally:
    """Of one scenario."""

    def __init__(self, name, checks):
        self.name = name
        self.checks = checks
        self.runs = self.failed = self.lost = self.orphans = self.descriptors = 0
        self.seconds = 0.0  # From the scenario's begin to its end.
        self.seconds_of = collections.defaultdict(list)
        self.counts = collections.Counter()

    def take(self, outcome):
        self.runs += 1
        self.failed += bool(outcome["failures"])
        self.lost += outcome["lost"]
        self.orphans += outcome["orphans"]
        self.descriptors += outcome["descriptors"]
        self.counts.update(outcome["counts"])
        for what, seconds in outcome["seconds_of"].items():
            self.seconds_of[what] += seconds

    @property
    def is_well(self):
        return self.runs > 0 and not (self.failed or self.lost or self.orphans or self.descriptors)


_HEAD = ("scenario", "runs", "failed", "lost", "orphans", "descriptors", "time", "checked")


def _row(tally):
    minutes, seconds = divmod(round(tally.seconds), 60)
    done = ", ".join(f"{number} {what}" for what, number in sorted(tally.counts.items()))
    return (tally.name, str(tally.runs), str(tally.failed), str(tally.lost), str(tally.orphans),
            str(tally.descriptors), f"{minutes}:{seconds:02} min", done or tally.checks)


def measures(tally):
    """What took how long."""
    return [f"{tally.name}: {what} {statistics.median(seconds):.2f} s (median of {len(seconds)}), "
            f"{max(seconds):.2f} s at most" for what, seconds in sorted(tally.seconds_of.items())]


def table(tallies):
    rows = [_HEAD, *map(_row, tallies)]
    widths = [max(len(row[column]) for row in rows) for column in range(len(_HEAD))]
    lines = []
    for row in rows:
        words = [word.ljust(width) if column in (0, len(_HEAD) - 1) else word.rjust(width)
                 for column, (word, width) in enumerate(zip(row, widths))]
        lines.append("  ".join(words).rstrip())
    return "\n".join(lines)
