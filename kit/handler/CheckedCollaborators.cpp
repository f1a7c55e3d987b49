#include "handler/CheckedCollaborators.h"

#include <utility>

#include "CommunicationHandler/MessageType.h"

namespace SettingsHandlerKit {

namespace {

/// Returns: the innermost operation of the calling thread if it has this type, otherwise null.
Operation* currentOf(ThreadRecords& records, int type) {
    Operation* operation = records.current();
    return operation != nullptr && operation->type == type ? operation : nullptr;
}

}  // namespace

CheckedTransport::CheckedTransport(std::shared_ptr<CommunicationHandlerInterface> realTransport,
                                   ThreadRecords& threadRecords, Delivery deliver)
    : CommunicationHandlerInterface(realTransport->messageIdKey, realTransport->timestampKey,
                                    realTransport->payloadKey),
      transport(std::move(realTransport)),
      records(threadRecords),
      delivery(std::move(deliver)) {}

std::string CheckedTransport::sendMessage(int messageType, rapidjson::Document& payload) {
    return transport->sendMessage(messageType, payload);
}

void CheckedTransport::sendResponse(const std::string& messageId, rapidjson::Document& payload) {
    transport->sendResponse(messageId, payload);
    Operation* operation = records.current();
    if (operation != nullptr && (operation->type == CommunicationHandler::GET_SETTINGS ||
                                 operation->type == CommunicationHandler::IS_ORLIA_SELECTED_VA)) {
        operation->done = true;
    }
}

void CheckedTransport::registerMessageHandler(int messageType, RequestHandler handler) {
    transport->registerMessageHandler(messageType,
                                      [this, messageType, handler = std::move(handler)](const std::string& text) {
                                          delivery(messageType, text, handler);
                                      });
}

CheckedStorage::CheckedStorage(StorageManagerInterface& realStorage, ThreadRecords& threadRecords,
                               StorageBounds& storageBounds)
    : storage(realStorage), records(threadRecords), bounds(storageBounds) {}

void CheckedStorage::getValue(const std::string& key, std::string& value) {
    storage.getValue(key, value);
    const bool gathering =
        value.size() > StorageBounds::smallValue && currentOf(records, CommunicationHandler::GET_SETTINGS) != nullptr;
    bounds.wasRead(key, value.size(), gathering);
}

bool CheckedStorage::setValue(const std::string& key, const std::string& value) {
    const bool stored = storage.setValue(key, value);
    if (Operation* operation = currentOf(records, Operation::write)) {
        operation->done = stored;
        operation->storageRefused = !stored;
    }
    if (stored) {
        bounds.wasWritten(key, value.size());
    }
    return stored;
}

bool CheckedStorage::removeValue(const std::string& key) {
    return storage.removeValue(key);
}

bool CheckedStorage::clearStorage() {
    // The handler rebuilds its cache after a log-out, also when the storage could not be cleared.
    bounds.wasCleared();
    const bool cleared = storage.clearStorage();
    if (Operation* operation = currentOf(records, CommunicationHandler::LOG_OUT)) {
        operation->done = cleared;
    }
    return cleared;
}

CheckedSdkBridge::CheckedSdkBridge(std::shared_ptr<SDKBridgeInterface> realBridge, ThreadRecords& threadRecords)
    : bridge(std::move(realBridge)), records(threadRecords) {}

void CheckedSdkBridge::took(bool accepted) {
    if (Operation* operation = currentOf(records, Operation::write)) {
        operation->done = true;
        operation->sdkRefused = !accepted;
    }
}

void CheckedSdkBridge::setHandsFreeEnabled(bool enabled) {
    bridge->setHandsFreeEnabled(enabled);
    took(true);
}

bool CheckedSdkBridge::applySetting(std::string settingDBId, std::string value) {
    const bool accepted = bridge->applySetting(std::move(settingDBId), std::move(value));
    took(accepted);
    return accepted;
}

void CheckedSdkBridge::setTimezone(std::string timezone) {
    bridge->setTimezone(std::move(timezone));
    took(true);
}

std::string CheckedSdkBridge::getTimezone() {
    return bridge->getTimezone();
}

void CheckedSdkBridge::setLocales(std::vector<std::string> locales) {
    bridge->setLocales(std::move(locales));
    took(true);
}

std::vector<std::string> CheckedSdkBridge::getLocales() {
    return bridge->getLocales();
}

bool CheckedSdkBridge::isCaptionsEnabled() {
    return bridge->isCaptionsEnabled();
}

bool CheckedSdkBridge::isDoNotDisturbEnabled() {
    return bridge->isDoNotDisturbEnabled();
}

}  // namespace SettingsHandlerKit
