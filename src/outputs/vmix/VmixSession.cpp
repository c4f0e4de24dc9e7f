#include "VmixSession.h"

#include "VmixRequests.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

VmixSession::VmixSession(VmixLimits limits, LookUpHost lookUp)
    : limits_(limits)
    , lookUp_(std::move(lookUp))
    , thread_(u"io.tavrin.orv.vmix"_s) {}

VmixSession::~VmixSession() {
    thread_.sync([this] { requests_.reset(); });
}

void VmixSession::get(const QUrl& url, Done done) {
    std::deque<Order> dropped; // Dies after the lock is released.
    const std::lock_guard lock(mutex_);
    const auto deadline = std::chrono::steady_clock::now() + limits_.request;
    orders_.push_back({url, std::move(done), deadline});
    if (orders_.size() > limits_.waiting) {
        dropped.push_back(std::move(orders_.front()));
        orders_.pop_front();
    } else if (orders_.size() == 1) {
        thread_.post([this] { startWaiting(); });
    }
}

void VmixSession::startWaiting() {
    std::deque<Order> taken;
    {
        const std::lock_guard lock(mutex_);
        taken.swap(orders_);
    }
    if (!requests_) {
        requests_ = std::make_unique<VmixRequests>(limits_, lookUp_);
    }
    for (Order& order : taken) {
        requests_->add(order.url, std::move(order.done), order.deadline);
    }
}

} // namespace orv
