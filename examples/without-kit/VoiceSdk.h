#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Device.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "teskVessa/SDKBridgeInterface.h"

/// In place of the bridge to a voice SDK. Keeps what it is given where the handler reads it.
class VoiceSdk : public teskVessa::SDKBridgeInterface {
public:
    VoiceSdk(std::shared_ptr<Device> theDevice, SDKWrapper::StorageManagerInterface& theStorage)
        : device(std::move(theDevice)), storage(theStorage) {}

    void setHandsFreeEnabled(bool enabled) override { device->setMode("currentHandsFreeStatus", enabled); }
    bool applySetting(std::string settingDBId, std::string value) override {
        if (settingDBId == "friendlyName") {
            return storage.setValue(settingDBId, value);
        }
        const bool isVoice = settingDBId == "handsFreeAlwaysOnEnabled";
        device->setMode(isVoice ? "currentAlwaysOnVoiceMode" : "currentAlwaysOnPTTMode", value == "true");
        return true;
    }
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
    bool isCaptionsEnabled() override { return false; }
    bool isDoNotDisturbEnabled() override { return false; }

private:
    std::shared_ptr<Device> device;
    SDKWrapper::StorageManagerInterface& storage;
    std::mutex mutex;
    std::string timezone = "Europe/Paris";
    std::vector<std::string> locales{"fr-FR", "en-US"};
};
