"""What there is to tell about a session: its messages, its engine, its pace.

Parameters: `engine` is an engine's name as it is shown, `keys` the names of a message's keys,
`seconds` a whole number, `language` a short code, `reason` a sentence in whatever language.
"""

TEXTS = {
    "engine.preparing": "Spracherkennung wird vorbereitet …",
    "engine.loading": "Lade {engine} …",
    "engine.loaded": "{engine} geladen",
    "engine.elsewhere": "„{engine}“ läuft nicht im Backend",
    "engine.none": "Keine Spracherkennung: {reason}",
    "engine.none_for_language": (
        "Keine Spracherkennung für „{language}“ ({reason}). Whisper in den Einstellungen "
        "installieren oder dort einen eigenen Erkenner angeben"
    ),
    "session.unreadable": "{reason}",
    "session.config_keys": "Config: nicht verstanden: {keys}",
    "session.behind": "Erkennung kommt nicht nach: {seconds} s Sprache ausgelassen",
    "session.fault": "Interner Fehler: {reason}",
}
