#pragma once

#include <QObject>

namespace orv {

/// An event filter that turns the end of the desktop's session, and whatever else asks the
/// application object to quit, into a signal. Qt itself would first ask every window to close, and
/// the panel may refuse. What the user has chosen is stored as it is chosen, so the session's
/// manager need not wait for anything.
class SessionEnd : public QObject {
    Q_OBJECT

  public:
    /// Needs the application object.
    SessionEnd();

    bool eventFilter(QObject* watched, QEvent* event) override;

  Q_SIGNALS:
    void requested();
};

} // namespace orv
