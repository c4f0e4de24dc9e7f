"""What there is to tell about translating.

Parameters: `translator` is a translator's name as it is shown, `address` where it was looked for,
`model` and `instead` are models' names, `source` and `target` are short codes of languages,
`packages` names Debian packages with spaces between them, `reason` is what the translator said
itself, in whatever language that was.
"""

TEXTS = {
    "translation.failed": "{translator}: {reason}",
    "translation.by_client": "beim Client",
    "translation.silent": "{translator} antwortet nicht ({address})",
    "translation.loading": "{translator} wird noch geladen",
    "translation.key_refused": "{translator} ({address}) nimmt den Schlüssel nicht an",
    "translation.no_chat_model": "{translator} ({address}) hat kein Modell, das übersetzen kann",
    "translation.model_missing": "Modell „{model}“ fehlt bei {address}, statt seiner {instead}",
    "translation.language_missing": "{translator} übersetzt {source}–{target} nicht",
    # Of one text.
    "translation.empty": "{translator}: leere Antwort",
    "translation.unreadable": "{translator}: unlesbare Antwort",
    "translation.only_thoughts": "{translator}: nur Gedanken statt einer Übersetzung",
    "translation.cut": "{translator}: Antwort abgeschnitten",
    "translation.declined": "{translator} weigert sich, einen Satz zu übersetzen",
    "translation.too_long": "{translator}: Antwort viel länger als der Satz",
    # Of a choice.
    "translation.same": "Quelle und Ziel sind dieselbe Sprache",
    "translation.no_target": "keine Zielsprache gewählt",
    "translation.awaits_language": "die Übersetzung richtet sich nach der erkannten Sprache",
    "translation.none": "keine Übersetzung {source}–{target}; ein Chat-Server an {address} kann sie",
    "translation.package": "Apertium übersetzt {source}–{target} mit: apt install {packages}",
}
