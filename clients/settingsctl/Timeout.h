#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace SettingsCtl {

/// Parses the value of `--timeout`, 0.001 to 86400 seconds, to the millisecond. Nothing for any other text.
std::optional<std::chrono::milliseconds> timeoutFrom(const std::string& seconds);

}  // namespace SettingsCtl
