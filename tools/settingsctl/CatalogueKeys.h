#pragma once

#include <string>
#include <vector>

namespace SettingsCtl {

/// The keys of all settings that the catalogue has, in their order. Made from docs/schemas/settings.json.
std::vector<std::string> catalogueKeys();

}  // namespace SettingsCtl
