"""What there is to tell about recognising speech.

Parameters: `engine` is an engine's name as it is shown, `language` a short code, `model` and `used`
are names of models, `location` is a place of Google's service as its addresses name it, `path` a file
on this machine, `reason` what the engine or its service said itself, in whatever language that was;
`address` is a server's, `entry` the name of a table in recognisers.toml, `key` one of its keys.
"""

TEXTS = {
    "recognition.not_installed": "{engine} ist nicht installiert",
    "recognition.not_loaded": "{engine} lässt sich nicht laden: {reason}",
    "recognition.failed": "{engine}: {reason}",
    "recognition.language_unknown": "{engine} versteht „{language}“ nicht",
    "recognition.only_english": "versteht nur Englisch",
    # Whisper's models.
    "recognition.model_unknown": "{engine} kennt kein Modell „{model}“",
    "recognition.model_missing": (
        "{engine}: Das Modell „{model}“ ist nicht auf diesem Rechner; "
        "laden lässt es sich in den Einstellungen unter Whisper"
    ),
    "recognition.model_damaged": (
        "{engine}: Das Modell „{model}“ ist unvollständig oder beschädigt; "
        "neu laden lässt es sich in den Einstellungen unter Whisper"
    ),
    "recognition.model_replaced": (
        "{engine}: Statt des Modells „{model}“ dient das kleinere „{used}“"
    ),
    # Servers.
    "recognition.unreachable": "{engine} ist nicht zu erreichen: {reason}",
    "recognition.no_answer": "{engine} antwortet nicht",
    "recognition.broken_off": "{engine} hat die Verbindung abgebrochen: {reason}",
    "recognition.unreadable": "{engine} antwortet unverständlich",
    "recognition.rate_unsettable": (
        "{engine} nimmt keine Einstellungen an und muss selbst auf {rate} Hz gestellt sein"
    ),
    # Google's service.
    "recognition.account_unset": "{engine} braucht die Schlüsseldatei eines Dienstkontos",
    "recognition.account_missing": "{engine}: Die Schlüsseldatei {path} gibt es nicht",
    "recognition.account_unreadable": (
        "{engine}: Die Schlüsseldatei {path} ist nicht zu gebrauchen: {reason}"
    ),
    "recognition.account_refused": "{engine} nimmt das Dienstkonto nicht an: {reason}",
    "recognition.not_permitted": "{engine}: Dem Dienstkonto fehlt die Berechtigung: {reason}",
    "recognition.service_disabled": "{engine} ist im Projekt nicht eingeschaltet: {reason}",
    "recognition.no_model_there": "{engine} hat dafür in „{location}“ kein Modell: {reason}",
    "recognition.no_detection_there": (
        "{engine} erkennt in „{location}“ nicht, welche Sprache gesprochen wird; "
        "„eu“ und „us“ können es"
    ),
    "recognition.refused": "{engine} lehnt die Anfrage ab: {reason}",
    "recognition.too_many": "{engine} wird zu viel auf einmal gefragt: {reason}",
    "recognition.unavailable": "{engine} ist gerade nicht verfügbar: {reason}",
    # Recognisers near by, which a person runs and has named.
    "recognition.near_serves": "{engine} erkennt, weil {address} in recognisers.toml steht",
    "recognition.near_found": "{engine} läuft hier und dient, sobald recognisers.toml es nennt",
    "recognition.near_silent": "{engine} ist unter {address} nicht zu erreichen: {reason}",
    "recognition.near_late": "{engine} antwortet nicht in {seconds} s",
    "recognition.near_loading": "{engine} lädt noch sein Modell",
    "recognition.near_busy": "{engine} ist ausgelastet",
    "recognition.near_key": "{engine} lehnt den Schlüssel ab",
    "recognition.near_key_missing": "{engine} verlangt einen Schlüssel",
    "recognition.near_model": "{engine} hat kein Modell „{model}“: {reason}",
    "recognition.near_model_unset": "{engine} verlangt, dass ein Modell genannt wird: {reason}",
    "recognition.near_path": "{engine}: Unter {address} erkennt niemand Sprache",
    "recognition.near_sound": "{engine} nimmt den Ton nicht an: {reason}",
    "recognition.near_redirect": "{engine} verweist auf eine andere Adresse, dorthin geht kein Ton",
    "recognition.near_failed": "{engine} meldet Fehler {status}: {reason}",
    "recognition.near_refused": "{engine} lehnt ab: {reason}",
    "recognition.near_unreadable": "{engine} antwortet unverständlich",
    "recognition.near_too_long": "{engine} antwortet mit zu vielen Bytes",
    "recognition.near_broken_off": "{engine} hat die Verbindung abgebrochen: {reason}",
    # What stands in recognisers.toml.
    "recognition.near_entry_key": "recognisers.toml, {entry}: „{key}“ ist nicht zu gebrauchen",
    "recognition.near_entry_twice": "recognisers.toml: „{entry}“ steht zweimal da",
    "recognition.near_address": "recognisers.toml, {entry}: Die Adresse taugt nicht: {reason}",
    # Changes to recognisers.toml.
    "recognition.near_kind": "„{kind}“ ist keine Art von Erkenner",
    "recognition.near_address_given": "Die Adresse {address} taugt nicht: {reason}",
    "recognition.near_usage": "Aufruf: recognisers.py list | accept KIND ADDRESS [MODEL] | forget NAME",
    "recognition.near_file": "{path}: {reason}",
    "recognition.near_file_damaged": "{path} ist beschädigt und bleibt, wie es ist: {reason}",
    "recognition.near_not_named": "recognisers.toml nennt „{entry}“ nicht",
    "recognition.near_not_added": "„{entry}“ hat jemand von Hand eingetragen und nimmt es selbst heraus",
}
