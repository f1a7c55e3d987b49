#pragma once

#include <condition_variable>
#include <mutex>

#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// Holds a thread inside a collaborator until the test lets it go on, so that a test with two threads needs no sleep:
///
///     Gate gate;
///     journal.at("storage.setValue", gate.holding());
///     std::thread writer([&] { handler.setSetting("deviceName", "Den"); });
///     gate.awaitArrival();          // the writer stands inside the storage
///     handler.getSettings({});      // and holds nobody up
///     gate.open();
///     writer.join();
///
/// Threads: any; one gate for one passage. It must outlive the thread that it holds. `awaitArrival` has no time limit:
/// a thread that never comes is the test's own time limit to find.
class Gate {
public:
    Gate() = default;
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    /// What the thread to hold must run.
    Journal::Action holding() {
        return [this] { pass(); };
    }

    /// Returns when a thread stands at the gate, or stood there.
    void awaitArrival() {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [this] { return hasArrived; });
    }

    /// Lets go the thread that stands here, and every later one.
    void open() {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            isOpen = true;
        }
        changed.notify_all();
    }

private:
    void pass() {
        std::unique_lock<std::mutex> lock(mutex);
        hasArrived = true;
        changed.notify_all();
        changed.wait(lock, [this] { return isOpen; });
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool hasArrived = false;
    bool isOpen = false;
};

}  // namespace SettingsHandlerTesting
