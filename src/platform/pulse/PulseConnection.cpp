#include "PulseConnection.h"

#include "ThreadChecks.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace orv {

void PulseTimer::schedule(pa_context* context, std::chrono::microseconds delay) {
    scheduled_ = true;
    const pa_usec_t when = pa_rtclock_now() + static_cast<pa_usec_t>(delay.count());
    if (event_) {
        pa_context_rttime_restart(context, event_, when);
    } else {
        event_ = pa_context_rttime_new(context, when, &PulseTimer::fired, this);
    }
}

void PulseTimer::cancel() {
    scheduled_ = false;
    if (event_) {
        api_->time_free(event_);
        event_ = nullptr;
    }
}

void PulseTimer::fired(pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
    auto* timer = static_cast<PulseTimer*>(self);
    timer->scheduled_ = false;
    timer->action_();
}

template <typename Info, typename Value, Value (*Convert)(const Info&)>
struct PulseConnection::ListRequest : Request {
    ListRequest(PulseConnection& theConnection, const void* theOwner, ListDone<Value> theDone)
        : Request(theOwner)
        , connection(theConnection)
        , done(std::move(theDone)) {}

    static void answer(pa_context*, const Info* info, int end, void* user) {
        auto* self = static_cast<ListRequest*>(user);
        ORV_ON(self->connection);
        if (end == 0 && info) {
            self->values.push_back(Convert(*info));
            return;
        }
        const std::unique_ptr<Request> keep = self->connection.take(self);
        self->done(self->values);
    }

    void lost() override { done(std::nullopt); }

    PulseConnection& connection;
    ListDone<Value> done;
    std::vector<Value> values;
};

std::shared_ptr<PulseConnection> PulseConnection::create(PulseOptions options) {
    PulseMainloopHandle loop(pa_threaded_mainloop_new());
    if (!loop) {
        return nullptr;
    }
    return std::shared_ptr<PulseConnection>(
        new PulseConnection(std::move(loop), std::move(options)));
}

PulseConnection::PulseConnection(PulseMainloopHandle loop, PulseOptions options)
    : options_(std::move(options))
    , loop_(std::move(loop))
    , reconnect_(std::make_unique<PulseTimer>(api(), [this] { connect(); }))
    , pause_(options_.firstReconnect) {
    ORV_ON_MAIN();
    pa_threaded_mainloop_set_name(loop_.get(), "orv-capture");
    pa_threaded_mainloop_start(loop_.get());
    const PulseLock lock(*this);
    connect();
}

PulseConnection::~PulseConnection() {
    ORV_ON_MAIN();
    Q_ASSERT(listeners_.empty());
    pa_threaded_mainloop_stop(loop_.get());
    requests_.clear();
    waiting_.clear();
    reconnect_.reset();
    context_.reset();
}

void PulseConnection::addListener(PulseListener* listener) {
    listeners_.push_back(listener);
}

void PulseConnection::removeListener(PulseListener* listener) {
    std::erase(listeners_, listener);
}

void PulseConnection::whenSettled(const void* owner, SettledDone done) {
    if (settled_) {
        done(ready_);
        return;
    }
    waiting_.emplace_back(owner, std::move(done));
}

template <typename Req, typename Start>
void PulseConnection::ask(std::unique_ptr<Req> request, Start start) {
    Req* raw = request.get();
    if (ready_) {
        raw->operation.reset(start(raw));
    }
    if (!raw->operation) {
        raw->lost();
        return;
    }
    requests_.push_back(std::move(request));
}

void PulseConnection::listSources(const void* owner, ListDone<PulseSource> done) {
    using Question = ListRequest<pa_source_info, PulseSource, &toPulseSource>;
    ask(std::make_unique<Question>(*this, owner, std::move(done)), [this](Question* question) {
        return pa_context_get_source_info_list(context_.get(), &Question::answer, question);
    });
}

void PulseConnection::findSource(const void* owner, const QByteArray& name,
                                 ListDone<PulseSource> done) {
    using Question = ListRequest<pa_source_info, PulseSource, &toPulseSource>;
    ask(std::make_unique<Question>(*this, owner, std::move(done)), [&](Question* question) {
        return pa_context_get_source_info_by_name(context_.get(), name.constData(),
                                                  &Question::answer, question);
    });
}

void PulseConnection::findSink(const void* owner, const QByteArray& name,
                               ListDone<PulseSink> done) {
    using Question = ListRequest<pa_sink_info, PulseSink, &toPulseSink>;
    ask(std::make_unique<Question>(*this, owner, std::move(done)), [&](Question* question) {
        return pa_context_get_sink_info_by_name(context_.get(), name.constData(), &Question::answer,
                                                question);
    });
}

void PulseConnection::listPlaybacks(const void* owner, ListDone<PulsePlayback> done) {
    using Question = ListRequest<pa_sink_input_info, PulsePlayback, &toPulsePlayback>;
    ask(std::make_unique<Question>(*this, owner, std::move(done)), [this](Question* question) {
        return pa_context_get_sink_input_info_list(context_.get(), &Question::answer, question);
    });
}

void PulseConnection::forget(const void* owner) {
    std::erase_if(requests_, [owner](const auto& request) { return request->owner == owner; });
    std::erase_if(waiting_, [owner](const auto& entry) { return entry.first == owner; });
}

QString PulseConnection::lastError() const {
    return QString::fromUtf8(pa_strerror(pa_context_errno(context_.get())));
}

std::unique_ptr<PulseConnection::Request> PulseConnection::take(const Request* request) {
    const auto found = std::find_if(requests_.begin(), requests_.end(),
                                    [request](const auto& one) { return one.get() == request; });
    Q_ASSERT(found != requests_.end());
    std::unique_ptr<Request> taken = std::move(*found);
    requests_.erase(found);
    return taken;
}

void PulseConnection::connect() {
    const PulseProplistHandle properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Orvane");
    context_.reset(pa_context_new_with_proplist(api(), nullptr, properties.get()));
    pa_context_set_state_callback(
        context_.get(),
        [](pa_context*, void* self) { static_cast<PulseConnection*>(self)->contextChanged(); },
        this);
    pa_context_set_subscribe_callback(
        context_.get(),
        [](pa_context*, pa_subscription_event_type_t type, std::uint32_t, void* self) {
            static_cast<PulseConnection*>(self)->subscribed(type);
        },
        this);
    // No starting of a server: that is the session's business.
    const char* server = options_.server.isEmpty() ? nullptr : options_.server.constData();
    if (pa_context_connect(context_.get(), server, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 &&
        !reconnect_->isScheduled()) {
        failed();
    }
}

void PulseConnection::contextChanged() {
    const pa_context_state_t state = pa_context_get_state(context_.get());
    if (state == PA_CONTEXT_READY) {
        ready();
    } else if (!PA_CONTEXT_IS_GOOD(state)) {
        failed();
    }
}

void PulseConnection::ready() {
    pause_ = options_.firstReconnect;
    ready_ = true;
    constexpr auto mask = static_cast<pa_subscription_mask_t>(
        PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SINK_INPUT |
        PA_SUBSCRIPTION_MASK_SERVER);
    if (pa_operation* operation = pa_context_subscribe(context_.get(), mask, nullptr, nullptr)) {
        pa_operation_unref(operation);
    }
    settle(true);
    for (PulseListener* listener : std::vector(listeners_)) {
        listener->pulseReady();
    }
}

void PulseConnection::failed() {
    // A failed context never recovers; the timer's loop is all it is still good for.
    const bool wasReady = std::exchange(ready_, false);
    const auto pause = pause_;
    pause_ = std::min(pause_ * 2, options_.longestReconnect);
    reconnect_->schedule(context_.get(), pause);
    for (const auto& request : std::exchange(requests_, {})) {
        request->operation.reset();
        request->lost();
    }
    settle(false);
    if (wasReady) {
        for (PulseListener* listener : std::vector(listeners_)) {
            listener->pulseLost();
        }
    }
}

void PulseConnection::subscribed(pa_subscription_event_type_t type) {
    ORV_ON(*this);
    const auto facility = type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
    const bool comesOrGoes =
        (type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) != PA_SUBSCRIPTION_EVENT_CHANGE;
    std::optional<PulseChange> change;
    if (facility == PA_SUBSCRIPTION_EVENT_SERVER) {
        change = PulseChange::Server;
    } else if (facility == PA_SUBSCRIPTION_EVENT_SINK_INPUT) {
        change = comesOrGoes ? PulseChange::Playbacks : PulseChange::PlaybackMoved;
    } else if (facility == PA_SUBSCRIPTION_EVENT_SOURCE && comesOrGoes) {
        change = PulseChange::Sources;
    } else if (facility == PA_SUBSCRIPTION_EVENT_SINK && comesOrGoes) {
        change = PulseChange::Sinks;
    }
    if (change) {
        for (PulseListener* listener : std::vector(listeners_)) {
            listener->pulseChanged(*change);
        }
    }
}

void PulseConnection::settle(bool ready) {
    settled_ = true;
    for (const auto& [owner, done] : std::exchange(waiting_, {})) {
        done(ready);
    }
}

} // namespace orv
