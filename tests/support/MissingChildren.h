#pragma once

#include <QAccessible>
#include <QObject>

#include <gtest/gtest.h>

namespace orv::test {

/// Asks every node from `node` down for children that it does not have, as assistive programs do
/// that heard of the tree before it changed. Returns how many nodes there are.
inline int askForMissingChildren(QAccessibleInterface* node) {
    const int count = node->childCount();
    for (const int index : {count, count + 1, count + 1000}) {
        EXPECT_EQ(node->child(index), nullptr)
            << index << " of " << node->object()->metaObject()->className();
    }
    int nodes = 1;
    for (int index = 0; index < count; ++index) {
        QAccessibleInterface* child = node->child(index);
        if (child != nullptr && child->isValid() && child->object() != nullptr) {
            nodes += askForMissingChildren(child);
        }
    }
    return nodes;
}

} // namespace orv::test
