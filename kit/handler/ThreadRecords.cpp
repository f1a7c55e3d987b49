#include "handler/ThreadRecords.h"

#include <algorithm>
#include <iterator>

#include "CommunicationHandler/MessageType.h"

namespace SettingsHandlerKit {

ThreadRecords::Scope::Scope(ThreadRecords& threadRecords, int type)
    : operation(type), record(threadRecords.enter(operation)) {}

ThreadRecords::Scope::~Scope() {
    record.innermost = operation.outer;
}

bool ThreadRecords::Scope::isWriteOfRequest() const {
    const Operation* outer = operation.outer;
    return operation.type == Operation::write && outer != nullptr &&
           outer->type == CommunicationHandler::SET_SETTINGS && outer->outer == nullptr;
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

ThreadRecords::Record& ThreadRecords::enter(Operation& operation) {
    const std::lock_guard<std::mutex> lock(mutex);
    Record* own = find();
    if (own == nullptr) {
        if (records.size() > maximumIdle) {
            // Those that were idle for longest come last.
            const auto idle =
                std::find_if(records.rbegin(), records.rend(), [](const auto& record) { return !record.innermost; });
            if (idle != records.rend()) {
                records.erase(std::next(idle).base());
            }
        }
        own = &records.emplace_front();
        own->thread = std::this_thread::get_id();
    }
    operation.outer = own->innermost;
    own->innermost = &operation;
    return *own;
}

Operation* ThreadRecords::current() {
    const std::lock_guard<std::mutex> lock(mutex);
    const Record* own = find();
    return own == nullptr ? nullptr : own->innermost.load();
}

Outcome ThreadRecords::outcome() {
    const std::lock_guard<std::mutex> lock(mutex);
    const Record* own = find();
    return own == nullptr ? Outcome() : own->outcome;
}

}  // namespace SettingsHandlerKit
