// What the speech server tells, by its codes: see BackendTexts.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> spanishBackendTexts() {
    static constexpr TextEntry entries[] = {
        {u"backend.engine.serving", u"{recogniser} → {translator}"},
        {u"backend.engine.preparing", u"Preparando el reconocimiento de voz..."},
        {u"backend.engine.loading", u"Cargando {engine}..."},
        {u"backend.engine.loaded", u"{engine} está cargado"},
        {u"backend.engine.elsewhere", u"«{engine}» no funciona en el backend\nOtro motor reconoce "
                                      u"en su lugar. Elija uno en Ajustes → Motores."},
        {u"backend.engine.none", u"No hay reconocimiento de voz\nConfigure Whisper en Ajustes → "
                                 u"Whisper o indique un reconocedor propio en recognisers.toml."},
        {u"backend.engine.none_for_language",
         u"No hay reconocimiento de voz para «{language}»\nConfigure Whisper en Ajustes → Whisper "
         u"o indique un reconocedor propio en recognisers.toml."},
        {u"backend.session.unreadable", u"El backend no entiende un mensaje\n{reason}"},
        {u"backend.session.config_keys", u"El backend no entiende todos los ajustes\nEn lugar de "
                                         u"estos se aplican los predeterminados: {keys}"},
        {u"backend.session.behind",
         u"El reconocimiento no da abasto: {seconds} s de voz omitidos\nCon Whisper ayuda un "
         u"modelo más pequeño (Ajustes → Whisper)."},
        {u"backend.session.fault", u"Se ha producido un error en el backend\n{reason}"},
        {u"backend.settings.unreadable",
         u"No se puede leer {file}\nSiguen vigentes los últimos valores. {reason}"},
        {u"backend.settings.damaged", u"{file} tiene un error en la línea {line}\nSiguen vigentes "
                                      u"los últimos valores. {reason}"},
        {u"backend.settings.unknown", u"{file}: «{key}» es desconocido"},
        {u"backend.settings.wrong_type", u"{file}: «{key}» tiene un tipo de valor incorrecto"},
        {u"backend.translation.failed", u"{translator}: {reason}"},
        {u"backend.translation.by_client", u"Traduce este programa"},
        {u"backend.translation.silent",
         u"{translator} no responde\nSe ha buscado en {address}. ¿Está en marcha?"},
        {u"backend.translation.loading", u"{translator} todavía se está cargando"},
        {u"backend.translation.key_refused",
         u"{translator} no acepta la clave\nLa clave para {address} está en recognisers.toml."},
        {u"backend.translation.no_chat_model", u"{translator} no tiene ningún modelo que pueda "
                                               u"traducir\nCargue uno en el servidor {address}."},
        {u"backend.translation.model_missing",
         u"Falta el modelo «{model}»\nEn {address} traduce en su lugar {instead}."},
        {u"backend.translation.language_missing",
         u"{translator} no traduce de {source} a {target}"},
        {u"backend.translation.empty", u"{translator} ha dado una respuesta vacía"},
        {u"backend.translation.unreadable", u"{translator} ha dado una respuesta ilegible"},
        {u"backend.translation.only_thoughts", u"{translator} ha razonado, pero no ha traducido"},
        {u"backend.translation.cut", u"Una traducción de {translator} está cortada"},
        {u"backend.translation.declined", u"{translator} se niega a traducir una frase"},
        {u"backend.translation.too_long",
         u"Una respuesta de {translator} es mucho más larga que la frase"},
        {u"backend.translation.same", u"El origen y el destino son el mismo idioma"},
        {u"backend.translation.no_target",
         u"No se ha elegido ningún idioma de destino\nLos subtítulos quedan en el idioma hablado."},
        {u"backend.translation.awaits_language",
         u"La traducción depende del idioma que se detecte"},
        {u"backend.translation.none",
         u"No hay traducción de {source} a {target}\nLos subtítulos quedan sin traducir. Un "
         u"servidor de chat como ollama en {address} los traduciría."},
        {u"backend.translation.package",
         u"Apertium puede traducir de {source} a {target}\nInstálelo en un terminal: sudo apt "
         u"install {packages}"},
        {u"backend.recognition.not_installed", u"{engine} no está instalado"},
        {u"backend.recognition.not_installed.whisper",
         u"{engine} no está instalado\nInstálelo en Ajustes → Whisper."},
        {u"backend.recognition.not_loaded", u"No se puede cargar {engine}\n{reason}"},
        {u"backend.recognition.failed", u"{engine}: {reason}"},
        {u"backend.recognition.language_unknown", u"{engine} no entiende «{language}»"},
        {u"backend.recognition.only_english", u"El reconocimiento solo entiende inglés"},
        {u"backend.recognition.model_unknown",
         u"{engine} no conoce el modelo «{model}»\nElija otro en Ajustes → Whisper."},
        {u"backend.recognition.model_missing", u"{engine}: el modelo «{model}» no está en este "
                                               u"equipo\nDescárguelo en Ajustes → Whisper."},
        {u"backend.recognition.model_damaged",
         u"{engine}: el modelo «{model}» está incompleto o dañado\nDescárguelo de nuevo en Ajustes "
         u"→ Whisper."},
        {u"backend.recognition.model_replaced",
         u"{engine} reconoce con el modelo más pequeño «{used}» en lugar de «{model}»"},
        {u"backend.recognition.unreachable", u"No se puede acceder a {engine}\nInicie el servidor "
                                             u"o elija otro motor en Ajustes → Motores. {reason}"},
        {u"backend.recognition.no_answer",
         u"{engine} no responde\nReinicie el servidor o elija otro motor en Ajustes → Motores."},
        {u"backend.recognition.broken_off", u"{engine} ha cortado la conexión\n{reason}"},
        {u"backend.recognition.unreadable",
         u"{engine} da respuestas ilegibles\nParece que en esta dirección hay otro servidor."},
        {u"backend.recognition.rate_unsettable",
         u"{engine} no admite ajustes\nConfigure el propio servidor a {rate} Hz."},
        {u"backend.recognition.account_unset",
         u"{engine} necesita el archivo de una cuenta de servicio\nElíjalo en Ajustes → Motores."},
        {u"backend.recognition.account_missing",
         u"{engine}: falta el archivo de cuenta de servicio\n{path} no existe. Elija un archivo en "
         u"Ajustes → Motores."},
        {u"backend.recognition.account_unreadable",
         u"{engine}: el archivo de cuenta de servicio no sirve\n{path}: {reason}"},
        {u"backend.recognition.account_refused",
         u"{engine} no acepta la cuenta de servicio\nCompruebe el archivo en Ajustes → Motores. "
         u"{reason}"},
        {u"backend.recognition.not_permitted",
         u"{engine}: la cuenta de servicio no tiene permiso\nConcédalo en el proyecto de Google "
         u"Cloud. {reason}"},
        {u"backend.recognition.service_disabled",
         u"{engine} no está activado en el proyecto\nActive la API Speech-to-Text en el proyecto "
         u"de Google Cloud. {reason}"},
        {u"backend.recognition.no_model_there",
         u"{engine} no tiene un modelo para esto en «{location}»\nElija otra ubicación en Ajustes "
         u"→ Motores. {reason}"},
        {u"backend.recognition.no_detection_there",
         u"{engine} no puede detectar el idioma hablado en «{location}»\nElija el idioma, o bien "
         u"«eu» o «us» como ubicación en Ajustes → Motores."},
        {u"backend.recognition.refused", u"{engine} rechaza la petición\n{reason}"},
        {u"backend.recognition.too_many", u"{engine} recibe demasiadas peticiones a la vez\nLa "
                                          u"cuota del servicio está agotada. {reason}"},
        {u"backend.recognition.unavailable",
         u"{engine} no está disponible en este momento\n{reason}"},
        {u"backend.recognition.near_serves",
         u"{engine} reconoce\nSu dirección {address} está en recognisers.toml."},
        {u"backend.recognition.near_found", u"{engine} está en marcha en este equipo\nReconocerá "
                                            u"en cuanto recognisers.toml lo nombre."},
        {u"backend.recognition.near_silent", u"No se puede acceder a {engine}\nSe ha buscado en "
                                             u"{address}. ¿Está en marcha el servidor? {reason}"},
        {u"backend.recognition.near_late", u"{engine} no responde en {seconds} s"},
        {u"backend.recognition.near_loading", u"{engine} todavía está cargando su modelo"},
        {u"backend.recognition.near_busy", u"{engine} está ocupado"},
        {u"backend.recognition.near_key",
         u"{engine} no acepta la clave\nEstá en recognisers.toml."},
        {u"backend.recognition.near_key_missing",
         u"{engine} exige una clave\nIntrodúzcala en recognisers.toml."},
        {u"backend.recognition.near_model", u"{engine} no tiene el modelo «{model}»\nIndique en "
                                            u"recognisers.toml uno que exista allí. {reason}"},
        {u"backend.recognition.near_model_unset",
         u"{engine} exige un modelo\nIndique uno en recognisers.toml. {reason}"},
        {u"backend.recognition.near_path",
         u"{engine} no reconoce voz en {address}\nCompruebe la dirección en recognisers.toml."},
        {u"backend.recognition.near_sound", u"{engine} no acepta el sonido\n{reason}"},
        {u"backend.recognition.near_redirect",
         u"{engine} remite a otra dirección\nNo se envía sonido allí. Indique la dirección "
         u"correcta en recognisers.toml."},
        {u"backend.recognition.near_failed", u"{engine} comunica el error {status}\n{reason}"},
        {u"backend.recognition.near_refused", u"{engine} lo rechaza\n{reason}"},
        {u"backend.recognition.near_unreadable", u"{engine} da respuestas ilegibles"},
        {u"backend.recognition.near_too_long", u"{engine} responde con demasiados datos"},
        {u"backend.recognition.near_broken_off", u"{engine} ha cortado la conexión\n{reason}"},
        {u"backend.recognition.near_entry_key", u"recognisers.toml, {entry}: «{key}» no sirve"},
        {u"backend.recognition.near_entry_twice", u"recognisers.toml nombra «{entry}» dos veces"},
        {u"backend.recognition.near_address",
         u"recognisers.toml, {entry}: la dirección no sirve\n{reason}"},
        {u"backend.recognition.near_kind", u"«{kind}» no es un tipo de reconocedor"},
        {u"backend.recognition.near_address_given", u"La dirección {address} no sirve\n{reason}"},
        {u"backend.recognition.near_usage",
         u"Uso: recognisers.py list | accept KIND ADDRESS [MODEL] | forget NAME"},
        {u"backend.recognition.near_file", u"{path}: {reason}"},
        {u"backend.recognition.near_file_damaged",
         u"{path} está dañado y se deja como está\n{reason}"},
        {u"backend.recognition.near_not_named", u"recognisers.toml no nombra «{entry}»"},
        {u"backend.recognition.near_not_added",
         u"«{entry}» se introdujo a mano\nElimínelo usted mismo de recognisers.toml."},
    };
    return entries;
}

} // namespace orv
