#include <utility>

#include "Constants.h"
#include "Json.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"

namespace SettingsHandler {

namespace {

/// The non-empty strings among the elements of the root. Intended, without a check: a root that is not an array fails a
/// precondition of the JSON library, which ends the process.
std::vector<std::string> localesOf(const rapidjson::Value& root) {
    const auto elements = root.GetArray();
    std::vector<std::string> locales;
    locales.reserve(elements.Size());
    for (const auto& element : elements) {
        if (element.IsString() && element.GetStringLength() > 0) {
            locales.emplace_back(element.GetString(), element.GetStringLength());
        }
    }
    return locales;
}

}  // namespace

bool SettingsHandler::setSetting(const std::string& name, const std::string& value) {
    logTrace(logTag, "setSetting");
    const SettingsNamesType type = settingTypeFromName(name);
    logTrace(logTag, "SettingDBId: %s", name.c_str());
    switch (type) {
        case ORLIA_LOCALE:
            return setOrliaLocale(name, value);
        case TIMEZONE:
            return setTimezone(name, value);
        case CAPTIONS_ENABLED:
        case DO_NOT_DISTURB_ENABLED:
            // Read-only: only the device changes them.
            logError(logTag, "Invalid SDK SettingDBId: %s", name.c_str());
            return false;
        case TOVAN_ENTITLEMENT_STATUS:
            return setEntitlementStatus(name, value);
        case HANDS_FREE_ENABLED:
        case HANDS_FREE_ALWAYS_ON_ENABLED:
        case PTT_ALWAYS_ON_ENABLED:
        case FRIENDLY_NAME:
            return setAppliedSetting(type, name, value);
        default:
            return setStoredSetting(name, value);
    }
}

bool SettingsHandler::setOrliaLocale(const std::string& settingDBId, const std::string& value) {
    ParsedText text;
    if (!text.parse(value)) {
        logError(logTag, "orliaLocale is not in the proper format");
        return false;
    }
    std::vector<std::string> locales = localesOf(text.root());
    if (locales.empty()) {
        logError(logTag, "orliaLocale is empty or not in the correct format");
        return false;
    }
    std::string oldValue = stringifyVector(sdkBridge->getLocales());
    // Intended: compared as text, so the same locales with other white space are a change.
    if (oldValue == value) {
        logTrace(logTag, "orliaLocale was not changed, oldValue is the same as newValue: oldValue(%s), newValue(%s)",
                 oldValue.c_str(), value.c_str());
        return false;
    }
    sdkBridge->setLocales(locales);
    settingChanged(settingDBId, oldValue, value);
    logInformation(logTag, "OrliaLocale changed from '%s' to '%s'", oldValue.c_str(), value.c_str());
    onOrliaLocaleChange(std::move(locales));
    return true;
}

bool SettingsHandler::setTimezone(const std::string& settingDBId, const std::string& value) {
    std::string oldValue = sdkBridge->getTimezone();
    if (oldValue == value) {
        logTrace(logTag, "orliaTimezone was not changed, oldValue is the same as newValue: oldValue(%s), newValue(%s)",
                 oldValue.c_str(), value.c_str());
        return false;
    }
    sdkBridge->setTimezone(value);
    settingChanged(settingDBId, oldValue, value);
    logInformation(logTag, "OrliaTimezone changed from '%s' to '%s'", oldValue.c_str(), value.c_str());
    return true;
}

bool SettingsHandler::setEntitlementStatus(const std::string& settingDBId, const std::string& value) {
    std::string oldValue = cachedValue(settingDBId);
    if (oldValue == value) {
        logInformation(logTag, "%s was not updated. New value: '%s' was not saved.", settingDBId.c_str(),
                       value.c_str());
        return false;
    }
    if (storageManager.setValue(settingDBId, value)) {
        logInformation(logTag, "%s changed from '%s' to '%s'", settingDBId.c_str(), oldValue.c_str(), value.c_str());
        onEntitlementStatusChanged(value);
        settingChanged(settingDBId, oldValue, value);
    }
    // Intended: true also when the storage refused the write, which is not logged.
    return true;
}

bool SettingsHandler::setAppliedSetting(SettingsNamesType type, const std::string& settingDBId,
                                        const std::string& value) {
    std::string oldValue = cachedValue(settingDBId);
    if (oldValue == value) {
        logInformation(logTag, "%s was not updated: new value: '%s' is the same", settingDBId.c_str(), value.c_str());
        return false;
    }
    if (type == HANDS_FREE_ENABLED) {
        // Intended: any text but "true" switches off, and the text is reported unchanged.
        sdkBridge->setHandsFreeEnabled(value == Constants::trueValue);
    } else if (!sdkBridge->applySetting(settingDBId, value)) {
        // Intended: the change is reported all the same.
        emitSettingMetric(settingDBId, Constants::error);
    }
    if (type == FRIENDLY_NAME) {
        onFriendlyNameChanged(value);
    }
    logInformation(logTag, "%s changed from '%s' to '%s'", settingDBId.c_str(), oldValue.c_str(), value.c_str());
    settingChanged(settingDBId, oldValue, value);
    return true;
}

bool SettingsHandler::setStoredSetting(const std::string& settingDBId, const std::string& value) {
    std::string oldValue = cachedValue(settingDBId);
    if (oldValue == value) {
        return false;
    }
    if (!storageManager.setValue(settingDBId, value)) {
        logError(logTag, "%s new value: '%s' value was not written properly", settingDBId.c_str(), value.c_str());
        return false;
    }
    logInformation(logTag, "%s new value: '%s'", settingDBId.c_str(), value.c_str());
    settingChanged(settingDBId, oldValue, value);
    return true;
}

std::string SettingsHandler::cachedValue(const std::string& settingDBId) {
    std::unique_lock<std::mutex> lock(settingsCacheMutex);
    const auto entry = settingsCache.find(settingDBId);
    std::string value = entry == settingsCache.end() ? std::string() : entry->second;
    lock.unlock();
    return value;
}

}  // namespace SettingsHandler
