#include "PanelParts.h"

#include <QFont>
#include <QLabel>

namespace orv {

QLabel* makeHeading(QWidget* parent) {
    auto* label = new QLabel(parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLabel* makeHint(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

void nameField(QLabel* label, QWidget* field, const QString& text) {
    label->setText(text);
    label->setBuddy(field);
    field->setAccessibleName(text);
}

} // namespace orv
