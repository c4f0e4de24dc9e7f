#include "FieldCombo.h"

#include "FieldComboAccessible.h"
#include "ThreadChecks.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFocusEvent>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QWheelEvent>

#include <utility>

namespace orv {

/// The rows that may be meant by what was typed.
class FieldCombo::Found : public QSortFilterProxyModel {
  public:
    explicit Found(FieldCombo* combo)
        : QSortFilterProxyModel(combo)
        , combo_(combo) {
        setSourceModel(combo->model());
    }

    void setTyped(const QString& typed) {
        typed_ = typed;
        invalidateFilter();
    }

  protected:
    bool filterAcceptsRow(int row, const QModelIndex& /*parent*/) const override {
        return combo_->matches(row, typed_);
    }

  private:
    FieldCombo* combo_;
    QString typed_;
};

FieldCombo::FieldCombo(Search search, QWidget* parent)
    : QComboBox(parent) {
    installFieldComboAccessibility();
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    setMaxVisibleItems(14);
    // The one that lets the style draw the rows.
    setItemDelegate(new QStyledItemDelegate(this));
    connect(this, &QComboBox::activated, this,
            [this](int index) { Q_EMIT chosen(itemData(index).toString()); });
    if (search == Search::ByTyping) {
        searchByTyping();
    }
}

void FieldCombo::searchByTyping() {
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    found_ = new Found(this);
    auto* completer = new QCompleter(found_, this);
    // It shows every row it is given: those that were found.
    completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    setCompleter(completer);
    lineEdit()->installEventFilter(this);
    // Before the line edit asks for its completions.
    connect(lineEdit(), &QLineEdit::textEdited, found_, &Found::setTyped);
    // Return tells of both, in this order.
    connect(lineEdit(), &QLineEdit::returnPressed, this,
            [this] { settleTypedText(Settled::ByReturn); });
    connect(lineEdit(), &QLineEdit::editingFinished, this,
            [this] { settleTypedText(Settled::ByLeaving); });
}

void FieldCombo::setMatching(Matching matching) {
    matching_ = std::move(matching);
}

bool FieldCombo::matches(int row, const QString& typed) const {
    if (typed.trimmed().isEmpty() || row >= entries_.size()) {
        return true;
    }
    const FieldEntry& entry = entries_.at(row);
    return matching_ ? matching_(entry, typed) : entry.text.contains(typed, Qt::CaseInsensitive);
}

int FieldCombo::rowOf(const QString& typed, Settled how) const {
    if (typed.trimmed().isEmpty()) {
        return -1;
    }
    if (const int same = findText(typed); same >= 0) {
        return same;
    }
    QList<int> rows;
    for (int row = 0; row < count(); ++row) {
        if (matches(row, typed)) {
            rows.append(row);
        }
    }
    const bool isMeant =
        how == Settled::ByReturn ? !rows.isEmpty() : rows.size() == 1 && typed.trimmed().size() > 1;
    return isMeant ? rows.first() : -1;
}

void FieldCombo::setEntries(const QList<FieldEntry>& entries, const QString& chosenId) {
    ORV_ON_MAIN();
    if (entries != entries_) {
        const QSignalBlocker blocker(this);
        entries_ = entries;
        clear();
        for (const FieldEntry& entry : entries) {
            addItem(entry.text, entry.id);
        }
    }
    setChosen(chosenId);
}

void FieldCombo::setChosen(const QString& id) {
    ORV_ON_MAIN();
    const int index = findData(id);
    if (index != currentIndex()) {
        setCurrentIndex(index);
    }
    if (lineEdit() != nullptr && !lineEdit()->hasFocus()) {
        lineEdit()->setCursorPosition(0);
    }
}

QString FieldCombo::chosenId() const {
    return currentData().toString();
}

void FieldCombo::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void FieldCombo::focusInEvent(QFocusEvent* event) {
    QComboBox::focusInEvent(event);
    if (lineEdit() != nullptr && event->reason() != Qt::PopupFocusReason) {
        selectShownEntry();
    }
}

bool FieldCombo::eventFilter(QObject* watched, QEvent* event) {
    if (watched == lineEdit() && event->type() == QEvent::MouseButtonRelease &&
        !lineEdit()->hasSelectedText()) {
        selectShownEntry();
    }
    return QComboBox::eventFilter(watched, event);
}

void FieldCombo::selectShownEntry() {
    // Later, because a click that gives the focus also places the cursor. Someone who is in the
    // middle of typing may place it where he likes.
    QTimer::singleShot(0, lineEdit(), [this] {
        if (lineEdit()->text() == itemText(currentIndex())) {
            lineEdit()->selectAll();
        }
    });
}

void FieldCombo::settleTypedText(Settled how) {
    const QString typed = lineEdit()->text();
    const QString shown = itemText(currentIndex());
    if (typed == shown) {
        return;
    }
    const int index = rowOf(typed, how);
    if (index < 0) {
        setEditText(shown);
        return;
    }
    setCurrentIndex(index);
    Q_EMIT activated(index);
}

} // namespace orv
