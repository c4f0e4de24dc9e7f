#include "TextLabels.h"

#include "Theme.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

namespace orv {

QLabel* makeTitle(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setFont(titleFont(label->font()));
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel* makeHeading(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setFont(strongFont(label->font()));
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel* makeHint(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QLabel* makeText(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

void nameField(QLabel* label, QWidget* field, const QString& text) {
    label->setText(text);
    label->setBuddy(field);
    field->setAccessibleName(text);
    if (const auto* combo = qobject_cast<QComboBox*>(field);
        combo != nullptr && combo->lineEdit() != nullptr) {
        combo->lineEdit()->setAccessibleName(text);
    }
}

} // namespace orv
