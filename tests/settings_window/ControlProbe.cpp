#include "ControlProbe.h"

#include "EngineRow.h"
#include "FieldCombo.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSlider>
#include <QSpinBox>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

constexpr double hundredths = 100.0;

void pressKey(QWidget& field, int key, const QString& text = {}) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&field, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&field, &release);
}

QString orEmpty(const QString& text) {
    return text.isEmpty() ? u"empty"_s : text;
}

/// The rows of the list of engines, if `control` is that.
QList<EngineRow*> engineRows(const QWidget& control) {
    return control.findChildren<EngineRow*>(Qt::FindDirectChildrenOnly);
}

QString chosenEngine(const QWidget& control) {
    for (const EngineRow* row : engineRows(control)) {
        if (row->isChecked()) {
            return row->engineId();
        }
    }
    return {};
}

} // namespace

QString shownByControl(const QWidget& control) {
    if (const auto* box = qobject_cast<const QCheckBox*>(&control)) {
        return box->isChecked() ? u"on"_s : u"off"_s;
    }
    if (const auto* combo = qobject_cast<const FieldCombo*>(&control)) {
        return orEmpty(combo->chosenId());
    }
    if (const auto* edit = qobject_cast<const QLineEdit*>(&control)) {
        return orEmpty(edit->text());
    }
    if (const auto* box = qobject_cast<const QSpinBox*>(&control)) {
        return QString::number(box->value());
    }
    if (const auto* slider = qobject_cast<const QSlider*>(&control)) {
        return QString::number(slider->value() / hundredths);
    }
    return orEmpty(chosenEngine(control));
}

void typeInto(QWidget& field, const QString& text) {
    if (auto* edit = qobject_cast<QLineEdit*>(&field)) {
        edit->selectAll();
    } else if (auto* box = qobject_cast<QSpinBox*>(&field)) {
        box->selectAll();
    }
    if (text.isEmpty()) {
        pressKey(field, Qt::Key_Backspace);
    }
    for (const QChar letter : text) {
        pressKey(field, 0, letter);
    }
}

void changeControl(QWidget& control) {
    if (auto* box = qobject_cast<QCheckBox*>(&control)) {
        box->click();
    } else if (auto* combo = qobject_cast<FieldCombo*>(&control)) {
        const int other = combo->currentIndex() == 0 ? 1 : 0;
        combo->setCurrentIndex(other);
        Q_EMIT combo->activated(other);
    } else if (qobject_cast<QLineEdit*>(&control) != nullptr) {
        typeInto(control,
                 control.accessibleName().endsWith(u"(#RRGGBB)"_s) ? u"#123ABC"_s : u"changed-1"_s);
    } else if (qobject_cast<QSpinBox*>(&control) != nullptr) {
        typeInto(control, u"4321"_s);
        pressKey(control, Qt::Key_Return);
    } else if (auto* slider = qobject_cast<QSlider*>(&control)) {
        pressKey(*slider, Qt::Key_Left);
    } else if (const auto rows = engineRows(control); !rows.isEmpty()) {
        rows.last()->click();
    } else {
        ADD_FAILURE() << "No way to change " << qPrintable(control.accessibleName());
    }
}

QString inWords(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool() ? u"on"_s : u"off"_s;
    case QJsonValue::Double:
        return QString::number(value.toDouble());
    case QJsonValue::String:
        return orEmpty(value.toString());
    default:
        return u"absent"_s;
    }
}

} // namespace orv::test
