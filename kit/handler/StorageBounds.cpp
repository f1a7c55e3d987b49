#include "handler/StorageBounds.h"

#include <utility>

namespace SettingsHandlerKit {

namespace {

/// Replies of this size are always made.
constexpr std::size_t smallReply = 65536;

}  // namespace

StorageBounds::StorageBounds(std::function<bool(std::size_t)> isThereRoomFor) : hasRoomFor(std::move(isThereRoomFor)) {}

StorageBounds::Kept& StorageBounds::keep(const std::string& key, std::size_t size) {
    Kept& value = kept[key];
    countsAny = true;
    keptBytes += size;
    keptBytes -= std::exchange(value.size, size);
    return value;
}

void StorageBounds::forget(const std::string& key) {
    if (!countsAny) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    const auto value = kept.find(key);
    if (value != kept.end()) {
        keptBytes -= value->second.size;
        kept.erase(value);
    }
}

void StorageBounds::forgetAll() {
    kept.clear();
    keptBytes = 0;
}

/// Returns: the bytes that are gathered for the reply with this value.
std::size_t StorageBounds::gather(const std::string& key, std::size_t size, bool gathering) {
    const std::lock_guard<std::mutex> lock(mutex);
    Kept& value = keep(key, size);
    // A key that is requested twice is in the reply once.
    if (!gathering || std::exchange(value.request, request) == request) {
        return 0;
    }
    return gatheredBytes += size;
}

void StorageBounds::wasRead(const std::string& key, std::size_t size, bool gathering) {
    if (size <= smallValue) {
        forget(key);
        return;
    }
    const std::size_t gathered = gather(key, size, gathering);
    // The values are gathered and copied once before they become a frame.
    if (gathered > maximumReply || (gathered > smallReply && hasRoomFor && !hasRoomFor(2 * gathered))) {
        throw ReadLimitExceeded("the requested values exceed the memory limit");
    }
}

void StorageBounds::wasWritten(const std::string& key, std::size_t size) {
    if (size <= smallValue) {
        forget(key);
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    keep(key, size);
}

void StorageBounds::wasCleared() {
    const std::lock_guard<std::mutex> lock(mutex);
    forgetAll();
}

bool StorageBounds::requestEnded() {
    if (!countsAny) {
        return false;
    }
    const std::lock_guard<std::mutex> lock(mutex);
    ++request;
    gatheredBytes = 0;
    const bool tooMuch = keptBytes > maximumKept;
    if (tooMuch) {
        forgetAll();
    }
    countsAny = !kept.empty();
    return tooMuch;
}

}  // namespace SettingsHandlerKit
