#include "FieldComboAccessible.h"

#include "FieldCombo.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

class FieldComboAccessible : public QAccessibleWidget {
  public:
    explicit FieldComboAccessible(FieldCombo* combo)
        : QAccessibleWidget(combo, QAccessible::ComboBox) {}

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value) {
            return combo()->currentText();
        }
        return QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = combo()->view()->isVisible();
        state.editable = combo()->isEditable();
        return state;
    }

    int childCount() const override { return combo()->isEditable() ? 2 : 1; }

    QAccessibleInterface* child(int index) const override {
        if (index == 0) {
            return QAccessible::queryAccessibleInterface(combo()->view());
        }
        return index == 1 && combo()->isEditable()
                   ? QAccessible::queryAccessibleInterface(combo()->lineEdit())
                   : nullptr;
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        if (child->object() == combo()->view()) {
            return 0;
        }
        return combo()->isEditable() && child->object() == combo()->lineEdit() ? 1 : -1;
    }

    QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }

    void doAction(const QString& name) override {
        if (name == showMenuAction() || name == pressAction()) {
            if (combo()->view()->isVisible()) {
                combo()->hidePopup();
            } else {
                combo()->showPopup();
            }
        }
    }

  private:
    FieldCombo* combo() const { return static_cast<FieldCombo*>(object()); }
};

QAccessibleInterface* createFieldComboAccessible(const QString& className, QObject* object) {
    auto* combo = qobject_cast<FieldCombo*>(object);
    return className == "orv::FieldCombo"_L1 && combo != nullptr ? new FieldComboAccessible(combo)
                                                                 : nullptr;
}

} // namespace

void installFieldComboAccessibility() {
    QAccessible::installFactory(createFieldComboAccessible); // Takes each one once.
}

} // namespace orv
