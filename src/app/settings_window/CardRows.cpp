#include "CardRows.h"

#include "Card.h"
#include "SwitchRow.h"
#include "TextLabels.h"
#include "Theme.h"

#include <QCheckBox>
#include <QLabel>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

QLabel* addHeading(Card& card, Bindings& bindings, const QString& key) {
    QLabel* heading = card.addHeading();
    bindings.translated(heading, key);
    return heading;
}

QLabel* addHint(Card& card, Bindings& bindings, const QString& key) {
    QLabel* hint = makeHint(&card);
    bindings.translated(hint, key);
    card.rows()->addWidget(hint);
    return hint;
}

QCheckBox* addSwitch(Card& card, Bindings& bindings, const QString& key, Setting<bool>& setting) {
    auto* box = new SwitchRow(&card);
    bindings.translated(box, key);
    bindings.bind(box, setting);
    card.rows()->addWidget(box);
    return box;
}

QWidget* atTheLeft(QWidget* control) {
    auto* place = new QWidget(control->parentWidget());
    auto* row = new QHBoxLayout(place);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(control);
    row->addStretch(1);
    return place;
}

QLabel* addNamedField(Card& card, Bindings& bindings, QWidget* control, const QString& key,
                      const SectionName& section) {
    const bool isNarrow = control->maximumWidth() < QWIDGETSIZE_MAX;
    QLabel* label = card.addField(isNarrow ? atTheLeft(control) : control);
    bindings.translated(control, [&bindings, label, control, key, section] {
        const QString text = bindings.text(key);
        nameField(label, control, text);
        if (section) {
            control->setAccessibleName(section() + u": "_s + text);
        }
    });
    return label;
}

void alignLabels(Bindings& bindings, const QList<QLabel*>& labels) {
    bindings.translated(labels.last(), [labels] {
        int widest = 0;
        for (const QLabel* label : labels) {
            widest = std::max(widest, label->sizeHint().width());
        }
        for (QLabel* label : labels) {
            label->setMinimumWidth(widest);
        }
    });
}

void layOutActionRow(QWidget& row, const QList<QWidget*>& first, const QList<QWidget*>& below,
                     QWidget* action) {
    auto* line = new QHBoxLayout;
    line->setSpacing(space::small);
    for (QWidget* part : first) {
        line->addWidget(part);
    }
    line->addStretch(1);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addLayout(line);
    for (QWidget* text : below) {
        texts->addWidget(text);
    }
    auto* sides = new QHBoxLayout(&row);
    sides->setContentsMargins(0, 0, 0, 0);
    sides->setSpacing(space::medium);
    sides->addLayout(texts, 1);
    sides->addWidget(action, 0, Qt::AlignVCenter);
}

QBoxLayout* makeActionRow(QWidget* upper, QWidget* lower, QWidget* actions) {
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(upper);
    texts->addWidget(lower);
    auto* row = new QHBoxLayout;
    row->setSpacing(space::medium);
    row->addLayout(texts, 1);
    row->addWidget(actions);
    return row;
}

} // namespace orv
