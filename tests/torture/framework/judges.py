"""What a program must have left, or must not have left, behind."""

import collections
import json
import os
import pathlib
import re

_ENTRY = re.compile(r"\[\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z\]\n"
                    r"Original: (.*)\nTranslation: (.*)\n\n")
_TIME = r"\d\d:\d\d:\d\d,\d{3}"
_CUE = re.compile(rf"(\d+)\n{_TIME} --> {_TIME}\n(.*)\n(.*)\n\n")
_RULE = "=" * 60 + "\n\n"


class Torn(Exception):
    """A transcript holds something that is no whole entry."""


def entries_of(text):
    """The (source text, translation) pairs of a transcript. A file without anything in it was made the
    moment before its end."""
    if not text:
        return []
    head, rule, rest = text.partition(_RULE)
    if not rule or not head.startswith("Live Audio Translation\n"):
        raise Torn(f"its head: {text[:200]!r}")
    return _all(_ENTRY, rest)


def cues_of(text):
    """The (source text, translation) pairs of a file of subtitles, whose numbers must run through."""
    cues = _all(_CUE, text)
    numbers = [int(cue[0]) for cue in cues]
    if numbers != list(range(1, len(cues) + 1)):
        raise Torn(f"its numbers: {numbers}")
    return [cue[1:] for cue in cues]


def _all(pattern, text):
    found, at = [], 0
    while match := pattern.match(text, at):
        found.append(match.groups())
        at = match.end()
    if at < len(text):
        raise Torn(f"after {len(found)} entries: {text[at:at + 200]!r}")
    return found


def transcripts(folder):
    """Of all runs, oldest first: {file name: pairs} of the transcripts and of the subtitles."""
    texts, subtitles = {}, {}
    for file in sorted(pathlib.Path(folder).glob("*")):
        content = file.read_text(encoding="utf-8")
        try:
            if file.suffix == ".txt":
                texts[file.name] = entries_of(content)
            elif file.suffix == ".srt":
                subtitles[file.name] = cues_of(content)
        except Torn as torn:
            raise Torn(f"{file.name}: {torn}") from None
    return texts, subtitles


def together(runs):
    return [pair for pairs in runs.values() for pair in pairs]


def settings_problem(file):
    """Why a settings file is none, or None."""
    try:
        content = json.loads(file.read_text(encoding="utf-8"))
    except FileNotFoundError:
        return "there is no settings file"
    except (ValueError, OSError) as error:
        return f"the settings file is damaged: {error}"
    return None if isinstance(content, dict) else "the settings file holds no object"


def socket_kinds():
    """What the sockets of this network are, by their inodes."""
    kinds = {}
    for name, inode_column in (("tcp", 9), ("tcp6", 9), ("udp", 9), ("udp6", 9), ("unix", 6)):
        try:
            lines = pathlib.Path(f"/proc/self/net/{name}").read_text().splitlines()[1:]
        except OSError:
            continue
        for line in lines:
            words = line.split()
            kind = name.rstrip("6")
            if kind == "tcp" and words[3] == "0A":
                kind = "tcp listener"
            kinds[words[inode_column]] = kind
    return kinds


def descriptor_kinds(pid):
    """How many descriptors of each kind a process has."""
    sockets = socket_kinds()
    kinds = collections.Counter()
    for entry in pathlib.Path(f"/proc/{pid}/fd").iterdir():
        try:
            target = os.readlink(entry)
        except OSError:
            continue  # Closed meanwhile.
        kinds[_kind(target, sockets)] += 1
    return kinds


def _kind(target, sockets):
    if match := re.fullmatch(r"socket:\[(\d+)\]", target):
        return sockets.get(match[1], "socket")
    if target.startswith("/memfd:"):
        return "memory"
    if target.startswith("/dev/"):
        return target
    return "file" if target.startswith("/") else re.sub(r":\[\d+\]", "", target)


def excess(now, allowed):
    """What there is more of than allowed: {kind: how many more}."""
    return {kind: count - allowed.get(kind, 0) for kind, count in now.items()
            if count > allowed.get(kind, 0)}


def left_behind(stage):
    """Files of a life that nobody wants to keep, relative to its folder. Its settings, transcripts and
    log are meant to stay, a settings file that could not be read, and what the library of the sound server
    keeps for all who use it."""
    meant = re.compile(r"home/\.config/(orvane/defaults\.json(\.corrupt(\.\d+)?)?|pulse/cookie)"
                       r"|home/Library/Application Support/Orvane/(output/[^/]*\.(txt|srt)|backend\.log"
                       r"|(venv|backend)/.*|\.install\.lock)")
    return sorted(name for name in (str(file.relative_to(stage.folder))
                                    for file in stage.folder.rglob("*") if not file.is_dir())
                  if not meant.fullmatch(name))
