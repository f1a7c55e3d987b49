#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "CommunicationHandler/CommunicationHandlerInterface.h"
#include "DeviceAbstractionLayer/AppLaunch.h"
#include "DeviceAbstractionLayer/OrliaDeviceInfoInterface.h"
#include "Metrics/MetricsDelegateInterface.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandler/SettingsHandler.h"
#include "teskVessa/SDKBridgeInterface.h"

/// Collaborators in memory that any thread may call and that keep no growing record. The fakes and their journal would
/// serialise the threads, and hide from a sanitizer what the handler does not guard.
namespace SettingsHandlerTests {

/// Counts the events of each setting.
class CountingTransport : public CommunicationHandler::CommunicationHandlerInterface {
public:
    std::string sendMessage(int /*messageType*/, rapidjson::Document& payload) override {
        const std::lock_guard<std::mutex> lock(mutex);
        ++events[payload["settingDBId"].GetString()];
        return {};
    }
    void sendResponse(const std::string& /*messageId*/, rapidjson::Document& /*payload*/) override { ++responses; }
    void registerMessageHandler(int /*messageType*/, std::function<void(const std::string&)> /*handler*/) override {}

    int eventsOf(const std::string& settingDBId) {
        const std::lock_guard<std::mutex> lock(mutex);
        return events[settingDBId];
    }
    int allEvents() {
        const std::lock_guard<std::mutex> lock(mutex);
        int sum = 0;
        for (const auto& entry : events) {
            sum += entry.second;
        }
        return sum;
    }

    std::atomic<int> responses{0};

private:
    std::mutex mutex;
    std::map<std::string, int> events;
};

class MemoryStorage : public SDKWrapper::StorageManagerInterface {
public:
    void getValue(const std::string& key, std::string& value) override {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto entry = values.find(key);
        value = entry == values.end() ? std::string() : entry->second;
    }
    bool setValue(const std::string& key, const std::string& value) override {
        const std::lock_guard<std::mutex> lock(mutex);
        values[key] = value;
        return true;
    }
    bool removeValue(const std::string& key) override {
        const std::lock_guard<std::mutex> lock(mutex);
        values.erase(key);
        return true;
    }
    bool clearStorage() override {
        const std::lock_guard<std::mutex> lock(mutex);
        values.clear();
        return true;
    }

private:
    std::mutex mutex;
    std::map<std::string, std::string> values;
};

class CountingMetrics : public Metrics::MetricsDelegateInterface {
public:
    void recordEvent(const std::string& /*group*/, const std::string& /*source*/,
                     const std::unordered_map<std::string, std::string>& /*attributes*/) override {
        ++events;
    }
    void recordCounter(const std::string& /*name*/, int /*first*/, int /*second*/, double /*third*/) override {
        ++counters;
    }

    std::atomic<int> events{0};
    std::atomic<int> counters{0};
};

class MemorySdk : public teskVessa::SDKBridgeInterface {
public:
    void setHandsFreeEnabled(bool enabled) override { handsFree = enabled; }
    bool applySetting(std::string /*settingDBId*/, std::string /*value*/) override { return true; }
    void setTimezone(std::string newTimezone) override {
        const std::lock_guard<std::mutex> lock(mutex);
        timezone = std::move(newTimezone);
    }
    std::string getTimezone() override {
        const std::lock_guard<std::mutex> lock(mutex);
        return timezone;
    }
    void setLocales(std::vector<std::string> newLocales) override {
        const std::lock_guard<std::mutex> lock(mutex);
        locales = std::move(newLocales);
    }
    std::vector<std::string> getLocales() override {
        const std::lock_guard<std::mutex> lock(mutex);
        return locales;
    }
    bool isCaptionsEnabled() override { return true; }
    bool isDoNotDisturbEnabled() override { return false; }

private:
    std::mutex mutex;
    std::string timezone = "America/Vancouver";
    std::vector<std::string> locales{"en-US"};
    std::atomic<bool> handsFree{false};
};

class MemoryDevice : public DeviceAbstractionLayer::OrliaDeviceInfoInterface, public DeviceAbstractionLayer::AppLaunch {
public:
    std::map<std::string, std::string> getDeviceInfo() override { return {{"currentHandsFreeStatus", "on"}}; }
    bool launchApp(std::string /*appName*/, std::string /*argument*/) override {
        ++launches;
        return true;
    }

    std::atomic<int> launches{0};
};

/// A handler with these collaborators.
struct Surroundings {
    std::shared_ptr<CountingTransport> transport = std::make_shared<CountingTransport>();
    MemoryStorage storage;
    std::shared_ptr<CountingMetrics> metrics = std::make_shared<CountingMetrics>();
    std::shared_ptr<MemorySdk> sdk = std::make_shared<MemorySdk>();
    std::shared_ptr<MemoryDevice> device = std::make_shared<MemoryDevice>();
    std::shared_ptr<SettingsHandler::SettingsHandler> handler =
        SettingsHandler::SettingsHandler::create(transport, storage, metrics, sdk, device, device);

    std::string stored(const std::string& key) {
        std::string value;
        storage.getValue(key, value);
        return value;
    }
};

}  // namespace SettingsHandlerTests
