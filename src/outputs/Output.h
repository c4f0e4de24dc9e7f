#pragma once

#include "Result.h"

namespace orv {

/// A place where results go. Its owner adds it to the `ResultHub`, which hands it every result.
///
/// Each output decides by its own settings whether it takes a result at all, and says in its header
/// what it drops when results come faster than it gets rid of them.
class Output {
  public:
    virtual ~Output() = default;

    /// Takes one result. Called on the main thread; returns without waiting for anything.
    virtual void take(const Result& result) = 0;
};

} // namespace orv
