#pragma once

#include "Dialogs.h"

#include <QList>
#include <QPointer>

class QMessageBox;

namespace orv {

/// Alerts as message boxes of the desktop. Boxes that are still open when the object is destroyed
/// close without an answer.
class MessageDialogs : public Dialogs {
  public:
    MessageDialogs() = default;
    ~MessageDialogs() override;
    MessageDialogs(const MessageDialogs&) = delete;
    MessageDialogs& operator=(const MessageDialogs&) = delete;

    void showAlert(const Alert& alert, Answer<int> done = {}) override;

  private:
    QList<QPointer<QMessageBox>> open_;
};

} // namespace orv
