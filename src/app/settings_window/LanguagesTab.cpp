#include "LanguagesTab.h"

#include "Bindings.h"
#include "LanguageFilter.h"
#include "LanguageManager.h"
#include "Pieces.h"
#include "Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int columns = 3;

/// The languages as rows; the flag stands before the name whichever way the name is written.
QStandardItemModel* makeModel(QObject* parent) {
    // A mark without width that keeps what follows from turning the row round.
    const QChar leftToRight(0x200E);
    auto* model = new QStandardItemModel(parent);
    for (const Language& language : LanguageManager::allLanguages()) {
        auto* item = new QStandardItem(leftToRight + language.flag + u"  "_s + language.name);
        item->setEditable(false);
        item->setToolTip(language.name + u" ("_s + language.code + u")"_s);
        item->setData(language.name, Qt::AccessibleTextRole);
        model->appendRow(item);
    }
    return model;
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
    , grid_(new GridView(this))
    , facts_(makeHint(this)) {
    auto* proxy = new LanguageProxy(this);
    proxy->setSourceModel(makeModel(this));
    shown_ = proxy;
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
}

void LanguagesTab::translate() {
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
    const auto all = LanguageManager::allLanguages().size();
    const int shown = shown_->rowCount();
    const QString count = shown == all
                              ? QString::number(all)
                              : QString(QString::number(shown) + u" / "_s + QString::number(all));
    count_->setText(count + u' ' + bindings_.text(u"settings.lang.count"_s));
}

} // namespace orv
