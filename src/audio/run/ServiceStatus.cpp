#include "ServiceStatus.h"

using namespace Qt::StringLiterals;

namespace orv {

StatusMessage serviceStatus(const QString& product, const ServiceFault& fault) {
    const bool isWarning = passesByItself(fault.kind) || isOfTranslation(fault);
    const QString who = fault.translator.isEmpty() ? product : fault.translator;
    const QString code = codeOf(fault.kind);
    const QString said = fault.said.isEmpty() ? code : fault.said;
    StatusMessage status{
        .status = isWarning ? u"warning"_s : u"error"_s,
        .message = QString(who + u": " + said),
        .version = {},
        .notice = {.code = code, .parameters = {{u"engine"_s, who}, {u"said"_s, fault.said}}}};
    if (isOfTranslation(fault)) {
        status.notice.parameters.insert(u"part"_s, u"translation"_s);
    }
    return status;
}

} // namespace orv
