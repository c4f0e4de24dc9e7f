#include "NotificationCentre.h"

#include <QThread>

#include <utility>

namespace orv {

void NotificationCentre::post(const QString& name, const QVariantMap& userInfo) {
    Q_ASSERT(QThread::currentThread() == thread());
    Q_EMIT posted(name, userInfo);
}

void NotificationCentre::observe(const QString& name, QObject* context, Handler handler) {
    Q_ASSERT(QThread::currentThread() == thread());
    connect(this, &NotificationCentre::posted, context,
            [name, handler = std::move(handler)](const QString& posted, const QVariantMap& info) {
                if (posted == name) {
                    handler(info);
                }
            });
}

} // namespace orv
