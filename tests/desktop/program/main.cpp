// The program as its users get it, but for the network: the addresses of its services come from the
// environment. A service that is not named there stands where nobody listens, so that a test cannot
// reach a real one.

#include "Application.h"
#include "AssemblyAIMessages.h"
#include "AzureMessages.h"
#include "CountingEngine.h"
#include "DeepgramMessages.h"
#include "FileOutput.h"
#include "GoogleCloudMessages.h"
#include "TranslationMessages.h"

#include <QSslConfiguration>

using namespace Qt::StringLiterals;

namespace {

QString address(const char* variable, const QString& nowhere) {
    return qEnvironmentVariable(variable, nowhere);
}

orv::ServiceAddresses addressesFromEnvironment() {
    const QString http = u"http://127.0.0.1:1"_s;
    const QString ws = u"ws://127.0.0.1:1"_s;
    return {
        .speech =
            {{orv::translationHost, address("ORVANE_SERVICE_GOOGLE_TRANSLATE", http)},
             {orv::googleRecognitionHost, address("ORVANE_SERVICE_GOOGLE_SPEECH", http)},
             {orv::deepgramHost, address("ORVANE_SERVICE_DEEPGRAM", ws)},
             {orv::assemblyaiHost, address("ORVANE_SERVICE_ASSEMBLYAI", ws)},
             {orv::assemblyaiStreamingHost, address("ORVANE_SERVICE_ASSEMBLYAI_STREAMING", ws)},
             {orv::azureRecognitionHost, address("ORVANE_SERVICE_AZURE_SPEECH_TO_TEXT", http)},
             {orv::azureTranslationHost, address("ORVANE_SERVICE_AZURE_SPEECH_TRANSLATION", http)},
             {orv::azureTokenHost, address("ORVANE_SERVICE_AZURE_TOKEN", http)},
             {orv::azureTranslatorHost, address("ORVANE_SERVICE_AZURE_TRANSLATOR", http)}},
        .updateManifests = {address("ORVANE_SERVICE_UPDATES", http) + u"/updates/orv.json"_s},
    };
}

/// With an engine and an output of the test's own where it says into which file the output writes.
orv::ProgramParts partsFromEnvironment(orv::test::FileOutput& output) {
    orv::ProgramParts parts{.addresses = addressesFromEnvironment()};
    if (output.isWanted()) {
        const auto all = parts.engines.engines();
        std::vector<orv::EngineDescriptor> engines(all.begin(), all.end());
        engines.push_back(orv::test::countingEngine());
        parts.engines = orv::EngineCatalogue(std::move(engines));
        parts.outputs = {&output};
    }
    return parts;
}

/// Beside those of the system, whom the program's connections trust.
void trustFromEnvironment() {
    const QString file = qEnvironmentVariable("ORVANE_TRUSTED_CERTIFICATE");
    if (!file.isEmpty()) {
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        trusting.addCaCertificates(file);
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
}

} // namespace

int main(int argc, char** argv) {
    trustFromEnvironment();
    orv::test::FileOutput output(qEnvironmentVariable("ORVANE_OWN_OUTPUT"));
    return orv::runApplication(argc, argv, partsFromEnvironment(output));
}
