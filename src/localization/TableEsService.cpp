// What cloud services refuse or fail with, by its codes: see ServiceFault.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> spanishServiceTexts() {
    static constexpr TextEntry entries[] = {
        {u"service.key_missing", u"{engine}: falta la clave\nIntrodúzcala en Ajustes → Motores."},
        {u"service.key_refused",
         u"{engine} no acepta la clave\nCompruébela en Ajustes → Motores: puede ser errónea, haber "
         u"caducado o ser de otro servicio o región. {said}"},
        {u"service.region_missing", u"{engine}: falta la región\nElíjala en Ajustes → Motores."},
        {u"service.no_credit", u"{engine}: la cuenta no tiene saldo\nRecárguela en el servicio o "
                               u"elija otro motor en Ajustes → Motores. {said}"},
        {u"service.not_allowed",
         u"{engine} no lo permite a esta cuenta\nActive el servicio para su proyecto o plan, o "
         u"elija otro motor en Ajustes → Motores. {said}"},
        {u"service.quota", u"{engine}: la cuota está agotada\nEspere, amplíela en el servicio o "
                           u"elija otro motor en Ajustes → Motores. {said}"},
        {u"service.too_many", u"{engine}: demasiadas peticiones a la vez\nSeguirá solo en cuanto "
                              u"el servicio acepte más. {said}"},
        {u"service.language", u"{engine} no reconoce este idioma\nElija otro idioma u otro motor "
                              u"en Ajustes → Motores. {said}"},
        {u"service.refused", u"{engine} rechaza la petición\nElija otro motor en Ajustes → Motores "
                             u"si sigue así. {said}"},
        {u"service.network", u"No se puede acceder a {engine}\nCompruebe la red. {said}"},
        {u"service.timed_out",
         u"{engine} no responde\nCompruebe la red; lo que se diga mientras tanto puede perderse."},
        {u"service.failed", u"{engine} tiene una avería propia\nSeguirá cuando el servicio vuelva "
                            u"a funcionar. {said}"},
        {u"service.unreadable", u"En lugar de {engine} responde otra cosa\nQuizá la red pide antes "
                                u"que se identifique: abra cualquier página en un navegador."},
        {u"service.not_translated",
         u"{engine} reconoce, pero no traduce\nLa clave no incluye la traducción. Use una para "
         u"varios servicios o introduzca una de Google en Ajustes → Motores."},
        {u"service.too_slow",
         u"{engine} no da abasto\nLo que esperó demasiado se omitió para seguir con lo que se está "
         u"diciendo: {said}. Compruebe la red."},
    };
    return entries;
}

} // namespace orv
