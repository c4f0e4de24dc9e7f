#pragma once

#include "CloudSTTEngine.h"
#include "EngineTimings.h"
#include "KeyQuestion.h"
#include "ServiceEndpoints.h"
#include "ServiceLocales.h"
#include "Setting.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace orv {

class TranslationSettings;

/// Something that an engine has to be told by its user: an account, or where it is found.
struct EngineField {
    enum class Kind {
        Key,            ///< A secret.
        ServiceAccount, ///< The path of a JSON file with an account's secrets.
        Text,
        Port,  ///< The only kind with a `number`; all others have a `text`.
        Place, ///< One of `places`, or another one that is stored already.
    };

    Kind kind = Kind::Key;
    Setting<QString> TranslationSettings::*text = nullptr;
    Setting<std::int64_t> TranslationSettings::*number = nullptr;
    QString labelKey = QStringLiteral("settings.engine.apikey");
    QString product = {};        ///< Whose key it is, where it is not the engine's own.
    QString placeholderKey = {}; ///< Of what is shown while a text is empty.
    std::span<const ServiceRegion> places = {};
    /// A credential: while it is empty, the fallback recognises in the engine's place.
    bool isRequired = false;
    /// The member of the configuration message that carries it; empty when none does.
    QString message = {};
    /// Where a direct engine is told; null when it is not.
    QString CloudEngineConfig::*config = nullptr;
    /// Of a key: how to find out whether it works, by the cheapest questions that tell. `config`
    /// holds it as `apiKey`, and the engine's other fields.
    std::function<std::vector<KeyQuestion>(const ServiceEndpoints& endpoints,
                                           const CloudEngineConfig& config)>
        questions = {};
};

/// Whether Google translates with this key, which costs nothing.
KeyQuestion translationKeyQuestion(const ServiceEndpoints& endpoints, const QString& apiKey);

/// Google's key for the translation of what an engine only recognises.
EngineField translationKeyField();

/// Everything that the rest of the program has to know of an engine. It stands in the engine's own
/// source file; who adds an engine writes that file and puts it into the catalogue.
struct EngineDescriptor {
    /// Makes the engine in front of these services.
    using Make = std::function<std::shared_ptr<CloudSTTEngine>(const ServiceEndpoints& endpoints,
                                                               const EngineTimings& timings)>;

    QString id; ///< The value of the setting `sttEngine` that selects it.

    // What is shown of it. Texts are keys, but for names of products.
    QString name = {};    ///< A product's name, the same in every language; empty with a `nameKey`.
    QString nameKey = {}; ///< Where the name is translated.
    QString product = {}; ///< The service's name in messages; empty: `name`.
    QString detailKey;    ///< One line about it.
    QString hintKey = {}; ///< Where what its fields ask for is obtained; empty without fields.
    QString icon;         ///< Name of a picture of the settings window.
    /// One line on who recognises, who translates and whether the speech server is needed. German,
    /// shown as it stands in every language of the interface.
    QString infoText;
    QString translator;       ///< Who translates: names of products.
    QString soundGoesTo = {}; ///< Whom the sound is sent to; empty: it stays on this computer.

    /// Whether it recognises a language of the settings, "auto" included; empty: nobody knows
    /// before.
    std::function<bool(const QString& code)> recognises = {};

    std::vector<EngineField> fields = {}; ///< In the order in which they are asked for.

    /// Of engines that the program talks to itself. Empty: the speech server recognises.
    Make make = {};
    /// The speech server recognises only; the program has the text translated.
    bool translatesOnClient = false;
    /// Whether the log names it when it is chosen. One that tells of its connection needs none.
    bool isAnnounced = true;

    /// The service's name in messages.
    const QString& productName() const { return product.isEmpty() ? name : product; }

    /// What a direct engine is told of the settings; the run's own languages are not among them.
    CloudEngineConfig configFrom(const TranslationSettings& settings) const;

    /// The first credential that is required and empty; null when none is.
    const EngineField* missingCredential(const TranslationSettings& settings) const;
};

} // namespace orv
