#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace orv {

class CardColumn;
struct TabContext;

/// Adds the card of one output to the end of a column. The settings window is given a list of them
/// and shows them in its order.
using OutputCard = std::function<void(CardColumn& column, const TabContext& context)>;

/// The cards of all outputs, in the order in which they are shown. A button calls `sendVRChatTest`
/// to send VRChat the test message, whether that output is enabled or not.
std::vector<OutputCard> outputCards(std::function<void()> sendVRChatTest);

/// Where a browser source finds the overlay, for a port as it is stored.
QString overlayAddress(std::int64_t port);

} // namespace orv
