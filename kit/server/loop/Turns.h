#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "server/loop/EventLoop.h"

namespace SettingsHandlerKit {

/// Work that goes on at the next round of the event loop, after everybody else's turn. One thread only. The event loop
/// outlives it, and runs once more after `close`.
class Turns {
public:
    explicit Turns(EventLoop& loop);
    ~Turns();

    Turns(const Turns&) = delete;
    Turns& operator=(const Turns&) = delete;

    /// Calls `turn` once, at the next round.
    void later(std::function<void()> turn);
    /// No turns are taken from now on.
    void close();

private:
    class Idle;

    void take();

    std::shared_ptr<Idle> idle;
    std::vector<std::function<void()>> waiting;
};

}  // namespace SettingsHandlerKit
