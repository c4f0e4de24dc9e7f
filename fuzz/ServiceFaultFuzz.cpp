// Whatever a service refuses with, people are told something that they can read, and no key.
//
// The input: two bytes of status, then lines: a key, a header, and the rest is the content.

#include "AssemblyAIMessages.h"
#include "AzureMessages.h"
#include "DeepgramMessages.h"
#include "GoogleCloudMessages.h"
#include "ServiceFault.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace orv;

namespace {

void demand(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void check(const ServiceFault& fault, const QString& key) {
    demand(codeOf(fault.kind).startsWith(QStringLiteral("service.")));
    const QString said = sayable(fault.said, key);
    demand(said.size() <= 303 && !said.contains(u'\n'));
    demand(key.size() < 8 || !said.contains(key));
}

/// What an answer to the question whether a key works says; no refusal passes for a yes.
void checkKeyTrial(const HttpOutcome& answer, const QString& key) {
    for (const auto judge : {assemblyaiTokenFault, azureTokenFault, googleKeyFault}) {
        const auto fault = judge(answer);
        demand(fault || !faultOfStatus(answer.status));
        if (fault) {
            check(*fault, key);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (size < 2) {
        return 0;
    }
    const int status = (data[0] << 8 | data[1]) % 600;
    const QByteArray key = input.mid(2).split('\n').value(0);
    const QByteArray header = input.mid(2).split('\n').value(1);
    const QByteArray body = input.mid(4 + key.size() + header.size());
    const QString secret = QString::fromUtf8(key).simplified();

    check(deepgramRefusal(status, header, body), secret);
    check(deepgramClosing(status + 1000, QString::fromUtf8(body)), secret);
    check(assemblyaiClosing(status + 3000, QString::fromUtf8(body)), secret);
    const auto google = googleFault(status, body);
    demand(google.has_value() == faultOfStatus(status).has_value());
    if (google) {
        check(*google, secret);
    }
    if (const auto azure = azureFault(status, body)) {
        check(*azure, secret);
    }
    const ServiceFault translator = azureTranslatorFault(status, body);
    demand(isOfTranslation(translator));
    check(translator, secret);
    checkKeyTrial({.status = status, .body = body}, secret);
    return 0;
}
