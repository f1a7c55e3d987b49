#pragma once

#include <chrono>
#include <string>

namespace Wire {

/// The local time for log lines: "2026-01-31T12:34:56.789+01:00".
std::string localTimeText(std::chrono::system_clock::time_point time);

}  // namespace Wire
