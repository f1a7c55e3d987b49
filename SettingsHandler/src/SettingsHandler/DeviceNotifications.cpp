#include <utility>

#include "Constants.h"
#include "Logging.h"
#include "SettingsHandler/SettingsHandler.h"
#include "Utils/RapidjsonUtil.h"

namespace SettingsHandler {

void SettingsHandler::notifyLocaleChange(std::string locale) {
    logInformation(logTag, "notifyLocaleChange: Notified of locale change. New value: %s", locale.c_str());
    const std::vector<std::string> current = sdkBridge->getLocales();
    if (current.empty()) {
        logInformation(logTag, "Current locale is empty");
    } else if (locale == current[0]) {
        // Intended: the second value is the whole list, not the primary locale.
        logInformation(logTag,
                       "notifyLocaleChange: Incoming primary locale (%s) is identical to current primary locale (%s)",
                       locale.c_str(), Utils::RapidjsonUtil::stringifyVector(current).c_str());
        return;
    }
    // Intended: the secondary locales are dropped.
    sdkBridge->setLocales({std::move(locale)});
}

void SettingsHandler::notifyLocaleChange(std::vector<std::string> locales) {
    logInformation(logTag, "Notified of locale change. New value: %s", stringifyVector(locales).c_str());
    sdkBridge->setLocales(std::move(locales));
}

void SettingsHandler::notifyTimezoneChange(std::string timezone) {
    sdkBridge->setTimezone(std::move(timezone));
}

// No setting depends on the next four.
void SettingsHandler::notifyNetworkConnectionChanged(std::string /*connection*/) {}
void SettingsHandler::notifyMicrophoneAvailabilityChanged(std::string /*availability*/) {}
void SettingsHandler::notifyAudioGuidanceChanged(bool /*enabled*/) {}
void SettingsHandler::notifyDeviceModeChanged(std::string /*mode*/) {}

void SettingsHandler::notifySystemSettingChanged(std::string name, std::string value) {
    logInformation(logTag, "Notified of system setting changing: %s. New value: %s", name.c_str(), value.c_str());
    setSetting(name, value);
}

void SettingsHandler::notifyHandsfreeStateChanged(bool enabled) {
    const std::string value = enabled ? Constants::trueValue : Constants::falseValue;
    logInformation(logTag, "Notified of HandsFreeState changing. New value: %s", value.c_str());
    setSetting(settingNameFromType(HANDS_FREE_ENABLED), value);
}

}  // namespace SettingsHandler
