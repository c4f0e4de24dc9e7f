#include "ServiceStatus.h"

using namespace Qt::StringLiterals;

namespace orv {

StatusMessage serviceStatus(const QString& product, const ServiceFault& fault) {
    const bool isWarning =
        passesByItself(fault.kind) || fault.kind == ServiceFault::Kind::NotTranslated;
    const QString code = codeOf(fault.kind);
    const QString said = fault.said.isEmpty() ? code : fault.said;
    return {
        .status = isWarning ? u"warning"_s : u"error"_s,
        .message = QString(product + u": " + said),
        .version = {},
        .notice = {.code = code, .parameters = {{u"engine"_s, product}, {u"said"_s, fault.said}}}};
}

} // namespace orv
