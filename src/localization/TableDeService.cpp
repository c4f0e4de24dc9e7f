// What cloud services refuse or fail with, by its codes: see ServiceFault.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> germanServiceTexts() {
    static constexpr TextEntry entries[] = {
        {u"service.key_missing",
         u"{engine}: Der Schlüssel fehlt\nTragen Sie ihn unter Einstellungen → Engines ein."},
        {u"service.key_refused", u"{engine} nimmt den Schlüssel nicht an\nPrüfen Sie ihn unter "
                                 u"Einstellungen → Engines: Er kann falsch, abgelaufen oder für "
                                 u"einen anderen Dienst oder eine andere Region sein. {said}"},
        {u"service.region_missing",
         u"{engine}: Die Region fehlt\nWählen Sie sie unter Einstellungen → Engines."},
        {u"service.no_credit",
         u"{engine}: Das Guthaben ist aufgebraucht\nLaden Sie es beim Dienst auf, oder wählen Sie "
         u"unter Einstellungen → Engines eine andere Engine. {said}"},
        {u"service.not_allowed", u"{engine} erlaubt das diesem Konto nicht\nSchalten Sie den "
                                 u"Dienst für Ihr Projekt oder Ihren Tarif frei, oder wählen Sie "
                                 u"unter Einstellungen → Engines eine andere Engine. {said}"},
        {u"service.quota",
         u"{engine}: Das Kontingent ist aufgebraucht\nWarten Sie, erhöhen Sie es beim Dienst, oder "
         u"wählen Sie unter Einstellungen → Engines eine andere Engine. {said}"},
        {u"service.too_many", u"{engine}: zu viele Anfragen auf einmal\nEs geht von selbst weiter, "
                              u"sobald der Dienst wieder welche annimmt. {said}"},
        {u"service.language",
         u"{engine} erkennt diese Sprache nicht\nWählen Sie eine andere Sprache oder unter "
         u"Einstellungen → Engines eine andere Engine. {said}"},
        {u"service.refused", u"{engine} lehnt die Anfrage ab\nWählen Sie unter Einstellungen → "
                             u"Engines eine andere Engine, wenn das so bleibt. {said}"},
        {u"service.network", u"{engine} ist nicht erreichbar\nPrüfen Sie das Netz. {said}"},
        {u"service.timed_out", u"{engine} antwortet nicht\nPrüfen Sie das Netz; was inzwischen "
                               u"gesagt wird, kann verloren gehen."},
        {u"service.failed", u"{engine} hat selbst eine Störung\nEs geht weiter, sobald der Dienst "
                            u"wieder arbeitet. {said}"},
        {u"service.unreadable",
         u"Statt {engine} antwortet etwas anderes\nVielleicht verlangt das Netz erst eine "
         u"Anmeldung: Öffnen Sie eine beliebige Seite im Browser."},
        {u"service.not_translated",
         u"{engine} erkennt, übersetzt aber nicht\nDer Schlüssel gilt nicht für Übersetzungen. "
         u"Nehmen Sie einen für mehrere Dienste, oder tragen Sie unter Einstellungen → Engines "
         u"einen von Google ein."},
        {u"service.too_slow",
         u"{engine} kommt nicht nach\nWas zu lange gewartet hat, wurde ausgelassen, um bei dem zu "
         u"bleiben, was gerade gesagt wird: {said}. Prüfen Sie das Netz."},
    };
    return entries;
}

} // namespace orv
