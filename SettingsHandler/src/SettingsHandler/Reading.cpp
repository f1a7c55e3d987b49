#include "Constants.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

namespace {

std::string booleanText(bool value) {
    return value ? Constants::trueValue : Constants::falseValue;
}

std::vector<std::string> allSettingNames() {
    std::vector<std::string> names;
    names.reserve(SettingsNamesTypeToStringMapping.size());
    for (const auto& entry : SettingsNamesTypeToStringMapping) {
        names.push_back(entry.second);
    }
    return names;
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
    return booleanText(deviceInfo->getDeviceInfo()[deviceInfoKey] == Constants::on);
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

std::map<std::string, std::string> SettingsHandler::getSettings(const std::vector<std::string>& names) {
    logTrace(logTag, "getSettings");
    std::map<std::string, std::string> result;
    for (const auto& key : names.empty() ? allSettingNames() : names) {
        const SettingsNamesType type = settingTypeFromName(key);
        logTrace(logTag, "SettingDBId: %s", key.c_str());
        std::string value;
        if (isSDKSetting(type)) {
            value = getSDKSetting(type);
        } else if (type == HANDS_FREE_ENABLED) {
            value = readDeviceMode(Constants::currentHandsFreeStatus);
        } else if (type == HANDS_FREE_ALWAYS_ON_ENABLED) {
            value = readDeviceMode(Constants::currentAlwaysOnVoiceMode);
        } else if (type == PTT_ALWAYS_ON_ENABLED) {
            value = readDeviceMode(Constants::currentAlwaysOnPTTMode);
        } else {
            value = readStoredSetting(type, key);
            if (value.empty()) {
                continue;
            }
        }
        result[key] = value;
        if (type == INVALID_SETTING) {
            // Without the mutex on purpose: initializeSettings calls this operation with the mutex held.
            settingsCache[key] = value;
        }
    }
    return result;
}

std::map<std::string, std::string> SettingsHandler::getCurrentSettingsMap() {
    logInformation(logTag, "getCurrentSettingsMap");
    const std::lock_guard<std::mutex> lock(settingsCacheMutex);
    // The two always-on modes are returned as last known: intended.
    for (const auto type : {DO_NOT_DISTURB_ENABLED, CAPTIONS_ENABLED, ORLIA_LOCALE, TIMEZONE}) {
        settingsCache[settingNameFromType(type)] = getSDKSetting(type);
    }
    settingsCache[settingNameFromType(HANDS_FREE_ENABLED)] = readDeviceMode(Constants::currentHandsFreeStatus);
    return settingsCache;
}

}  // namespace SettingsHandler
