#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orv {

/// What a service refuses, or fails with. A plain value; whoever shows it chooses the words.
struct ServiceFault {
    enum class Kind {
        KeyMissing,    ///< None is stored.
        KeyRefused,    ///< It is wrong, expired, or of another service.
        RegionMissing, ///< None is stored.
        NoCredit,      ///< The account has nothing left to pay with.
        NotAllowed,  ///< The account may not use this: a model, an interface that is switched off.
        QuotaUsedUp, ///< For now, or for the day.
        TooManyRequests, ///< At once, or in too short a time.
        LanguageUnknown, ///< The service lacks it.
        RequestRefused,  ///< For another reason, which is in `said`.
        NetworkFailed,   ///< The service cannot be reached, or the connection broke.
        TimedOut,        ///< The service has been silent for too long.
        ServiceFailed,   ///< The service says that it is its own fault, or that it is overloaded.
        Unreadable,      ///< What came is no answer of this service, as from a captive portal.
        NotTranslated,   ///< It was recognised, but nobody who could translate it did.
        TooSlow, ///< Speech was dropped since it had waited for too long; `said` is how much.
    };

    Kind kind = Kind::ServiceFailed;
    QString said = {}; ///< In the service's own words; may be empty. Without keys.
    /// Who did not translate what was recognised, for people; empty where the engine's own service
    /// failed.
    QString translator = {};

    friend bool operator==(const ServiceFault&, const ServiceFault&) = default;
};

/// The code by which the texts know a fault, such as "service.key_refused".
QString codeOf(ServiceFault::Kind kind);

/// Whether there is text nevertheless: only its translation is missing.
bool isOfTranslation(const ServiceFault& fault);

/// Whether it may be over the next time without anybody doing something.
bool passesByItself(ServiceFault::Kind kind);

/// The fault that an HTTP status stands for where nothing better is known; nothing for a success.
std::optional<ServiceFault::Kind> faultOfStatus(int status);

/// `text` in one line, not longer than people read, with `key` blotted out: services quote what
/// they refuse.
QString sayable(const QString& text, const QString& key);

} // namespace orv
