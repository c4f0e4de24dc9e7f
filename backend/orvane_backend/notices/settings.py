"""What there is to tell about the settings file that a person writes.

Parameters: `file` is the file's name, `line` the number of a line, `reason` what the system or the
parser said itself, `key` the name of a table or, after a point, of a key in it. No value is told:
some are secret.
"""

TEXTS = {
    "settings.unreadable": "{file} ist nicht lesbar, die letzten Werte gelten weiter: {reason}",
    "settings.damaged": "{file}, Zeile {line}: {reason}; die letzten Werte gelten weiter",
    "settings.unknown": "{file}: „{key}“ ist unbekannt",
    "settings.wrong_type": "{file}: „{key}“ hat die falsche Art von Wert",
}
