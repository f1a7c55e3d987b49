#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace SettingsCtl {

/// A time from 0.001 to 86400 seconds as `--timeout` takes it, to the millisecond; nothing for any other text.
std::optional<std::chrono::milliseconds> timeoutFrom(const std::string& seconds);

}  // namespace SettingsCtl
