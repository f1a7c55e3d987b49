#include "handler/BoundedStorage.h"

#include <utility>

#include "Wire/MessageType.h"

namespace SettingsHandlerKit {

namespace {

/// Values to this size are not counted: a thousand of them, as many as may be stored, are few bytes.
constexpr std::size_t smallValue = 64;
/// Replies of this size are always made.
constexpr std::size_t smallReply = 65536;

}  // namespace

BoundedStorage::BoundedStorage(SDKWrapper::StorageManagerInterface& guardedStorage,
                               std::shared_ptr<const RequestContext> requestContext,
                               std::function<bool(std::size_t)> isThereRoomFor)
    : storage(guardedStorage), context(std::move(requestContext)), hasRoomFor(std::move(isThereRoomFor)) {}

BoundedStorage::Kept& BoundedStorage::keep(const std::string& key, std::size_t size) {
    Kept& value = kept[key];
    keptBytes += size;
    keptBytes -= std::exchange(value.size, size);
    return value;
}

void BoundedStorage::forget(const std::string& key) {
    const auto value = kept.find(key);
    if (value != kept.end()) {
        keptBytes -= value->second.size;
        kept.erase(value);
    }
}

bool BoundedStorage::isGathering() const {
    return context->current() && context->current()->type == Wire::GET_SETTINGS;
}

void BoundedStorage::getValue(const std::string& key, std::string& value) {
    storage.getValue(key, value);
    if (value.size() <= smallValue) {
        forget(key);
        return;
    }
    // A key that is requested twice is in the reply once.
    if (std::exchange(keep(key, value.size()).request, request) == request || !isGathering()) {
        return;
    }
    gatheredBytes += value.size();
    // The values are gathered and copied once before they become a frame.
    if (gatheredBytes > maximumReply || (gatheredBytes > smallReply && !hasRoomFor(2 * gatheredBytes))) {
        throw ReadLimitExceeded("the values exceed the memory for reading");
    }
}

bool BoundedStorage::setValue(const std::string& key, const std::string& value) {
    if (!storage.setValue(key, value)) {
        return false;
    }
    if (value.size() > smallValue) {
        keep(key, value.size());
    } else {
        forget(key);
    }
    return true;
}

bool BoundedStorage::removeValue(const std::string& key) {
    return storage.removeValue(key);
}

bool BoundedStorage::clearStorage() {
    // The handler rebuilds its cache after a log-out, also when the storage could not be cleared.
    kept.clear();
    keptBytes = 0;
    return storage.clearStorage();
}

bool BoundedStorage::requestEnded() {
    ++request;
    gatheredBytes = 0;
    const bool tooMuch = keptBytes > maximumKept;
    if (tooMuch) {
        kept.clear();
        keptBytes = 0;
    }
    return tooMuch;
}

}  // namespace SettingsHandlerKit
