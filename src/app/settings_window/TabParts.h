#pragma once

#include "Bindings.h"
#include "SettingsEnvironment.h"

#include <QList>
#include <QString>
#include <QWidget>

#include <functional>

class QBoxLayout;
class QCheckBox;
class QLabel;
class QVBoxLayout;

namespace orv {

class Card;

// What the tabs of the settings window are put together from, on top of the style's pieces.

/// The content of a tab: a column of cards.
class CardColumn : public QWidget {
    Q_OBJECT

  public:
    explicit CardColumn(QWidget* parent = nullptr);

    Card* addCard();

  private:
    QVBoxLayout* column_;
};

// All of these go to the end of the card and follow the language.
QLabel* addHeading(Card& card, Bindings& bindings, const QString& key);
QLabel* addHint(Card& card, Bindings& bindings, const QString& key);

/// A switch that is named by the text of `key` and tied to `setting`.
QCheckBox* addSwitch(Card& card, Bindings& bindings, const QString& key, Setting<bool>& setting);

/// What comes before a control's own name; several sections have a host and a port.
using SectionName = std::function<QString()>;

/// A card headed by the text of `title`, and what its controls are told apart by.
struct Section {
    Card& card;
    SectionName name;
};

Section addSection(CardColumn& column, Bindings& bindings, const QString& title);

/// `control` at the left of whatever room there is, in its own width.
QWidget* atTheLeft(QWidget* control);

/// A row with a label, the text of `key`, and `control`, whose name for assistive programs is that
/// text, after the section's name and a colon where there is a section.
QLabel* addNamedField(Card& card, Bindings& bindings, QWidget* control, const QString& key,
                      const SectionName& section = {});

/// Keeps these labels, of rows that other things stand between, at the width of the widest.
void alignLabels(Bindings& bindings, const QList<QLabel*>& labels);

/// A row with one text over another on the left and `actions` on the right.
QBoxLayout* makeActionRow(QWidget* upper, QWidget* lower, QWidget* actions);

} // namespace orv
