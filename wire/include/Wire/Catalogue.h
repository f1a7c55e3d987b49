#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Wire {

/// What kind of text the values of a setting are.
enum class SettingKind { TEXT, SWITCH, CHOICE, LOCALES, TIMEZONE, LIST };

/// Where the value of a setting lives.
enum class SettingOwner { STORAGE, VOICE_SDK, DEVICE };

/// One setting of the catalogue.
struct SettingDescription {
    std::string key;
    int number = 0;
    SettingKind kind = SettingKind::TEXT;
    /// What pages and completion offer: "true" and "false" for a switch, the values of a choice, else none. Not a
    /// limit: most owners keep other texts.
    std::vector<std::string> values;
    /// Stands in for a value that is not stored. None for a setting without default.
    std::optional<std::string> defaultValue;
    SettingOwner owner = SettingOwner::STORAGE;
    /// Requests to set it are refused: it changes at its owner only.
    bool setByDeviceOnly = false;
    /// Names of people, rooms and phones, account state: never in metrics, never in files that go to others.
    bool personal = false;
    /// One sentence for people.
    std::string description;
};

/// All settings, in the order of their numbers. Any thread.
const std::vector<SettingDescription>& catalogue();

/// Returns: the setting with that key; null when the catalogue has none. Any thread.
const SettingDescription* findSetting(std::string_view key);

/// The catalogue as JSON text, as it stands in SettingsHandler/catalogue.json.
std::string_view catalogueText();

}  // namespace Wire
