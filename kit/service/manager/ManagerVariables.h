#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace SettingsHost {

/// What a service manager says to a program it starts, in variables of its environment.

/// Nothing when there is no such variable.
std::optional<std::string> managerVariable(const char* name);
/// A number that is nothing but digits. Errors: `std::invalid_argument` for anything else, and for one that is too
/// large.
std::optional<std::uint64_t> managerNumber(const char* name);
/// Does the variable name this process? Variables are inherited, and meant for one alone.
bool isMeantForThisProcess(const char* name);

}  // namespace SettingsHost
