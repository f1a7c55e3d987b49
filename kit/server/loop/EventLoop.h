#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

struct uv_loop_s;

namespace SettingsHandlerKit {

/// The event loop. It wakes only when there is something to do. One thread only, except for `post`.
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
    /// While `open`, something is open: the loop runs, also when nothing else is.
    void keepOpen(bool open);
    /// Serves until nothing is open any more, at most for `milliseconds` or until `stop`. Calls `giveUp`, which closes
    /// what is still open, at least once.
    void drain(unsigned milliseconds, std::function<void()> giveUp);
    /// The two ends of `drain`, for a loop that is not run but turned: call `endDrain` when `turn` returns false.
    void beginDrain(unsigned milliseconds, std::function<void()> giveUp);
    void endDrain();

    /// Does what is due without waiting. Returns: false when nothing is open any more.
    bool turn();
    /// Becomes readable when there is something for `turn` to do.
    int fileDescriptor() const;
    /// How long `turn` need not be called while the descriptor is not readable; nothing: as long as that. Depends on
    /// everything that was done with the loop meanwhile.
    std::optional<std::chrono::milliseconds> timeout();

    /// Calls `action` once, soon, from the loop.
    void later(std::function<void()> action);
    /// The same from any thread, while the loop exists. Actions run in the order in which they were posted, while
    /// something is open; they do not keep the loop running.
    void post(std::function<void()> action);

    uv_loop_s* handle() const { return loop.get(); }

private:
    class SignalWatch;
    class DrainTimer;
    class Posts;
    void end();

    std::unique_ptr<uv_loop_s> loop;
    std::shared_ptr<Posts> posts;
    std::shared_ptr<DrainTimer> drainTimer;
    std::vector<std::unique_ptr<SignalWatch>> signalWatches;
};

}  // namespace SettingsHandlerKit
