#include "SettingsHandler/SettingsNames.h"

#include "Constants.h"
#include "Logging.h"
#include "Metrics/MetricsCache.h"
#include "Singletons.h"
#include "VessaLogger/Log.h"

// Everything that is built at load time is in this file, because C++ fixes the order of initialisation only within one
// file: the tables, the constants, then the singletons of the component libraries, whose code may already read the
// tables. Keep the order.

namespace SettingsHandler {

const std::unordered_map<std::string, SettingsNamesType> stringToSettingsNamesTypeMapping{
    {"deviceName", DEVICE_NAME},
    {"companionDevice", COMPANION_DEVICE},
    {"orliaLocale", ORLIA_LOCALE},
    {"captionsEnabled", CAPTIONS_ENABLED},
    {"captionsFontSize", CAPTIONS_FONT_SIZE},
    {"captionsStyles", CAPTIONS_STYLES},
    {"doNotDisturbEnabled", DO_NOT_DISTURB_ENABLED},
    {"handsFreeEnabled", HANDS_FREE_ENABLED},
    {"handsFreeAlwaysOnEnabled", HANDS_FREE_ALWAYS_ON_ENABLED},
    {"handsFreeAlwaysOnDiscovered", HANDS_FREE_ALWAYS_ON_DISCOVERED},
    {"pttAlwaysOnEnabled", PTT_ALWAYS_ON_ENABLED},
    {"pttAlwaysOnDiscovered", PTT_ALWAYS_ON_DISCOVERED},
    {"friendlyName", FRIENDLY_NAME},
    {"tovanEntitlementStatus", TOVAN_ENTITLEMENT_STATUS},
    {"timezone", TIMEZONE},
};

namespace {

std::unordered_map<SettingsNamesType, std::string> inverseOf(
    std::unordered_map<std::string, SettingsNamesType> typesByName) {
    std::unordered_map<SettingsNamesType, std::string> namesByType;
    for (const auto& [name, type] : typesByName) {
        namesByType[type] = name;
    }
    return namesByType;
}

}  // namespace

const std::unordered_map<SettingsNamesType, std::string> SettingsNamesTypeToStringMapping =
    inverseOf(stringToSettingsNamesTypeMapping);

const std::unordered_map<SettingsNamesType, std::string> SettingsNamesTypeToDefaultValuesMapping{
    {DEVICE_NAME, "TV"},
    {COMPANION_DEVICE, R"(["",""])"},
    {CAPTIONS_FONT_SIZE, "FONT_MEDIUM"},
    {CAPTIONS_STYLES, "STYLE_WHITE_ON_BLACK"},
    {HANDS_FREE_ENABLED, "false"},
    {HANDS_FREE_ALWAYS_ON_ENABLED, "false"},
    {HANDS_FREE_ALWAYS_ON_DISCOVERED, "false"},
    {PTT_ALWAYS_ON_ENABLED, "false"},
    {PTT_ALWAYS_ON_DISCOVERED, "false"},
    {FRIENDLY_NAME, "TV"},
};

namespace Constants {

const std::string settings = "settings";
const std::string settingDBId = "settingDBId";
const std::string from = "from";
const std::string to = "to";

const std::string trueValue = "true";
const std::string falseValue = "false";

const std::string on = "on";
const std::string currentHandsFreeStatus = "currentHandsFreeStatus";
const std::string currentAlwaysOnVoiceMode = "currentAlwaysOnVoiceMode";
const std::string currentAlwaysOnPTTMode = "currentAlwaysOnPTTMode";

const std::string customDefaultValue = "CUSTOM_DEFAULT_VALUE";

const std::string isOrliaSelectedAsVA = "isOrliaSelectedAsVA";

const std::string error = "error";
const std::string metricSeparator = "_";
const std::string metricGroup = "app_events";
const std::string metricSource = "AUTO";
const std::string metricAttribute = "interaction_name";

}  // namespace Constants

const std::string logTag = "SettingsHandler";

VessaLogger::Log& logger = VessaLogger::Log::instance();
Metrics::MetricsCache& metricsCache = Metrics::MetricsCache::instance();

std::string settingNameFromType(SettingsNamesType type) {
    const auto entry = SettingsNamesTypeToStringMapping.find(type);
    return entry == SettingsNamesTypeToStringMapping.end() ? std::string() : entry->second;
}

SettingsNamesType settingTypeFromName(const std::string& name) {
    const auto entry = stringToSettingsNamesTypeMapping.find(name);
    return entry == stringToSettingsNamesTypeMapping.end() ? INVALID_SETTING : entry->second;
}

std::string defaultValueForSetting(SettingsNamesType type) {
    const auto entry = SettingsNamesTypeToDefaultValuesMapping.find(type);
    return entry == SettingsNamesTypeToDefaultValuesMapping.end() ? Constants::customDefaultValue : entry->second;
}

}  // namespace SettingsHandler
