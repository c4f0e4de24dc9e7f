#pragma once

#include <QList>
#include <QString>

namespace orv {

/// One choice of a list: what is stored and what people read.
struct FieldEntry {
    QString id;
    QString text;

    friend bool operator==(const FieldEntry&, const FieldEntry&) = default;
};

/// Makes sure that `id`, which is stored, is in the list: one that is missing is added at the end
/// and shows itself, so that what is chosen is seen and not lost; under `name` if it is known.
void keepChosen(QList<FieldEntry>& entries, const QString& id, const QString& name = {});

} // namespace orv
