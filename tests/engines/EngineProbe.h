#pragma once

#include "CloudSTTEngine.h"
#include "ServiceError.h"
#include "WaitUntil.h"

#include <QStringList>

#include <memory>
#include <optional>
#include <utility>

namespace orv::test {

/// How an asynchronous call went.
struct Outcome {
    bool done = false;
    std::optional<QString> error;                      ///< What it threw.
    std::optional<CloudEngineError::Kind> engineError; ///< If it was one of these.
    std::optional<ServiceFault> fault;                 ///< If it was a `ServiceError`.
};

inline QCoro::Task<> noteOutcome(QCoro::Task<> task, std::shared_ptr<Outcome> outcome) {
    try {
        co_await task;
    } catch (const CloudEngineError& error) {
        outcome->error = error.errorDescription();
        outcome->engineError = error.kind();
    } catch (const ServiceError& error) {
        outcome->error = QString::fromUtf8(error.what());
        outcome->fault = error.fault();
    } catch (const std::exception& error) {
        outcome->error = QString::fromUtf8(error.what());
    }
    outcome->done = true;
}

inline std::shared_ptr<Outcome> start(QCoro::Task<> task) {
    auto outcome = std::make_shared<Outcome>();
    noteOutcome(std::move(task), outcome);
    return outcome;
}

/// Waits for the end of the call.
inline Outcome finish(QCoro::Task<> task) {
    const auto outcome = start(std::move(task));
    waitUntil([&] { return outcome->done; });
    return *outcome;
}

/// What an engine reports: "status: message", "source|translation" and faults.
struct EngineReports {
    explicit EngineReports(CloudSTTEngine& engine) {
        engine.onStatus = [this](const QString& status, const QString& message) {
            statuses.append(status + QStringLiteral(": ") + message);
        };
        engine.onFault = [this](const ServiceFault& fault) { faults.append(fault); };
        engine.onTranslation = [this](const QString& original, const QString& translation) {
            results.append(original + QStringLiteral("|") + translation);
        };
    }

    QStringList statuses;
    QStringList results;
    QList<ServiceFault> faults;
};

} // namespace orv::test
