#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

struct uv_loop_s;

namespace SettingsHandlerKit {

/// The event loop. It wakes only when there is something to do. One thread only.
class EventLoop {
public:
    EventLoop();
    /// Runs on until everything that was closed is gone; close listeners and signals before.
    ~EventLoop();

    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// Calls `action` when one of `signals` arrives, instead of what the signal does by itself.
    void onSignals(const std::vector<int>& signals, std::function<void()> action);

    /// Serves until `stop`.
    void run();
    void stop();
    /// Serves until nothing is open any more, at most for `milliseconds` or until `stop`. Calls `giveUp`, which closes
    /// what is still open, at least once.
    void drain(unsigned milliseconds, std::function<void()> giveUp);

    /// Calls `action` once, soon, from the loop.
    void later(std::function<void()> action);

    /// Calls `action` when nothing is open any more: at the end of a drain, or of the loop.
    void atEnd(std::function<void()> action) { endActions.push_back(std::move(action)); }

    uv_loop_s* handle() const { return loop.get(); }

private:
    class SignalWatch;
    void end();

    std::unique_ptr<uv_loop_s> loop;
    std::vector<std::unique_ptr<SignalWatch>> signalWatches;
    std::vector<std::function<void()>> endActions;
};

}  // namespace SettingsHandlerKit
