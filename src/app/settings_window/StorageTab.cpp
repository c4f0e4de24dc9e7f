#include "StorageTab.h"

#include "Buttons.h"
#include "Card.h"
#include "CardColumn.h"
#include "CardRows.h"
#include "SettingsActions.h"
#include "Symbols.h"
#include "TextLabels.h"

#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct ActionTexts {
    QString name;   ///< Key.
    QString detail; ///< Key; empty for a text that is set by the caller.
    QString button; ///< Key.
    QString symbol;
};

/// A row with a button, which is called by the row's name and its own. Returns the detail line.
QLabel* addAction(Card& card, Bindings& bindings, const ActionTexts& texts, ButtonKind kind,
                  const std::function<void()>& act) {
    auto* name = new QLabel(&card);
    auto* detail = makeHint(&card);
    auto* button = makeButton(&card, kind);
    button->setIcon(symbol(texts.symbol));
    card.rows()->addLayout(makeActionRow(name, detail, button));
    bindings.translated(button, [&bindings, name, detail, button, texts] {
        name->setText(bindings.text(texts.name));
        if (!texts.detail.isEmpty()) {
            detail->setText(bindings.text(texts.detail));
        }
        button->setText(bindings.text(texts.button));
        button->setAccessibleName(name->text() + u": "_s + button->text());
    });
    QObject::connect(button, &QPushButton::clicked, &card, act);
    return detail;
}

/// A path as people write it, the home as a tilde.
QString shortPath(const QString& path, const QString& home) {
    return path.startsWith(home + u'/') ? u'~' + path.mid(home.size()) : path;
}

} // namespace

QWidget* makeStorageTab(const TabContext& context) {
    Bindings& bindings = context.bindings;
    SettingsActions& actions = context.actions;
    const UserPaths& paths = context.environment.paths;
    auto* column = new CardColumn;

    Card& files = *column->addCard();
    addHeading(files, bindings, u"settings.storage.files"_s);
    QLabel* folder =
        addAction(files, bindings,
                  {u"settings.storage.backend"_s, {}, u"settings.storage.open"_s, u"folder"_s},
                  ButtonKind::Plain, [&actions] { actions.openSupportDirectory(); });
    folder->setText(shortPath(paths.supportFolder(), paths.home));
    addAction(files, bindings,
              {u"settings.storage.transcripts"_s, u"settings.storage.transcripts.desc"_s,
               u"settings.storage.open"_s, u"folder"_s},
              ButtonKind::Plain, [&actions] { actions.openOutputDirectory(); });

    Card& maintenance = *column->addCard();
    addHeading(maintenance, bindings, u"settings.storage.maintenance"_s);
    addAction(maintenance, bindings,
              {u"settings.storage.clearlogs"_s, u"settings.storage.clearlogs.desc"_s,
               u"settings.storage.delete"_s, u"trash"_s},
              ButtonKind::Plain, [&actions] { actions.clearCache(); });
    return column;
}

} // namespace orv
