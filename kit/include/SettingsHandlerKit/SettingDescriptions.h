#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "SettingsHandler/SettingsNames.h"

/// \file
/// What the catalogue says about each setting, and typed views of values.
namespace SettingsHandlerKit {

/// What kind of text the values of a setting are.
enum class SettingKind { TEXT, SWITCH, CHOICE, LOCALES, TIMEZONE, LIST };

/// Where the value of a setting lives.
enum class SettingOwner { STORAGE, VOICE_SDK, DEVICE };

/// Who may set a setting. For requests, one that only the device sets is read-only.
enum class SetBy { ANYONE, DEVICE };

/// Who may see the value of a setting.
enum class Privacy {
    /// Names of people, rooms and phones, account state: keep it out of metrics, bridges and support files.
    PERSONAL,
    /// Anything else.
    PREFERENCE,
};

/// One setting of the catalogue.
struct SettingDescription {
    /// Its name in requests, events, storage and log lines.
    std::string key;
    /// Its number.
    SettingsHandler::SettingsNamesType type = SettingsHandler::INVALID_SETTING;
    /// What kind of text its values are.
    SettingKind kind = SettingKind::TEXT;
    /// The known values: "true" and "false" of a switch, those of a choice; none for other kinds. The handler accepts
    /// other texts too.
    std::vector<std::string> values;
    /// Used when no value is stored. Absent for a setting without a default.
    std::optional<std::string> defaultValue;
    /// Where its value lives.
    SettingOwner owner = SettingOwner::STORAGE;
    /// Who may set it.
    SetBy setBy = SetBy::ANYONE;
    /// Who may see its value.
    Privacy privacy = Privacy::PREFERENCE;
    /// One sentence for users.
    std::string description;

    /// Returns: whether `value` is one of `values`; always true when there are none.
    bool isListed(const std::string& value) const;
};

/// Returns: all settings, in the order of their numbers. Threads: any.
const std::vector<SettingDescription>& settingDescriptions();

/// Returns: the setting with the key `key`, case-sensitive; null when the catalogue has none. Threads: any.
const SettingDescription* describeSetting(std::string_view key);

/// Returns: `text` as a switch; nothing unless it is "true" or "false". (The handler switches hands-free off for any
/// text but "true".) Threads: any.
std::optional<bool> asSwitch(const std::string& text);

/// Returns: the locales of `text` as the handler sets them, the primary one first: the strings of a JSON array that are
/// not empty. Nothing when there is none, when `text` is something else, or an array of more than 32 levels.
/// Threads: any.
std::optional<std::vector<std::string>> asLocales(const std::string& text);

}  // namespace SettingsHandlerKit
