#pragma once

#include <condition_variable>
#include <mutex>

#include "SettingsHandlerTesting/Journal.h"

namespace SettingsHandlerTesting {

/// Blocks a thread inside a collaborator until the test releases it, so that a test with two threads needs no sleep:
///
///     Gate gate;
///     journal.at("storage.setValue", gate.holding());
///     std::thread writer([&] { handler.setSetting("deviceName", "Den"); });
///     gate.awaitArrival();          // the writer is blocked inside the storage
///     handler.getSettings({});      // and blocks no other thread
///     gate.open();
///     writer.join();
///
/// Threads: any. Use one gate per blocked call. It must outlive the thread that it blocks. `awaitArrival` has no
/// timeout: if no thread arrives, the test's own timeout ends it.
class Gate {
public:
    Gate() = default;
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    /// Returns: the action that blocks the thread which runs it.
    Journal::Action holding() {
        return [this] { pass(); };
    }

    /// Waits until a thread has reached the gate.
    void awaitArrival() {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [this] { return hasArrived; });
    }

    /// Releases the blocked thread, and lets every later one pass.
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
