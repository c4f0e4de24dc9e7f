#pragma once

#include <pulse/pulseaudio.h>

#include <memory>

namespace orv {

// Owners of the library's objects. Each release says what has to hold when it happens.

struct PulseMainloopRelease {
    /// Not with the loop's lock held: waits for the loop's thread.
    void operator()(pa_threaded_mainloop* loop) const {
        pa_threaded_mainloop_stop(loop);
        pa_threaded_mainloop_free(loop);
    }
};

struct PulseContextRelease {
    /// With the loop's lock held, or its thread stopped.
    void operator()(pa_context* context) const {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};

struct PulseOperationRelease {
    /// Its callback does not run any more. With the loop's lock held, or its thread stopped.
    void operator()(pa_operation* operation) const {
        pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
};

struct PulseProplistRelease {
    void operator()(pa_proplist* list) const { pa_proplist_free(list); }
};

using PulseMainloopHandle = std::unique_ptr<pa_threaded_mainloop, PulseMainloopRelease>;
using PulseContextHandle = std::unique_ptr<pa_context, PulseContextRelease>;
using PulseOperationHandle = std::unique_ptr<pa_operation, PulseOperationRelease>;
using PulseProplistHandle = std::unique_ptr<pa_proplist, PulseProplistRelease>;

} // namespace orv
