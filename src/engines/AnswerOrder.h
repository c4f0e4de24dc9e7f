#pragma once

#include "Completion.h"

#include <list>
#include <memory>

namespace orv {

/// Lets the answers to several questions out in the order of the questions, however they come. One
/// thread only.
class AnswerOrder {
    struct Waiting {
        std::list<Completion<bool>> turns; ///< Of the places that are held, the first one first.
    };

  public:
    /// A place in the order, held until its answer is out or known not to come. It may outlive the
    /// order.
    class Place {
      public:
        Place(Place&& other) noexcept = default;
        Place& operator=(Place&& other) = delete;
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

        /// Makes room for the next. Whoever waits for that goes on inside the destructor.
        ~Place();

        /// Done once every place before this one is free. One coroutine may wait for it.
        Completion<bool> turn() const { return *own_; }

      private:
        friend class AnswerOrder;

        explicit Place(std::shared_ptr<Waiting> waiting);

        std::shared_ptr<Waiting> waiting_; ///< None once it was moved from.
        std::list<Completion<bool>>::iterator own_;
    };

    /// The place behind all that are held.
    Place take() { return Place(waiting_); }

  private:
    std::shared_ptr<Waiting> waiting_ = std::make_shared<Waiting>();
};

} // namespace orv
