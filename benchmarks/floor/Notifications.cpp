#include "Utils/RapidjsonUtil.h"
#include "floor/Floor.h"
#include "floor/LogLine.h"
#include "floor/Names.h"

namespace Benchmarks::Floor {

using VessaLogger::INFORMATION;
using VessaLogger::TRACE;

void Floor::notifyLocaleChange(const std::string& locale) {
    logLine(logger, INFORMATION, "notifyLocaleChange: Notified of locale change. New value: %s", locale.c_str());
    const std::vector<std::string> current = collaborators.bridge->getLocales();
    if (current.empty()) {
        logLine(logger, INFORMATION, "Current locale is empty");
    } else if (locale == current[0]) {
        logLine(logger, INFORMATION,
                "notifyLocaleChange: Incoming primary locale (%s) is identical to current primary locale (%s)",
                locale.c_str(), Utils::RapidjsonUtil::stringifyVector(current).c_str());
        return;
    }
    collaborators.bridge->setLocales({locale});
}

void Floor::notifyLocaleChange(const std::vector<std::string>& locales) {
    logLine(logger, INFORMATION, "Notified of locale change. New value: %s",
            Utils::RapidjsonUtil::stringifyVector(locales).c_str());
    collaborators.bridge->setLocales(locales);
}

void Floor::notifyTimezoneChange(const std::string& timezone) {
    collaborators.bridge->setTimezone(timezone);
}

void Floor::notifySystemSettingChanged(const std::string& name, const std::string& value) {
    logLine(logger, INFORMATION, "Notified of system setting changing: %s. New value: %s", name.c_str(), value.c_str());
    logLine(logger, TRACE, "setSetting");
    SettingsHandler::settingTypeFromName(name);
    logLine(logger, TRACE, "SettingDBId: %s", name.c_str());
    store(name, value);
}

void Floor::notifyHandsfreeStateChanged(bool enabled) {
    static const std::string key = "handsFreeEnabled";
    const std::string value = enabled ? "true" : "false";
    logLine(logger, INFORMATION, "Notified of HandsFreeState changing. New value: %s", value.c_str());
    logLine(logger, TRACE, "setSetting");
    SettingsHandler::settingTypeFromName(key);
    logLine(logger, TRACE, "SettingDBId: %s", key.c_str());
    switchHandsFree(key, value);
}

}  // namespace Benchmarks::Floor
