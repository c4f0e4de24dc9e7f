#pragma once

#include "FieldEntry.h"

#include <QComboBox>
#include <QList>
#include <QString>

#include <functional>

namespace orv {

/// A choice from a list whose entries have identifiers. Its accessible name is its accessible name
/// property (or its label), its value what is chosen; Qt alone would give the value for both.
/// The mouse wheel scrolls past it and never changes the choice.
class FieldCombo : public QComboBox {
    Q_OBJECT

  public:
    enum class Search {
        None,
        ByTyping, ///< Part of an entry's text finds it, unless `setMatching` says otherwise.
    };

    explicit FieldCombo(Search search, QWidget* parent = nullptr);

    /// Whether someone who types `typed`, which is more than blanks, may mean `entry`.
    using Matching = std::function<bool(const FieldEntry& entry, const QString& typed)>;

    /// How entries are found by typing from now on. The first one that matches is taken.
    void setMatching(Matching matching);

    /// Replaces the entries and shows the one called `chosenId`, without telling anyone.
    void setEntries(const QList<FieldEntry>& entries, const QString& chosenId);

    /// Shows the entry called `id`, without telling anyone.
    void setChosen(const QString& id);

    QString chosenId() const;

  Q_SIGNALS:
    /// The user chose the entry called `id`.
    void chosen(const QString& id);

  protected:
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    class Found;

    void searchByTyping();
    bool matches(int row, const QString& typed) const;
    /// What is typed next replaces what the field shows.
    void selectShownEntry();
    enum class Settled {
        ByReturn, ///< What was typed means the first entry that it finds.
        ByLeaving ///< It means an entry only if it finds no other, and is more than one letter.
    };

    /// The row that is meant by what was typed; -1 if there is none.
    int rowOf(const QString& typed, Settled how) const;
    /// Turns what was typed into the entry that was meant, or back into the one chosen before.
    void settleTypedText(Settled how);

    QList<FieldEntry> entries_;
    Matching matching_;
    Found* found_ = nullptr; ///< Only with search.
};

} // namespace orv
