#pragma once

#include "Result.h"

#include <QObject>

#include <memory>
#include <vector>

namespace orv {

class Output;

/// Where the road of a result forks: what is announced here reaches every output. Lives on the main
/// thread and is used there alone.
class ResultHub : public QObject {
    Q_OBJECT

  public:
    explicit ResultHub(QObject* parent = nullptr);
    ~ResultHub() override;

    /// Adds an output behind those before it. It must outlive the last announcement.
    void add(Output& output);

    /// The same for an output that nobody else talks to: it belongs to the hub.
    void add(std::unique_ptr<Output> output);

    /// Announces a result: each output takes it, one after the other in the order in which they
    /// were added, before this returns.
    void ShowTranslation(const Result& result);

  private:
    std::vector<Output*> outputs_; ///< All, in their order.
    std::vector<std::unique_ptr<Output>> own_;
};

} // namespace orv
