#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace SettingsHandlerTesting {

/// One record of everything that happens around a handler: log lines, calls of collaborators and observers, storage
/// accesses, in their order. A test compares it whole:
///
///     handler.setSetting("deviceName", "Den");
///     EXPECT_EQ(journal.take(), (std::vector<std::string>{"log 0 SettingsHandler:setSetting", …}));
///
/// A hook lets a test act at a given moment: throw an exception out of a collaborator, call back into the handler, see
/// whether a lock is held. Threads: any.
class Journal {
public:
    using Action = std::function<void()>;

    Journal() = default;
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Records `entry`, then runs the action waiting for it, on this thread and without a lock of the journal's.
    void add(const std::string& entry) {
        Action action;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            recorded.push_back(entry);
            for (auto waiting = actions.begin(); waiting != actions.end(); ++waiting) {
                if (entry.rfind(waiting->first, 0) == 0) {
                    action = std::move(waiting->second);
                    actions.erase(waiting);
                    break;
                }
            }
        }
        if (action) {
            action();
        }
    }

    /// Runs `action` once, when the next entry that starts with `beginning` is recorded.
    void at(const std::string& beginning, Action action) {
        const std::lock_guard<std::mutex> lock(mutex);
        actions.emplace_back(beginning, std::move(action));
    }

    /// The entries so far; the journal is empty afterwards.
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(recorded, {});
    }

    /// Were all actions run?
    bool allActionsRun() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return actions.empty();
    }

private:
    mutable std::mutex mutex;
    std::vector<std::string> recorded;
    std::vector<std::pair<std::string, Action>> actions;
};

}  // namespace SettingsHandlerTesting
