// The program as its users get it, but for the network: the addresses of its services come from the
// environment. A service that is not named there stands where nobody listens, so that a test cannot
// reach a real one.

#include "Application.h"
#include "AssemblyAIMessages.h"
#include "AzureMessages.h"
#include "DeepgramMessages.h"
#include "GoogleCloudMessages.h"
#include "TranslationMessages.h"

using namespace Qt::StringLiterals;

namespace {

QString address(const char* variable, const QString& nowhere) {
    return qEnvironmentVariable(variable, nowhere);
}

orv::ServiceAddresses addressesFromEnvironment() {
    const QString http = u"http://127.0.0.1:1"_s;
    const QString ws = u"ws://127.0.0.1:1"_s;
    return {
        .speech = {{orv::translationHost, address("ORVANE_SERVICE_GOOGLE_TRANSLATE", http)},
                   {orv::googleRecognitionHost, address("ORVANE_SERVICE_GOOGLE_SPEECH", http)},
                   {orv::deepgramHost, address("ORVANE_SERVICE_DEEPGRAM", ws)},
                   {orv::assemblyaiHost, address("ORVANE_SERVICE_ASSEMBLYAI", ws)},
                   {orv::azureRecognitionHost,
                    address("ORVANE_SERVICE_AZURE_SPEECH_TO_TEXT", http)},
                   {orv::azureTranslationHost,
                    address("ORVANE_SERVICE_AZURE_SPEECH_TRANSLATION", http)}},
        .updateManifests = {address("ORVANE_SERVICE_UPDATES", http) + u"/updates/orv.json"_s},
    };
}

} // namespace

int main(int argc, char** argv) {
    return orv::runApplication(argc, argv, addressesFromEnvironment());
}
