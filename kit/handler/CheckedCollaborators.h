#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "handler/StorageBounds.h"
#include "handler/ThreadRecords.h"
#include "teskVessa/SDKBridgeInterface.h"

/// \file
/// The collaborators as the handler sees them. Each passes everything on and notes in the operation in progress what
/// was answered. Threads: as the collaborator that it stands before.
namespace SettingsHandlerKit {

/// Delivers each request through `deliver`.
class CheckedTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    using RequestHandler = std::function<void(const std::string&)>;
    /// Takes the type and the text of a request, and what handles it.
    using Delivery = std::function<void(int messageType, const std::string& text, const RequestHandler& handler)>;

    /// `deliver` is called as long as the transport delivers requests.
    CheckedTransport(std::shared_ptr<CommunicationHandlerInterface> transport, ThreadRecords& records,
                     Delivery deliver);

    std::string sendMessage(int messageType, rapidjson::Document& payload) override;
    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override;
    void registerMessageHandler(int messageType, RequestHandler handler) override;

private:
    std::shared_ptr<CommunicationHandlerInterface> transport;
    ThreadRecords& records;
    Delivery delivery;
};

/// Bounds the memory for what is read.
class CheckedStorage : public SDKWrapper::StorageManagerInterface {
public:
    CheckedStorage(StorageManagerInterface& storage, ThreadRecords& records, StorageBounds& bounds);

    /// Errors: `ReadLimitExceeded`, while a GetSettings is handled.
    void getValue(const std::string& key, std::string& value) override;
    bool setValue(const std::string& key, const std::string& value) override;
    bool removeValue(const std::string& key) override;
    bool clearStorage() override;

private:
    StorageManagerInterface& storage;
    ThreadRecords& records;
    StorageBounds& bounds;
};

class CheckedSdkBridge : public teskVessa::SDKBridgeInterface {
public:
    CheckedSdkBridge(std::shared_ptr<SDKBridgeInterface> bridge, ThreadRecords& records);

    void setHandsFreeEnabled(bool enabled) override;
    bool applySetting(std::string settingDBId, std::string value) override;
    void setTimezone(std::string timezone) override;
    std::string getTimezone() override;
    void setLocales(std::vector<std::string> locales) override;
    std::vector<std::string> getLocales() override;
    bool isCaptionsEnabled() override;
    bool isDoNotDisturbEnabled() override;

private:
    void took(bool accepted);

    std::shared_ptr<SDKBridgeInterface> bridge;
    ThreadRecords& records;
};

}  // namespace SettingsHandlerKit
