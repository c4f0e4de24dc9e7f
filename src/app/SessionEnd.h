#pragma once

#include <QObject>

#include <functional>

namespace orv {

/// An event filter that turns the end of the desktop's session, and whatever else asks the
/// application object to quit, into a call. Qt itself would first ask every window to close, and
/// the panel may refuse. What the user has chosen is stored as it is chosen, so the session's
/// manager need not wait for anything.
class SessionEnd : public QObject {
    Q_OBJECT

  public:
    /// Calls `requested` on the main thread. Needs the application object.
    explicit SessionEnd(std::function<void()> requested);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::function<void()> requested_;
};

} // namespace orv
