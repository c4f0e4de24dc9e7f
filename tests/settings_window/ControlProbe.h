#pragma once

#include <QJsonValue>
#include <QString>

class QWidget;

namespace orv::test {

/// What a control of the settings window shows, in the words of docs/settings.md: "on", "off",
/// "empty", a number, a text, or the identifier of the chosen entry.
QString shownByControl(const QWidget& control);

/// Does what a person does to give the control another value.
void changeControl(QWidget& control);

/// A stored value in the same words.
QString inWords(const QJsonValue& value);

/// Types into whatever field this is, in place of what it holds.
void typeInto(QWidget& field, const QString& text);

} // namespace orv::test
