#pragma once

#include "BackendMessages.h"
#include "ServiceFault.h"

#include <QString>

namespace orv {

/// What a service refuses or fails with, told as the speech server tells such things: an error, or
/// a warning where it may be over the next time. `product` is the engine's service. What is wrong
/// with the translation alone is a warning with the parameter "part", which is "translation" then.
StatusMessage serviceStatus(const QString& product, const ServiceFault& fault);

} // namespace orv
