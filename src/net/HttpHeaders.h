#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>

#include <algorithm>

namespace orv {

/// Names and values, in their order.
using HttpHeaders = QList<QPair<QByteArray, QByteArray>>;

/// The value of the first header called `name`, whatever its case; empty when there is none.
inline QByteArray headerIn(const HttpHeaders& headers, const QByteArray& name) {
    const auto found = std::find_if(headers.begin(), headers.end(), [&](const auto& header) {
        return header.first.compare(name, Qt::CaseInsensitive) == 0;
    });
    return found == headers.end() ? QByteArray() : found->second;
}

} // namespace orv
