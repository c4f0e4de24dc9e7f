"""Reads the targets of this project from its CMakeLists.txt files, without running CMake.

It knows the commands of cmake/OrvaneTargets.cmake and CMake's own for targets, expands functions that
a CMakeLists.txt defines itself, and passes over the rest. Targets in loops are not seen.
"""

import dataclasses
import pathlib
import re

_TOKEN = re.compile(r'#[^\n]*|"((?:[^"\\]|\\.)*)"|([()])|([^\s()#"]+)')


@dataclasses.dataclass
class Target:
    name: str
    folder: pathlib.Path  # Of its CMakeLists.txt.
    is_library: bool = False
    sources: list = dataclasses.field(default_factory=list)  # Paths; generated ones are left out.
    include_folders: list = dataclasses.field(default_factory=list)
    public: list = dataclasses.field(default_factory=list)   # Names on its link line.
    private: list = dataclasses.field(default_factory=list)
    implied: list = dataclasses.field(default_factory=list)  # Linked by the function that makes it.

    @property
    def links(self):
        return self.public + self.private


def commands_in(text):
    """Every command of a CMake file: (name, arguments)."""
    found, name, arguments, depth = [], None, [], 0
    for token in _TOKEN.finditer(text):
        quoted, parenthesis, word = token.groups()
        if parenthesis == "(":
            depth += 1
        elif parenthesis == ")":
            depth -= 1
            if depth == 0:
                found.append((name, arguments))
                arguments = []
        elif depth == 0 and word:
            name = word.lower()
        elif quoted is not None or word:
            arguments.append(quoted if word is None else word)
    return found


def read_targets(root, files):
    """The targets of these CMakeLists.txt files, by their names."""
    reader = _Reader(root)
    for file in files:
        reader.read(file)
    return reader.targets


class _Reader:
    def __init__(self, root):
        self.targets = {}
        self._root = root
        self._folder = root
        self._variables = {}
        self._functions = {}

    def read(self, file):
        self._folder = file.parent
        self._variables = {"PROJECT_SOURCE_DIR": str(self._root),
                           "CMAKE_CURRENT_SOURCE_DIR": str(self._folder)}
        self._functions = {}
        self._run(commands_in(file.read_text(encoding="utf-8")))

    def _run(self, commands):
        commands = iter(commands)
        for name, arguments in commands:
            if name == "function":
                body = []
                for inner in commands:
                    if inner[0] == "endfunction":
                        break
                    body.append(inner)
                self._functions[arguments[0]] = (arguments[1:], body)
            elif name == "foreach":
                for inner, _ in commands:
                    if inner == "endforeach":
                        break
            elif name in self._functions:
                self._call(*self._functions[name], arguments)
            elif handler := getattr(self, "_do_" + name, None):
                handler(self._expanded(arguments))

    def _call(self, parameters, body, arguments):
        before = dict(self._variables)
        self._variables.update(zip(parameters, arguments))
        self._variables["ARGN"] = ";".join(arguments[len(parameters):])
        self._run(body)
        self._variables = before

    def _expanded(self, arguments):
        expanded = []
        for argument in arguments:
            text = re.sub(r"\$\{(\w+)\}", lambda match: self._variables.get(match[1], match[0]), argument)
            expanded += [part for part in text.split(";") if part]
        return expanded

    def _target(self, name):
        return self.targets.setdefault(name, Target(name, self._folder))

    def _add_sources(self, target, names):
        for name in names:
            if "$" not in name:
                target.sources.append((self._folder / name).resolve())

    def _do_set(self, arguments):
        if arguments:
            self._variables[arguments[0]] = ";".join(arguments[1:])

    def _do_orvane_library(self, arguments):
        parts = _parted(arguments, ("SOURCES", "LINKS", "PRIVATE_LINKS"), ("WIDGETS",))
        target = self._target("orvane_" + parts[""][0])
        target.is_library = True
        self._add_sources(target, parts["SOURCES"])
        target.include_folders.append(self._folder)
        target.public += parts["LINKS"]
        target.private += parts["PRIVATE_LINKS"]

    def _do_orvane_test(self, arguments):
        parts = _parted(arguments, ("SOURCES", "LINKS", "LABELS", "TIMEOUT"), ("GUI",))
        target = self._target(f"orvane_{parts[''][0]}_tests")
        self._add_sources(target, parts["SOURCES"])
        target.private += parts["LINKS"]
        target.implied += ["GTest::gtest", "GTest::gmock"]
        target.implied += (["orvane_test_support_gui", "Qt6::Widgets"] if "GUI" in parts
                           else ["orvane_test_support", "Qt6::Core"])

    def _do_add_executable(self, arguments):
        self._add_sources(self._target(arguments[0]),
                          [name for name in arguments[1:] if name != "EXCLUDE_FROM_ALL"])

    def _do_add_library(self, arguments):
        target = self._target(arguments[0])
        target.is_library = True
        self._add_sources(target, [name for name in arguments[1:] if name not in ("STATIC", "OBJECT", "MODULE")])

    def _do_target_sources(self, arguments):
        self._add_sources(self.targets[arguments[0]],
                          [name for name in arguments[1:] if name not in ("PUBLIC", "PRIVATE")])

    def _do_target_include_directories(self, arguments):
        parts = _parted(arguments, ("PUBLIC", "PRIVATE", "INTERFACE"))
        self.targets[arguments[0]].include_folders += [
            pathlib.Path(folder) for folder in parts["PUBLIC"] + parts["PRIVATE"]]

    def _do_target_link_libraries(self, arguments):
        parts = _parted(arguments, ("PUBLIC", "PRIVATE", "INTERFACE"))
        target = self.targets[arguments[0]]
        target.public += parts["PUBLIC"]
        target.private += parts["PRIVATE"]


def _parted(arguments, lists, options=()):
    """What stands behind each of the words in `lists`; before the first of them under ""."""
    parts = {name: [] for name in ("", *lists)}
    current = ""
    for argument in arguments:
        if argument in lists:
            current = argument
        elif argument in options:
            parts[argument] = True
        else:
            parts[current].append(argument)
    return parts
