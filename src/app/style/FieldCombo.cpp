#include "FieldCombo.h"

#include "FieldComboAccessible.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFocusEvent>
#include <QLineEdit>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QWheelEvent>

namespace orv {

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
        setEditable(true);
        setInsertPolicy(QComboBox::NoInsert);
        completer()->setCompletionMode(QCompleter::PopupCompletion);
        completer()->setFilterMode(Qt::MatchContains);
        completer()->setCaseSensitivity(Qt::CaseInsensitive);
        lineEdit()->installEventFilter(this);
        connect(lineEdit(), &QLineEdit::editingFinished, this, &FieldCombo::settleTypedText);
    }
}

void FieldCombo::setEntries(const QList<FieldEntry>& entries, const QString& chosenId) {
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

void FieldCombo::settleTypedText() {
    const QString typed = lineEdit()->text();
    const QString shown = itemText(currentIndex());
    if (typed == shown) {
        return;
    }
    const QAbstractItemModel* matches = completer()->completionModel();
    completer()->setCompletionPrefix(typed);
    const int index = typed.trimmed().isEmpty() || matches->rowCount() == 0
                          ? -1
                          : findText(matches->index(0, completer()->completionColumn())
                                         .data(Qt::DisplayRole)
                                         .toString());
    if (index < 0) {
        setEditText(shown);
        return;
    }
    setCurrentIndex(index);
    Q_EMIT activated(index);
}

} // namespace orv
