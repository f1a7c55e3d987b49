#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace SettingsHandlerKit {

// Environment variables that a service manager sets for the program it starts.

/// Nothing when the variable is not set.
std::optional<std::string> managerVariable(const char* name);
/// An unsigned decimal number. Errors: `std::invalid_argument` for anything else and for a number that is too large.
std::optional<std::uint64_t> managerNumber(const char* name);
/// Is the variable the id of this process? Child processes inherit variables that are not meant for them.
bool isMeantForThisProcess(const char* name);

}  // namespace SettingsHandlerKit
