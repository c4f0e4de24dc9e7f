#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace orv {

/// A request to a service, or a block of audio for it, that failed. The message is for log lines
/// and carries no key.
class ServiceError : public std::exception {
  public:
    explicit ServiceError(const QString& message)
        : utf8_(message.toUtf8()) {}

    const char* what() const noexcept override { return utf8_.constData(); }

  private:
    QByteArray utf8_;
};

} // namespace orv
