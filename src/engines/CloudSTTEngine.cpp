#include "CloudSTTEngine.h"

namespace orv {

CloudEngineError::CloudEngineError(Kind kind, const QString& message)
    : kind_(kind)
    , message_(message)
    , utf8_(message.toUtf8()) {}

} // namespace orv
