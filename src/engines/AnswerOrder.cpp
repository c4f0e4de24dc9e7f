#include "AnswerOrder.h"

#include <utility>

namespace orv {

AnswerOrder::Place::Place(std::shared_ptr<Waiting> waiting)
    : waiting_(std::move(waiting))
    , own_(waiting_->turns.emplace(waiting_->turns.end())) {
    if (own_ == waiting_->turns.begin()) {
        own_->complete(true);
    }
}

AnswerOrder::Place::~Place() {
    if (!waiting_) {
        return;
    }
    const bool wasFirst = own_ == waiting_->turns.begin();
    waiting_->turns.erase(own_);
    if (wasFirst && !waiting_->turns.empty()) {
        const Completion<bool> next = waiting_->turns.front();
        next.complete(true);
    }
}

} // namespace orv
