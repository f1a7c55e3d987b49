#pragma once

#include <optional>
#include <string>
#include <vector>

namespace SettingsClient {

/// A setting of the host's catalogue. Words that are not listed here come from a newer host.
struct Setting {
    /// The key, by which all requests name it.
    std::string key;
    /// Its number in the catalogue.
    int number = 0;
    /// "text", "switch", "choice", "locales", "timezone" or "list".
    std::string kind;
    /// The values of a choice. Other texts are accepted, too.
    std::vector<std::string> values;
    /// Used while no value is stored; nothing for a setting without default.
    std::optional<std::string> defaultValue;
    /// Where the value lives: "storage", "voice SDK" or "device".
    std::string owner;
    /// Who may change it: "anyone" or "device".
    std::string setBy;
    /// "personal" or "preference".
    std::string privacy;
    /// One sentence for users.
    std::string description;
};

}  // namespace SettingsClient
