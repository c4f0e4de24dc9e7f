// What cloud services refuse or fail with, by its codes: see ServiceFault.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> italianServiceTexts() {
    static constexpr TextEntry entries[] = {
        {u"service.key_missing", u"{engine}: manca la chiave\nInserirla in Impostazioni → Motori."},
        {u"service.key_refused",
         u"{engine} rifiuta la chiave\nControllarla in Impostazioni → Motori: può essere errata, "
         u"scaduta o di un altro servizio o di un'altra regione. {said}"},
        {u"service.region_missing",
         u"{engine}: manca la regione\nSceglierla in Impostazioni → Motori."},
        {u"service.no_credit", u"{engine}: il credito è esaurito\nRicaricarlo presso il servizio o "
                               u"scegliere un altro motore in Impostazioni → Motori. {said}"},
        {u"service.not_allowed",
         u"{engine} non lo consente a questo account\nAttivare il servizio per il proprio progetto "
         u"o piano, o scegliere un altro motore in Impostazioni → Motori. {said}"},
        {u"service.quota",
         u"{engine}: la quota è esaurita\nAttendere, aumentarla presso il servizio o scegliere un "
         u"altro motore in Impostazioni → Motori. {said}"},
        {u"service.too_many", u"{engine}: troppe richieste insieme\nRiprenderà da solo appena il "
                              u"servizio ne accetterà altre. {said}"},
        {u"service.language", u"{engine} non riconosce questa lingua\nScegliere un'altra lingua, o "
                              u"un altro motore in Impostazioni → Motori. {said}"},
        {u"service.refused", u"{engine} rifiuta la richiesta\nScegliere un altro motore in "
                             u"Impostazioni → Motori se continua così. {said}"},
        {u"service.network", u"{engine} non è raggiungibile\nControllare la rete. {said}"},
        {u"service.timed_out", u"{engine} non risponde\nControllare la rete; ciò che viene detto "
                               u"nel frattempo può andare perso."},
        {u"service.failed", u"{engine} ha un guasto proprio\nRiprenderà quando il servizio tornerà "
                            u"a funzionare. {said}"},
        {u"service.unreadable",
         u"Al posto di {engine} risponde qualcos'altro\nForse la rete chiede prima di accedere: "
         u"aprire una pagina qualsiasi nel browser."},
        {u"service.not_translated",
         u"{engine} riconosce, ma non traduce\nLa chiave non comprende la traduzione. Usarne una "
         u"per più servizi, o inserire una chiave Google in Impostazioni → Motori."},
        {u"service.too_slow",
         u"{engine} non tiene il passo\nCiò che ha atteso troppo è stato tralasciato, per restare "
         u"con quello che si sta dicendo: {said}. Controllare la rete."},
    };
    return entries;
}

} // namespace orv
