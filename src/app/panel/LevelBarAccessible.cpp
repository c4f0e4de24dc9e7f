#include "LevelBarAccessible.h"

#include "LevelBar.h"

#include <QAccessibleWidget>

#include <cmath>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

class LevelBarAccessible : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    explicit LevelBarAccessible(LevelBar* bar)
        : QAccessibleWidget(bar, QAccessible::ProgressBar) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                                   : QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? QString::number(currentValue().toInt())
                                          : QAccessibleWidget::text(kind);
    }

    // In percent.
    QVariant currentValue() const override {
        return static_cast<int>(std::lround(static_cast<LevelBar*>(object())->level() * 100.0F));
    }

    void setCurrentValue(const QVariant& /*value*/) override {}

    QVariant minimumValue() const override { return 0; }

    QVariant maximumValue() const override { return 100; }

    QVariant minimumStepSize() const override { return 1; }
};

QAccessibleInterface* createLevelBarAccessible(const QString& className, QObject* object) {
    auto* bar = qobject_cast<LevelBar*>(object);
    return className == "orv::LevelBar"_L1 && bar != nullptr ? new LevelBarAccessible(bar)
                                                             : nullptr;
}

} // namespace

void installLevelBarAccessibility() {
    QAccessible::installFactory(createLevelBarAccessible); // Takes each one once.
}

} // namespace orv
