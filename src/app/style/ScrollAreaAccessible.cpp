#include "ScrollAreaAccessible.h"

#include <QAbstractScrollArea>
#include <QAccessibleWidget>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Lists and texts are asked about under their own classes' names before these, and stay Qt's.
QAccessibleInterface* createScrollAreaAccessible(const QString& className, QObject* object) {
    auto* area = qobject_cast<QAbstractScrollArea*>(object);
    const bool plain = className == "QScrollArea"_L1 || className == "QAbstractScrollArea"_L1;
    return plain && area != nullptr ? new QAccessibleWidget(area, QAccessible::Client) : nullptr;
}

} // namespace

void installScrollAreaAccessibility() {
    QAccessible::installFactory(createScrollAreaAccessible); // Takes each one once.
}

} // namespace orv
