#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Device.h"
#include "SDKWrapper/StorageManagerInterface.h"
#include "SettingsHandlerKit/SettingDescriptions.h"
#include "SettingsHandlerKit/ValueObserver.h"
#include "Utils/RapidjsonUtil.h"
#include "teskVessa/SDKBridgeInterface.h"

/// In place of the bridge to a voice SDK, which owns locales and time zone. Keeps what it is given where the handler
/// reads it, also over a restart.
class VoiceSdk : public teskVessa::SDKBridgeInterface {
public:
    VoiceSdk(SettingsHandlerKit::StateStore& theState, SDKWrapper::StorageManagerInterface& theStorage,
             std::shared_ptr<Device> theDevice, std::shared_ptr<SettingsHandlerKit::ValueObserver> theObserver)
        : state(theState), storage(theStorage), device(std::move(theDevice)), observer(std::move(theObserver)) {}

    void setHandsFreeEnabled(bool enabled) override { device->setMode("currentHandsFreeStatus", enabled); }
    bool applySetting(std::string settingDBId, std::string value) override {
        if (settingDBId == "friendlyName") {
            return storage.setValue(settingDBId, value);
        }
        const bool isVoice = settingDBId == "handsFreeAlwaysOnEnabled";
        return device->setMode(isVoice ? "currentAlwaysOnVoiceMode" : "currentAlwaysOnPTTMode", value == "true");
    }
    void setTimezone(std::string newTimezone) override { save("timezone", newTimezone); }
    std::string getTimezone() override { return state.load("timezone").value_or("Europe/Paris"); }
    void setLocales(std::vector<std::string> locales) override {
        // All of a list or none of it.
        if (std::find(locales.begin(), locales.end(), "") == locales.end()) {
            save("orliaLocale", Utils::RapidjsonUtil::stringifyVector(locales));
        }
    }
    std::vector<std::string> getLocales() override {
        const auto locales = SettingsHandlerKit::asLocales(state.load("orliaLocale").value_or(""));
        return locales.value_or(std::vector<std::string>{"fr-FR"});
    }
    bool isCaptionsEnabled() override { return false; }
    bool isDoNotDisturbEnabled() override { return false; }

private:
    /// Clients are told to read the value again, unless the handler sends them an event.
    void save(const std::string& key, const std::string& value) {
        if (state.save(key, value)) {
            observer->valueChanged(key);
        }
    }

    SettingsHandlerKit::StateStore& state;
    SDKWrapper::StorageManagerInterface& storage;
    std::shared_ptr<Device> device;
    std::shared_ptr<SettingsHandlerKit::ValueObserver> observer;
};
