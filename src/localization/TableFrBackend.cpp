// What the speech server tells, by its codes: see BackendTexts.h.
#include "StringTable.h"

namespace orv {

std::span<const TextEntry> frenchBackendTexts() {
    static constexpr TextEntry entries[] = {
        {u"backend.engine.serving", u"{recogniser} → {translator}"},
        {u"backend.engine.preparing", u"Préparation de la reconnaissance vocale..."},
        {u"backend.engine.loading", u"Chargement de {engine}..."},
        {u"backend.engine.loaded", u"{engine} est chargé"},
        {u"backend.engine.elsewhere",
         u"«\u00A0{engine}\u00A0» ne fonctionne pas dans le backend\nUn autre moteur reconnaît à "
         u"sa place. Choisissez-en un dans Réglages → Moteurs."},
        {u"backend.engine.none",
         u"Aucune reconnaissance vocale\nConfigurez Whisper dans Réglages → Whisper ou indiquez "
         u"votre propre reconnaissance dans recognisers.toml."},
        {u"backend.engine.none_for_language",
         u"Aucune reconnaissance vocale pour «\u00A0{language}\u00A0»\nConfigurez Whisper dans "
         u"Réglages → Whisper ou indiquez votre propre reconnaissance dans recognisers.toml."},
        {u"backend.session.unreadable", u"Le backend ne comprend pas un message\n{reason}"},
        {u"backend.session.config_keys",
         u"Le backend ne comprend pas tous les réglages\nÀ la place de ceux-ci, les valeurs par "
         u"défaut s'appliquent\u00A0: {keys}"},
        {u"backend.session.behind",
         u"La reconnaissance ne suit pas\u00A0: {seconds} s de parole omises\nAvec Whisper, un "
         u"modèle plus petit aide (Réglages → Whisper)."},
        {u"backend.session.fault", u"Une erreur s'est produite dans le backend\n{reason}"},
        {u"backend.settings.unreadable",
         u"Impossible de lire {file}\nLes dernières valeurs restent valables. {reason}"},
        {u"backend.settings.damaged", u"{file} contient une erreur à la ligne {line}\nLes "
                                      u"dernières valeurs restent valables. {reason}"},
        {u"backend.settings.unknown", u"{file}\u00A0: «\u00A0{key}\u00A0» est inconnu"},
        {u"backend.settings.wrong_type",
         u"{file}\u00A0: «\u00A0{key}\u00A0» a un mauvais type de valeur"},
        {u"backend.translation.failed", u"{translator}\u00A0: {reason}"},
        {u"backend.translation.by_client", u"Ce programme traduit"},
        {u"backend.translation.silent",
         u"{translator} ne répond pas\nRecherché à l'adresse {address}. Est-il démarré\u00A0?"},
        {u"backend.translation.loading", u"{translator} est encore en cours de chargement"},
        {u"backend.translation.key_refused",
         u"{translator} refuse la clé\nLa clé pour {address} se trouve dans recognisers.toml."},
        {u"backend.translation.no_chat_model",
         u"{translator} n'a aucun modèle capable de traduire\nChargez-en un dans le serveur "
         u"{address}."},
        {u"backend.translation.model_missing",
         u"Le modèle «\u00A0{model}\u00A0» manque\nÀ l'adresse {address}, {instead} traduit à sa "
         u"place."},
        {u"backend.translation.language_missing",
         u"{translator} ne traduit pas de {source} vers {target}"},
        {u"backend.translation.empty", u"{translator} a donné une réponse vide"},
        {u"backend.translation.unreadable", u"{translator} a donné une réponse illisible"},
        {u"backend.translation.only_thoughts", u"{translator} a réfléchi, mais n'a pas traduit"},
        {u"backend.translation.cut", u"Une traduction de {translator} est tronquée"},
        {u"backend.translation.declined", u"{translator} refuse de traduire une phrase"},
        {u"backend.translation.too_long",
         u"Une réponse de {translator} est bien plus longue que la phrase"},
        {u"backend.translation.same", u"La source et la cible sont la même langue"},
        {u"backend.translation.no_target",
         u"Aucune langue cible n'est choisie\nLes sous-titres restent dans la langue parlée."},
        {u"backend.translation.awaits_language", u"La traduction dépend de la langue détectée"},
        {u"backend.translation.none",
         u"Aucune traduction de {source} vers {target}\nLes sous-titres restent non traduits. Un "
         u"serveur de chat comme ollama à l'adresse {address} les traduirait."},
        {u"backend.translation.package",
         u"Apertium peut traduire de {source} vers {target}\nÀ installer dans un terminal\u00A0: "
         u"sudo apt install {packages}"},
        {u"backend.recognition.not_installed", u"{engine} n'est pas installé"},
        {u"backend.recognition.not_installed.whisper",
         u"{engine} n'est pas installé\nInstallez-le dans Réglages → Whisper."},
        {u"backend.recognition.not_loaded", u"Impossible de charger {engine}\n{reason}"},
        {u"backend.recognition.failed", u"{engine}\u00A0: {reason}"},
        {u"backend.recognition.language_unknown",
         u"{engine} ne comprend pas «\u00A0{language}\u00A0»"},
        {u"backend.recognition.only_english", u"La reconnaissance ne comprend que l'anglais"},
        {u"backend.recognition.model_unknown",
         u"{engine} ne connaît pas le modèle «\u00A0{model}\u00A0»\nChoisissez-en un autre dans "
         u"Réglages → Whisper."},
        {u"backend.recognition.model_missing",
         u"{engine}\u00A0: le modèle «\u00A0{model}\u00A0» n'est pas sur cet "
         u"ordinateur\nTéléchargez-le dans Réglages → Whisper."},
        {u"backend.recognition.model_damaged",
         u"{engine}\u00A0: le modèle «\u00A0{model}\u00A0» est incomplet ou "
         u"endommagé\nTéléchargez-le à nouveau dans Réglages → Whisper."},
        {u"backend.recognition.model_replaced",
         u"{engine} reconnaît avec le modèle plus petit «\u00A0{used}\u00A0» au lieu de "
         u"«\u00A0{model}\u00A0»"},
        {u"backend.recognition.unreachable",
         u"{engine} est inaccessible\nDémarrez le serveur ou choisissez un autre moteur dans "
         u"Réglages → Moteurs. {reason}"},
        {u"backend.recognition.no_answer", u"{engine} ne répond pas\nRedémarrez le serveur ou "
                                           u"choisissez un autre moteur dans Réglages → Moteurs."},
        {u"backend.recognition.broken_off", u"{engine} a coupé la connexion\n{reason}"},
        {u"backend.recognition.unreadable", u"{engine} donne des réponses illisibles\nUn autre "
                                            u"serveur semble fonctionner à cette adresse."},
        {u"backend.recognition.rate_unsettable",
         u"{engine} n'accepte aucun réglage\nRéglez le serveur lui-même sur {rate} Hz."},
        {u"backend.recognition.account_unset", u"{engine} a besoin d'un fichier de compte de "
                                               u"service\nChoisissez-le dans Réglages → Moteurs."},
        {u"backend.recognition.account_missing",
         u"{engine}\u00A0: le fichier de compte de service manque\n{path} n'existe pas. Choisissez "
         u"un fichier dans Réglages → Moteurs."},
        {u"backend.recognition.account_unreadable",
         u"{engine}\u00A0: le fichier de compte de service est inutilisable\n{path}\u00A0: "
         u"{reason}"},
        {u"backend.recognition.account_refused", u"{engine} refuse le compte de service\nVérifiez "
                                                 u"le fichier dans Réglages → Moteurs. {reason}"},
        {u"backend.recognition.not_permitted",
         u"{engine}\u00A0: il manque une autorisation au compte de service\nAccordez-la dans le "
         u"projet Google Cloud. {reason}"},
        {u"backend.recognition.service_disabled",
         u"{engine} n'est pas activé dans le projet\nActivez l'API Speech-to-Text dans le projet "
         u"Google Cloud. {reason}"},
        {u"backend.recognition.no_model_there",
         u"{engine} n'a pas de modèle pour cela dans «\u00A0{location}\u00A0»\nChoisissez un autre "
         u"emplacement dans Réglages → Moteurs. {reason}"},
        {u"backend.recognition.no_detection_there",
         u"{engine} ne peut pas détecter la langue parlée dans "
         u"«\u00A0{location}\u00A0»\nChoisissez la langue, ou bien «\u00A0eu\u00A0» ou "
         u"«\u00A0us\u00A0» comme emplacement dans Réglages → Moteurs."},
        {u"backend.recognition.refused", u"{engine} refuse la demande\n{reason}"},
        {u"backend.recognition.too_many",
         u"{engine} reçoit trop de demandes à la fois\nLe quota du service est épuisé. {reason}"},
        {u"backend.recognition.unavailable",
         u"{engine} n'est pas disponible pour le moment\n{reason}"},
        {u"backend.recognition.near_serves",
         u"{engine} reconnaît\nSon adresse {address} se trouve dans recognisers.toml."},
        {u"backend.recognition.near_found", u"{engine} fonctionne sur cet ordinateur\nIl "
                                            u"reconnaîtra dès que recognisers.toml le nommera."},
        {u"backend.recognition.near_silent",
         u"{engine} est inaccessible\nRecherché à l'adresse {address}. Le serveur est-il "
         u"démarré\u00A0? {reason}"},
        {u"backend.recognition.near_late", u"{engine} ne répond pas en {seconds} s"},
        {u"backend.recognition.near_loading", u"{engine} charge encore son modèle"},
        {u"backend.recognition.near_busy", u"{engine} est occupé"},
        {u"backend.recognition.near_key",
         u"{engine} refuse la clé\nElle se trouve dans recognisers.toml."},
        {u"backend.recognition.near_key_missing",
         u"{engine} exige une clé\nSaisissez-la dans recognisers.toml."},
        {u"backend.recognition.near_model",
         u"{engine} n'a pas de modèle «\u00A0{model}\u00A0»\nIndiquez dans recognisers.toml un "
         u"modèle qui y existe. {reason}"},
        {u"backend.recognition.near_model_unset",
         u"{engine} exige un modèle\nIndiquez-en un dans recognisers.toml. {reason}"},
        {u"backend.recognition.near_path", u"{engine} ne reconnaît pas la parole à l'adresse "
                                           u"{address}\nVérifiez l'adresse dans recognisers.toml."},
        {u"backend.recognition.near_sound", u"{engine} refuse le son\n{reason}"},
        {u"backend.recognition.near_redirect",
         u"{engine} renvoie vers une autre adresse\nAucun son n'y est envoyé. Indiquez la bonne "
         u"adresse dans recognisers.toml."},
        {u"backend.recognition.near_failed", u"{engine} signale l'erreur {status}\n{reason}"},
        {u"backend.recognition.near_refused", u"{engine} refuse\n{reason}"},
        {u"backend.recognition.near_unreadable", u"{engine} donne des réponses illisibles"},
        {u"backend.recognition.near_too_long", u"{engine} répond avec trop de données"},
        {u"backend.recognition.near_broken_off", u"{engine} a coupé la connexion\n{reason}"},
        {u"backend.recognition.near_entry_key",
         u"recognisers.toml, {entry}\u00A0: «\u00A0{key}\u00A0» est inutilisable"},
        {u"backend.recognition.near_entry_twice",
         u"recognisers.toml nomme «\u00A0{entry}\u00A0» deux fois"},
        {u"backend.recognition.near_address",
         u"recognisers.toml, {entry}\u00A0: l'adresse est inutilisable\n{reason}"},
        {u"backend.recognition.near_kind",
         u"«\u00A0{kind}\u00A0» n'est pas un type de reconnaissance"},
        {u"backend.recognition.near_address_given",
         u"L'adresse {address} est inutilisable\n{reason}"},
        {u"backend.recognition.near_usage",
         u"Utilisation\u00A0: recognisers.py list | accept KIND ADDRESS [MODEL] | forget NAME"},
        {u"backend.recognition.near_file", u"{path}\u00A0: {reason}"},
        {u"backend.recognition.near_file_damaged",
         u"{path} est endommagé et reste tel quel\n{reason}"},
        {u"backend.recognition.near_not_named",
         u"recognisers.toml ne nomme pas «\u00A0{entry}\u00A0»"},
        {u"backend.recognition.near_not_added",
         u"«\u00A0{entry}\u00A0» a été saisi à la main\nRetirez-le vous-même de recognisers.toml."},
    };
    return entries;
}

} // namespace orv
