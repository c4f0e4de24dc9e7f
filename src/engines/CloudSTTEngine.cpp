#include "CloudSTTEngine.h"

#include <utility>

namespace orv {

CloudEngineError::CloudEngineError(Kind kind, const QString& message,
                                   std::optional<ServiceFault> fault)
    : kind_(kind)
    , message_(message)
    , fault_(std::move(fault))
    , utf8_(message.toUtf8()) {}

} // namespace orv
