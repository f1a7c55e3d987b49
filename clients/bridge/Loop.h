#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace SettingsBridge {

/// What a loop waits for.
class Source {
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Wanted {
        /// -1: none.
        int descriptor = -1;
        /// As in poll(2).
        short events = 0;
        /// When to call `process` in any case; a past time: at once.
        std::optional<Time> time = std::nullopt;
    };

    Source() = default;
    virtual ~Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /// Is asked before each wait.
    virtual Wanted wanted() = 0;
    /// Something that was wanted is there: `events` of the descriptor, as poll(2) returns them, or the time (0). Does a
    /// bounded amount of work.
    virtual void process(short events) = 0;
};

/// Waits for several sources in turn, on one thread, until SIGINT or SIGTERM. Tells the service manager that the
/// program is ready, lives and stops.
class Loop {
public:
    /// From now on SIGINT and SIGTERM do not end the process. Errors: `std::system_error`.
    Loop();
    ~Loop();
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    /// `source` must live as long as the loop runs.
    void add(Source& source) { sources.push_back(&source); }
    /// `status` is for people, until the first one of a `StatusFile`. Errors: those of sources.
    void run(const std::string& status);

private:
    void turn();

    std::vector<Source*> sources;
    int signals;
    bool isStopped = false;
    std::optional<std::chrono::microseconds> aliveInterval;
    Source::Time nextAlive = std::chrono::steady_clock::now();
};

}  // namespace SettingsBridge
