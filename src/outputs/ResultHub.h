#pragma once

#include "Result.h"

#include <QObject>

#include <vector>

namespace orv {

class Output;

/// Where the road of a result forks: what is announced here reaches every output. Lives on the main
/// thread and is used there alone.
class ResultHub : public QObject {
    Q_OBJECT

  public:
    using QObject::QObject;

    /// Adds an output behind those before it. It must outlive the last announcement.
    void add(Output& output);

    /// Announces a result: each output takes it, one after the other in the order in which they
    /// were added, before this returns.
    void ShowTranslation(const Result& result);

  private:
    std::vector<Output*> outputs_;
};

} // namespace orv
