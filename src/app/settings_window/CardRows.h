#pragma once

#include "Bindings.h"
#include "Section.h"

#include <QList>
#include <QString>

class QBoxLayout;
class QCheckBox;
class QLabel;
class QWidget;

namespace orv {

class Card;

// Rows of the cards in a tab of the settings window. What is added goes to the end of the card, and
// its texts follow the language.

QLabel* addHeading(Card& card, Bindings& bindings, const QString& key);
QLabel* addHint(Card& card, Bindings& bindings, const QString& key);

/// A switch that is named by the text of `key` and tied to `setting`.
QCheckBox* addSwitch(Card& card, Bindings& bindings, const QString& key, Setting<bool>& setting);

/// `control` at the left of whatever room there is, in its own width.
QWidget* atTheLeft(QWidget* control);

/// A row with a label, the text of `key`, and `control`, whose name for assistive programs is that
/// text, after the section's name and a colon where there is a section.
QLabel* addNamedField(Card& card, Bindings& bindings, QWidget* control, const QString& key,
                      const SectionName& section = {});

/// Keeps these labels, of rows that other things stand between, at the width of the widest.
void alignLabels(Bindings& bindings, const QList<QLabel*>& labels);

/// Lays out `row`: the parts of `first` in one line, each of `below` in a line of its own under it,
/// and `action` on the right.
void layOutActionRow(QWidget& row, const QList<QWidget*>& first, const QList<QWidget*>& below,
                     QWidget* action);

/// A row with one text over another on the left and `actions` on the right.
QBoxLayout* makeActionRow(QWidget* upper, QWidget* lower, QWidget* actions);

} // namespace orv
