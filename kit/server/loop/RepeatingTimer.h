#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "server/loop/EventLoop.h"

namespace SettingsHandlerKit {

/// Calls an action repeatedly, from the event loop. The timer does not keep the loop running. The event loop
/// outlives it, and runs once more afterwards.
class RepeatingTimer {
public:
    RepeatingTimer(EventLoop& loop, std::chrono::milliseconds first, std::chrono::milliseconds every,
                   std::function<void()> action);
    ~RepeatingTimer();

    RepeatingTimer(const RepeatingTimer&) = delete;
    RepeatingTimer& operator=(const RepeatingTimer&) = delete;

private:
    class Handle;
    std::shared_ptr<Handle> handle;
};

}  // namespace SettingsHandlerKit
