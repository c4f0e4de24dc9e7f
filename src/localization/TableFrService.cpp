// What cloud services refuse or fail with, by its codes: see ServiceFault.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> frenchServiceTexts() {
    static constexpr TextEntry entries[] = {
        {u"service.key_missing",
         u"{engine}\u00A0: la clé manque\nSaisissez-la dans Réglages → Moteurs."},
        {u"service.key_refused",
         u"{engine} refuse la clé\nVérifiez-la dans Réglages → Moteurs\u00A0: elle est peut-être "
         u"fausse, expirée ou destinée à un autre service ou à une autre région. {said}"},
        {u"service.region_missing",
         u"{engine}\u00A0: la région manque\nChoisissez-la dans Réglages → Moteurs."},
        {u"service.no_credit",
         u"{engine}\u00A0: le compte n'a plus de crédit\nRechargez-le auprès du service ou "
         u"choisissez un autre moteur dans Réglages → Moteurs. {said}"},
        {u"service.not_allowed",
         u"{engine} ne le permet pas à ce compte\nActivez le service pour votre projet ou votre "
         u"offre, ou choisissez un autre moteur dans Réglages → Moteurs. {said}"},
        {u"service.quota",
         u"{engine}\u00A0: le quota est épuisé\nAttendez, augmentez-le auprès du service ou "
         u"choisissez un autre moteur dans Réglages → Moteurs. {said}"},
        {u"service.too_many", u"{engine}\u00A0: trop de requêtes à la fois\nCela reprendra tout "
                              u"seul dès que le service en acceptera de nouveau. {said}"},
        {u"service.language", u"{engine} ne reconnaît pas cette langue\nChoisissez une autre "
                              u"langue, ou un autre moteur dans Réglages → Moteurs. {said}"},
        {u"service.refused", u"{engine} refuse la requête\nChoisissez un autre moteur dans "
                             u"Réglages → Moteurs si cela dure. {said}"},
        {u"service.network", u"{engine} est injoignable\nVérifiez le réseau. {said}"},
        {u"service.timed_out", u"{engine} ne répond pas\nVérifiez le réseau\u00A0; ce qui est dit "
                               u"entre-temps peut être perdu."},
        {u"service.failed", u"{engine} a une panne de son côté\nCela reprendra dès que le service "
                            u"fonctionnera de nouveau. {said}"},
        {u"service.unreadable",
         u"Autre chose répond à la place de {engine}\nLe réseau demande peut-être de s'identifier "
         u"d'abord\u00A0: ouvrez une page quelconque dans un navigateur."},
        {u"service.not_translated", u"{engine} reconnaît, mais ne traduit pas\nLa clé ne comprend "
                                    u"pas la traduction. Utilisez-en une pour plusieurs services, "
                                    u"ou saisissez une clé Google dans Réglages → Moteurs."},
        {u"service.too_slow",
         u"{engine} ne suit pas\nCe qui a attendu trop longtemps a été omis, pour rester avec ce "
         u"qui se dit\u00A0: {said}. Vérifiez le réseau."},
    };
    return entries;
}

} // namespace orv
