#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>

namespace orv {

/// The names of the notifications that cross folder borders. Their user info is given beside them.
namespace notifications {
using namespace Qt::StringLiterals;
/// "isRunning" (bool): the backend came up or went away.
inline const QString backendStatusChanged = u"BackendStatusChanged"_s;
/// "isTranslating" (bool): a run was started or stopped.
inline const QString translationStatusChanged = u"TranslationStatusChanged"_s;
/// "original", "translation" (strings): one result for every output but vMix.
inline const QString showTranslation = u"ShowTranslation"_s;
} // namespace notifications

/// Lets objects that do not know each other tell one another what happened. Lives on the main
/// thread; `post` and `observe` are called there, handlers run there, synchronously, in the order
/// of observing.
class NotificationCentre : public QObject {
    Q_OBJECT

  public:
    using Handler = std::function<void(const QVariantMap& userInfo)>;

    /// Tells every observer of `name`.
    void post(const QString& name, const QVariantMap& userInfo = {});

    /// Calls `handler` for every later notification called `name`, until `context` is destroyed.
    void observe(const QString& name, QObject* context, Handler handler);

  Q_SIGNALS:
    /// The carrier behind `post` and `observe`.
    void posted(const QString& name, const QVariantMap& userInfo);
};

} // namespace orv
