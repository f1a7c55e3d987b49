#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "Metrics/MetricsDelegateInterface.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "teskVessa/SDKBridgeInterface.h"

/// Collaborators of the handler that do nothing, so that only its own work is measured.
namespace Benchmarks {

class IdleTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    void deliver(int messageType, const std::string& text) { handlers.at(messageType)(text); }
    /// How many messages the handler sent.
    std::uint64_t sent() const { return messages; }

    std::string sendMessage(int /*messageType*/, rapidjson::Document& /*payload*/) override {
        ++messages;
        return "";
    }
    void sendResponse(const std::string& /*messageId*/, rapidjson::Document& /*payload*/) override {}
    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override {
        handlers[messageType] = std::move(handler);
    }

private:
    std::map<int, std::function<void(const std::string&)>> handlers;
    std::uint64_t messages = 0;
};

class IdleStorage : public SDKWrapper::StorageManagerInterface {
public:
    void getValue(const std::string& /*key*/, std::string& value) override { value.clear(); }
    bool setValue(const std::string& /*key*/, const std::string& /*value*/) override { return true; }
    bool removeValue(const std::string& /*key*/) override { return true; }
    bool clearStorage() override { return true; }
};

class IdleMetrics : public Metrics::MetricsDelegateInterface {
public:
    void recordEvent(const std::string& /*group*/, const std::string& /*source*/,
                     const std::unordered_map<std::string, std::string>& /*attributes*/) override {}
    void recordCounter(const std::string& /*name*/, int /*first*/, int /*second*/, double /*third*/) override {}
};

class IdleBridge : public teskVessa::SDKBridgeInterface {
public:
    void setHandsFreeEnabled(bool /*enabled*/) override {}
    bool applySetting(std::string /*settingDBId*/, std::string /*value*/) override { return true; }
    void setTimezone(std::string /*timezone*/) override {}
    std::string getTimezone() override { return "Europe/Paris"; }
    void setLocales(std::vector<std::string> /*locales*/) override {}
    std::vector<std::string> getLocales() override { return {"en-US"}; }
    bool isCaptionsEnabled() override { return false; }
    bool isDoNotDisturbEnabled() override { return false; }
};

class IdleLaunch : public DeviceAbstractionLayer::AppLaunch {
public:
    bool launchApp(std::string /*appName*/, std::string /*argument*/) override { return false; }
};

class IdleDeviceInfo : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    std::map<std::string, std::string> getDeviceInfo() override { return {}; }
};

}  // namespace Benchmarks
