#pragma once

#include <chrono>
#include <functional>
#include <map>

#include "server/loop/Deadline.h"

namespace SettingsHandlerKit {

/// Calls actions, each once and from the event loop, when its time is over; those of one time in their order. It does
/// not keep the loop running. The event loop outlives it, and runs once more afterwards.
class Delays {
public:
    explicit Delays(EventLoop& loop);

    void add(std::chrono::milliseconds delay, std::function<void()> action);

private:
    void takeDue();
    void setDeadline();

    std::multimap<std::chrono::steady_clock::time_point, std::function<void()>> actions;
    Deadline deadline;
};

}  // namespace SettingsHandlerKit
