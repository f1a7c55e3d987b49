#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <mutex>
#include <thread>

#include "SettingsHandlerKit/Outcome.h"

namespace SettingsHandlerKit {

/// An operation of the handler that is in progress on a thread, and what the collaborators answered meanwhile.
struct Operation {
    /// Besides the types of requests.
    static constexpr int write = 0;
    static constexpr int rebuild = -1;

    explicit Operation(int operationType) : type(operationType) {}

    int type;
    /// The operation that called this one.
    Operation* outer = nullptr;
    /// The owner has taken the value, the storage is cleared, or the reply is sent.
    bool done = false;
    bool storageRefused = false;
    bool sdkRefused = false;
    /// The outcome is known; that of a SetSettings request when its write has ended.
    bool concluded = false;
};

/// Knows for each thread the operations in progress and the outcome of the one that ended last. Threads: any.
class ThreadRecords {
    struct Record {
        std::atomic<std::thread::id> thread;
        /// Changed by its thread only.
        std::atomic<Operation*> innermost{nullptr};
        Outcome outcome;
    };

public:
    /// How many threads are kept besides those with an operation in progress.
    static constexpr std::size_t maximumIdle = 16;

    /// Makes an operation the innermost of the calling thread, for the lifetime of the object.
    class Scope {
    public:
        Scope(ThreadRecords& threadRecords, int type);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

        /// Lets `setOutcome` set the outcome; not for an operation that an observer or a collaborator called during
        /// another one, which does not count.
        template <typename Conclusion>
        void conclude(const Conclusion& setOutcome) {
            Operation* request = requestOfWrite();
            if (operation.outer == nullptr || request != nullptr) {
                setOutcome(record.outcome);
            }
            operation.concluded = true;
            if (request != nullptr) {
                request->concluded = true;
            }
        }

        Operation operation;

    private:
        Operation* requestOfWrite() const;

        ThreadRecords& records;
        Record& record;
    };

    /// Returns: the innermost operation of the calling thread, or null.
    Operation* current();
    /// Returns: the outcome of the operation that ended last on the calling thread.
    Outcome outcome();

private:
    Record* busy() const;
    Record* find();
    Record& findOrMake();
    Record& enter(Operation& operation);
    void leave(Record& record, Operation* outer);

    std::mutex mutex;
    /// The one that was used last comes first. One that is idle may become that of another thread; none is ever freed.
    std::list<Record> records;
    /// Of the thread that began an operation last, null when that has ended: saves it the mutex meanwhile.
    std::atomic<Record*> latest{nullptr};
};

}  // namespace SettingsHandlerKit
