"""What the program says in each of its languages, read from the tables it is built with."""

import json
import pathlib
import re

LANGUAGES = ("de", "en", "es", "fr", "it")

_FOLDER = pathlib.Path(__file__).resolve().parents[3] / "src" / "localization"
_LITERAL = r'u"((?:[^"\\]|\\.)*)"'
_ENTRY = re.compile(r'\{u"([a-z0-9_.]+)",\s*((?:%s\s*)+)\}' % _LITERAL)


class Texts:
    """The texts in `language`, by their keys, in the variant of this platform."""

    def __init__(self, language):
        source = "".join(file.read_text(encoding="utf-8")
                         for file in sorted(_FOLDER.glob(f"Table{language.capitalize()}*.cpp")))
        self._texts = {key: json.loads('"' + "".join(re.findall(_LITERAL, literals)) + '"')
                       for key, literals, _ in _ENTRY.findall(source)}

    def __call__(self, key):
        return self._texts.get(f"{key}.linux") or self._texts[key]

    def told(self, code, **parameters):
        """What the panel says to a code of the speech server: what is the matter, and the rest."""
        summary, _, detail = self(f"backend.{code}").format_map(parameters).partition("\n")
        return summary, detail

    def __len__(self):
        return len(self._texts)
