#pragma once

#include <cstdint>
#include <string>

namespace SettingsCtl {

/// Milliseconds since the epoch as "2026-11-22 10:17:49" in the user's time zone.
std::string localTime(std::int64_t milliseconds);

}  // namespace SettingsCtl
