// What the speech server tells, by its codes: see BackendTexts.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> germanBackendTexts() {
    static constexpr TextEntry entries[] = {
        {u"backend.engine.serving", u"{recogniser} → {translator}"},
        {u"backend.engine.preparing", u"Spracherkennung wird vorbereitet..."},
        {u"backend.engine.loading", u"{engine} wird geladen..."},
        {u"backend.engine.loaded", u"{engine} ist geladen"},
        {u"backend.engine.elsewhere",
         u"„{engine}“ läuft nicht im Backend\nEine andere Engine erkennt an ihrer Stelle. Zu "
         u"wählen ist sie unter Einstellungen → Engines."},
        {u"backend.engine.none",
         u"Keine Spracherkennung\nRichten Sie Whisper unter Einstellungen → Whisper ein, oder "
         u"nennen Sie einen eigenen Erkenner in recognisers.toml."},
        {u"backend.engine.none_for_language",
         u"Keine Spracherkennung für „{language}“\nRichten Sie Whisper unter Einstellungen → "
         u"Whisper ein, oder nennen Sie einen eigenen Erkenner in recognisers.toml."},
        {u"backend.session.unreadable", u"Das Backend versteht eine Nachricht nicht\n{reason}"},
        {u"backend.session.config_keys", u"Das Backend versteht nicht alle Einstellungen\nStatt "
                                         u"dieser gelten die Vorgaben: {keys}"},
        {u"backend.session.behind",
         u"Die Erkennung kommt nicht nach: {seconds} s Sprache ausgelassen\nMit Whisper hilft ein "
         u"kleineres Modell (Einstellungen → Whisper)."},
        {u"backend.session.fault", u"Im Backend ist ein Fehler aufgetreten\n{reason}"},
        {u"backend.settings.unreadable",
         u"{file} ist nicht lesbar\nDie letzten Werte gelten weiter. {reason}"},
        {u"backend.settings.damaged",
         u"{file} hat einen Fehler in Zeile {line}\nDie letzten Werte gelten weiter. {reason}"},
        {u"backend.settings.unknown", u"{file}: „{key}“ ist unbekannt"},
        {u"backend.settings.wrong_type", u"{file}: „{key}“ hat die falsche Art von Wert"},
        {u"backend.translation.failed", u"{translator}: {reason}"},
        {u"backend.translation.by_client", u"Dieses Programm übersetzt"},
        {u"backend.translation.silent",
         u"{translator} antwortet nicht\nGesucht unter {address}. Läuft er?"},
        {u"backend.translation.loading", u"{translator} lädt noch"},
        {u"backend.translation.key_refused", u"{translator} nimmt den Schlüssel nicht an\nDer "
                                             u"Schlüssel für {address} steht in recognisers.toml."},
        {u"backend.translation.no_chat_model",
         u"{translator} hat kein Modell, das übersetzen kann\nLaden Sie eines in den Server unter "
         u"{address}."},
        {u"backend.translation.model_missing",
         u"Das Modell „{model}“ fehlt\nBei {address} übersetzt stattdessen {instead}."},
        {u"backend.translation.language_missing",
         u"{translator} übersetzt nicht von {source} nach {target}"},
        {u"backend.translation.empty", u"{translator} hat nichts geantwortet"},
        {u"backend.translation.unreadable", u"{translator} antwortet unverständlich"},
        {u"backend.translation.only_thoughts",
         u"{translator} hat nachgedacht, aber nicht übersetzt"},
        {u"backend.translation.cut", u"Eine Übersetzung von {translator} ist abgeschnitten"},
        {u"backend.translation.declined", u"{translator} weigert sich, einen Satz zu übersetzen"},
        {u"backend.translation.too_long",
         u"Eine Antwort von {translator} ist viel länger als der Satz"},
        {u"backend.translation.same", u"Quelle und Ziel sind dieselbe Sprache"},
        {u"backend.translation.no_target",
         u"Es ist keine Zielsprache gewählt\nUntertitel bleiben in der gesprochenen Sprache."},
        {u"backend.translation.awaits_language",
         u"Die Übersetzung richtet sich nach der erkannten Sprache"},
        {u"backend.translation.none",
         u"Keine Übersetzung von {source} nach {target}\nUntertitel bleiben unübersetzt. Ein "
         u"Chat-Server wie ollama unter {address} würde übersetzen."},
        {u"backend.translation.package", u"Apertium kann von {source} nach {target} übersetzen\nIm "
                                         u"Terminal installieren: sudo apt install {packages}"},
        {u"backend.recognition.not_installed", u"{engine} ist nicht installiert"},
        {u"backend.recognition.not_installed.whisper",
         u"{engine} ist nicht installiert\nInstallieren lässt es sich unter Einstellungen → "
         u"Whisper."},
        {u"backend.recognition.not_loaded", u"{engine} lässt sich nicht laden\n{reason}"},
        {u"backend.recognition.failed", u"{engine}: {reason}"},
        {u"backend.recognition.language_unknown", u"{engine} versteht „{language}“ nicht"},
        {u"backend.recognition.only_english", u"Die Erkennung versteht nur Englisch"},
        {u"backend.recognition.model_unknown", u"{engine} kennt kein Modell „{model}“\nWählen Sie "
                                               u"ein anderes unter Einstellungen → Whisper."},
        {u"backend.recognition.model_missing",
         u"{engine}: Das Modell „{model}“ ist nicht auf diesem Computer\nHerunterladen lässt es "
         u"sich unter Einstellungen → Whisper."},
        {u"backend.recognition.model_damaged",
         u"{engine}: Das Modell „{model}“ ist unvollständig oder beschädigt\nLaden Sie es unter "
         u"Einstellungen → Whisper neu herunter."},
        {u"backend.recognition.model_replaced",
         u"{engine} erkennt mit dem kleineren Modell „{used}“ statt mit „{model}“"},
        {u"backend.recognition.unreachable",
         u"{engine} ist nicht zu erreichen\nStarten Sie den Server, oder wählen Sie eine andere "
         u"Engine unter Einstellungen → Engines. {reason}"},
        {u"backend.recognition.no_answer",
         u"{engine} antwortet nicht\nStarten Sie den Server neu, oder wählen Sie eine andere "
         u"Engine unter Einstellungen → Engines."},
        {u"backend.recognition.broken_off", u"{engine} hat die Verbindung abgebrochen\n{reason}"},
        {u"backend.recognition.unreadable", u"{engine} antwortet unverständlich\nUnter dieser "
                                            u"Adresse scheint ein anderer Server zu laufen."},
        {u"backend.recognition.rate_unsettable",
         u"{engine} nimmt keine Einstellungen an\nStellen Sie den Server selbst auf {rate} Hz."},
        {u"backend.recognition.account_unset",
         u"{engine} braucht die Schlüsseldatei eines Dienstkontos\nWählen Sie sie unter "
         u"Einstellungen → Engines."},
        {u"backend.recognition.account_missing",
         u"{engine}: Die Dienstkonto-Datei fehlt\n{path} gibt es nicht. Wählen Sie eine unter "
         u"Einstellungen → Engines."},
        {u"backend.recognition.account_unreadable",
         u"{engine}: Die Dienstkonto-Datei ist nicht zu gebrauchen\n{path}: {reason}"},
        {u"backend.recognition.account_refused",
         u"{engine} nimmt das Dienstkonto nicht an\nPrüfen Sie die Datei unter Einstellungen → "
         u"Engines. {reason}"},
        {u"backend.recognition.not_permitted",
         u"{engine}: Dem Dienstkonto fehlt die Berechtigung\nErteilen Sie sie im "
         u"Google-Cloud-Projekt. {reason}"},
        {u"backend.recognition.service_disabled",
         u"{engine} ist im Projekt nicht eingeschaltet\nSchalten Sie die Speech-to-Text API im "
         u"Google-Cloud-Projekt ein. {reason}"},
        {u"backend.recognition.no_model_there",
         u"{engine} hat dafür in „{location}“ kein Modell\nWählen Sie einen anderen Standort unter "
         u"Einstellungen → Engines. {reason}"},
        {u"backend.recognition.no_detection_there",
         u"{engine} erkennt in „{location}“ nicht, welche Sprache gesprochen wird\nWählen Sie die "
         u"Sprache, oder „eu“ oder „us“ als Standort unter Einstellungen → Engines."},
        {u"backend.recognition.refused", u"{engine} lehnt die Anfrage ab\n{reason}"},
        {u"backend.recognition.too_many", u"{engine} wird zu viel auf einmal gefragt\nDas "
                                          u"Kontingent des Dienstes ist ausgeschöpft. {reason}"},
        {u"backend.recognition.unavailable", u"{engine} ist gerade nicht verfügbar\n{reason}"},
        {u"backend.recognition.near_serves",
         u"{engine} erkennt\nSeine Adresse {address} steht in recognisers.toml."},
        {u"backend.recognition.near_found",
         u"{engine} läuft auf diesem Computer\nEr erkennt, sobald recognisers.toml ihn nennt."},
        {u"backend.recognition.near_silent",
         u"{engine} ist nicht zu erreichen\nGesucht unter {address}. Läuft der Server? {reason}"},
        {u"backend.recognition.near_late", u"{engine} antwortet nicht in {seconds} s"},
        {u"backend.recognition.near_loading", u"{engine} lädt noch sein Modell"},
        {u"backend.recognition.near_busy", u"{engine} ist ausgelastet"},
        {u"backend.recognition.near_key",
         u"{engine} nimmt den Schlüssel nicht an\nEr steht in recognisers.toml."},
        {u"backend.recognition.near_key_missing",
         u"{engine} verlangt einen Schlüssel\nTragen Sie ihn in recognisers.toml ein."},
        {u"backend.recognition.near_model", u"{engine} hat kein Modell „{model}“\nNennen Sie in "
                                            u"recognisers.toml eines, das es dort gibt. {reason}"},
        {u"backend.recognition.near_model_unset",
         u"{engine} verlangt ein Modell\nNennen Sie eines in recognisers.toml. {reason}"},
        {u"backend.recognition.near_path", u"{engine} erkennt unter {address} keine "
                                           u"Sprache\nPrüfen Sie die Adresse in recognisers.toml."},
        {u"backend.recognition.near_sound", u"{engine} nimmt den Ton nicht an\n{reason}"},
        {u"backend.recognition.near_redirect",
         u"{engine} verweist auf eine andere Adresse\nDorthin geht kein Ton. Nennen Sie die "
         u"richtige Adresse in recognisers.toml."},
        {u"backend.recognition.near_failed", u"{engine} meldet den Fehler {status}\n{reason}"},
        {u"backend.recognition.near_refused", u"{engine} lehnt ab\n{reason}"},
        {u"backend.recognition.near_unreadable", u"{engine} antwortet unverständlich"},
        {u"backend.recognition.near_too_long", u"{engine} antwortet mit zu vielen Daten"},
        {u"backend.recognition.near_broken_off",
         u"{engine} hat die Verbindung abgebrochen\n{reason}"},
        {u"backend.recognition.near_entry_key",
         u"recognisers.toml, {entry}: „{key}“ ist nicht zu gebrauchen"},
        {u"backend.recognition.near_entry_twice", u"recognisers.toml nennt „{entry}“ zweimal"},
        {u"backend.recognition.near_address",
         u"recognisers.toml, {entry}: Die Adresse ist nicht zu gebrauchen\n{reason}"},
        {u"backend.recognition.near_kind", u"„{kind}“ ist keine Art von Erkenner"},
        {u"backend.recognition.near_address_given",
         u"Die Adresse {address} ist nicht zu gebrauchen\n{reason}"},
        {u"backend.recognition.near_usage",
         u"Aufruf: recognisers.py list | accept KIND ADDRESS [MODEL] | forget NAME"},
        {u"backend.recognition.near_file", u"{path}: {reason}"},
        {u"backend.recognition.near_file_damaged",
         u"{path} ist beschädigt und bleibt, wie es ist\n{reason}"},
        {u"backend.recognition.near_not_named", u"recognisers.toml nennt „{entry}“ nicht"},
        {u"backend.recognition.near_not_added", u"„{entry}“ wurde von Hand eingetragen\nNehmen Sie "
                                                u"es selbst aus recognisers.toml heraus."},
    };
    return entries;
}

} // namespace orv
