#pragma once

#include "ServiceFault.h"

#include <QByteArray>
#include <QString>

#include <exception>
#include <utility>

namespace orv {

/// A request to a service, or a block of audio for it, that failed. The message is for log lines
/// and carries no key.
class ServiceError : public std::exception {
  public:
    ServiceError(const QString& message, ServiceFault fault)
        : utf8_(message.toUtf8())
        , fault_(std::move(fault)) {}

    /// Where nothing more is known than what the message says.
    ServiceError(const QString& message, ServiceFault::Kind kind)
        : ServiceError(message, ServiceFault{kind, message}) {}

    const char* what() const noexcept override { return utf8_.constData(); }

    /// For people.
    const ServiceFault& fault() const { return fault_; }

  private:
    QByteArray utf8_;
    ServiceFault fault_;
};

} // namespace orv
