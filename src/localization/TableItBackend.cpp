// What the speech server tells, by its codes: see BackendTexts.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> italianBackendTexts() {
    static constexpr TextEntry entries[] = {
        {u"backend.engine.serving", u"{recogniser} → {translator}"},
        {u"backend.engine.preparing", u"Preparazione del riconoscimento vocale..."},
        {u"backend.engine.loading", u"Caricamento di {engine}..."},
        {u"backend.engine.loaded", u"{engine} è caricato"},
        {u"backend.engine.elsewhere",
         u"«{engine}» non funziona nel backend\nUn altro motore riconosce al suo posto. Sceglierne "
         u"uno in Impostazioni → Motori."},
        {u"backend.engine.none",
         u"Nessun riconoscimento vocale\nConfigurare Whisper in Impostazioni → Whisper oppure "
         u"indicare un proprio riconoscitore in recognisers.toml."},
        {u"backend.engine.none_for_language",
         u"Nessun riconoscimento vocale per «{language}»\nConfigurare Whisper in Impostazioni → "
         u"Whisper oppure indicare un proprio riconoscitore in recognisers.toml."},
        {u"backend.session.unreadable", u"Il backend non capisce un messaggio\n{reason}"},
        {u"backend.session.config_keys", u"Il backend non capisce tutte le impostazioni\nAl posto "
                                         u"di queste valgono i valori predefiniti: {keys}"},
        {u"backend.session.behind",
         u"Il riconoscimento non tiene il passo: {seconds} s di voce tralasciati\nCon Whisper "
         u"aiuta un modello più piccolo (Impostazioni → Whisper)."},
        {u"backend.session.fault", u"Si è verificato un errore nel backend\n{reason}"},
        {u"backend.settings.unreadable",
         u"Impossibile leggere {file}\nRestano validi gli ultimi valori. {reason}"},
        {u"backend.settings.damaged",
         u"{file} contiene un errore alla riga {line}\nRestano validi gli ultimi valori. {reason}"},
        {u"backend.settings.unknown", u"{file}: «{key}» è sconosciuto"},
        {u"backend.settings.wrong_type", u"{file}: «{key}» ha un tipo di valore errato"},
        {u"backend.translation.failed", u"{translator}: {reason}"},
        {u"backend.translation.by_client", u"Traduce questo programma"},
        {u"backend.translation.silent",
         u"{translator} non risponde\nCercato all'indirizzo {address}. È avviato?"},
        {u"backend.translation.loading", u"{translator} si sta ancora caricando"},
        {u"backend.translation.key_refused", u"{translator} non accetta la chiave\nLa chiave per "
                                             u"{address} si trova in recognisers.toml."},
        {u"backend.translation.no_chat_model", u"{translator} non ha alcun modello in grado di "
                                               u"tradurre\nCaricarne uno nel server {address}."},
        {u"backend.translation.model_missing",
         u"Manca il modello «{model}»\nAll'indirizzo {address} traduce al suo posto {instead}."},
        {u"backend.translation.language_missing",
         u"{translator} non traduce da {source} a {target}"},
        {u"backend.translation.empty", u"{translator} ha dato una risposta vuota"},
        {u"backend.translation.unreadable", u"{translator} ha dato una risposta illeggibile"},
        {u"backend.translation.only_thoughts", u"{translator} ha ragionato, ma non ha tradotto"},
        {u"backend.translation.cut", u"Una traduzione di {translator} è troncata"},
        {u"backend.translation.declined", u"{translator} si rifiuta di tradurre una frase"},
        {u"backend.translation.too_long",
         u"Una risposta di {translator} è molto più lunga della frase"},
        {u"backend.translation.same", u"Sorgente e destinazione sono la stessa lingua"},
        {u"backend.translation.no_target",
         u"Nessuna lingua di destinazione scelta\nI sottotitoli restano nella lingua parlata."},
        {u"backend.translation.awaits_language", u"La traduzione dipende dalla lingua rilevata"},
        {u"backend.translation.none",
         u"Nessuna traduzione da {source} a {target}\nI sottotitoli restano non tradotti. Un "
         u"server di chat come ollama all'indirizzo {address} li tradurrebbe."},
        {u"backend.translation.package",
         u"Apertium può tradurre da {source} a {target}\nInstallarlo in un terminale: sudo apt "
         u"install {packages}"},
        {u"backend.recognition.not_installed", u"{engine} non è installato"},
        {u"backend.recognition.not_installed.whisper",
         u"{engine} non è installato\nInstallarlo in Impostazioni → Whisper."},
        {u"backend.recognition.not_loaded", u"Impossibile caricare {engine}\n{reason}"},
        {u"backend.recognition.failed", u"{engine}: {reason}"},
        {u"backend.recognition.language_unknown", u"{engine} non capisce «{language}»"},
        {u"backend.recognition.only_english", u"Il riconoscimento capisce solo l'inglese"},
        {u"backend.recognition.model_unknown",
         u"{engine} non conosce il modello «{model}»\nSceglierne un altro in Impostazioni → "
         u"Whisper."},
        {u"backend.recognition.model_missing", u"{engine}: il modello «{model}» non è su questo "
                                               u"computer\nScaricarlo in Impostazioni → Whisper."},
        {u"backend.recognition.model_damaged",
         u"{engine}: il modello «{model}» è incompleto o danneggiato\nScaricarlo di nuovo in "
         u"Impostazioni → Whisper."},
        {u"backend.recognition.model_replaced",
         u"{engine} riconosce con il modello più piccolo «{used}» invece di «{model}»"},
        {u"backend.recognition.unreachable",
         u"{engine} non è raggiungibile\nAvviare il server o scegliere un altro motore in "
         u"Impostazioni → Motori. {reason}"},
        {u"backend.recognition.no_answer", u"{engine} non risponde\nRiavviare il server o "
                                           u"scegliere un altro motore in Impostazioni → Motori."},
        {u"backend.recognition.broken_off", u"{engine} ha interrotto la connessione\n{reason}"},
        {u"backend.recognition.unreadable",
         u"{engine} dà risposte illeggibili\nA questo indirizzo sembra esserci un altro server."},
        {u"backend.recognition.rate_unsettable",
         u"{engine} non accetta impostazioni\nImpostare il server stesso su {rate} Hz."},
        {u"backend.recognition.account_unset", u"{engine} richiede il file di un account di "
                                               u"servizio\nSceglierlo in Impostazioni → Motori."},
        {u"backend.recognition.account_missing",
         u"{engine}: manca il file dell'account di servizio\n{path} non esiste. Scegliere un file "
         u"in Impostazioni → Motori."},
        {u"backend.recognition.account_unreadable",
         u"{engine}: il file dell'account di servizio non è utilizzabile\n{path}: {reason}"},
        {u"backend.recognition.account_refused",
         u"{engine} non accetta l'account di servizio\nControllare il file in Impostazioni → "
         u"Motori. {reason}"},
        {u"backend.recognition.not_permitted",
         u"{engine}: all'account di servizio manca l'autorizzazione\nConcederla nel progetto "
         u"Google Cloud. {reason}"},
        {u"backend.recognition.service_disabled",
         u"{engine} non è attivo nel progetto\nAttivare l'API Speech-to-Text nel progetto Google "
         u"Cloud. {reason}"},
        {u"backend.recognition.no_model_there",
         u"{engine} non ha un modello adatto in «{location}»\nScegliere un'altra località in "
         u"Impostazioni → Motori. {reason}"},
        {u"backend.recognition.no_detection_there",
         u"{engine} non può rilevare la lingua parlata in «{location}»\nScegliere la lingua, "
         u"oppure «eu» o «us» come località in Impostazioni → Motori."},
        {u"backend.recognition.refused", u"{engine} rifiuta la richiesta\n{reason}"},
        {u"backend.recognition.too_many",
         u"{engine} riceve troppe richieste insieme\nLa quota del servizio è esaurita. {reason}"},
        {u"backend.recognition.unavailable",
         u"{engine} non è disponibile in questo momento\n{reason}"},
        {u"backend.recognition.near_serves",
         u"{engine} riconosce\nIl suo indirizzo {address} è in recognisers.toml."},
        {u"backend.recognition.near_found",
         u"{engine} è attivo su questo computer\nRiconoscerà appena recognisers.toml lo nomina."},
        {u"backend.recognition.near_silent", u"{engine} non è raggiungibile\nCercato all'indirizzo "
                                             u"{address}. Il server è avviato? {reason}"},
        {u"backend.recognition.near_late", u"{engine} non risponde entro {seconds} s"},
        {u"backend.recognition.near_loading", u"{engine} sta ancora caricando il modello"},
        {u"backend.recognition.near_busy", u"{engine} è occupato"},
        {u"backend.recognition.near_key",
         u"{engine} non accetta la chiave\nSi trova in recognisers.toml."},
        {u"backend.recognition.near_key_missing",
         u"{engine} richiede una chiave\nInserirla in recognisers.toml."},
        {u"backend.recognition.near_model", u"{engine} non ha il modello «{model}»\nIndicare in "
                                            u"recognisers.toml un modello presente. {reason}"},
        {u"backend.recognition.near_model_unset",
         u"{engine} richiede un modello\nIndicarne uno in recognisers.toml. {reason}"},
        {u"backend.recognition.near_path",
         u"{engine} non riconosce la voce all'indirizzo {address}\nControllare l'indirizzo in "
         u"recognisers.toml."},
        {u"backend.recognition.near_sound", u"{engine} non accetta il suono\n{reason}"},
        {u"backend.recognition.near_redirect",
         u"{engine} rimanda a un altro indirizzo\nNessun suono viene inviato lì. Indicare "
         u"l'indirizzo giusto in recognisers.toml."},
        {u"backend.recognition.near_failed", u"{engine} segnala l'errore {status}\n{reason}"},
        {u"backend.recognition.near_refused", u"{engine} rifiuta\n{reason}"},
        {u"backend.recognition.near_unreadable", u"{engine} dà risposte illeggibili"},
        {u"backend.recognition.near_too_long", u"{engine} risponde con troppi dati"},
        {u"backend.recognition.near_broken_off",
         u"{engine} ha interrotto la connessione\n{reason}"},
        {u"backend.recognition.near_entry_key",
         u"recognisers.toml, {entry}: «{key}» non è utilizzabile"},
        {u"backend.recognition.near_entry_twice", u"recognisers.toml nomina «{entry}» due volte"},
        {u"backend.recognition.near_address",
         u"recognisers.toml, {entry}: l'indirizzo non è utilizzabile\n{reason}"},
        {u"backend.recognition.near_kind", u"«{kind}» non è un tipo di riconoscitore"},
        {u"backend.recognition.near_address_given",
         u"L'indirizzo {address} non è utilizzabile\n{reason}"},
        {u"backend.recognition.near_usage",
         u"Uso: recognisers.py list | accept KIND ADDRESS [MODEL] | forget NAME"},
        {u"backend.recognition.near_file", u"{path}: {reason}"},
        {u"backend.recognition.near_file_damaged", u"{path} è danneggiato e resta com'è\n{reason}"},
        {u"backend.recognition.near_not_named", u"recognisers.toml non nomina «{entry}»"},
        {u"backend.recognition.near_not_added",
         u"«{entry}» è stato inserito a mano\nRimuoverlo da recognisers.toml."},
    };
    return entries;
}

} // namespace orv
