#include "simulation/SimulatedSdkBridge.h"

#include <utility>

#include "SettingsHandler/SettingsNames.h"
#include "Utils/RapidjsonUtil.h"

namespace SettingsHost {

namespace {

std::string booleanText(bool value) {
    return value ? "true" : "false";
}

/// The strings of a JSON array; none when the text is something else.
std::vector<std::string> stringsOf(const std::string& text) {
    std::vector<std::string> strings;
    rapidjson::Document document;
    document.Parse<Utils::jsonParseFlags>(text.c_str());
    if (!document.HasParseError() && document.IsArray()) {
        for (const auto& element : document.GetArray()) {
            if (element.IsString()) {
                strings.emplace_back(element.GetString(), element.GetStringLength());
            }
        }
    }
    return strings;
}

}  // namespace

SimulatedSdkBridge::SimulatedSdkBridge(SettingsHandlerKit::StateStore& store,
                                       SDKWrapper::StorageManagerInterface& storageManager,
                                       std::shared_ptr<SimulatedDevice> simulatedDevice,
                                       std::shared_ptr<SettingsHandlerKit::ValueObserver> observerOfValues)
    : state(store),
      storage(storageManager),
      device(std::move(simulatedDevice)),
      valueObserver(std::move(observerOfValues)) {
    readState();
}

void SimulatedSdkBridge::readState() {
    localesText = state.load(settingNameFromType(SettingsHandler::ORLIA_LOCALE)).value_or(R"(["en-US"])");
    currentTimezone = state.load(settingNameFromType(SettingsHandler::TIMEZONE)).value_or("America/Vancouver");
    captionsEnabled = state.load(settingNameFromType(SettingsHandler::CAPTIONS_ENABLED)).value_or("false");
    doNotDisturbEnabled = state.load(settingNameFromType(SettingsHandler::DO_NOT_DISTURB_ENABLED)).value_or("false");
}

void SimulatedSdkBridge::setHandsFreeEnabled(bool enabled) {
    device->setMode(SimulatedDevice::Mode::HANDS_FREE, enabled);
}

bool SimulatedSdkBridge::applySetting(std::string settingDBId, std::string value) {
    switch (SettingsHandler::settingTypeFromName(settingDBId)) {
        case SettingsHandler::HANDS_FREE_ALWAYS_ON_ENABLED:
            return device->setMode(SimulatedDevice::Mode::ALWAYS_ON_VOICE, value == "true");
        case SettingsHandler::PTT_ALWAYS_ON_ENABLED:
            return device->setMode(SimulatedDevice::Mode::ALWAYS_ON_PTT, value == "true");
        case SettingsHandler::FRIENDLY_NAME:
            return applyFriendlyName(value);
        default:
            return false;
    }
}

bool SimulatedSdkBridge::applyFriendlyName(const std::string& name) {
    const std::string key = settingNameFromType(SettingsHandler::FRIENDLY_NAME);
    std::string current;
    storage.getValue(key, current);
    if (current == name) {
        return true;
    }
    if (!storage.setValue(key, name)) {
        return false;
    }
    valueObserver->valueChanged(key);
    return true;
}

void SimulatedSdkBridge::setTimezone(std::string timezone) {
    save(settingNameFromType(SettingsHandler::TIMEZONE), currentTimezone, timezone);
}

std::string SimulatedSdkBridge::getTimezone() {
    return currentTimezone;
}

void SimulatedSdkBridge::setLocales(std::vector<std::string> locales) {
    save(settingNameFromType(SettingsHandler::ORLIA_LOCALE), localesText,
         Utils::RapidjsonUtil::stringifyVector(locales));
}

std::vector<std::string> SimulatedSdkBridge::getLocales() {
    return stringsOf(localesText);
}

bool SimulatedSdkBridge::isCaptionsEnabled() {
    return captionsEnabled == "true";
}

bool SimulatedSdkBridge::isDoNotDisturbEnabled() {
    return doNotDisturbEnabled == "true";
}

bool SimulatedSdkBridge::setCaptionsEnabled(bool enabled) {
    return save(settingNameFromType(SettingsHandler::CAPTIONS_ENABLED), captionsEnabled, booleanText(enabled));
}

bool SimulatedSdkBridge::setDoNotDisturbEnabled(bool enabled) {
    return save(settingNameFromType(SettingsHandler::DO_NOT_DISTURB_ENABLED), doNotDisturbEnabled,
                booleanText(enabled));
}

bool SimulatedSdkBridge::changeByItself(const std::string& settingDBId) {
    const auto otherThan = [](const std::string& current, const char* one, const char* another) {
        return std::string(current == one ? another : one);
    };
    const auto type = SettingsHandler::settingTypeFromName(settingDBId);
    switch (type) {
        case SettingsHandler::ORLIA_LOCALE:
            return save(settingDBId, localesText, otherThan(localesText, R"(["fr-FR"])", R"(["en-US"])"));
        case SettingsHandler::TIMEZONE:
            return save(settingDBId, currentTimezone, otherThan(currentTimezone, "Europe/Paris", "America/Vancouver"));
        case SettingsHandler::CAPTIONS_ENABLED:
            return setCaptionsEnabled(!isCaptionsEnabled());
        case SettingsHandler::DO_NOT_DISTURB_ENABLED:
            return setDoNotDisturbEnabled(!isDoNotDisturbEnabled());
        case SettingsHandler::FRIENDLY_NAME: {
            std::string current;
            storage.getValue(settingDBId, current);
            return applyFriendlyName(otherThan(current, "Voice SDK", "TV"));
        }
        default:
            return device->toggle(type);
    }
}

bool SimulatedSdkBridge::save(const std::string& settingDBId, std::string& current, const std::string& value) {
    if (current == value) {
        return true;
    }
    if (!state.save(settingDBId, value)) {
        return false;
    }
    current = value;
    valueObserver->valueChanged(settingDBId);
    return true;
}

}  // namespace SettingsHost
