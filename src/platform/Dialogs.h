#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace orv {

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

/// Shows alerts. Main thread only.
class Dialogs {
  public:
    virtual ~Dialogs() = default;

    /// Shows `alert` above the program's windows and returns at once. `done`, when given, is called
    /// later, once, with the index of the chosen button (closing the alert chooses the last one).
    virtual void showAlert(const Alert& alert, std::function<void(int chosen)> done = {}) = 0;
};

} // namespace orv
