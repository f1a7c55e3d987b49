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
///     EXPECT_EQ(journal.take(), (std::vector<std::string>{"storage.setValue(deviceName, Den)", …}));
///
/// Knobs: an action lets a test act at a given moment: throw an exception out of a collaborator, call back into the
/// handler, hold a thread up, see whether a lock is held. `Actions.h` and `Gate.h` have the usual ones.
///
/// Threads: any. What several threads do is recorded in the order in which it happened.
///
/// Unlike a device it puts the threads that reach it in line, one entry after the other: it can hide a race from a
/// thread sanitizer. For races, give the handler collaborators of your own that record nothing.
class Journal {
public:
    /// What runs at an entry, on the thread that records it.
    using Action = std::function<void()>;

    Journal() = default;
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Records `entry`, then runs the oldest action that waits for it, on this thread and without a lock of the
    /// journal's.
    void add(const std::string& entry) {
        if (const Action action = recordAndFind(entry)) {
            action();
        }
    }

    /// Runs `action` once, when the next entry that starts with `beginning` is recorded.
    void at(const std::string& beginning, Action action) { await({beginning, std::move(action), true}); }

    /// Runs `action` at every entry that starts with `beginning`.
    void atEvery(const std::string& beginning, Action action) { await({beginning, std::move(action), false}); }

    /// Forgets the actions that wait.
    void forgetActions() {
        const std::lock_guard<std::mutex> lock(mutex);
        awaited.clear();
    }

    /// The entries so far; the journal is empty afterwards.
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> lock(mutex);
        return std::exchange(recorded, {});
    }

    /// Was every action of `at` run? A test asks it at its end: an action that waited in vain tested nothing.
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

    Action recordAndFind(const std::string& entry) {
        const std::lock_guard<std::mutex> lock(mutex);
        recorded.push_back(entry);
        for (auto waiting = awaited.begin(); waiting != awaited.end(); ++waiting) {
            if (entry.compare(0, waiting->beginning.size(), waiting->beginning) != 0) {
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
