#pragma once

#include "Answer.h"

#include <QString>
#include <QStringList>

namespace orv {

/// How serious an alert is.
enum class AlertStyle { Informational, Warning };

/// The picture beside an alert's texts.
enum class AlertIcon {
    OfStyle, ///< The desktop's own for the style.
    Update   ///< An arrow down in a circle.
};

/// What a modal alert shows. Texts are plain texts.
struct Alert {
    AlertStyle style = AlertStyle::Informational;
    QString title;
    QString message;
    QStringList buttons; ///< At least one; the first is the default.
    AlertIcon icon = AlertIcon::OfStyle;
};

/// The desktop's modal alerts. Main thread only.
class Dialogs {
  public:
    virtual ~Dialogs() = default;

    /// Shows `alert` above the program's windows and returns at once. The answer, where one is
    /// asked for, is the index of the chosen button (closing the alert chooses the last one).
    virtual void showAlert(const Alert& alert, Answer<int> done = {}) = 0;
};

} // namespace orv
