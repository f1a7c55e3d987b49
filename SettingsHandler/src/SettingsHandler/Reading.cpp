#include <utility>

#include "Constants.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

namespace {

std::string booleanText(bool value) {
    return value ? Constants::trueValue : Constants::falseValue;
}

}  // namespace

bool SettingsHandler::isSDKSetting(SettingsNamesType type) {
    switch (type) {
        case ORLIA_LOCALE:
        case CAPTIONS_ENABLED:
        case DO_NOT_DISTURB_ENABLED:
        case TIMEZONE:
            return true;
        default:
            return false;
    }
}

std::string SettingsHandler::getSDKSetting(SettingsNamesType type) {
    switch (type) {
        case CAPTIONS_ENABLED:
            return booleanText(sdkBridge->isCaptionsEnabled());
        case DO_NOT_DISTURB_ENABLED:
            return booleanText(sdkBridge->isDoNotDisturbEnabled());
        case ORLIA_LOCALE:
            return stringifyVector(sdkBridge->getLocales());
        case TIMEZONE:
            return sdkBridge->getTimezone();
        default:
            return "";
    }
}

std::string SettingsHandler::readDeviceMode(const std::string& deviceInfoKey) {
    const std::map<std::string, std::string> information = deviceInfo->getDeviceInfo();
    const auto entry = information.find(deviceInfoKey);
    return booleanText(entry != information.end() && entry->second == Constants::on);
}

/// The stored value, else the default, else the empty string.
std::string SettingsHandler::readStoredSetting(SettingsNamesType type, const std::string& settingDBId) {
    std::string value;
    storageManager.getValue(settingDBId, value);
    if (!value.empty()) {
        return value;
    }
    std::string defaultValue = defaultValueForSetting(type);
    if (defaultValue == Constants::customDefaultValue) {
        logError(logTag, "Default value was not found for %s", settingDBId.c_str());
        return "";
    }
    logInformation(logTag, "Default value retrieved for %s", settingDBId.c_str());
    return defaultValue;
}

std::string SettingsHandler::readSetting(SettingsNamesType type, const std::string& settingDBId) {
    switch (type) {
        case HANDS_FREE_ENABLED:
            return readDeviceMode(Constants::currentHandsFreeStatus);
        case HANDS_FREE_ALWAYS_ON_ENABLED:
            return readDeviceMode(Constants::currentAlwaysOnVoiceMode);
        case PTT_ALWAYS_ON_ENABLED:
            return readDeviceMode(Constants::currentAlwaysOnPTTMode);
        default:
            return isSDKSetting(type) ? getSDKSetting(type) : readStoredSetting(type, settingDBId);
    }
}

/// Adds the value of one key to `values`, if it has one.
void SettingsHandler::readInto(std::map<std::string, std::string>& values, const std::string& settingDBId) {
    const SettingsNamesType type = settingTypeFromName(settingDBId);
    logTrace(logTag, "SettingDBId: %s", settingDBId.c_str());
    std::string value = readSetting(type, settingDBId);
    if (value.empty() && !isSDKSetting(type)) {
        return;
    }
    if (type == INVALID_SETTING) {
        // Intended: no lock, because initializeSettings calls getSettings with the mutex held.
        settingsCache[settingDBId] = value;
    }
    values[settingDBId] = std::move(value);
}

std::map<std::string, std::string> SettingsHandler::getSettings(const std::vector<std::string>& names) {
    logTrace(logTag, "getSettings");
    std::map<std::string, std::string> values;
    if (names.empty()) {
        for (const auto& entry : SettingsNamesTypeToStringMapping) {
            readInto(values, entry.second);
        }
        return values;
    }
    // A copy, because a collaborator may change the caller's list while it is called.
    const std::vector<std::string> keys = names;  // NOLINT(performance-unnecessary-copy-initialization)
    for (const auto& key : keys) {
        readInto(values, key);
    }
    return values;
}

std::map<std::string, std::string> SettingsHandler::getCurrentSettingsMap() {
    logInformation(logTag, "getCurrentSettingsMap");
    const std::lock_guard<std::mutex> lock(settingsCacheMutex);
    // Intended: the two always-on modes are not refreshed.
    for (const auto type : {DO_NOT_DISTURB_ENABLED, CAPTIONS_ENABLED, ORLIA_LOCALE, TIMEZONE}) {
        settingsCache[settingNameFromType(type)] = getSDKSetting(type);
    }
    settingsCache[settingNameFromType(HANDS_FREE_ENABLED)] = readDeviceMode(Constants::currentHandsFreeStatus);
    return settingsCache;
}

}  // namespace SettingsHandler
