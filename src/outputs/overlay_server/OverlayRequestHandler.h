#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <system_error>

namespace orv {

/// The interface through which the connections of the overlay server get their answers, on their
/// own thread.
class OverlayRequestHandler {
  public:
    /// The whole answer to a path, head included.
    virtual QByteArray answerTo(QByteArrayView path) const = 0;

    /// A listening socket broke; none is watched any more.
    virtual void listenerFailed(std::error_code error) = 0;

  protected:
    ~OverlayRequestHandler() = default;
};

} // namespace orv
