"""What stands in the files that a run leaves."""

import re


def entries(text):
    """The (source text, translation) pairs of a transcript, which must hold nothing else."""
    pattern = (r"\[\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z\]\n"
               r"Original: (.*)\nTranslation: (.*)\n\n")
    pairs = re.findall(pattern, text)
    if re.sub(pattern, "", text):
        raise AssertionError("something else in the transcript: " + re.sub(pattern, "", text))
    return pairs


def cues(text):
    """(number, start in seconds, source text, translation) of each cue, and nothing else."""
    time_pattern = r"(\d\d):(\d\d):(\d\d),(\d{3})"
    pattern = rf"(\d+)\n{time_pattern} --> {time_pattern}\n(.*)\n(.*)\n\n"
    if re.sub(pattern, "", text):
        raise AssertionError("something else in the subtitles: " + re.sub(pattern, "", text))
    return [(int(cue[0]), _seconds(cue[1:5]), cue[9], cue[10])
            for cue in re.findall(pattern, text)]


def _seconds(parts):
    hours, minutes, seconds, milliseconds = map(int, parts)
    return 3600 * hours + 60 * minutes + seconds + milliseconds / 1000
