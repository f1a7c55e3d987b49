#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

/// The catalogue of settings: number, key and default value of each.
///
/// The tables are built when the library is loaded and never change: any thread may read them without a lock.
namespace SettingsHandler {

/// The settings. The numbers are part of the binary interface.
enum SettingsNamesType : std::int32_t {
    /// Not a setting: the result of looking up an unknown key. No table holds it.
    INVALID_SETTING = 0,
    DEVICE_NAME = 1,
    COMPANION_DEVICE = 2,
    ORLIA_LOCALE = 3,
    CAPTIONS_ENABLED = 4,
    CAPTIONS_FONT_SIZE = 5,
    CAPTIONS_STYLES = 6,
    DO_NOT_DISTURB_ENABLED = 7,
    HANDS_FREE_ENABLED = 8,
    HANDS_FREE_ALWAYS_ON_ENABLED = 9,
    HANDS_FREE_ALWAYS_ON_DISCOVERED = 10,
    PTT_ALWAYS_ON_ENABLED = 11,
    PTT_ALWAYS_ON_DISCOVERED = 12,
    FRIENDLY_NAME = 13,
    TOVAN_ENTITLEMENT_STATUS = 14,
    TIMEZONE = 15,
};

/// Setting by key, all of them. Requests, events, storage and log lines name a setting by its key.
[[gnu::visibility("default")]] extern const std::unordered_map<std::string, SettingsNamesType>
    stringToSettingsNamesTypeMapping;

/// Key by setting: the exact inverse of `stringToSettingsNamesTypeMapping`.
[[gnu::visibility("default")]] extern const std::unordered_map<SettingsNamesType, std::string>
    SettingsNamesTypeToStringMapping;

/// Default value by setting, for the settings that have one. The locale, the time zone, captions on/off,
/// do-not-disturb and the entitlement status have none.
[[gnu::visibility("default")]] extern const std::unordered_map<SettingsNamesType, std::string>
    SettingsNamesTypeToDefaultValuesMapping;

/// Returns: the key of `type`, for example "timezone" for `TIMEZONE`; the empty string when `type` is not a setting.
[[gnu::visibility("default")]] std::string settingNameFromType(SettingsNamesType type);

/// Returns: the setting with the key `name`, case-sensitive; `INVALID_SETTING` when there is none.
[[gnu::visibility("default")]] SettingsNamesType settingTypeFromName(const std::string& name);

/// Returns: the default value of `type`; "CUSTOM_DEFAULT_VALUE", which is never the value of a setting, when it has
/// none.
[[gnu::visibility("default")]] std::string defaultValueForSetting(SettingsNamesType type);

}  // namespace SettingsHandler
