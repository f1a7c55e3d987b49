#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "server/loop/EventLoop.h"

namespace SettingsHandlerKit {

/// Calls an action once, from the event loop, when the time is over. It does not keep the loop running. The event loop
/// outlives it, and runs once more afterwards.
class Deadline {
public:
    Deadline(EventLoop& loop, std::function<void()> action);
    ~Deadline();

    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    /// The time from now on, instead of what was set before.
    void set(std::chrono::milliseconds time);

private:
    class Handle;
    std::shared_ptr<Handle> handle;
};

}  // namespace SettingsHandlerKit
