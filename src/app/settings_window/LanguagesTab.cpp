#include "LanguagesTab.h"

#include "Bindings.h"
#include "LanguageFilter.h"
#include "LanguageManager.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int columns = 3;

// Each script loads its font when it is first drawn, some of them many megabytes: rows come a few
// at a time, so that the interface never stands still for all of them.
constexpr int rowsAtATime = columns;
constexpr std::chrono::milliseconds pause{5};

/// A flag as a picture. Drawn once: painting a coloured glyph takes a millisecond each time.
QIcon flagPicture(const QString& flag, const QWidget& widget) {
    const QFontMetrics metrics = widget.fontMetrics();
    const QSize size(metrics.horizontalAdvance(flag), metrics.height());
    QPixmap pixmap(size * widget.devicePixelRatioF());
    pixmap.setDevicePixelRatio(widget.devicePixelRatioF());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setFont(widget.font());
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter, flag);
    painter.end();
    return QIcon(pixmap);
}

QStandardItem* makeRow(const Language& language, const QWidget& widget) {
    auto* item = new QStandardItem(flagPicture(language.flag, widget), language.name);
    item->setEditable(false);
    item->setToolTip(language.flag + u' ' + language.name + u" ("_s + language.code + u")"_s);
    return item;
}

/// Rows of languages that match what was typed.
class LanguageProxy : public QSortFilterProxyModel {
  public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setTyped(const QString& typed) {
        typed_ = typed;
        invalidateFilter();
    }

  protected:
    bool filterAcceptsRow(int row, const QModelIndex& /*parent*/) const override {
        return languageMatches(LanguageManager::allLanguages()[row], typed_);
    }

  private:
    QString typed_;
};

/// Gives every cell of the grid its whole size.
class CellDelegate : public QStyledItemDelegate {
  public:
    explicit CellDelegate(QListView* grid)
        : QStyledItemDelegate(grid)
        , grid_(grid) {}

    QSize sizeHint(const QStyleOptionViewItem& /*option*/,
                   const QModelIndex& /*index*/) const override {
        return grid_->gridSize();
    }

  private:
    QListView* grid_;
};

/// A grid of as many columns as there always are, however wide it is.
class GridView : public QListView {
  public:
    explicit GridView(QWidget* parent)
        : QListView(parent) {
        setFlow(QListView::LeftToRight);
        setWrapping(true);
        setResizeMode(QListView::Adjust);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        setIconSize({2 * fontMetrics().height(), fontMetrics().height()});
        setLayoutDirection(Qt::LeftToRight);
        setItemDelegate(new CellDelegate(this));
        setViewportMargins(space::tiny, space::tiny, 0, space::tiny);
    }

  protected:
    void resizeEvent(QResizeEvent* event) override {
        const int height = fontMetrics().height() + 2 * space::tiny;
        setGridSize({(viewport()->width() - 1) / columns, height});
        QListView::resizeEvent(event);
    }
};

} // namespace

LanguagesTab::LanguagesTab(const TabContext& context, QWidget* parent)
    : QWidget(parent)
    , bindings_(context.bindings)
    , heading_(makeHeading(this))
    , count_(makeHint(this))
    , search_(new QLineEdit(this))
    , rows_(new QStandardItemModel(this))
    , grid_(new GridView(this))
    , facts_(makeHint(this)) {
    auto* proxy = new LanguageProxy(this);
    proxy->setSourceModel(rows_);
    grid_->setModel(proxy);
    connect(search_, &QLineEdit::textChanged, this, [this, proxy](const QString& typed) {
        proxy->setTyped(typed);
        showCount();
    });

    count_->setWordWrap(false);
    auto* top = new QHBoxLayout;
    top->addWidget(heading_);
    top->addStretch(1);
    top->addWidget(count_);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(space::large, space::tiny, space::large, space::large);
    column->setSpacing(space::small);
    column->addLayout(top);
    column->addWidget(search_);
    column->addWidget(grid_, 1);
    column->addWidget(facts_);
    bindings_.translated(this, [this] { translate(); });
    filling_.setInterval(pause);
    connect(&filling_, &QTimer::timeout, this, &LanguagesTab::addRows);
    filling_.start();
    addRows();
}

void LanguagesTab::addRows() {
    const QList<Language>& languages = LanguageManager::allLanguages();
    for (int count = 0; count < rowsAtATime && rows_->rowCount() < languages.size(); ++count) {
        rows_->appendRow(makeRow(languages[rows_->rowCount()], *grid_));
    }
    if (rows_->rowCount() == languages.size()) {
        filling_.stop();
    }
}

void LanguagesTab::translate() {
    ORV_ON_MAIN();
    heading_->setText(bindings_.text(u"settings.lang.supported"_s));
    search_->setPlaceholderText(bindings_.text(u"settings.lang.search"_s));
    search_->setAccessibleName(search_->placeholderText());
    grid_->setAccessibleName(heading_->text());
    facts_->setText(QStringList{
        bindings_.text(u"settings.lang.engine"_s), bindings_.text(u"settings.lang.autodetect"_s),
        bindings_.text(u"settings.lang.builtin"_s), bindings_.text(u"settings.lang.noinstall"_s)}
                        .join(u" • "_s));
    showCount();
}

void LanguagesTab::showCount() {
    ORV_ON_MAIN();
    const QList<Language>& languages = LanguageManager::allLanguages();
    const auto all = languages.size();
    const auto shown = std::ranges::count_if(languages, [this](const Language& language) {
        return languageMatches(language, search_->text());
    });
    const QString count = shown == all
                              ? QString::number(all)
                              : QString(QString::number(shown) + u" / "_s + QString::number(all));
    count_->setText(count + u' ' + bindings_.text(u"settings.lang.count"_s));
}

} // namespace orv
