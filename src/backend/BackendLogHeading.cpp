#include "BackendLogHeading.h"

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QByteArray inUtc(const QDateTime& time) {
    return time.toUTC().toString(u"yyyy-MM-dd HH:mm:ss 'UTC'").toUtf8();
}

} // namespace

QByteArray startHeading(const QDateTime& now, const QString& program) {
    QByteArray line = program.toUtf8();
    line.replace('\n', ' ');
    return "\n" + backendLogMark.toByteArray() + inUtc(now) + " - Start: " + line + "\n";
}

QByteArray continuationHeading(const QDateTime& now) {
    return backendLogMark.toByteArray() + inUtc(now) + " - Fortsetzung\n";
}

} // namespace orv
