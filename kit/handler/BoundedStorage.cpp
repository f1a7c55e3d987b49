#include "handler/BoundedStorage.h"

#include <utility>

#include "CommunicationHandler/MessageType.h"

namespace SettingsHandlerKit {

BoundedStorage::BoundedStorage(SDKWrapper::StorageManagerInterface& guardedStorage,
                               std::shared_ptr<const RequestContext> requestContext,
                               std::function<bool(std::size_t)> isThereRoomFor)
    : storage(guardedStorage), context(std::move(requestContext)), bounds(std::move(isThereRoomFor)) {}

void BoundedStorage::getValue(const std::string& key, std::string& value) {
    storage.getValue(key, value);
    bounds.wasRead(key, value.size(),
                   context->current() && context->current()->type == CommunicationHandler::GET_SETTINGS);
}

bool BoundedStorage::setValue(const std::string& key, const std::string& value) {
    if (!storage.setValue(key, value)) {
        return false;
    }
    bounds.wasWritten(key, value.size());
    return true;
}

bool BoundedStorage::removeValue(const std::string& key) {
    return storage.removeValue(key);
}

bool BoundedStorage::clearStorage() {
    // The handler rebuilds its cache after a log-out, also when the storage could not be cleared.
    bounds.wasCleared();
    return storage.clearStorage();
}

bool BoundedStorage::requestEnded() {
    return bounds.requestEnded();
}

}  // namespace SettingsHandlerKit
