#pragma once

#include "BackendMessages.h"
#include "ServiceFault.h"

#include <QString>

namespace orv {

/// What a service refuses or fails with, told as the speech server tells such things: an error, or
/// a warning where it may be over the next time. `product` is the service's name.
StatusMessage serviceStatus(const QString& product, const ServiceFault& fault);

} // namespace orv
