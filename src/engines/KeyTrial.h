#pragma once

#include "KeyQuestion.h"
#include "Lifetime.h"
#include "ServiceClient.h"

#include <QCoroTask>

#include <QObject>
#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace orv {

/// Asks a service whether a key works. Destroying it gives that up. Lives on the main thread.
class KeyTrial : public QObject {
    Q_OBJECT

  public:
    static constexpr std::chrono::seconds patience{10}; ///< Without a byte in either direction.

    /// Asks one question after the other, until one shows a fault. Once.
    void begin(std::vector<KeyQuestion> questions, const QString& key);

  Q_SIGNALS:
    /// Without a fault the key works. May destroy the object.
    void ended(const std::optional<orv::ServiceFault>& fault);

  private:
    QCoro::Task<> ask(std::vector<KeyQuestion> questions, QString key);
    QCoro::Task<std::optional<ServiceFault>> answerTo(KeyQuestion question);

    ServiceClient http_;
    Lifetime lifetime_; // Last: ends first.
};

} // namespace orv
