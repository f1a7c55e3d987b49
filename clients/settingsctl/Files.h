#pragma once

#include <string>

namespace SettingsCtl {

/// What a file holds, "-" for standard input. Errors: `Failure` (WRONG_USAGE).
std::string contentsOf(const std::string& file);

}  // namespace SettingsCtl
