#pragma once

#include <QString>

#include <cstdint>
#include <functional>

namespace orv {

class CardColumn;
struct TabContext;

/// Adds the card of one output to the end of a column. The settings window is given a list of them
/// and shows them in its order.
using OutputCard = std::function<void(CardColumn& column, const TabContext& context)>;

void addBrowserOverlayCard(CardColumn& column, const TabContext& context);
void addVMixCard(CardColumn& column, const TabContext& context);

/// The card with a button for which `sendTest` is called: it sends the test message, whether the
/// output is enabled or not.
OutputCard vrchatCard(std::function<void()> sendTest);

/// Where a browser source finds the overlay, for a port as it is stored.
QString overlayAddress(std::int64_t port);

} // namespace orv
