#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QString>

namespace orv {

/// What our own lines in the speech server's log file begin with when they head what follows.
inline constexpr QByteArrayView backendLogMark = "=== ";

/// The line before what a program prints that is started now, with an empty line before it.
QByteArray startHeading(const QDateTime& now, const QString& program);

/// The first line of a file that begins in the midst of what a program prints.
QByteArray continuationHeading(const QDateTime& now);

} // namespace orv
