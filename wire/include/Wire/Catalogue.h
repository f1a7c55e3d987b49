#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Wire {

/// What kind of text the values of a setting are.
enum class SettingKind { TEXT, SWITCH, CHOICE, LOCALES, TIMEZONE, LIST };

/// The owner of a setting: where its value lives.
enum class SettingOwner { STORAGE, VOICE_SDK, DEVICE };

/// One setting of the catalogue.
struct SettingDescription {
    std::string key;
    int number = 0;
    SettingKind kind = SettingKind::TEXT;
    /// The values that pages and completion offer: "true" and "false" for a switch, the values of a choice, otherwise
    /// none. Other texts are accepted too.
    std::vector<std::string> values;
    /// Used when no value is stored. Absent for a setting without default.
    std::optional<std::string> defaultValue;
    SettingOwner owner = SettingOwner::STORAGE;
    /// Read-only for requests: only its owner changes it.
    bool setByDeviceOnly = false;
    /// Names of people, rooms and phones, account state: never in metrics or support files.
    bool personal = false;
    /// One sentence for users.
    std::string description;
};

/// Returns: all settings, in the order of their numbers. Threads: any.
const std::vector<SettingDescription>& catalogue();

/// Returns: the setting with the key `key`; null when the catalogue has none. Threads: any.
const SettingDescription* findSetting(std::string_view key);

/// Returns: the JSON text of SettingsHandler/catalogue.json.
std::string_view catalogueText();

}  // namespace Wire
