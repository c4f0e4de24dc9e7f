"""Which translator serves a pair of languages."""

from dataclasses import dataclass

from ..languages import AUTO, english_name, short
from . import Translator
from .apertium import ApertiumTranslator, installed_direction
from .identity import IdentityTranslator
from .mistral import MistralTranslator, chat_address, find_model


@dataclass(frozen=True)
class Choice:
    """A translator, and what is to be told about why it is this one; empty when nothing is."""

    translator: Translator
    reason: str = ""


def choose(source: str, target: str, *, without_mistral: bool = False) -> Choice:
    """Looks for Mistral, then an Apertium pair; else the text stays as it is. Blocks for seconds.

    `without_mistral` leaves out the first, for when it has just failed.
    """
    if short(source) == short(target):
        return Choice(IdentityTranslator(), "Quelle und Ziel sind dieselbe Sprache")
    if short(target) == AUTO:
        return Choice(IdentityTranslator(), "keine Zielsprache gewählt")
    address = chat_address()
    model = None if without_mistral else find_model(address)
    if model is not None:
        return Choice(MistralTranslator(address, model, source, target))
    silent = f"Mistral antwortet nicht ({address})"
    direction = installed_direction(source, target)
    if direction is not None:
        return Choice(ApertiumTranslator(direction), silent)
    pair = f"{english_name(source)}–{english_name(target)}"
    return Choice(IdentityTranslator(), f"{silent}, Apertium hat {pair} nicht")
