#!/usr/bin/python3
"""Compares the names of headers with what they declare.

names.py [project folder] looks at every header of src/, tests/, bench/ and fuzz/, and there at what stands
outside of classes and functions. Prints the headers that are misnamed, and ends with 1 if there are any:

    a header with classes is called after one of them
    a header without is called after a structure, enumeration, alias, namespace or function, or at least
    shares a word with one (drawProgressBar stands in StyleBars.h)
    a header of several things may be called after what most of their names have in common, in the plural
    (FakeTray and FakePanel stand in Fakes.h)
"""

import pathlib
import re
import sys

_ROOT = pathlib.Path(__file__).resolve().parents[2]

# Comments, directives, strings and characters.
_NOISE = re.compile(
    r"""//[^\n]*|/\*.*?\*/|^\s*#(?:[^\n\\]|\\.)*|"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)+'""",
    re.DOTALL | re.MULTILINE)
_TYPE = re.compile(
    r"\b(class|struct|union|enum(?:\s+class)?|concept|using|namespace)\s+([\w:]+)")
_CALLED = re.compile(r"\b(\w+)\s*(?:\(|=|\{)")
_WORD = re.compile(r"[A-Z]+(?![a-z])|[A-Z]?[a-z]+|[0-9]+")


# Namespaces that say nothing, and words before a parenthesis that are no names.
_EVERYWHERE = {"orv", "test", "orv::test", "std", "void", "noexcept", "namespace", "class", "struct"}


def outermost(text):
    """The text of a header without comments, strings, and whatever stands in braces, except those of
    namespaces."""
    text = _NOISE.sub(" ", text)
    kept, depth, start = [], 0, 0
    for brace in re.finditer(r"[{}]", text):
        if brace[0] == "{":
            if depth == 0:
                before = text[start:brace.start()]
                kept.append(before + "{")
                start = brace.end()
                if re.search(r"\b(namespace\s+[\w:]*|extern\s+)\s*$", before):
                    continue
            depth += 1
        elif depth > 0:
            depth -= 1
            start = brace.end()
            if depth == 0:
                kept.append("}")
        else:
            kept.append(text[start:brace.start()])
            start = brace.end()
    return "".join(kept) + text[start:]


def declared_in(text):
    """The names of the classes, and all names, that a header declares outside of classes and functions;
    what is only announced does not count."""
    shallow = re.sub(r"\b(?:class|struct)\s+[\w:]+\s*;", " ", outermost(text))
    shallow = re.sub(r"(\b(?:class|struct|enum)\b[^;{()]*[^:;{()]):[^:;{][^;{]*\{", r"\1{", shallow)  # Bases.
    typed = _TYPE.findall(shallow)
    classes = {name for kind, name in typed if kind == "class"}
    names = {name for _, name in typed} | set(_CALLED.findall(shallow))
    return classes, names - _EVERYWHERE


def words_of(name):
    """The words of a name, in the singular as far as that is an "s" less."""
    return [word.lower().removesuffix("s") for word in _WORD.findall(name)]


def is_same_word(one, other):
    """Also stored and store, placement and place."""
    return one == other or (min(len(one), len(other)) >= 4 and
                            (one.startswith(other) or other.startswith(one)))


def shares_word(one, other):
    return any(is_same_word(a, b) for a in one for b in other)


def contains(words, part):
    """Whether all words of `part` are among `words`, in the same order."""
    rest = iter(words)
    return all(word in rest for word in part)


def is_well_named(stem, classes, names):
    wanted = words_of(stem)
    if any("".join(words_of(name)) == "".join(wanted) for name in names):
        return True
    if any("::" in name and contains(words_of(name), wanted) for name in names):
        return True  # A class within another, which is declared elsewhere.
    if stem.endswith("s") and len(names) > 1:
        telling = sum(shares_word(words_of(name), wanted[-1:]) for name in names)
        if 2 * telling >= len(names):
            return True
    return not classes and any(shares_word(words_of(name), wanted) for name in names)


def problems_in(root):
    for file in headers_of(root):
        classes, names = declared_in((root / file).read_text(encoding="utf-8"))
        if not is_well_named(pathlib.Path(file).stem, classes, names):
            yield f"{file}: declares {', '.join(sorted(classes or names)) or 'nothing'}"


def headers_of(root):
    return sorted(str(file.relative_to(root)) for folder in ("src", "tests", "bench", "fuzz")
                  for file in (root / folder).rglob("*.h"))


def main():
    root = pathlib.Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else _ROOT
    problems = list(problems_in(root))
    for problem in problems:
        print(problem)
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
