"""Runs clang-tidy over the files named on the command line and remembers the clean ones.

tidy.py <build folder> <file ...>. The folder holds compile_commands.json and what Ninja knows of
every object's headers. A file is looked at again only when something it is made of has changed: its
own text, a header, its command, the rules or clang-tidy itself. What was clean is remembered under
the user's cache folder, for every checkout alike. Prints the findings; ends with 1 when there are any.
"""

import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
CLEAN = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "orvane-lint"
CHATTER = re.compile(r"^(\d+ warnings? (and \d+ errors? )?generated|Suppressed |Use -header)")


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


@functools.cache
def digest(path):
    return hashlib.sha256(pathlib.Path(path).read_bytes()).hexdigest()


def made_of(build):
    """The files that each object was made of at its last build, by the object's name."""
    objects = {}
    files = []
    for line in output("ninja", "-C", str(build), "-t", "deps").splitlines():
        if line.startswith("    "):
            files.append(line.strip())
        elif ": #deps" in line:
            files = objects.setdefault(line.split(": #deps")[0], [])
    return objects


def plain_command(entry):
    """How the file is compiled, without compiler cache and precompiled headers: each file names for
    itself what it needs, so a header that it forgot to name is missed here."""
    words = shlex.split(entry["command"])
    compiler = next(number for number, word in enumerate(words) if word.endswith("++"))
    words = words[compiler:]
    if "-Winvalid-pch" in words:
        place = words.index("-Winvalid-pch")
        del words[place:place + 3]  # With "-include" and its file.
    return shlex.join(words)


def object_of(entry):
    words = shlex.split(entry["command"])
    return words[words.index("-o") + 1]


def key(entry, files, build, rules):
    """Names everything a verdict depends on; the same in every checkout."""
    command = entry["command"].replace(str(ROOT), ".")
    parts = [rules, command]
    # Precompiled headers are other people's, whose version is among the rules.
    for name in sorted(file for file in files if not file.endswith(".gch")):
        path = build / name
        parts.append(f"{str(path).replace(str(ROOT), '.')} {digest(path)}")
    return hashlib.sha256("\n".join(parts).encode()).hexdigest()


def look_at(source, build, mark):
    """The findings in `source`; leaves `mark` when there are none."""
    run = subprocess.run(
        ["clang-tidy", "-p", str(build / "lint"), "--quiet", "--extra-arg=-Wno-unknown-warning-option", source],
        capture_output=True, text=True)
    if run.returncode == 0:
        mark.touch()
        return ""
    said = (run.stdout + run.stderr).splitlines()
    return "\n".join(line for line in said if not CHATTER.match(line)) or f"{source}: clang-tidy failed"


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    CLEAN.mkdir(parents=True, exist_ok=True)
    rules = (output("clang-tidy", "--version") + output("pkg-config", "--modversion", "Qt6Core")
             + (ROOT / ".clang-tidy").read_text())
    commands = {entry["file"]: {**entry, "command": plain_command(entry)}
                for entry in json.loads((build / "compile_commands.json").read_text())}
    plain = build / "lint"
    plain.mkdir(exist_ok=True)
    (plain / "compile_commands.json").write_text(json.dumps(list(commands.values())))
    objects = made_of(build)
    todo = []
    for source in (str(ROOT / name) for name in sys.argv[2:]):
        entry = commands[source]
        mark = CLEAN / key(entry, objects[object_of(entry)], build, rules)
        if not mark.exists():
            todo.append((source, build, mark))
    print(f"{len(todo)} of {len(sys.argv) - 2} have changed since they were last found clean.", flush=True)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = [found for found in pool.map(lambda job: look_at(*job), todo) if found]
    print("\n".join(findings), end="\n" if findings else "")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
