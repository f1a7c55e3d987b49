#include "handler/ThreadRecords.h"

#include <algorithm>
#include <iterator>

#include "CommunicationHandler/MessageType.h"

namespace SettingsHandlerKit {

ThreadRecords::Scope::Scope(ThreadRecords& threadRecords, int type)
    : operation(type), records(threadRecords), record(records.enter(operation)) {}

ThreadRecords::Scope::~Scope() {
    records.leave(record, operation.outer);
}

/// Returns: the SetSettings request that called this write; null when the write was called in another way.
Operation* ThreadRecords::Scope::requestOfWrite() const {
    Operation* outer = operation.outer;
    const bool isOfRequest = operation.type == Operation::write && outer != nullptr &&
                             outer->type == CommunicationHandler::SET_SETTINGS && outer->outer == nullptr;
    return isOfRequest ? outer : nullptr;
}

/// Returns: the record of the calling thread if it is the latest, which has an operation in progress; otherwise null.
ThreadRecords::Record* ThreadRecords::busy() const {
    Record* record = latest.load(std::memory_order_acquire);
    const bool isOwn =
        record != nullptr && record->thread.load(std::memory_order_relaxed) == std::this_thread::get_id();
    return isOwn ? record : nullptr;
}

/// With the mutex held. Returns: the record of the calling thread, now the first one, or null.
ThreadRecords::Record* ThreadRecords::find() {
    const auto self = std::this_thread::get_id();
    const auto own =
        std::find_if(records.begin(), records.end(), [self](const auto& record) { return record.thread == self; });
    if (own == records.end()) {
        return nullptr;
    }
    records.splice(records.begin(), records, own);
    return &*own;
}

/// With the mutex held.
ThreadRecords::Record& ThreadRecords::findOrMake() {
    if (Record* own = find()) {
        return *own;
    }
    // Those that were idle for longest come last.
    const auto idle = records.size() > maximumIdle ? std::find_if(records.rbegin(), records.rend(),
                                                                  [](const auto& record) { return !record.innermost; })
                                                   : records.rend();
    if (idle == records.rend()) {
        records.emplace_front();
    } else {
        records.splice(records.begin(), records, std::next(idle).base());
        records.front().outcome = Outcome();
    }
    records.front().thread = std::this_thread::get_id();
    return records.front();
}

ThreadRecords::Record& ThreadRecords::enter(Operation& operation) {
    std::unique_lock<std::mutex> lock(mutex, std::defer_lock);
    Record* own = busy();
    if (own == nullptr) {
        lock.lock();
        own = &findOrMake();
    }
    operation.outer = own->innermost.load(std::memory_order_relaxed);
    own->innermost.store(&operation, std::memory_order_relaxed);
    latest.store(own, std::memory_order_release);
    return *own;
}

void ThreadRecords::leave(Record& record, Operation* outer) {
    if (outer == nullptr) {
        // Before it may become that of another thread.
        Record* own = &record;
        latest.compare_exchange_strong(own, nullptr);
    }
    record.innermost.store(outer, std::memory_order_release);
}

Operation* ThreadRecords::current() {
    const Record* own = busy();
    if (own == nullptr) {
        const std::lock_guard<std::mutex> lock(mutex);
        own = find();
    }
    return own == nullptr ? nullptr : own->innermost.load(std::memory_order_relaxed);
}

Outcome ThreadRecords::outcome() {
    const std::lock_guard<std::mutex> lock(mutex);
    const Record* own = find();
    return own == nullptr ? Outcome() : own->outcome;
}

}  // namespace SettingsHandlerKit
