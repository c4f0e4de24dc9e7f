#include "ButtonKind.h"

#include <QAbstractButton>
#include <QVariant>

namespace orv {

namespace {

constexpr const char* kindProperty = "orvaneButtonKind";

} // namespace

void setButtonKind(QAbstractButton& button, ButtonKind kind) {
    if (buttonKind(&button) == kind) {
        return;
    }
    button.setProperty(kindProperty, static_cast<int>(kind));
    QFont font;
    if (kind == ButtonKind::Primary || kind == ButtonKind::Danger) {
        font.setWeight(QFont::DemiBold);
    }
    button.setFont(font);
    button.update();
}

ButtonKind buttonKind(const QWidget* button) {
    return button == nullptr ? ButtonKind::Plain
                             : static_cast<ButtonKind>(button->property(kindProperty).toInt());
}

} // namespace orv
