#!/usr/bin/python3
"""Compares what the files of every target include with the target's link line.

arrows.py [project folder] looks at all targets of src/, tests/ and bench/ and prints what is wrong:

    missing arrow     a file includes a header of a target, or of a library, that the link line does not
                      name itself
    named in vain     no file includes anything of what is named
    leaks             what is named as public is used by no header that others include
    hidden            a header that others include needs what is named as private
    against the road  the table below does not allow this arrow
    no target         an included header of ours is in no target's list of files
    no file           what such a list names is not there

Ends with 1 when there is anything.
"""

import collections
import dataclasses
import functools
import pathlib
import re
import subprocess
import sys

from cmake_targets import read_targets

_ROOT = pathlib.Path(__file__).resolve().parents[2]

# Which folders of src/ may use which: the whole of what each may see.
ROAD = {
    "support": set(),
    "settings": {"support"},
    "localization": {"support", "settings"},
    "net": {"support"},
    "platform": {"support"},
    "engines": {"support", "settings", "net"},
    "audio": {"support", "settings", "platform", "engines", "net"},
    "backend": {"support", "settings", "localization", "platform"},
    "outputs": {"support", "settings", "net", "platform"},
    "app": {"support", "settings", "localization", "net", "platform", "engines", "audio", "backend",
            "outputs"},
}
# Only these see widgets.
WIDGETS = ("app", "outputs/window", "platform/widgets")

# Libraries of others: the beginnings of what is included. Qt's are looked up in its folders.
LIBRARIES = {
    "PkgConfig::PULSE": r"pulse/",
    "PkgConfig::SOXR": r"soxr\.h",
    "PkgConfig::XCB": r"xcb/",
    "PkgConfig::FONTCONFIG": r"fontconfig/",
    "PkgConfig::ICU": r"unicode/",
    "QCoro6::Core": r"QCoro",
    "GTest::gtest": r"gtest/",
    "GTest::gmock": r"gmock/",
    "benchmark::benchmark": r"benchmark/",
}
# What Qt's modules bring along, by their own CMake files.
_BROUGHT = {
    "Qt6::Widgets": {"Qt6::Gui", "Qt6::Core"},
    "Qt6::Svg": {"Qt6::Gui", "Qt6::Core"},
    "Qt6::Gui": {"Qt6::Core"},
    "Qt6::WebSockets": {"Qt6::Network", "Qt6::Core"},
}
_BRINGS_CORE = {"Qt6::Network", "Qt6::DBus", "Qt6::TextToSpeech", "Qt6::Test", "QCoro6::Core"}
# Not checked: flags, and what stands for the C library's own threads.
_EXEMPT = {"orvane_compiler", "Threads::Threads"}

_DIRECTIVE = re.compile(r'^\s*#\s*(?:(if|endif)|include\s+([<"])([^>"]+)[>"])', re.MULTILINE)


@functools.cache
def qt_modules():
    """The Qt module of every header that can be included as <QName>."""
    folder = subprocess.run(["pkg-config", "--variable=includedir", "Qt6Core"], check=True,
                            capture_output=True, text=True).stdout.strip()
    modules = {}
    for module in sorted(pathlib.Path(folder).glob("Qt[A-Z]*")):
        for header in module.iterdir():
            modules.setdefault(header.name, "Qt6::" + module.name.removeprefix("Qt"))
    return modules


@dataclasses.dataclass(frozen=True)
class Include:
    name: str
    is_ours: bool       # By its quotes.
    is_optional: bool   # Stands under a condition, which may hold in another build only.


@functools.cache
def includes_of(file):
    found, depth = [], 0
    for condition, quote, name in _DIRECTIVE.findall(file.read_text(encoding="utf-8")):
        if condition:
            depth += 1 if condition == "if" else -1
        elif not name.endswith(".moc"):
            found.append(Include(name, quote == '"', depth > 0))
    return found


def library_of(name):
    for library, start in LIBRARIES.items():
        if re.match(start, name):
            return library
    return qt_modules().get(name)


def brought_by(links):
    everything = set(links)
    for link in links:
        everything |= _BROUGHT.get(link, set())
        if link in _BRINGS_CORE:
            everything.add("Qt6::Core")
    return everything


class Project:
    def __init__(self, root, targets):
        self._root = root
        self._targets = targets
        self._owners = collections.defaultdict(list)  # Of each header: names of targets.
        self._headers = collections.defaultdict(list)  # By their names.
        for target in targets.values():
            for file in target.sources:
                if file.suffix == ".h" and file.exists():
                    if not self._owners[file]:
                        self._headers[file.name].append(file)
                    self._owners[file].append(target.name)

    def problems(self):
        public = self._public_headers()
        for target in self._targets.values():
            yield from self._problems_of(target, public)

    def _is_of_the_program(self, target):
        return self._root / "src" in (target.folder, *target.folder.parents)

    def _files(self, target):
        return [file for file in target.sources if file.suffix in (".h", ".cpp") and file.exists()]

    def _find(self, includer, name):
        """The header of ours that `includer` means by `name`: beside it, or by its name alone."""
        beside = includer.parent / name
        if beside.exists():
            return beside
        found = self._headers.get(name, [])
        return found[0] if found else None

    def _uses(self, target, file):
        """What `file`, as a part of `target`, includes of others: (names, one of which has to be
        linked; the include)."""
        for include in includes_of(file):
            if not include.is_ours:
                if library := library_of(include.name):
                    yield {library}, include
                continue
            header = self._find(file, include.name)
            if header is None or not self._owners[header]:
                yield set(), include
            elif header.parent not in target.include_folders and target.name not in self._owners[header]:
                yield set(self._owners[header]), include

    def _public_headers(self):
        """The headers that a file of another target of the program includes, and what they include
        of their own target."""
        public = set()
        waiting = []
        for target in self._targets.values():
            if self._is_of_the_program(target):
                for file in self._files(target):
                    waiting += [(file, include.name) for include in includes_of(file) if include.is_ours]
        while waiting:
            file, name = waiting.pop()
            header = self._find(file, name)
            if header is None or header in public:
                continue
            if file in public or not set(self._owners[header]) & self._targets_with(file):
                public.add(header)
                waiting += [(header, other.name) for other in includes_of(header) if other.is_ours]
        return public

    @functools.cache
    def _targets_with(self, file):
        return {target.name for target in self._targets.values() if file in target.sources}

    def _reached(self, target):
        """Everything that the files of a target include, and the headers they include, and so on."""
        reached, waiting, seen = set(), list(self._files(target)), set()
        while waiting:
            file = waiting.pop()
            if file in seen:
                continue
            seen.add(file)
            for owners, _ in self._uses(target, file):
                reached |= owners
            waiting += [header for include in includes_of(file) if include.is_ours
                        and (header := self._find(file, include.name))]
        return reached

    def _problems_of(self, target, public):
        place = target.folder.relative_to(self._root) / "CMakeLists.txt"
        used = {}        # By every file: name -> an example.
        used_openly = {}  # By a header that others include.
        linked = brought_by(target.links + target.implied)
        for file in target.sources:
            if not file.exists():
                yield f"{place}: {target.name}: no file: {file.relative_to(self._root)}"
        for file in self._files(target):
            for owners, include in self._uses(target, file):
                example = f"{file.relative_to(self._root)} includes {include.name}"
                if not owners:
                    yield f"{place}: {target.name}: no target: {example}"
                    continue
                if include.is_optional and not owners & linked:
                    continue
                for owner in owners & linked or sorted(owners)[:1]:
                    used.setdefault(owner, example)
                    if file in public:
                        used_openly.setdefault(owner, example)
        for name, example in used.items():
            if name not in linked:
                yield f"{place}: {target.name}: missing arrow: {name} ({example})"
        yield from self._idle_links(target, place, used, used_openly)
        if self._is_of_the_program(target):
            yield from self._against_the_road(target, place)

    def _idle_links(self, target, place, used, used_openly):
        needed = set(used)
        if not self._is_of_the_program(target):
            needed |= self._reached(target)  # Tests may need what a folder keeps to itself.
        for name in target.links:
            if name in _EXEMPT or not self._is_checked(name):
                continue
            if name not in needed:
                yield f"{place}: {target.name}: named in vain: {name}"
            elif not target.is_library or not self._is_of_the_program(target):
                continue
            elif name in target.public and name not in used_openly:
                yield f"{place}: {target.name}: leaks: {name} (only files of its own use it)"
        for name, example in used_openly.items():
            if target.is_library and name not in brought_by(target.public):
                if name in brought_by(target.private):
                    yield f"{place}: {target.name}: hidden: {name} ({example})"

    def _is_checked(self, name):
        return name in self._targets or name in LIBRARIES or name.startswith("Qt6::")

    def _against_the_road(self, target, place):
        folder = str(target.folder.relative_to(self._root / "src"))
        room = folder.split("/")[0]
        if room not in ROAD:
            yield f"{place}: {target.name}: against the road: the folder {room} stands in no table"
            return
        for name in target.links:
            if name in self._targets:
                other = self._targets[name].folder.relative_to(self._root / "src").parts[0]
                if other != room and other not in ROAD[room]:
                    yield f"{place}: {target.name}: against the road: {name}"
            elif name == "Qt6::Widgets" and not folder.startswith(WIDGETS):
                yield f"{place}: {target.name}: against the road: {name}"


def problems_in(root):
    files = [file for folder in ("src", "tests", "bench")
             for file in sorted((root / folder).rglob("CMakeLists.txt"))]
    return sorted(set(Project(root, read_targets(root, files)).problems()))


def main():
    root = pathlib.Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else _ROOT
    problems = problems_in(root)
    for problem in problems:
        print(problem)
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
