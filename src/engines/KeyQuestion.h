#pragma once

#include "HttpCall.h"
#include "ServiceFault.h"

#include <functional>
#include <optional>

namespace orv {

/// A question to a service whose answer tells whether it takes a key. A plain value.
struct KeyQuestion {
    HttpCall call;
    /// What is wrong by the answer; nothing when the key works.
    std::function<std::optional<ServiceFault>(const HttpOutcome&)> judge;
    /// What is wrong where the call's address is not valid, since something in it cannot be sent.
    ServiceFault::Kind unsendable = ServiceFault::Kind::KeyRefused;
};

} // namespace orv
