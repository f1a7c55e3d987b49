#pragma once

#include <string>
#include <vector>

#include "SettingsHandler/SettingsNames.h"

namespace SettingsHandlerFuzz {

/// The keys of all settings in the order of the library's table, which is that of a hash table.
inline std::vector<std::string> keysInTableOrder() {
    std::vector<std::string> keys;
    for (const auto& entry : SettingsHandler::SettingsNamesTypeToStringMapping) {
        keys.push_back(entry.second);
    }
    return keys;
}

}  // namespace SettingsHandlerFuzz
