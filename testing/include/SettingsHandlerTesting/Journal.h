#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace SettingsHandlerTesting {

/// A record of everything that happens around a handler, in order: log lines, and calls of collaborators and observers.
/// A test compares all of it:
///
///     handler.setSetting("deviceName", "Den");
///     EXPECT_EQ(journal.take(), (std::vector<std::string>{"storage.setValue(deviceName, Den)", …}));
///
/// Options: an action runs when a given entry is recorded, for example to throw an exception out of a collaborator,
/// call the handler, block a thread, or find out whether a lock is held. `Actions.h` and `Gate.h` have the usual ones.
///
/// Threads: any. Entries of several threads are recorded in the order in which they happen.
///
/// The journal serialises the threads that record, so it can hide a race from a thread sanitizer. To find races, use
/// collaborators that record nothing.
class Journal {
public:
    /// Runs when an entry is recorded, on the thread that records it.
    using Action = std::function<void()>;

    Journal() = default;
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Records `entry`, then runs the oldest action registered for it, on this thread and without the journal's lock.
    void add(std::string entry) {
        if (const Action action = recordAndFind(std::move(entry))) {
            action();
        }
    }

    /// Runs `action` once, when the next entry that starts with `beginning` is recorded.
    void at(const std::string& beginning, Action action) { await({beginning, std::move(action), true}); }

    /// Runs `action` at every entry that starts with `beginning`.
    void atEvery(const std::string& beginning, Action action) { await({beginning, std::move(action), false}); }

    /// Removes all actions.
    void forgetActions() {
        const std::lock_guard<std::mutex> lock(mutex);
        awaited.clear();
    }

    /// Removes and returns the entries so far.
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(recorded, {});
    }

    /// Returns: whether every action of `at` was run. Check it at the end of a test: an action that was not run tested
    /// nothing.
    bool allActionsRun() const {
        const std::lock_guard<std::mutex> lock(mutex);
        for (const auto& waiting : awaited) {
            if (waiting.once) {
                return false;
            }
        }
        return true;
    }

private:
    struct Awaited {
        std::string beginning;
        Action action;
        bool once;
    };

    void await(Awaited waiting) {
        const std::lock_guard<std::mutex> lock(mutex);
        awaited.push_back(std::move(waiting));
    }

    Action recordAndFind(std::string entry) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (recorded.capacity() == 0) {
            recorded.reserve(32);
        }
        recorded.push_back(std::move(entry));
        for (auto waiting = awaited.begin(); waiting != awaited.end(); ++waiting) {
            if (recorded.back().compare(0, waiting->beginning.size(), waiting->beginning) != 0) {
                continue;
            }
            if (!waiting->once) {
                return waiting->action;
            }
            Action action = std::move(waiting->action);
            awaited.erase(waiting);
            return action;
        }
        return {};
    }

    mutable std::mutex mutex;
    std::vector<std::string> recorded;
    std::vector<Awaited> awaited;
};

}  // namespace SettingsHandlerTesting
