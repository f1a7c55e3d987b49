#pragma once

#include <functional>
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
#include "VessaNativeCommon/FriendlyNameObserverInterface.h"
#include "teskVessa/SDKBridgeInterface.h"

/// Collaborators that do nothing, so that what is measured is the library's own work. What they answer can be set.
namespace Benchmarks {

class QuietTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    std::string sendMessage(int /*messageType*/, rapidjson::Document& /*payload*/) override { return {}; }
    void sendResponse(const std::string& /*messageId*/, rapidjson::Document& /*payload*/) override {}
    void registerMessageHandler(int messageType, std::function<void(const std::string&)> handler) override {
        handlers[messageType] = std::move(handler);
    }

    std::map<int, std::function<void(const std::string&)>> handlers;
};

class QuietStorage : public SDKWrapper::StorageManagerInterface {
public:
    void getValue(const std::string& /*key*/, std::string& value) override { value = storedValue; }
    bool setValue(const std::string& /*key*/, const std::string& /*value*/) override { return writable; }
    bool removeValue(const std::string& /*key*/) override { return writable; }
    bool clearStorage() override { return writable; }

    /// What every key holds.
    std::string storedValue;
    bool writable = true;
};

class QuietMetrics : public Metrics::MetricsDelegateInterface {
public:
    void recordEvent(const std::string& /*group*/, const std::string& /*source*/,
                     const std::unordered_map<std::string, std::string>& /*attributes*/) override {}
    void recordCounter(const std::string& /*name*/, int, int, double) override {}
};

class QuietSdkBridge : public teskVessa::SDKBridgeInterface {
public:
    void setHandsFreeEnabled(bool /*enabled*/) override {}
    bool applySetting(std::string /*settingDBId*/, std::string /*value*/) override { return true; }
    void setTimezone(std::string /*timezone*/) override {}
    std::string getTimezone() override { return timezone; }
    void setLocales(std::vector<std::string> /*locales*/) override {}
    std::vector<std::string> getLocales() override { return locales; }
    bool isCaptionsEnabled() override { return true; }
    bool isDoNotDisturbEnabled() override { return false; }

    std::string timezone = "Europe/Berlin";
    std::vector<std::string> locales{"en-US", "es-US"};
};

class QuietLauncher : public DeviceAbstractionLayer::AppLaunch {
public:
    bool launchApp(std::string /*appName*/, std::string /*argument*/) override { return true; }
};

class QuietDevice : public DeviceAbstractionLayer::OrliaDeviceInfoInterface {
public:
    std::map<std::string, std::string> getDeviceInfo() override {
        return {{"currentAlwaysOnPTTMode", "off"}, {"currentAlwaysOnVoiceMode", "on"}, {"currentHandsFreeStatus", "on"}};
    }
};

class QuietFriendlyNameObserver : public VessaNativeCommon::FriendlyNameObserverInterface {
public:
    void notifyFriendlyNameChanged(const std::string& /*friendlyName*/) override {}
};

/// One of each.
struct QuietCollaborators {
    std::shared_ptr<QuietTransport> transport = std::make_shared<QuietTransport>();
    QuietStorage storage;
    std::shared_ptr<QuietMetrics> metrics = std::make_shared<QuietMetrics>();
    std::shared_ptr<QuietSdkBridge> bridge = std::make_shared<QuietSdkBridge>();
    std::shared_ptr<QuietLauncher> launcher = std::make_shared<QuietLauncher>();
    std::shared_ptr<QuietDevice> device = std::make_shared<QuietDevice>();
};

}  // namespace Benchmarks
