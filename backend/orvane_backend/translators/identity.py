"""The text as its own translation."""

from . import Passage, Translator, one_line


class IdentityTranslator(Translator):
    """Serves equal languages."""

    name = "keine (Text unverändert)"
    key = ("identity",)

    def translate(self, passage: Passage) -> str:
        return one_line(passage.text)
