#include "CallQueue.h"

#include "Wire/FrameInspector.h"

namespace SettingsDbus {

namespace {

std::size_t sizeOf(const Call& call) {
    std::size_t size = 0;
    for (const auto& [key, value] : call.assignments) {
        size += key.size() + value.size();
    }
    return size;
}

}  // namespace

std::string senderOf(const Call& call) {
    const char* const sender = sd_bus_message_get_sender(call.message.get());
    return sender == nullptr ? "" : sender;
}

void CallQueue::add(Call call) {
    const std::size_t added = sizeOf(call);
    if (added > Wire::maximumFrameSize) {
        throw CallError(SD_BUS_ERROR_INVALID_ARGS,
                        "keys and values have more than " + std::to_string(Wire::maximumFrameSize) + " bytes");
    }
    const std::string caller = senderOf(call);
    const auto earlier = waiting.find(caller);
    if (size + added > maximumSize || (earlier != waiting.end() && earlier->second.size() >= maximumPerCaller)) {
        throw CallError(SD_BUS_ERROR_LIMITS_EXCEEDED, "too many pending calls; retry when some have been answered");
    }
    size += added;
    waiting[caller].push_back(std::move(call));
}

Call CallQueue::next() {
    auto entry = waiting.upper_bound(lastCaller);
    if (entry == waiting.end()) {
        entry = waiting.begin();
    }
    lastCaller = entry->first;
    Call call = std::move(entry->second.front());
    entry->second.pop_front();
    if (entry->second.empty()) {
        waiting.erase(entry);
    }
    size -= sizeOf(call);
    return call;
}

}  // namespace SettingsDbus
