#pragma once

#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "Metrics/MetricsDelegateInterface.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandler/SettingsHandler.h"
#include "Utils/RapidjsonUtil.h"
#include "teskVessa/SDKBridgeInterface.h"

/// The minimal collaborators of a program: they print or ignore their calls.
namespace Consumer {

class Transport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    void deliver(int messageType, const std::string& text) { handlers.at(messageType)(text); }

    std::string sendMessage(int messageType, rapidjson::Document& payload) override {
        std::cout << "message " << messageType << " " << Utils::RapidjsonUtil::stringify(payload) << "\n";
        return "1";
    }

    void sendResponse(const std::string& messageId, rapidjson::Document& payload) override {
        std::cout << "response " << messageId << " " << Utils::RapidjsonUtil::stringify(payload) << "\n";
    }

    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override {
        handlers[messageType] = std::move(handler);
    }

private:
    std::map<int, std::function<void(const std::string&)>> handlers;
};

class Storage : public SDKWrapper::StorageManagerInterface {
public:
    void getValue(const std::string& key, std::string& value) override { value = values[key]; }

    bool setValue(const std::string& key, const std::string& value) override {
        values[key] = value;
        return true;
    }

    bool removeValue(const std::string& key) override { return values.erase(key) > 0; }

    bool clearStorage() override {
        values.clear();
        return true;
    }

private:
    std::map<std::string, std::string> values;
};

class Metrics : public ::Metrics::MetricsDelegateInterface {
public:
    void recordEvent(const std::string& /*group*/, const std::string& /*source*/,
                     const std::unordered_map<std::string, std::string>& /*attributes*/) override {}
    void recordCounter(const std::string& /*name*/, int /*first*/, int /*second*/, double /*third*/) override {}
};

class Bridge : public teskVessa::SDKBridgeInterface {
public:
    void setHandsFreeEnabled(bool /*enabled*/) override {}
    bool applySetting(std::string /*settingDBId*/, std::string /*value*/) override { return true; }
    void setTimezone(std::string newTimezone) override { timezone = std::move(newTimezone); }
    std::string getTimezone() override { return timezone; }
    void setLocales(std::vector<std::string> newLocales) override { locales = std::move(newLocales); }
    std::vector<std::string> getLocales() override { return locales; }
    bool isCaptionsEnabled() override { return false; }
    bool isDoNotDisturbEnabled() override { return false; }

private:
    std::string timezone = "Europe/Vienna";
    std::vector<std::string> locales{"de-AT"};
};

class Launcher : public DeviceAbstractionLayer::AppLaunch {
public:
    bool launchApp(std::string appName, std::string /*argument*/) override {
        std::cout << "launch " << appName << "\n";
        return true;
    }
};

class Device : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    std::map<std::string, std::string> getDeviceInfo() override { return {}; }
};

/// A handler of any class with the collaborators above.
template <typename Handler>
struct World {
    std::shared_ptr<Transport> transport = std::make_shared<Transport>();
    Storage storage;
    std::shared_ptr<Handler> handler =
        std::make_shared<Handler>(transport, storage, std::make_shared<Metrics>(), std::make_shared<Bridge>(),
                                  std::make_shared<Launcher>(), std::make_shared<Device>());
};

}  // namespace Consumer
